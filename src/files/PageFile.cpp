// Reading the rows of a store file page by page, without the engine.
//
// A store file is a row of pages of one size. Each page that holds rows of a table (a leaf) can be
// read without the pages that lead to it:
//
//     0D 00 00 00 03 ...   kind, free space, number of rows
//     0F A2 0F 44 0E E7    where each row begins in the page
//     ... row: length, row id, record; a long record goes on in a chain of further pages

#include "files/PageFile.h"

#include <algorithm>
#include <cstring>
#include <map>
#include <utility>

#include "base/Unicode.h"

namespace {

constexpr size_t kHeaderLength = 100;

}  // namespace

int64_t ToNumber(const Value& value) {
    if (const auto* const number = std::get_if<double>(&value)) {
        return *number > -9e18 && *number < 9e18 ? static_cast<int64_t>(*number) : 0;
    }
    const auto* const number = std::get_if<int64_t>(&value);
    return number == nullptr ? 0 : *number;
}

int32_t ToInt(const Value& value) {
    return static_cast<int32_t>(ToNumber(value));
}

float ToFloat(const Value& value) {
    const auto* const number = std::get_if<double>(&value);
    return number == nullptr ? static_cast<float>(ToNumber(value)) : static_cast<float>(*number);
}

PageFile::PageFile(std::string bytes) : mBytes(std::move(bytes)) {
    const uint64_t stored = mBytes.length() < kHeaderLength ? 0 : Number(mBytes, 16, 2);
    // 65536 does not fit into the two bytes and is written as 1.
    mPageSize = stored == 1 ? 65536 : static_cast<size_t>(stored);
    const bool hasHeader = mBytes.rfind("SQLite format 3", 0) == 0 && HasPageSize(mPageSize);
    if (!hasHeader) {
        mPageSize = GuessPageSize();
    }
    mBytesLeft = 8 * uint64_t{mBytes.length()};
    mUsable = mPageSize - (hasHeader ? static_cast<size_t>(Number(mBytes, 20, 1)) : 0);
    const uint64_t encoding = hasHeader ? Number(mBytes, 56, 4) : 2;
    mEncoding = encoding == 1   ? Encoding::kUtf8
                : encoding == 3 ? Encoding::kUtf16Big
                                : Encoding::kUtf16Little;
    if (hasHeader) {
        FindFreePages();
    }
}

// Returns the greatest size at which about as many pages look like leaves of a table as at any
// other: at half the size there are as many, and at twice the size half as many.
size_t PageFile::GuessPageSize() const {
    std::map<size_t, size_t> leavesBySize;
    size_t most = 0;
    for (size_t size = 512; size <= 65536; size *= 2) {
        size_t leaves = 0;
        for (size_t at = 0; at + size <= mBytes.length(); at += size) {
            const uint64_t rows = Number(mBytes, at + 3, 2);
            const uint64_t content = Number(mBytes, at + 5, 2);
            const bool isLeaf = mBytes[at] == static_cast<char>(PageKind::kTableLeaf) && rows > 0 &&
                                content < size && 8 + 2 * rows <= content;
            leaves += isLeaf ? 1U : 0U;
        }
        leavesBySize[size] = leaves;
        most = std::max(most, leaves);
    }
    size_t best = 4096;
    for (const auto& [size, leaves] : leavesBySize) {
        best = most > 0 && 4 * leaves >= 3 * most ? size : best;
    }
    return best;
}

bool PageFile::HasPageSize(size_t size) const {
    return size >= 512 && size <= 65536 && (size & (size - 1)) == 0 && mBytes.length() >= size;
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

// Each page of the list names the next one and the free pages themselves.
void PageFile::FindFreePages() {
    size_t trunk = static_cast<size_t>(Number(mBytes, 32, 4));
    while (trunk >= 2 && trunk <= CountPages() && mFree.insert(trunk).second) {
        const std::string_view page = Page(trunk);
        const size_t count = std::min<size_t>(Number(page, 4, 4), mUsable / 4 - 2);
        for (size_t i = 0; i < count; ++i) {
            mFree.insert(static_cast<size_t>(Number(page, 8 + 4 * i, 4)));
        }
        trunk = static_cast<size_t>(Number(page, 0, 4));
    }
}

std::optional<std::string> PageFile::Content(std::string_view page, size_t offset, uint64_t length,
                                             bool isTable) const {
    if (length > mBytes.length() || mBytesLeft < length) {
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
    size_t next = static_cast<size_t>(Number(page, offset + local, 4));
    while (content.length() < length && next >= 2 && next <= CountPages()) {
        const std::string_view more = Page(next);
        if (more.find_first_not_of('\0') == std::string_view::npos) {
            break;
        }
        content += more.substr(4, std::min<size_t>(mUsable - 4, length - content.length()));
        next = static_cast<size_t>(Number(more, 0, 4));
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
        } else {
            record.emplace_back(std::string(bytes));
        }
    }
    return record;
}

void PageFile::ReadRows(size_t number, PageKind kind, const Visit& visit) const {
    const std::string_view page = Page(number);
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
        // A name that looks like a number is stored as one.
        return std::holds_alternative<std::monostate>(value)
                   ? wxString()
                   : wxString::Format("%lld", static_cast<long long>(ToNumber(value)));
    }
    if (mEncoding == Encoding::kUtf8) {
        return FromUtf8(*bytes);
    }
    wxString text;
    char32_t high = 0;
    for (size_t i = 0; i + 1 < bytes->length(); i += 2) {
        const auto first = static_cast<unsigned char>((*bytes)[i]);
        const auto second = static_cast<unsigned char>((*bytes)[i + 1]);
        const auto unit = static_cast<char32_t>(
            mEncoding == Encoding::kUtf16Big ? first << 8 | second : second << 8 | first);
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
