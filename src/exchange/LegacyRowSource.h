#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

// The database engine of the program's first version, as far as a reader of its stores needs it.
// Results are those of the engine: a negative one is a failure. Used on one thread, from its making
// to its end.
class LegacyRowSource {
  public:
    // The engine found a word in the statement that it cannot resolve, such as an unknown column.
    static constexpr int32_t kErrorsInCommand = static_cast<int32_t>(0x80040E14U);

    virtual ~LegacyRowSource() = default;

    // Reaches for the engine, and fails where it is not installed.
    virtual int32_t Initialize() = 0;
    virtual int32_t Open(const std::wstring& path) = 0;
    // Begins the statement; the rows of the one before are given up.
    virtual int32_t Run(const std::wstring& statement) = 0;
    // Returns the columns of the statement, as the engine spells them.
    virtual const std::vector<std::wstring>& GetColumnNames() const = 0;
    // The next row of the statement, a text for each column. A row that cannot be read gives empty
    // texts. False when there is no further row, or no statement.
    virtual bool ReadRow(std::vector<std::wstring>& values) = 0;
};

using LegacyRowSourceMaker = std::function<std::unique_ptr<LegacyRowSource>()>;

// The engine of this machine. Where the platform has none, initialising it fails.
std::unique_ptr<LegacyRowSource> MakeLegacyRowSource();
