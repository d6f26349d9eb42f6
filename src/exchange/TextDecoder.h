#pragma once

#include <wx/fontenc.h>

#include <cstddef>
#include <cstdint>

// Turns the bytes of a text file into characters. No input stops it: what is no character of the
// encoding (a broken sequence, half a surrogate pair, an odd byte at the end) becomes U+FFFD, one
// for each broken part. So does the character NUL, which would cut a card's text in the windows and
// in the functions of SQL; a text that was decoded never holds a NUL.
class TextDecoder {
  public:
    // UTF-8, UTF-16 in either byte order; anything else counts as Windows-1252.
    explicit TextDecoder(wxFontEncoding encoding);

    // Writes the characters of the bytes, which are no more than the bytes, and moves text behind
    // them. Returns how many bytes that took: the beginning of a character at the end of the bytes
    // is left for the next call, unless these are the last bytes.
    size_t Decode(const uint8_t* bytes, size_t count, bool last, wchar_t*& text) const {
        return mDecode(bytes, bytes + count, last, text);
    }

  private:
    using DecodeFunction = size_t (*)(const uint8_t* begin, const uint8_t* end, bool last,
                                      wchar_t*& text);
    DecodeFunction mDecode;
};

// How many bytes at the front were looked at for being UTF-8: up to the first broken sequence,
// which clears valid, else all but the beginning of a character at their end, unless these are the
// last.
size_t CheckUtf8(const uint8_t* bytes, size_t count, bool last, bool& valid);
