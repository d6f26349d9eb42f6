// Reading the rows of a store file page by page, without the engine.
//
// A store file is a row of pages of one size. Each page that holds rows of a table (a leaf) can be
// read without the pages that lead to it:
//
//     0D 00 00 00 03 ...   kind, free space, number of rows
//     0F A2 0F 44 0E E7    where each row begins in the page
//     ... row: length, row id, record; a long record goes on in a chain of further pages

#include "files/PageFile.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <limits>
#include <utility>

#include "base/Unicode.h"

namespace {

constexpr size_t kHeaderLength = 100;
constexpr size_t kSmallestPage = 512;
constexpr size_t kGreatestPage = 65536;

}  // namespace

int32_t ToInt(const Value& value) {
    constexpr int64_t kLeast = std::numeric_limits<int32_t>::min();
    constexpr int64_t kMost = std::numeric_limits<int32_t>::max();
    if (const auto* const real = std::get_if<double>(&value)) {
        return *real > -1e9 && *real < 1e9 ? static_cast<int32_t>(*real) : 0;
    }
    const auto* const number = std::get_if<int64_t>(&value);
    return number == nullptr ? 0 : static_cast<int32_t>(std::clamp(*number, kLeast, kMost));
}

PageFile::PageFile(int file) : mFile(file) {
    FindExtents();
    const std::string header = Bytes(0, kHeaderLength);
    const uint64_t stored = Number(header, 16, 2);
    // 65536 does not fit into the two bytes and is written as 1.
    mPageSize = stored == 1 ? kGreatestPage : static_cast<size_t>(stored);
    const bool hasHeader = header.rfind("SQLite format 3", 0) == 0 && HasPageSize(mPageSize);
    if (!hasHeader) {
        mPageSize = GuessPageSize();
    }
    mBytesLeft = 8 * mDataLength;
    mUsable = mPageSize - (hasHeader ? static_cast<size_t>(Number(header, 20, 1)) : 0);
    const uint64_t encoding = hasHeader ? Number(header, 56, 4) : 2;
    mEncoding = encoding == 1   ? TextEncoding::kUtf8
                : encoding == 3 ? TextEncoding::kUtf16Big
                                : TextEncoding::kUtf16Little;
    if (hasHeader) {
        FindFreePages(header);
    }
}

// A file system that does not tell of holes says that there are none.
void PageFile::FindExtents() {
    struct stat status {};
    if (::fstat(mFile, &status) != 0) {
        return;
    }
    mLength = static_cast<uint64_t>(status.st_size);
    for (off_t end = 0; end < status.st_size;) {
        const off_t begin = ::lseek(mFile, end, SEEK_DATA);
        if (begin < 0) {
            return;
        }
        end = ::lseek(mFile, begin, SEEK_HOLE);
        end = end < 0 ? status.st_size : end;
        mExtents.emplace_back(begin, end);
        mDataLength += static_cast<uint64_t>(end - begin);
    }
}

uint64_t PageFile::NextPage(uint64_t number) const {
    const uint64_t from = number * mPageSize;
    const auto next =
        std::upper_bound(mExtents.begin(), mExtents.end(), from,
                         [](uint64_t at, const auto& extent) { return at < extent.second; });
    return next == mExtents.end() ? 0 : std::max(next->first, from) / mPageSize + 1;
}

bool PageFile::IsFree(uint64_t number) const {
    return std::binary_search(mFree.begin(), mFree.end(), number);
}

std::string PageFile::Bytes(uint64_t offset, size_t length) const {
    std::string bytes(length, '\0');
    for (size_t done = 0; done < length;) {
        const ssize_t count =
            ::pread(mFile, bytes.data() + done, length - done, static_cast<off_t>(offset + done));
        if (count == 0 || (count < 0 && errno != EINTR)) {
            break;
        }
        done += static_cast<size_t>(std::max<ssize_t>(count, 0));
    }
    return bytes;
}

// Returns the greatest size at which about as many pages look like leaves of a table as at any
// other: at half the size there are as many, and at twice the size half as many.
size_t PageFile::GuessPageSize() const {
    constexpr size_t kSizes = 8;
    std::array<uint64_t, kSizes> leaves{};
    for (const auto& [begin, end] : mExtents) {
        for (uint64_t at = begin / kGreatestPage * kGreatestPage; at < end; at += kGreatestPage) {
            const std::string bytes = Bytes(at, kGreatestPage);
            for (size_t place = 0; place < bytes.length(); place += kSmallestPage) {
                const uint64_t rows = Number(bytes, place + 3, 2);
                const uint64_t content = Number(bytes, place + 5, 2);
                const bool isLeaf = bytes[place] == static_cast<char>(PageKind::kTableLeaf) &&
                                    rows > 0 && 8 + 2 * rows <= content;
                for (size_t i = 0; isLeaf && i < kSizes; ++i) {
                    const size_t size = kSmallestPage << i;
                    leaves[i] += place % size == 0 && content < size ? 1U : 0U;
                }
            }
        }
    }
    const uint64_t most = *std::max_element(leaves.begin(), leaves.end());
    size_t best = 4096;
    for (size_t i = 0; i < kSizes; ++i) {
        best = most > 0 && 4 * leaves[i] >= 3 * most ? kSmallestPage << i : best;
    }
    return best;
}

bool PageFile::HasPageSize(size_t size) const {
    return size >= kSmallestPage && size <= kGreatestPage && (size & (size - 1)) == 0 &&
           mLength >= size;
}

uint64_t PageFile::Number(std::string_view bytes, size_t offset, size_t length) {
    uint64_t value = 0;
    for (size_t i = 0; i < length && offset + i < bytes.length(); ++i) {
        value = value << 8 | static_cast<unsigned char>(bytes[offset + i]);
    }
    return value;
}

bool PageFile::ReadVarint(std::string_view bytes, size_t& offset, uint64_t& value) {
    value = 0;
    for (int i = 0; i < 9 && offset < bytes.length(); ++i) {
        const auto byte = static_cast<unsigned char>(bytes[offset++]);
        if (i == 8) {
            value = value << 8 | byte;
            return true;
        }
        value = value << 7 | (byte & 0x7F);
        if (byte < 0x80) {
            return true;
        }
    }
    return false;
}

// Each page of the list names the next one and the free pages themselves. The header says how many
// there are together. A wrong list must not cost the rows of a page that is in use.
void PageFile::FindFreePages(std::string_view header) {
    const uint64_t expected = Number(header, 36, 4);
    uint64_t trunk = Number(header, 32, 4);
    const auto isPage = [this](uint64_t number) { return number >= 2 && number <= CountPages(); };
    while (isPage(trunk) && mFree.size() < expected && mFree.size() <= mDataLength / 4) {
        const std::string page = Page(trunk);
        mFree.push_back(trunk);
        const size_t count = std::min<size_t>(Number(page, 4, 4), mUsable / 4 - 2);
        for (size_t i = 0; i < count; ++i) {
            mFree.push_back(Number(page, 8 + 4 * i, 4));
        }
        trunk = Number(page, 0, 4);
    }
    std::sort(mFree.begin(), mFree.end());
    if (trunk != 0 || mFree.size() != expected ||
        !std::all_of(mFree.begin(), mFree.end(), isPage) ||
        std::adjacent_find(mFree.begin(), mFree.end()) != mFree.end()) {
        mFree.clear();
    }
}

size_t PageFile::CountColumns(std::string_view content) {
    size_t at = 0;
    uint64_t length = 0;
    size_t columns = 0;
    if (!ReadVarint(content, at, length)) {
        return 0;
    }
    for (uint64_t type = 0; at < length; ++columns) {
        if (!ReadVarint(content, at, type)) {
            break;
        }
    }
    return columns;
}

std::optional<std::string> PageFile::Content(std::string_view page, size_t offset, uint64_t length,
                                             bool isTable) const {
    if (length > mDataLength || mBytesLeft < length) {
        return std::nullopt;
    }
    mBytesLeft -= length;
    // The part of a long content in the page itself, by the rules of the file format.
    const size_t most = isTable ? mUsable - 35 : (mUsable - 12) * 64 / 255 - 23;
    const size_t least = (mUsable - 12) * 32 / 255 - 23;
    size_t local = static_cast<size_t>(length);
    if (length > most) {
        const size_t even = least + (static_cast<size_t>(length) - least) % (mUsable - 4);
        local = even <= most ? even : least;
    }
    if (offset + local > page.length()) {
        return std::nullopt;
    }
    std::string content(page.substr(offset, local));
    uint64_t next = Number(page, offset + local, 4);
    while (content.length() < length && next >= 2 && next <= CountPages()) {
        const std::string more = Page(next);
        if (more.find_first_not_of('\0') == std::string::npos) {
            break;
        }
        content.append(more, 4, std::min<size_t>(mUsable - 4, length - content.length()));
        next = Number(more, 0, 4);
    }
    return content;
}

std::optional<Record> PageFile::Parse(std::string_view content, uint64_t wholeLength) {
    size_t at = 0;
    uint64_t headerLength = 0;
    if (!ReadVarint(content, at, headerLength) || headerLength > content.length()) {
        return std::nullopt;
    }
    size_t body = static_cast<size_t>(headerLength);
    Record record;
    constexpr uint64_t kUsualColumns = 32;
    record.reserve(static_cast<size_t>(std::min(headerLength, kUsualColumns)));
    while (at < headerLength) {
        uint64_t type = 0;
        if (!ReadVarint(content, at, type) || type == 10 || type == 11) {
            return std::nullopt;
        }
        constexpr size_t kNumberLengths[] = {0, 1, 2, 3, 4, 6, 8, 8, 0, 0};
        const uint64_t length = type < 10 ? kNumberLengths[type] : (type - 12) / 2;
        if (length > wholeLength - body) {
            return std::nullopt;
        }
        const std::string_view bytes = content.substr(std::min(body, content.length()), length);
        body += static_cast<size_t>(length);
        const bool isCut = bytes.length() < length;
        record.IsCut = record.IsCut || isCut;
        if (type == 0 || (isCut && type < 12)) {
            record.emplace_back();
        } else if (type == 8 || type == 9) {
            record.emplace_back(static_cast<int64_t>(type - 8));
        } else if (type == 7) {
            const uint64_t bits = Number(bytes, 0, 8);
            double number = 0;
            std::memcpy(&number, &bits, sizeof number);
            record.emplace_back(number);
        } else if (type < 7) {
            const unsigned unused = 64 - 8 * static_cast<unsigned>(length);
            record.emplace_back(static_cast<int64_t>(Number(bytes, 0, bytes.length()) << unused) >>
                                unused);
        } else if (type % 2 == 1) {
            record.emplace_back(std::string(bytes));
        } else {
            record.emplace_back(Blob{std::string(bytes)});
        }
    }
    return record;
}

void PageFile::ReadRows(uint64_t number, PageKind kind, const Want& want,
                        const Visit& visit) const {
    const std::string page = Page(number);
    const size_t start = number == 1 ? kHeaderLength : 0;
    if (page[start] != static_cast<char>(kind)) {
        return;
    }
    // Before each entry of an inner page stands the number of the page below it.
    const bool isInner = kind == PageKind::kIndexInner;
    const size_t places = start + (isInner ? 12 : 8);
    const size_t count = std::min<size_t>(Number(page, start + 3, 2), mUsable / 4);
    for (size_t i = 0; i < count; ++i) {
        size_t at = static_cast<size_t>(Number(page, places + 2 * i, 2)) + (isInner ? 4 : 0);
        uint64_t length = 0;
        uint64_t rowId = 0;
        const bool isTable = kind == PageKind::kTableLeaf;
        if (!ReadVarint(page, at, length) || (isTable && !ReadVarint(page, at, rowId))) {
            continue;
        }
        const std::string_view local = std::string_view(page).substr(std::min(at, page.length()));
        if (isTable && !want(static_cast<int64_t>(rowId), CountColumns(local))) {
            continue;
        }
        const std::optional<std::string> content = Content(page, at, length, isTable);
        const std::optional<Record> record = content ? Parse(*content, length) : std::nullopt;
        if (record) {
            visit(static_cast<int64_t>(rowId), *record);
        }
    }
}

wxString PageFile::ToText(const Value& value) const {
    const auto* const bytes = std::get_if<std::string>(&value);
    if (bytes == nullptr) {
        return wxString();
    }
    if (mEncoding == TextEncoding::kUtf8) {
        return FromUtf8(*bytes);
    }
    wxString text;
    char32_t high = 0;
    for (size_t i = 0; i + 1 < bytes->length(); i += 2) {
        const auto first = static_cast<unsigned char>((*bytes)[i]);
        const auto second = static_cast<unsigned char>((*bytes)[i + 1]);
        const auto unit = static_cast<char32_t>(
            mEncoding == TextEncoding::kUtf16Big ? first << 8 | second : second << 8 | first);
        if (unit >= 0xD800 && unit < 0xDC00) {
            high = unit;
            continue;
        }
        const bool isPair = high != 0 && unit >= 0xDC00 && unit < 0xE000;
        const char32_t point = isPair ? 0x10000 + ((high - 0xD800) << 10) + (unit - 0xDC00) : unit;
        text += static_cast<wchar_t>(IsScalarValue(point) ? point : kReplacement);
        high = 0;
    }
    return text;
}
