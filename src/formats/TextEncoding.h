#pragma once

#include <wx/filefn.h>
#include <wx/fontenc.h>
#include <wx/string.h>

#include <cstddef>
#include <string_view>
#include <vector>

class wxInputStream;

// An encoding that a table may be read in.
struct TextEncoding {
    wxFontEncoding Code;
    // The name by which the C library knows it.
    const char* Charset;
    // The people it was made for; to be translated.
    const char* Region;
};

// Returns the encodings that a person may choose, in the order of a list.
const std::vector<TextEncoding>& GetTextEncodings();

// Returns the name of an encoding for a list, such as "Japanese (Shift_JIS)".
wxString DescribeEncoding(const TextEncoding& encoding);

// Returns the name by which the C library converts an encoding, or null for those converted here
// (UTF-8, UTF-16, Windows-1252) and those not in the list.
const char* FindCharset(wxFontEncoding encoding);

// Finds the encoding of a text that has no mark, from its first bytes: UTF-16 by its zero bytes,
// UTF-8 by its form, others by how often their letters follow one another. Returns
// wxFONTENCODING_SYSTEM for UTF-8, and when Windows-1252 fits as well as any: a CharSource then
// decides between the two by the whole text.
wxFontEncoding RecognizeEncoding(std::string_view bytes);

// The same for a stream, which stays where it is.
wxFontEncoding RecognizeEncoding(wxInputStream& stream);

// Returns whether a text without a mark shows by its own bytes that it is in this encoding, so that
// no letters have to be compared.
bool IsEncodingCertain(wxFontEncoding encoding);

// Finds an encoding of the list by its name among programs, such as "shift_jis". Returns
// wxFONTENCODING_SYSTEM for a name that is not known.
wxFontEncoding FindEncoding(const wxString& charset);
