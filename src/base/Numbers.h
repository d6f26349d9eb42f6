#pragma once

#include <wx/string.h>

#include <cstdint>

// Reads a whole number in base 10: white space, one sign, digits, and then the end of the text.
// The arithmetic is that of a 32-bit unsigned conversion read back as signed: a magnitude beyond
// 4294967295 gives -1, and 2147483648 reads as -2147483648. The empty text is the number 0.
// Returns false, with value unchanged, when anything else is in the text.
bool ParseWholeNumber(const wxString& text, int32_t& value);

// Reads a decimal number with a point and an optional exponent, whatever the locale. White space
// may stand before it. No hexadecimal form, no infinity, no not-a-number; a number too great for a
// double fails. The empty text is 0. Returns false, with value unchanged, on failure.
bool ParseDecimal(const wxString& text, double& value);

// Reads digits at the front of a text, as far as they go, for stored values and widths: white
// space, one sign, digits. Returns false when there is no digit; rest then is unchanged.
// On success rest holds the position behind the last digit. Saturates at the ends of the range.
bool ParseLeadingInteger(const wxString& text, int32_t& value, size_t& rest);

// Reads an unsigned number in base 10 from position on, by the rules of a 32-bit conversion that
// stops at the first character that is no digit: white space, one sign, digits. position then lies
// behind the last digit; without a digit the result is 0 and position stays. A magnitude beyond
// 4294967295 gives 4294967295, and a minus negates modulo 2^32.
uint32_t ReadUnsigned(const wxString& text, size_t& position);
