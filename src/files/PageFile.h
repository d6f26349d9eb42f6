#pragma once

#include <wx/string.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

// One value of a record: nothing, a number, the bytes of a text as the file has them, or other
// bytes.
struct Blob {
    std::string Bytes;
};
using Value = std::variant<std::monostate, int64_t, double, std::string, Blob>;
struct Record : std::vector<Value> {
    // True when a part of it is lost.
    bool IsCut = false;
};

// Returns the number of a value, 0 for a text or nothing, and an end of the range for one that is
// out of it.
int32_t ToInt(const Value& value);

// The kinds of pages that hold rows or entries, by the byte that they begin with.
enum class PageKind : char { kIndexInner = 0x02, kIndexLeaf = 0x0A, kTableLeaf = 0x0D };

// How a file has its texts.
enum class TextEncoding { kUtf8, kUtf16Little, kUtf16Big };

// A file of pages, of which only the page that is looked at is in memory. Every place that is read
// is checked, as any byte may be wrong.
class PageFile {
  public:
    // The descriptor stays the caller's, and the file must not change meanwhile.
    explicit PageFile(int file);

    // Returns the next page of which the file has bytes, or 0 at its end: a file can be a thousand
    // times as long as what is in it. Pages count from 1, as in the file itself.
    uint64_t NextPage(uint64_t number) const;
    // Returns true for a page on the list of free pages. A list that cannot be right has none.
    bool IsFree(uint64_t number) const;
    TextEncoding Encoding() const { return mEncoding; }
    size_t PageSize() const { return mPageSize; }

    // Calls visit with the row id and the record of each row of a page of that kind. Entries of an
    // index have the row id in their record, and 0 here. Rows of a table are read only if they are
    // wanted, by their row id and number of columns.
    using Want = std::function<bool(int64_t rowId, size_t columns)>;
    using Visit = std::function<void(int64_t rowId, const Record& record)>;
    void ReadRows(uint64_t number, PageKind kind, const Want& want, const Visit& visit) const;
    wxString ToText(const Value& value) const;

  private:
    static uint64_t Number(std::string_view bytes, size_t offset, size_t length);
    static bool ReadVarint(std::string_view bytes, size_t& offset, uint64_t& value);
    static size_t CountColumns(std::string_view content);
    bool HasPageSize(size_t size) const;
    size_t GuessPageSize() const;
    void FindExtents();
    void FindFreePages(std::string_view header);
    uint64_t CountPages() const { return (mLength + mPageSize - 1) / mPageSize; }
    // Returns bytes of the file. What lies after its end, or cannot be read, is zeros.
    std::string Bytes(uint64_t offset, size_t length) const;
    std::string Page(uint64_t number) const { return Bytes((number - 1) * mPageSize, mPageSize); }
    // Returns the content of a row that begins in a page and continues in its chain of pages, up to
    // the first lost one.
    std::optional<std::string> Content(std::string_view page, size_t offset, uint64_t length,
                                       bool isTable) const;
    // A record whose content breaks off has a part of a text, and nothing after it.
    static std::optional<Record> Parse(std::string_view content, uint64_t wholeLength);

    int mFile;
    uint64_t mLength = 0;
    // The beginnings and ends of what is no hole, and the sum of their lengths.
    std::vector<std::pair<uint64_t, uint64_t>> mExtents;
    uint64_t mDataLength = 0;
    size_t mPageSize = 0;
    size_t mUsable = 0;
    TextEncoding mEncoding = TextEncoding::kUtf16Little;
    // Sorted.
    std::vector<uint64_t> mFree;
    // All contents together are shorter than the file, unless it was made to keep us busy.
    mutable uint64_t mBytesLeft = 0;
};
