#pragma once

#include <wx/string.h>

#include <cstddef>
#include <string>

// The text as UTF-8, of any length and with any NUL in it. A code point that has no such form (a
// half of a surrogate pair, a number past U+10FFFF) becomes U+FFFD, so no text is ever lost whole.
std::string ToUtf8(const wxString& text);
// The same as UTF-16.
std::u16string ToUtf16(const wxString& text);

// The text of the bytes. Every byte that is part of no well-formed sequence becomes U+FFFD.
wxString FromUtf8(const char* bytes, size_t length);
wxString FromUtf8(const std::string& bytes);
