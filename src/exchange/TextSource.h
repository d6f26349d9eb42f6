#pragma once

#include <wx/filefn.h>
#include <wx/fontenc.h>

#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

class wxInputStream;

// Looks for a byte order mark at the front of a seekable stream: UTF-8, UTF-16LE or UTF-16BE, and
// the mark is read past; otherwise wxFONTENCODING_SYSTEM, and the stream stands where it stood.
wxFontEncoding DetectTextEncoding(wxInputStream& stream);

// The encoding of a text without a mark, by all the bytes from here to the end: UTF-8 when they
// are valid UTF-8, else Windows-1252. The stream then stands where it stood. With a limit no more
// than about as many bytes are looked at.
wxFontEncoding GuessTextEncoding(wxInputStream& stream, wxFileOffset limit = wxInvalidOffset);

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

// The characters of a text file, decoded block by block from a byte stream that it does not own.
// Holds one block however long the file is. No byte of a file ends it early: characters are never
// 0, whatever the file holds, so 0 tells the end.
class CharSource {
  public:
    // The stream is seekable and stands behind its mark, whose encoding DetectTextEncoding gave.
    // For a text without a mark the encoding is found by a look at the whole text.
    CharSource(wxInputStream& stream, wxFontEncoding encoding);

    bool AtEnd() { return mNext == mTextSize && !Fill(); }
    // The next character, or 0 at the end.
    wchar_t GetChar() { return AtEnd() ? L'\0' : mText[mNext++]; }
    // The text up to the next CR, LF, CR LF or the end, without that line break.
    void ReadLine(std::wstring& line);

    // The part of the bytes whose characters were delivered, 0 to 1.
    float GetProgress() const;
    // Why the text ended before its end.
    enum Failure { kNoFailure, kUnreadable, kTooLong };
    Failure GetFailure() const { return mFailure; }

    // For who looks at the first record alone, and must not read a huge file for it: the text ends
    // where a record would begin some blocks behind the start, and a record counts as too long
    // sooner.
    void LimitToPreview();

    // A record begins here. One that goes on for more than 64 million characters, as behind a
    // quote that a huge file never closes, ends the text before it fills the memory.
    void StartRecord() { StartRecord(mGreatestLength); }
    // The same with a limit that takes effect at the end of a block.
    void StartRecord(size_t longest);

  private:
    bool Fill();

    wxInputStream& mStream;
    TextDecoder mDecoder;
    wxFileOffset mLength;
    // Position in the file of the first byte of the present block.
    wxFileOffset mBlockStart;
    // Bytes of the present block, and behind them the beginning of a character yet to come.
    std::vector<uint8_t> mBytes;
    size_t mBlockSize = 0;
    size_t mHeld = 0;
    // Characters of the block, and how many were delivered.
    std::vector<wchar_t> mText;
    size_t mTextSize = 0;
    size_t mNext = 0;
    bool mEnded = false;
    // No record begins in a block behind this position.
    wxFileOffset mLastStart = std::numeric_limits<wxFileOffset>::max();
    size_t mGreatestLength = size_t{1} << 26;
    // Characters of the blocks that were read for the present record.
    size_t mRecordSize = 0;
    size_t mLongestRecord = 0;
    Failure mFailure = kNoFailure;
};
