#include "base/Unicode.h"

#include <cstdint>

namespace {

constexpr uint32_t kReplacement = 0xFFFD;

bool IsScalarValue(uint32_t point) {
    return point < 0xD800 || (point > 0xDFFF && point <= 0x10FFFF);
}

void Append(std::string& bytes, uint32_t byte) {
    bytes.push_back(static_cast<char>(byte));
}

void AppendPoint(std::string& bytes, uint32_t point) {
    if (point < 0x80) {
        Append(bytes, point);
    } else if (point < 0x800) {
        Append(bytes, 0xC0 | (point >> 6));
        Append(bytes, 0x80 | (point & 0x3F));
    } else if (point < 0x10000) {
        Append(bytes, 0xE0 | (point >> 12));
        Append(bytes, 0x80 | ((point >> 6) & 0x3F));
        Append(bytes, 0x80 | (point & 0x3F));
    } else {
        Append(bytes, 0xF0 | (point >> 18));
        Append(bytes, 0x80 | ((point >> 12) & 0x3F));
        Append(bytes, 0x80 | ((point >> 6) & 0x3F));
        Append(bytes, 0x80 | (point & 0x3F));
    }
}

// What the first byte of a sequence says: how many bytes follow, its own bits of the code point,
// and the least code point that may be written so.
struct Lead {
    size_t following;
    uint32_t bits;
    uint32_t least;
};

bool ReadLead(uint32_t byte, Lead& lead) {
    if (byte < 0x80) {
        lead = {0, byte, 0};
    } else if ((byte & 0xE0) == 0xC0) {
        lead = {1, byte & 0x1F, 0x80};
    } else if ((byte & 0xF0) == 0xE0) {
        lead = {2, byte & 0x0F, 0x800};
    } else if ((byte & 0xF8) == 0xF0) {
        lead = {3, byte & 0x07, 0x10000};
    } else {
        return false;
    }
    return true;
}

uint32_t ByteAt(const char* bytes, size_t at) {
    return static_cast<unsigned char>(bytes[at]);
}

// Reads the sequence at a position and gives its length; one malformed byte is a sequence of its
// own that reads as U+FFFD.
size_t ReadPoint(const char* bytes, size_t length, uint32_t& point) {
    point = kReplacement;
    Lead lead{};
    if (!ReadLead(ByteAt(bytes, 0), lead) || lead.following >= length) {
        return 1;
    }
    uint32_t value = lead.bits;
    for (size_t i = 1; i <= lead.following; ++i) {
        const uint32_t byte = ByteAt(bytes, i);
        if ((byte & 0xC0) != 0x80) {
            return 1;
        }
        value = (value << 6) | (byte & 0x3F);
    }
    if (value < lead.least || !IsScalarValue(value)) {
        return 1;
    }
    point = value;
    return lead.following + 1;
}

}  // namespace

std::string ToUtf8(const wxString& text) {
    std::string bytes;
    bytes.reserve(text.length());
    for (const wxUniChar character : text) {
        const uint32_t point = character.GetValue();
        AppendPoint(bytes, IsScalarValue(point) ? point : kReplacement);
    }
    return bytes;
}

std::u16string ToUtf16(const wxString& text) {
    std::u16string units;
    units.reserve(text.length());
    for (const wxUniChar character : text) {
        const uint32_t point = character.GetValue();
        if (point < 0x10000) {
            units.push_back(static_cast<char16_t>(IsScalarValue(point) ? point : kReplacement));
        } else if (IsScalarValue(point)) {
            units.push_back(static_cast<char16_t>(0xD7C0 + (point >> 10)));
            units.push_back(static_cast<char16_t>(0xDC00 + (point & 0x3FF)));
        } else {
            units.push_back(static_cast<char16_t>(kReplacement));
        }
    }
    return units;
}

wxString FromUtf8(const char* bytes, size_t length) {
    std::wstring text;
    text.reserve(length);
    for (size_t at = 0; at < length;) {
        uint32_t point = 0;
        at += ReadPoint(bytes + at, length - at, point);
        text.push_back(static_cast<wchar_t>(point));
    }
    return wxString(text);
}

wxString FromUtf8(const std::string& bytes) {
    return FromUtf8(bytes.data(), bytes.length());
}
