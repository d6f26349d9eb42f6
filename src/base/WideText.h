#pragma once

#include <wx/string.h>

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
