#pragma once

#include <wx/string.h>

#include <cstddef>
#include <cstdint>
#include <string_view>

// Returns whether the character is white space for the whole program: all that the platform's wide
// classification calls space, and U+00A0, U+2007, U+202F and U+3000, which some platforms leave
// out.
bool IsWideSpace(wchar_t character);

// Returns the text without the white space at both of its ends.
wxString TrimWide(const wxString& text);

// Returns the same as a view into the text.
std::wstring_view TrimView(std::wstring_view text);

// Return every letter in lower case, character by character (towlower), whatever the script. The
// letters A to Z become a to z in every locale: in Turkish and its relatives towlower makes a
// dotless i of the capital I, which would break the names of attributes and searches for such words
// as "MIT".
wchar_t LowerWide(wchar_t character);
wxString LowerWide(const wxString& text);

// Returns the text, or, if it has more than that many characters, its beginning and an ellipsis,
// together that long. The length is at least 1.
wxString CutWithEllipsis(const wxString& text, size_t most);

// The next two shorten a text of any length, with line breaks, to the one bounded line that a
// window shows, so that drawing is quick and a dialog keeps its size.

// For a cell of a list, which cuts a text that does not fit.
wxString CellText(const wxString& text);

// For a name in a row, a menu or a message. An ellipsis replaces the rest.
wxString ShownName(const wxString& name);

// Returns the path from the root of the file system. A relative path counts from the current
// directory, and "~" is the user's home.
wxString FullPath(const wxString& path);

// Reads a whole number in base 10: white space, one sign, digits, and then the end of the text.
// The arithmetic is that of a 32-bit unsigned conversion read back as signed: a magnitude beyond
// 4294967295 gives -1, and 2147483648 reads as -2147483648. The empty text is the number 0.
// Returns false, with value unchanged, when anything else is in the text.
bool ParseWholeNumber(const wxString& text, int32_t& value);

// Reads a decimal number with a point and an optional exponent, whatever the locale. White space
// may stand before it. Hexadecimal forms, infinity, not-a-number and a number too great for a
// double fail. The empty text is 0. Returns false, with value unchanged, on failure.
bool ParseDecimal(const wxString& text, double& value);

// Reads the number at the front of a stored value or width: white space, one sign, digits. Leaves
// in rest the position after the last digit. A number out of range becomes the nearest one in it.
// Returns false, with nothing changed, when there is no digit.
bool ParseLeadingInteger(const wxString& text, int32_t& value, size_t& rest);

// Reads an unsigned number in base 10 from position on, by the rules of a 32-bit conversion that
// stops at the first character that is no digit: white space, one sign, digits. Moves position past
// the last digit; without a digit the result is 0 and position stays. A magnitude beyond 4294967295
// gives 4294967295, and a minus negates modulo 2^32.
uint32_t ReadUnsigned(const wxString& text, size_t& position);
