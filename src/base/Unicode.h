#pragma once

#include <wx/string.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

// Texts are characters inside the program and bytes or 16-bit units outside of it. Nothing from
// outside is refused: what is no character becomes U+FFFD, so no text is ever lost as a whole.

constexpr char32_t kReplacement = 0xFFFD;

// Returns whether the number is a character: no half of a surrogate pair, nothing past U+10FFFF.
constexpr bool IsScalarValue(char32_t point) {
    return point < 0xD800 || (point > 0xDFFF && point <= 0x10FFFF);
}

// Writes a character as UTF-8, which takes up to four bytes, and returns the end.
inline char* PutUtf8(char32_t point, char* out) {
    const auto put = [&out](char32_t byte) { *out++ = static_cast<char>(byte); };
    if (point < 0x80) {
        put(point);
        return out;
    }
    if (point < 0x800) {
        put(0xC0 | (point >> 6));
    } else {
        if (point < 0x10000) {
            put(0xE0 | (point >> 12));
        } else {
            put(0xF0 | (point >> 18));
            put(0x80 | ((point >> 12) & 0x3F));
        }
        put(0x80 | ((point >> 6) & 0x3F));
    }
    put(0x80 | (point & 0x3F));
    return out;
}

// One character of a text in UTF-8, or a part that is not a character.
struct Utf8Step {
    enum Kind {
        kWhole,
        kBroken,
        // The bytes end within a possible character.
        kCut
    };
    Kind What;
    // The bytes it takes, at least 1.
    size_t Length;
    // U+FFFD unless it is whole.
    char32_t Character;
};

// Reads the front of the bytes, of which there is at least one. A broken part is as long as it
// could have been the beginning of a character: E6 BC "z" is one broken part of two bytes and a z,
// ED A0 80 (a surrogate) is three broken parts. Every reader of the program counts like this, so
// that the same broken file shows as many U+FFFD everywhere.
Utf8Step ReadUtf8(const uint8_t* bytes, const uint8_t* end);

// Returns the text as UTF-8, of any length and with any NUL in it.
std::string ToUtf8(const wxString& text);
// Returns the text as UTF-16.
std::u16string ToUtf16(const wxString& text);

// Returns the text of the units. A half of a surrogate pair becomes U+FFFD.
wxString FromUtf16(std::u16string_view units);

// Returns the text of the bytes, NULs included.
wxString FromUtf8(const char* bytes, size_t length);
wxString FromUtf8(const std::string& bytes);
