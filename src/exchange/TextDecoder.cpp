#include "exchange/TextDecoder.h"

#include <cstring>

namespace {

constexpr char32_t kReplacement = 0xFFFD;

void Append(wchar_t*& text, char32_t character) {
    if (character == 0) {
        character = kReplacement;
    }
    if constexpr (sizeof(wchar_t) == 2) {
        if (character > 0xFFFF) {
            *text++ = static_cast<wchar_t>(0xD7C0 + (character >> 10));
            *text++ = static_cast<wchar_t>(0xDC00 + (character & 0x3FF));
            return;
        }
    }
    *text++ = static_cast<wchar_t>(character);
}

enum class Sequence { kWhole, kBroken, kCut };

struct Utf8Step {
    Sequence Kind;
    size_t Length;
    char32_t Character;
};

// The sequence at the front of the bytes, of which there is at least one. A broken sequence is as
// long as it could have been the beginning of a character.
Utf8Step ReadUtf8(const uint8_t* bytes, const uint8_t* end) {
    const uint8_t lead = *bytes;
    if (lead < 0x80) {
        return {Sequence::kWhole, 1, lead};
    }
    if (lead < 0xC2 || lead > 0xF4) {
        return {Sequence::kBroken, 1, kReplacement};
    }
    const size_t length = lead < 0xE0 ? 2 : (lead < 0xF0 ? 3 : 4);
    // The second byte's range leaves out overlong forms, surrogates, and what is past U+10FFFF.
    uint8_t least = lead == 0xE0 ? 0xA0 : (lead == 0xF0 ? 0x90 : 0x80);
    uint8_t greatest = lead == 0xED ? 0x9F : (lead == 0xF4 ? 0x8F : 0xBF);
    char32_t character = lead & (0x7FU >> length);
    for (size_t i = 1; i < length; ++i) {
        if (bytes + i == end) {
            return {Sequence::kCut, i, kReplacement};
        }
        if (bytes[i] < least || bytes[i] > greatest) {
            return {Sequence::kBroken, i, kReplacement};
        }
        character = (character << 6) | (bytes[i] & 0x3FU);
        least = 0x80;
        greatest = 0xBF;
    }
    return {Sequence::kWhole, length, character};
}

size_t DecodeUtf8(const uint8_t* begin, const uint8_t* end, bool last, wchar_t*& text) {
    const uint8_t* at = begin;
    while (at != end) {
        if (*at < 0x80) {
            Append(text, *at++);
            continue;
        }
        const Utf8Step step = ReadUtf8(at, end);
        if (step.Kind == Sequence::kCut && !last) {
            break;
        }
        Append(text, step.Character);
        at += step.Length;
    }
    return static_cast<size_t>(at - begin);
}

template <bool kBigEndian>
size_t DecodeUtf16(const uint8_t* begin, const uint8_t* end, bool last, wchar_t*& text) {
    const auto unit = [](const uint8_t* at) -> char32_t {
        return kBigEndian ? char32_t{at[0]} << 8 | at[1] : char32_t{at[1]} << 8 | at[0];
    };
    const uint8_t* at = begin;
    while (end - at >= 2) {
        const char32_t first = unit(at);
        const bool isHigh = first >= 0xD800 && first < 0xDC00;
        if (isHigh && end - at < 4 && !last) {
            break;
        }
        const char32_t second = isHigh && end - at >= 4 ? unit(at + 2) : 0;
        if (second >= 0xDC00 && second < 0xE000) {
            Append(text, 0x10000 + ((first - 0xD800) << 10) + (second - 0xDC00));
            at += 4;
        } else {
            Append(text, first >= 0xD800 && first < 0xE000 ? kReplacement : first);
            at += 2;
        }
    }
    if (last && at != end) {
        Append(text, kReplacement);
        at = end;
    }
    return static_cast<size_t>(at - begin);
}

const uint8_t* SkipAscii(const uint8_t* at, const uint8_t* end) {
    constexpr uint64_t kHighBits = 0x8080808080808080;
    uint64_t eight = 0;
    while (end - at >= 8) {
        std::memcpy(&eight, at, 8);
        if ((eight & kHighBits) != 0) {
            break;
        }
        at += 8;
    }
    while (at != end && *at < 0x80) {
        ++at;
    }
    return at;
}

// Characters of the bytes 80 to 9F. The five that the code page leaves open stand for themselves,
// so that no byte is lost.
constexpr char32_t kWindows1252[32] = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

size_t DecodeWindows1252(const uint8_t* begin, const uint8_t* end, bool, wchar_t*& text) {
    for (const uint8_t* at = begin; at != end; ++at) {
        Append(text, *at >= 0x80 && *at < 0xA0 ? kWindows1252[*at - 0x80] : *at);
    }
    return static_cast<size_t>(end - begin);
}

}  // namespace

TextDecoder::TextDecoder(wxFontEncoding encoding) : mDecode(&DecodeWindows1252) {
    if (encoding == wxFONTENCODING_UTF8) {
        mDecode = &DecodeUtf8;
    } else if (encoding == wxFONTENCODING_UTF16LE) {
        mDecode = &DecodeUtf16<false>;
    } else if (encoding == wxFONTENCODING_UTF16BE) {
        mDecode = &DecodeUtf16<true>;
    }
}

size_t CheckUtf8(const uint8_t* bytes, size_t count, bool last, bool& valid) {
    const uint8_t* const end = bytes + count;
    const uint8_t* at = bytes;
    while (valid) {
        at = SkipAscii(at, end);
        if (at == end) {
            break;
        }
        const Utf8Step step = ReadUtf8(at, end);
        if (step.Kind == Sequence::kCut && !last) {
            break;
        }
        valid = step.Kind == Sequence::kWhole;
        at += step.Length;
    }
    return static_cast<size_t>(at - bytes);
}
