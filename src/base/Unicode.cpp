#include "base/Unicode.h"

Utf8Step ReadUtf8(const uint8_t* bytes, const uint8_t* end) {
    const uint8_t lead = *bytes;
    if (lead < 0x80) {
        return {Utf8Step::kWhole, 1, lead};
    }
    if (lead < 0xC2 || lead > 0xF4) {
        return {Utf8Step::kBroken, 1, kReplacement};
    }
    const size_t length = lead < 0xE0 ? 2 : (lead < 0xF0 ? 3 : 4);
    // The second byte's range leaves out overlong forms, surrogates, and what is past U+10FFFF.
    uint8_t least = lead == 0xE0 ? 0xA0 : (lead == 0xF0 ? 0x90 : 0x80);
    uint8_t greatest = lead == 0xED ? 0x9F : (lead == 0xF4 ? 0x8F : 0xBF);
    char32_t character = lead & (0x7FU >> length);
    for (size_t i = 1; i < length; ++i) {
        if (bytes + i == end) {
            return {Utf8Step::kCut, i, kReplacement};
        }
        if (bytes[i] < least || bytes[i] > greatest) {
            return {Utf8Step::kBroken, i, kReplacement};
        }
        character = (character << 6) | (bytes[i] & 0x3FU);
        least = 0x80;
        greatest = 0xBF;
    }
    return {Utf8Step::kWhole, length, character};
}

namespace {

char32_t ScalarValue(wxUniChar character) {
    const char32_t point = character.GetValue();
    return IsScalarValue(point) ? point : kReplacement;
}

size_t Utf8Length(char32_t point) {
    return point < 0x80 ? 1 : (point < 0x800 ? 2 : (point < 0x10000 ? 3 : 4));
}

}  // namespace

// Sizes the text first, as an import converts several texts for each card.
std::string ToUtf8(const wxString& text) {
    size_t length = 0;
    for (const wxUniChar character : text) {
        length += Utf8Length(ScalarValue(character));
    }
    std::string bytes(length, '\0');
    char* out = bytes.data();
    for (const wxUniChar character : text) {
        out = PutUtf8(ScalarValue(character), out);
    }
    return bytes;
}

std::u16string ToUtf16(const wxString& text) {
    std::u16string units;
    units.reserve(text.length());
    for (const wxUniChar character : text) {
        const char32_t point = ScalarValue(character);
        if (point < 0x10000) {
            units.push_back(static_cast<char16_t>(point));
        } else {
            units.push_back(static_cast<char16_t>(0xD7C0 + (point >> 10)));
            units.push_back(static_cast<char16_t>(0xDC00 + (point & 0x3FF)));
        }
    }
    return units;
}

wxString FromUtf16(std::u16string_view units) {
    std::wstring text;
    text.reserve(units.size());
    for (size_t i = 0; i < units.size(); ++i) {
        const char32_t unit = units[i];
        const char32_t next = i + 1 < units.size() ? units[i + 1] : 0;
        const bool isPair = unit >= 0xD800 && unit < 0xDC00 && next >= 0xDC00 && next < 0xE000;
        const char32_t point = isPair ? 0x10000 + ((unit - 0xD800) << 10) + (next - 0xDC00) : unit;
        i += isPair ? 1 : 0;
        text.push_back(static_cast<wchar_t>(IsScalarValue(point) ? point : kReplacement));
    }
    return wxString(text);
}

wxString FromUtf8(const char* bytes, size_t length) {
    const auto* at = reinterpret_cast<const uint8_t*>(bytes);
    const uint8_t* const end = at + length;
    std::wstring text;
    text.reserve(length);
    while (at != end) {
        const Utf8Step step = ReadUtf8(at, end);
        text.push_back(static_cast<wchar_t>(step.Character));
        at += step.Length;
    }
    return wxString(text);
}

wxString FromUtf8(const std::string& bytes) {
    return FromUtf8(bytes.data(), bytes.length());
}
