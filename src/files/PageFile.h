#pragma once

#include <wx/string.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

// One value of a record: nothing, a number, or the bytes of a text.
using Value = std::variant<std::monostate, int64_t, double, std::string>;
struct Record : std::vector<Value> {
    // True when a part of it is lost.
    bool IsCut = false;
};

// Returns the number of a value, 0 for a text or nothing.
int64_t ToNumber(const Value& value);
int32_t ToInt(const Value& value);
float ToFloat(const Value& value);

// The kinds of pages that hold rows or entries, by the byte that they begin with.
enum class PageKind : char { kIndexInner = 0x02, kIndexLeaf = 0x0A, kTableLeaf = 0x0D };

// A file of pages. Checks every place before reading it, as any byte may be wrong.
class PageFile {
  public:
    explicit PageFile(std::string bytes);

    size_t CountPages() const { return mBytes.length() / mPageSize; }
    // Pages count from 1, as in the file itself.
    std::string_view Page(size_t number) const {
        return std::string_view(mBytes).substr((number - 1) * mPageSize, mPageSize);
    }
    bool IsFree(size_t number) const { return mFree.count(number) != 0; }

    // Calls visit with the row id and the record of each row of a page of that kind. Entries of an
    // index have the row id in their record, and 0 here.
    using Visit = std::function<void(int64_t rowId, const Record& record)>;
    void ReadRows(size_t number, PageKind kind, const Visit& visit) const;
    wxString ToText(const Value& value) const;

  private:
    enum class Encoding { kUtf8, kUtf16Little, kUtf16Big };

    static uint64_t Number(std::string_view bytes, size_t offset, size_t length);
    static bool ReadVarint(std::string_view bytes, size_t& offset, uint64_t& value);
    bool HasPageSize(size_t size) const;
    size_t GuessPageSize() const;
    void FindFreePages();
    // Returns the content of a row that begins in a page and continues in its chain of pages, up to
    // the first lost one.
    std::optional<std::string> Content(std::string_view page, size_t offset, uint64_t length,
                                       bool isTable) const;
    // A record whose content breaks off has a part of a text, and nothing after it.
    static std::optional<Record> Parse(std::string_view content, uint64_t wholeLength);

    const std::string mBytes;
    size_t mPageSize = 0;
    size_t mUsable = 0;
    Encoding mEncoding = Encoding::kUtf16Little;
    std::set<size_t> mFree;
    // All contents together are shorter than the file, unless it was made to keep us busy.
    mutable uint64_t mBytesLeft = 0;
};
