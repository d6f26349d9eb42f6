#pragma once

#include <wx/filefn.h>
#include <wx/fontenc.h>

class wxInputStream;

// Looks for a byte order mark at the front of a seekable stream: UTF-8, UTF-16LE or UTF-16BE, and
// the mark is read past; otherwise wxFONTENCODING_SYSTEM, and the stream stands where it stood.
wxFontEncoding DetectTextEncoding(wxInputStream& stream);

// The encoding of a text without a mark, by all the bytes from here to the end: UTF-8 when they
// are valid UTF-8, else Windows-1252. The stream then stands where it stood. With a limit no more
// than about as many bytes are looked at.
wxFontEncoding GuessTextEncoding(wxInputStream& stream, wxFileOffset limit = wxInvalidOffset);
