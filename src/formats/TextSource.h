#pragma once

#include <wx/filefn.h>
#include <wx/fontenc.h>

#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

class wxInputStream;

// Looks for a byte order mark at the front of a seekable stream. Reads past the mark of UTF-8,
// UTF-16LE or UTF-16BE; without a mark, leaves the stream where it is and returns
// wxFONTENCODING_SYSTEM.
wxFontEncoding DetectTextEncoding(wxInputStream& stream);

// Returns the encoding of a text without a mark: UTF-8 when all bytes from here to the end are
// valid UTF-8, else Windows-1252. Leaves the stream where it is. A limit bounds how many bytes are
// looked at, to within a block.
wxFontEncoding GuessTextEncoding(wxInputStream& stream, wxFileOffset limit = wxInvalidOffset);

// Turns the bytes of a text file into characters. Never fails: each part that is no character of
// the encoding (a broken sequence, half a surrogate pair, an odd byte at the end) becomes U+FFFD.
// The character NUL becomes U+FFFD too, as it would cut a card's text in the windows and in the
// functions of SQL.
class TextDecoder {
  public:
    // Knows UTF-8, UTF-16 in either byte order, and the encodings that FindCharset has a name for.
    // Anything else counts as Windows-1252.
    explicit TextDecoder(wxFontEncoding encoding);
    ~TextDecoder();
    TextDecoder(const TextDecoder&) = delete;
    TextDecoder& operator=(const TextDecoder&) = delete;

    // Writes the characters of the bytes, at most one more than there are bytes, and moves text to
    // their end. Returns how many bytes that took. A character that is cut off by the end of the
    // bytes is left for the next call, unless these are the last bytes.
    size_t Decode(const uint8_t* bytes, size_t count, bool last, wchar_t*& text) const {
        return mDecode != nullptr ? mDecode(bytes, bytes + count, last, text)
                                  : Convert(bytes, count, last, text);
    }

  private:
    using DecodeFunction = size_t (*)(const uint8_t* begin, const uint8_t* end, bool last,
                                      wchar_t*& text);

    size_t Convert(const uint8_t* bytes, size_t count, bool last, wchar_t*& text) const;
    void Flush(wchar_t*& text) const;

    // Null when the C library converts.
    DecodeFunction mDecode;
    // The C library's conversion (iconv_t), or null.
    void* mConverter = nullptr;
};

// Checks that the bytes are UTF-8 and clears valid at the first broken sequence. Returns how many
// bytes were checked. A character that is cut off by the end of the bytes is left for the next
// call, unless these are the last bytes.
size_t CheckUtf8(const uint8_t* bytes, size_t count, bool last, bool& valid);

// Delivers the characters of a text file. Decodes a byte stream, which it does not own, block by
// block, so that a long file takes no more memory than a short one. No character is 0, whatever is
// in the file, so 0 stands for the end.
class CharSource {
  public:
    // The stream is seekable and DetectTextEncoding has read past its mark. For a text without a
    // mark, the whole text is looked at to find the encoding.
    CharSource(wxInputStream& stream, wxFontEncoding encoding);

    bool AtEnd() { return mNext == mTextSize && !Fill(); }
    // Returns the next character, or 0 at the end.
    wchar_t GetChar() { return AtEnd() ? L'\0' : mText[mNext++]; }
    // Reads up to the next CR, LF, CR LF or the end. The line break is not part of the line.
    void ReadLine(std::wstring& line);

    // Returns the part of the bytes whose characters were delivered, 0 to 1.
    float GetProgress() const;
    // Why a text ended before its file.
    enum Failure { kNoFailure, kUnreadable, kTooLong };
    Failure GetFailure() const { return mFailure; }

    // Keeps a preview from reading a huge file: no record begins more than a few blocks from the
    // start, and a record counts as too long sooner.
    void LimitToPreview();

    // Marks the beginning of a record. A record of more than 64 million characters, as after a
    // quote that a huge file never closes, ends the text before it fills the memory.
    void StartRecord() { StartRecord(mGreatestLength); }
    // The same with another limit, which takes effect at the end of a block.
    void StartRecord(size_t longest);

  private:
    bool Fill();

    wxInputStream& mStream;
    TextDecoder mDecoder;
    wxFileOffset mLength;
    // Position in the file of the first byte of the present block.
    wxFileOffset mBlockStart;
    // The bytes of the present block, followed by the beginning of the next block's first
    // character.
    std::vector<uint8_t> mBytes;
    size_t mBlockSize = 0;
    size_t mHeld = 0;
    // The characters of the block, and how many of them were delivered.
    std::vector<wchar_t> mText;
    size_t mTextSize = 0;
    size_t mNext = 0;
    bool mEnded = false;
    // No record begins in a block after this position.
    wxFileOffset mLastStart = std::numeric_limits<wxFileOffset>::max();
    size_t mGreatestLength = size_t{1} << 26;
    // The number of characters in the blocks of the present record.
    size_t mRecordSize = 0;
    size_t mLongestRecord = 0;
    Failure mFailure = kNoFailure;
};
