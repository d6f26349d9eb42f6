#include "base/Text.h"

#include <cwctype>

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

wxString TrimWide(const wxString& text) {
    const wchar_t* const begin = text.wc_str();
    const wchar_t* first = begin;
    const wchar_t* last = begin + text.length();
    while (first != last && IsWideSpace(*first)) {
        ++first;
    }
    while (last != first && IsWideSpace(last[-1])) {
        --last;
    }
    return wxString(first, static_cast<size_t>(last - first));
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
    return text.length() <= most ? text : text.Left(most) + wxUniChar(0x2026);
}

namespace {

// More than any column shows.
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
    if (name.length() <= kLongestName) {
        return FirstOnOneLine(name, kLongestName);
    }
    return FirstOnOneLine(name, kLongestName - 1) + wxUniChar(0x2026);
}
