#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

// The database engine of the program's first version, as far as a reader of its stores needs it. It
// is an interface because the engine exists on one platform and tests do without it. Results are
// those of the engine: a negative one is a failure. Lives on one thread.
//
// This header stands alone so that the source for that platform compiles without the toolkit.
class LegacyRowSource {
  public:
    // The engine found a word in the statement that it cannot resolve, such as an unknown column.
    static constexpr int32_t kErrorsInCommand = static_cast<int32_t>(0x80040E14U);

    virtual ~LegacyRowSource() = default;

    // Loads the engine. Fails where it is not installed.
    virtual int32_t Initialize() = 0;
    virtual int32_t Open(const std::wstring& path) = 0;
    // Starts a statement; drops the rows that remain of the last one.
    virtual int32_t Run(const std::wstring& statement) = 0;
    // Returns the columns of the statement, as the engine spells them.
    virtual const std::vector<std::wstring>& GetColumnNames() const = 0;
    // Reads the next row, a text for each column. A row that cannot be read gives empty texts.
    // Returns false when there is no further row, or no statement.
    virtual bool ReadRow(std::vector<std::wstring>& values) = 0;
};

using LegacyRowSourceMaker = std::function<std::unique_ptr<LegacyRowSource>()>;

// Returns the engine of this machine. Where the platform has none, its Initialize fails.
std::unique_ptr<LegacyRowSource> MakeLegacyRowSource();
