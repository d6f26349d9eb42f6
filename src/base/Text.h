#pragma once

#include <wx/string.h>

#include <cstddef>
#include <string_view>

// White space as the whole program sees it: what the platform's wide classification calls space,
// and with it U+00A0, U+2007, U+202F and U+3000, which some platforms leave out.
bool IsWideSpace(wchar_t character);

// The text without the white space at both of its ends.
wxString TrimWide(const wxString& text);

// Every letter in lower case, character by character (towlower), whatever the script. The letters A
// to Z become a to z in every locale: in Turkish and its relatives towlower makes a dotless i of
// the capital I, which would break the names of attributes and searches for such words as "MIT".
wchar_t LowerWide(wchar_t character);
wxString LowerWide(const wxString& text);

// The part of a text between the white space at both of its ends.
inline std::wstring_view TrimView(std::wstring_view text) {
    while (!text.empty() && IsWideSpace(text.front())) {
        text.remove_prefix(1);
    }
    while (!text.empty() && IsWideSpace(text.back())) {
        text.remove_suffix(1);
    }
    return text;
}

// Returns the text, or its first characters and an ellipsis when it has more than that many.
wxString CutWithEllipsis(const wxString& text, size_t most);

// What is shown of a text that may be of any length and have line breaks in it, on one line and
// bounded, so that drawing is quick and a dialog keeps its size. The store has the whole text.

// For a cell of a list, which cuts what does not fit.
wxString CellText(const wxString& text);

// For a name in a row, a menu or a message; what is left out shows as an ellipsis.
wxString ShownName(const wxString& name);
