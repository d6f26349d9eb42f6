#include "base/Text.h"

#include <wx/filename.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <cwctype>
#include <limits>
#include <string>

bool IsWideSpace(wchar_t character) {
    switch (character) {
        case L'\u00A0':
        case L'\u2007':
        case L'\u202F':
        case L'\u3000':
            return true;
        default:
            return std::iswspace(static_cast<std::wint_t>(character)) != 0;
    }
}

std::wstring_view TrimView(std::wstring_view text) {
    while (!text.empty() && IsWideSpace(text.front())) {
        text.remove_prefix(1);
    }
    while (!text.empty() && IsWideSpace(text.back())) {
        text.remove_suffix(1);
    }
    return text;
}

wxString TrimWide(const wxString& text) {
    const std::wstring_view trimmed = TrimView({text.wc_str(), text.length()});
    return {trimmed.data(), trimmed.size()};
}

wchar_t LowerWide(wchar_t character) {
    if (character < 0x80) {
        return character >= L'A' && character <= L'Z' ? static_cast<wchar_t>(character | 0x20)
                                                      : character;
    }
    return static_cast<wchar_t>(std::towlower(static_cast<std::wint_t>(character)));
}

wxString LowerWide(const wxString& text) {
    std::wstring lower = text.ToStdWstring();
    for (wchar_t& character : lower) {
        character = LowerWide(character);
    }
    return wxString(lower);
}

wxString CutWithEllipsis(const wxString& text, size_t most) {
    return text.length() <= most ? text : text.Left(most - 1) + wxUniChar(0x2026);
}

namespace {

// More characters than any column shows.
constexpr size_t kLongestCell = 500;
constexpr size_t kLongestName = 200;

bool BreaksLine(wxUniChar character) {
    const wxUniChar::value_type code = character.GetValue();
    return code < 0x20 || code == 0x7F || code == 0x85 || code == 0x2028 || code == 0x2029;
}

wxString FirstOnOneLine(const wxString& text, size_t count) {
    wxString line = text.Left(count);
    for (wxString::iterator character = line.begin(); character != line.end(); ++character) {
        if (BreaksLine(*character)) {
            *character = ' ';
        }
    }
    return line;
}

}  // namespace

wxString CellText(const wxString& text) {
    return FirstOnOneLine(text, kLongestCell);
}

wxString ShownName(const wxString& name) {
    return FirstOnOneLine(CutWithEllipsis(name, kLongestName), kLongestName);
}

wxString FullPath(const wxString& path) {
    wxFileName name(path);
    name.MakeAbsolute();
    return name.GetFullPath();
}

namespace {

bool IsDigit(wchar_t character) {
    return character >= L'0' && character <= L'9';
}

// The shape of a number at the front of a text: the place of its digits, and whether a minus
// precedes them.
struct Digits {
    const wchar_t* first;
    const wchar_t* last;
    bool negative;
};

Digits FindDigits(const wchar_t* text, const wchar_t* end) {
    while (text != end && IsWideSpace(*text)) {
        ++text;
    }
    bool negative = false;
    if (text != end && (*text == L'-' || *text == L'+')) {
        negative = *text == L'-';
        ++text;
    }
    const wchar_t* const last = std::find_if_not(text, end, IsDigit);
    return {text, last, negative};
}

// Returns the magnitude of the digits, at most limit + 1, which means "too great".
uint64_t Magnitude(const Digits& digits, uint64_t limit) {
    uint64_t magnitude = 0;
    for (const wchar_t* digit = digits.first; digit != digits.last; ++digit) {
        magnitude = magnitude * 10 + static_cast<uint64_t>(*digit - L'0');
        if (magnitude > limit) {
            return limit + 1;
        }
    }
    return magnitude;
}

// Returns the number of a 32-bit unsigned conversion: saturated, and negated modulo 2^32.
uint32_t UnsignedValue(const Digits& digits) {
    constexpr uint64_t kLimit = std::numeric_limits<uint32_t>::max();
    const uint64_t magnitude = Magnitude(digits, kLimit);
    if (magnitude > kLimit) {
        return std::numeric_limits<uint32_t>::max();
    }
    const auto bits = static_cast<uint32_t>(magnitude);
    return digits.negative ? 0U - bits : bits;
}

}  // namespace

bool ParseWholeNumber(const wxString& text, int32_t& value) {
    if (text.empty()) {
        value = 0;
        return true;
    }
    const wchar_t* const begin = text.wc_str();
    const wchar_t* const end = begin + text.length();
    const Digits digits = FindDigits(begin, end);
    if (digits.first == digits.last || digits.last != end) {
        return false;
    }
    value = static_cast<int32_t>(UnsignedValue(digits));
    return true;
}

bool ParseDecimal(const wxString& text, double& value) {
    if (text.empty()) {
        value = 0.0;
        return true;
    }
    const wchar_t* const begin = text.wc_str();
    const wchar_t* const end = begin + text.length();
    const wchar_t* at = std::find_if_not(begin, end, IsWideSpace);
    bool negative = false;
    if (at != end && (*at == L'-' || *at == L'+')) {
        negative = *at == L'-';
        ++at;
    }
    std::string ascii;
    for (; at != end; ++at) {
        const bool plain =
            IsDigit(*at) || *at == L'.' || *at == L'e' || *at == L'E' || *at == L'+' || *at == L'-';
        if (!plain) {
            return false;
        }
        ascii.push_back(static_cast<char>(*at));
    }
    // from_chars takes no leading sign but a minus, and ours is already read.
    if (ascii.empty() || ascii.front() == '-') {
        return false;
    }
    double number = 0.0;
    const auto result = std::from_chars(ascii.data(), ascii.data() + ascii.size(), number);
    if (result.ptr != ascii.data() + ascii.size()) {
        return false;
    }
    if (result.ec == std::errc::result_out_of_range) {
        // A number too small counts as 0; one too great has no value.
        number = std::strtod(ascii.c_str(), nullptr);
        if (std::isinf(number)) {
            return false;
        }
    } else if (result.ec != std::errc()) {
        return false;
    }
    value = negative ? -number : number;
    return true;
}

bool ParseLeadingInteger(const wxString& text, int32_t& value, size_t& rest) {
    const wchar_t* const begin = text.wc_str();
    const Digits digits = FindDigits(begin, begin + text.length());
    if (digits.first == digits.last) {
        return false;
    }
    const uint64_t limit =
        static_cast<uint64_t>(std::numeric_limits<int32_t>::max()) + (digits.negative ? 1U : 0U);
    const int64_t magnitude = static_cast<int64_t>(std::min(Magnitude(digits, limit), limit));
    value = static_cast<int32_t>(digits.negative ? -magnitude : magnitude);
    rest = static_cast<size_t>(digits.last - begin);
    return true;
}

uint32_t ReadUnsigned(const wxString& text, size_t& position) {
    const wchar_t* const begin = text.wc_str();
    const Digits digits = FindDigits(begin + position, begin + text.length());
    if (digits.first == digits.last) {
        return 0;
    }
    position = static_cast<size_t>(digits.last - begin);
    return UnsignedValue(digits);
}
