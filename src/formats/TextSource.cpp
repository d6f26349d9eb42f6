#include "formats/TextSource.h"

#include <iconv.h>
#include <wx/stream.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <vector>

#include "base/Unicode.h"
#include "formats/TextEncoding.h"

namespace {

// Reads past the bytes of a mark, or leaves the stream where it is.
bool ReadMark(wxInputStream& stream, std::initializer_list<uint8_t> mark) {
    const wxFileOffset start = stream.TellI();
    for (const uint8_t expected : mark) {
        uint8_t byte = 0;
        stream.Read(&byte, 1);
        if (stream.LastRead() != 1 || byte != expected) {
            stream.SeekI(start);
            return false;
        }
    }
    return true;
}

}  // namespace

wxFontEncoding DetectTextEncoding(wxInputStream& stream) {
    if (ReadMark(stream, {0xEF, 0xBB, 0xBF})) {
        return wxFONTENCODING_UTF8;
    }
    if (ReadMark(stream, {0xFF, 0xFE})) {
        return wxFONTENCODING_UTF16LE;
    }
    if (ReadMark(stream, {0xFE, 0xFF})) {
        return wxFONTENCODING_UTF16BE;
    }
    return wxFONTENCODING_SYSTEM;
}

wxFontEncoding GuessTextEncoding(wxInputStream& stream, wxFileOffset limit) {
    const wxFileOffset start = stream.TellI();
    std::vector<uint8_t> bytes(size_t{1} << 16);
    size_t held = 0;
    bool last = false;
    bool valid = true;
    wxFileOffset left = limit;
    while (!last && valid && (limit == wxInvalidOffset || left > 0)) {
        stream.Read(bytes.data() + held, bytes.size() - held);
        last = stream.LastRead() == 0;
        held += stream.LastRead();
        left -= static_cast<wxFileOffset>(stream.LastRead());
        const size_t seen = CheckUtf8(bytes.data(), held, last, valid);
        std::copy(bytes.data() + seen, bytes.data() + held, bytes.data());
        held -= seen;
    }
    stream.SeekI(start);
    return valid ? wxFONTENCODING_UTF8 : wxFONTENCODING_CP1252;
}

namespace {

void Append(wchar_t*& text, char32_t character) {
    if (character == 0) {
        character = kReplacement;
    }
    if constexpr (sizeof(wchar_t) == 2) {
        if (character > 0xFFFF) {
            *text++ = static_cast<wchar_t>(0xD7C0 + (character >> 10));
            *text++ = static_cast<wchar_t>(0xDC00 + (character & 0x3FF));
            return;
        }
    }
    *text++ = static_cast<wchar_t>(character);
}

size_t DecodeUtf8(const uint8_t* begin, const uint8_t* end, bool last, wchar_t*& text) {
    const uint8_t* at = begin;
    while (at != end) {
        if (*at < 0x80) {
            Append(text, *at++);
            continue;
        }
        const Utf8Step step = ReadUtf8(at, end);
        if (step.What == Utf8Step::kCut && !last) {
            break;
        }
        Append(text, step.Character);
        at += step.Length;
    }
    return static_cast<size_t>(at - begin);
}

template <bool kBigEndian>
size_t DecodeUtf16(const uint8_t* begin, const uint8_t* end, bool last, wchar_t*& text) {
    const auto unit = [](const uint8_t* at) -> char32_t {
        return kBigEndian ? char32_t{at[0]} << 8 | at[1] : char32_t{at[1]} << 8 | at[0];
    };
    const uint8_t* at = begin;
    while (end - at >= 2) {
        const char32_t first = unit(at);
        const bool isHigh = first >= 0xD800 && first < 0xDC00;
        if (isHigh && end - at < 4 && !last) {
            break;
        }
        const char32_t second = isHigh && end - at >= 4 ? unit(at + 2) : 0;
        if (second >= 0xDC00 && second < 0xE000) {
            Append(text, 0x10000 + ((first - 0xD800) << 10) + (second - 0xDC00));
            at += 4;
        } else {
            Append(text, first >= 0xD800 && first < 0xE000 ? kReplacement : first);
            at += 2;
        }
    }
    if (last && at != end) {
        Append(text, kReplacement);
        at = end;
    }
    return static_cast<size_t>(at - begin);
}

const uint8_t* SkipAscii(const uint8_t* at, const uint8_t* end) {
    constexpr uint64_t kHighBits = 0x8080808080808080;
    uint64_t eight = 0;
    while (end - at >= 8) {
        std::memcpy(&eight, at, 8);
        if ((eight & kHighBits) != 0) {
            break;
        }
        at += 8;
    }
    while (at != end && *at < 0x80) {
        ++at;
    }
    return at;
}

// The characters of the bytes 80 to 9F. The code page leaves five of them open; these stand for
// themselves, so that no byte is lost.
constexpr char32_t kWindows1252[32] = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

size_t DecodeWindows1252(const uint8_t* begin, const uint8_t* end, bool, wchar_t*& text) {
    for (const uint8_t* at = begin; at != end; ++at) {
        Append(text, *at >= 0x80 && *at < 0xA0 ? kWindows1252[*at - 0x80] : *at);
    }
    return static_cast<size_t>(end - begin);
}

}  // namespace

TextDecoder::TextDecoder(wxFontEncoding encoding) : mDecode(&DecodeWindows1252) {
    if (encoding == wxFONTENCODING_UTF8) {
        mDecode = &DecodeUtf8;
    } else if (encoding == wxFONTENCODING_UTF16LE) {
        mDecode = &DecodeUtf16<false>;
    } else if (encoding == wxFONTENCODING_UTF16BE) {
        mDecode = &DecodeUtf16<true>;
    } else if (const char* const charset = FindCharset(encoding); charset != nullptr) {
        const iconv_t converter = iconv_open("WCHAR_T", charset);
        // The value for a failure in POSIX. NOLINTNEXTLINE(performance-no-int-to-ptr)
        if (converter != reinterpret_cast<iconv_t>(-1)) {
            mConverter = converter;
            mDecode = nullptr;
        }
    }
}

TextDecoder::~TextDecoder() {
    if (mConverter != nullptr) {
        iconv_close(mConverter);
    }
}

size_t TextDecoder::Convert(const uint8_t* bytes, size_t count, bool last, wchar_t*& text) const {
    // The library's interface is older than const; it does not write to the bytes.
    char* in = const_cast<char*>(reinterpret_cast<const char*>(bytes));
    size_t left = count;
    while (left > 0) {
        wchar_t* const begin = text;
        char* out = reinterpret_cast<char*>(text);
        size_t room = (left + 1) * sizeof(wchar_t);
        const size_t result = iconv(mConverter, &in, &left, &out, &room);
        text = reinterpret_cast<wchar_t*>(out);
        std::replace(begin, text, L'\0', static_cast<wchar_t>(kReplacement));
        if (result != static_cast<size_t>(-1)) {
            break;
        }
        if (errno == EINVAL && !last) {
            return count - left;
        }
        Flush(text);
        Append(text, kReplacement);
        ++in;
        --left;
    }
    if (last) {
        Flush(text);
    }
    return count;
}

// Where accents follow their letters, as in Hebrew and Vietnamese, the library holds a letter back
// until it has seen what follows.
void TextDecoder::Flush(wchar_t*& text) const {
    char* out = reinterpret_cast<char*>(text);
    size_t room = sizeof(wchar_t);
    iconv(mConverter, nullptr, nullptr, &out, &room);
    text = reinterpret_cast<wchar_t*>(out);
}

size_t CheckUtf8(const uint8_t* bytes, size_t count, bool last, bool& valid) {
    const uint8_t* const end = bytes + count;
    const uint8_t* at = bytes;
    while (valid) {
        at = SkipAscii(at, end);
        if (at == end) {
            break;
        }
        const Utf8Step step = ReadUtf8(at, end);
        if (step.What == Utf8Step::kCut && !last) {
            break;
        }
        valid = step.What == Utf8Step::kWhole;
        at += step.Length;
    }
    return static_cast<size_t>(at - bytes);
}

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
      mText(kBlockSize + 1) {
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
