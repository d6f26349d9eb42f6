#include "exchange/CharSource.h"

#include <wx/stream.h>

#include <algorithm>

#include "exchange/TextEncoding.h"

namespace {

constexpr size_t kBlockSize = size_t{1} << 15;

bool IsLineBreak(wchar_t character) {
    return character == L'\n' || character == L'\r';
}

}  // namespace

CharSource::CharSource(wxInputStream& stream, wxFontEncoding encoding)
    : mStream(stream),
      mDecoder(encoding == wxFONTENCODING_SYSTEM ? GuessTextEncoding(stream) : encoding),
      mLength(stream.GetLength()),
      mBlockStart(stream.TellI()),
      mBytes(kBlockSize),
      mText(kBlockSize) {
    StartRecord();
}

void CharSource::LimitToPreview() {
    mLastStart = mBlockStart + (wxFileOffset{1} << 18);
    mGreatestLength = size_t{1} << 22;
}

void CharSource::StartRecord(size_t longest) {
    mRecordSize = 0;
    mLongestRecord = longest;
    if (mBlockStart > mLastStart) {
        mEnded = true;
        mNext = mTextSize;
    }
}

bool CharSource::Fill() {
    while (!mEnded) {
        std::copy(mBytes.data() + mBlockSize, mBytes.data() + mHeld, mBytes.data());
        mHeld -= mBlockSize;
        mBlockStart += static_cast<wxFileOffset>(mBlockSize);
        mStream.Read(mBytes.data() + mHeld, mBytes.size() - mHeld);
        mHeld += mStream.LastRead();
        mEnded = mStream.LastRead() == 0;
        if (mStream.GetLastError() == wxSTREAM_READ_ERROR) {
            mFailure = kUnreadable;
        }
        wchar_t* textEnd = mText.data();
        mBlockSize = mDecoder.Decode(mBytes.data(), mHeld, mEnded, textEnd);
        mTextSize = static_cast<size_t>(textEnd - mText.data());
        mNext = 0;
        mRecordSize += mTextSize;
        if (mRecordSize > mLongestRecord) {
            mFailure = kTooLong;
            mEnded = true;
            mTextSize = 0;
        }
        if (mTextSize > 0) {
            return true;
        }
    }
    return false;
}

void CharSource::ReadLine(std::wstring& line) {
    line.clear();
    while (!AtEnd()) {
        const wchar_t* const begin = mText.data() + mNext;
        const wchar_t* const end = mText.data() + mTextSize;
        const wchar_t* const lineBreak = std::find_if(begin, end, IsLineBreak);
        line.append(begin, lineBreak);
        mNext += static_cast<size_t>(lineBreak - begin);
        if (lineBreak != end) {
            ++mNext;
            const bool isReturn = *lineBreak == L'\r';
            if (isReturn && !AtEnd() && mText[mNext] == L'\n') {
                ++mNext;
            }
            return;
        }
    }
}

float CharSource::GetProgress() const {
    if (mLength <= 0) {
        return 1.0f;
    }
    double position = static_cast<double>(mBlockStart);
    if (mTextSize > 0) {
        position += static_cast<double>(mBlockSize) * static_cast<double>(mNext) /
                    static_cast<double>(mTextSize);
    }
    return std::min(1.0f, static_cast<float>(position / static_cast<double>(mLength)));
}
