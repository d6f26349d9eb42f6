#include "exchange/TextSink.h"

#include <wx/stream.h>

#include <algorithm>
#include <cstdint>

namespace {

constexpr size_t kBlockSize = size_t{1} << 16;
// No character takes more bytes, with the carriage return before it.
constexpr size_t kLongestCharacter = 8;
#ifdef __WINDOWS__
constexpr bool kEndsLinesWithReturn = true;
#else
constexpr bool kEndsLinesWithReturn = false;
#endif

uint32_t ToScalar(wxUniChar character) {
    const uint32_t point = character.GetValue();
    const bool isScalar = point != 0 && (point < 0xD800 || (point > 0xDFFF && point <= 0x10FFFF));
    return isScalar ? point : 0xFFFD;
}

char* Put(char* out, uint32_t byte) {
    *out = static_cast<char>(byte);
    return out + 1;
}

char* EncodeUtf8(wchar_t character, char* out) {
    const uint32_t point = ToScalar(character);
    if (point < 0x80) {
        return Put(out, point);
    }
    if (point < 0x800) {
        out = Put(out, 0xC0 | (point >> 6));
        return Put(out, 0x80 | (point & 0x3F));
    }
    if (point < 0x10000) {
        out = Put(out, 0xE0 | (point >> 12));
    } else {
        out = Put(out, 0xF0 | (point >> 18));
        out = Put(out, 0x80 | ((point >> 12) & 0x3F));
    }
    out = Put(out, 0x80 | ((point >> 6) & 0x3F));
    return Put(out, 0x80 | (point & 0x3F));
}

template <bool bigEndian>
char* PutUnit(char* out, uint32_t unit) {
    const uint32_t high = unit >> 8;
    const uint32_t low = unit & 0xFF;
    out = Put(out, bigEndian ? high : low);
    return Put(out, bigEndian ? low : high);
}

template <bool bigEndian>
char* EncodeUtf16(wchar_t character, char* out) {
    const uint32_t point = ToScalar(character);
    if (point < 0x10000) {
        return PutUnit<bigEndian>(out, point);
    }
    out = PutUnit<bigEndian>(out, 0xD7C0 + (point >> 10));
    return PutUnit<bigEndian>(out, 0xDC00 + (point & 0x3FF));
}

template <char* encode(wchar_t character, char* out)>
char* EncodeRun(std::wstring_view text, char* out) {
    for (const wchar_t character : text) {
        if (kEndsLinesWithReturn && character == L'\n') {
            out = encode(L'\r', out);
        }
        out = encode(character, out);
    }
    return out;
}

}  // namespace

void StringSink::Write(std::wstring_view text) {
    const size_t begin = mText.size();
    mText.append(text);
    for (size_t i = begin; i < mText.size(); ++i) {
        mText[i] = static_cast<wchar_t>(ToScalar(mText[i]));
    }
}

EncodedSink::EncodedSink(wxOutputStream& stream, wxFontEncoding encoding)
    : mStream(stream), mEncode(EncodeRun<EncodeUtf8>), mBlock(kBlockSize, '\0') {
    if (encoding == wxFONTENCODING_UTF16LE) {
        mEncode = EncodeRun<EncodeUtf16<false>>;
    } else if (encoding == wxFONTENCODING_UTF16BE) {
        mEncode = EncodeRun<EncodeUtf16<true>>;
    }
}

void EncodedSink::Write(std::wstring_view text) {
    while (!text.empty()) {
        // Characters that find room in the block, however long they are.
        const size_t count = std::min(text.size(), (mBlock.size() - mHeld) / kLongestCharacter);
        if (count == 0) {
            Flush();
            continue;
        }
        const char* const end = mEncode(text.substr(0, count), mBlock.data() + mHeld);
        mHeld = static_cast<size_t>(end - mBlock.data());
        text.remove_prefix(count);
    }
}

bool EncodedSink::Flush() {
    mIsOk = mIsOk && mStream.WriteAll(mBlock.data(), mHeld);
    mHeld = 0;
    return mIsOk;
}
