#pragma once

#include <wx/filefn.h>
#include <wx/fontenc.h>

#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "exchange/TextDecoder.h"

class wxInputStream;

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
