#include "formats/TextSink.h"

#include <wx/stream.h>

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "base/Unicode.h"

namespace {

constexpr size_t kBlockSize = size_t{1} << 16;
// The most bytes that a unit takes, with the carriage return that Windows puts before a line feed.
constexpr size_t kLongestUnit = 4;
#ifdef __WINDOWS__
constexpr bool kEndsLinesWithReturn = true;
#else
constexpr bool kEndsLinesWithReturn = false;
#endif
// The number of units that are tested and written together. Most texts are plain, so most runs go
// out in one step.
constexpr size_t kRun = 32;

bool IsHighHalf(char16_t unit) {
    return (unit & 0xFC00) == 0xD800;
}

bool IsLowHalf(char16_t unit) {
    return (unit & 0xFC00) == 0xDC00;
}

// Removes the character at the front of the text, which is not empty, and returns it.
char32_t TakeCharacter(std::u16string_view& text) {
    const char16_t first = text.front();
    text.remove_prefix(1);
    if (IsHighHalf(first) && !text.empty() && IsLowHalf(text.front())) {
        const char16_t second = text.front();
        text.remove_prefix(1);
        return 0x10000 + ((first & 0x3FFU) << 10) + (second & 0x3FFU);
    }
    const bool isCharacter = first != 0 && !IsHighHalf(first) && !IsLowHalf(first);
    return isCharacter ? first : kReplacement;
}

constexpr uint64_t kOnes = 0x0001000100010001;

// Returns whether the test, which takes four units at once, sets any of the wanted bits in a run.
template <class Test>
bool HasUnit(const char16_t* run, uint64_t wanted, const Test& test) {
    uint64_t marks = 0;
    for (size_t i = 0; i < kRun; i += 4) {
        uint64_t units = 0;
        std::memcpy(&units, run + i, sizeof units);
        marks |= test(units);
    }
    return (marks & wanted) != 0;
}

// UTF-8. A plain run is ASCII, and each of its units becomes a byte.
class Utf8 {
  public:
    static bool IsPlain(const char16_t* run) {
        return !HasUnit(run, kOnes * 0xFF80, [](uint64_t units) {
            // One less than NUL has high bits too.
            return units | (units - kOnes);
        });
    }
    static char* PutRun(const char16_t* run, char* out) {
        char bytes[kRun];
        for (size_t i = 0; i < kRun; ++i) {
            bytes[i] = static_cast<char>(run[i]);
        }
        std::memcpy(out, bytes, kRun);
        return out + kRun;
    }
    static char* PutCharacter(char32_t point, char* out) { return PutUtf8(point, out); }
};

// UTF-16. A plain run has no halves of pairs, and goes out as it is.
template <bool bigEndian>
class Utf16 {
  public:
    static bool IsPlain(const char16_t* run) {
        // Written so that the compiler tests many units at once.
        uint16_t found = 0;
        for (size_t i = 0; i < kRun; ++i) {
            const bool isPlain = run[i] != 0 && (run[i] & 0xF800) != 0xD800;
            found = static_cast<uint16_t>(found | (isPlain ? 0U : 1U));
        }
        return found == 0;
    }
    static char* PutRun(const char16_t* run, char* out) {
        uint16_t units[kRun];
        for (size_t i = 0; i < kRun; ++i) {
            units[i] = Order(run[i]);
        }
        std::memcpy(out, units, sizeof units);
        return out + sizeof units;
    }
    static char* PutCharacter(char32_t point, char* out) {
        if (point < 0x10000) {
            return PutUnit(point, out);
        }
        out = PutUnit(0xD7C0 + (point >> 10), out);
        return PutUnit(0xDC00 + (point & 0x3FF), out);
    }

  private:
    // In the order of the encoding's bytes.
    static uint16_t Order(uint32_t unit) {
        constexpr bool isMachines = bigEndian == (wxBYTE_ORDER == wxBIG_ENDIAN);
        return static_cast<uint16_t>(isMachines ? unit : unit >> 8 | unit << 8);
    }
    static char* PutUnit(uint32_t unit, char* out) {
        const uint16_t ordered = Order(unit);
        std::memcpy(out, &ordered, sizeof ordered);
        return out + sizeof ordered;
    }
};

template <class Encoding>
char* Encode(std::u16string_view text, char* out) {
    while (!text.empty()) {
        if (!kEndsLinesWithReturn && text.size() >= kRun && Encoding::IsPlain(text.data())) {
            out = Encoding::PutRun(text.data(), out);
            text.remove_prefix(kRun);
            continue;
        }
        const char32_t point = TakeCharacter(text);
        if (kEndsLinesWithReturn && point == '\n') {
            out = Encoding::PutCharacter('\r', out);
        }
        out = Encoding::PutCharacter(point, out);
    }
    return out;
}

}  // namespace

void StringSink::Write(std::u16string_view text) {
    while (!text.empty()) {
        mText += wxUniChar(TakeCharacter(text));
    }
}

EncodedSink::EncodedSink(wxOutputStream& stream, wxFontEncoding encoding)
    : mStream(stream), mEncode(Encode<Utf8>), mBlock(kBlockSize, '\0') {
    if (encoding == wxFONTENCODING_UTF16LE) {
        mEncode = Encode<Utf16<false>>;
    } else if (encoding == wxFONTENCODING_UTF16BE) {
        mEncode = Encode<Utf16<true>>;
    }
}

void EncodedSink::Write(std::u16string_view text) {
    while (!text.empty()) {
        // The units that surely fit into the block, at the most bytes for each.
        size_t count = std::min(text.size(), (mBlock.size() - mHeld) / kLongestUnit);
        if (count < text.size() && count > 0 && IsHighHalf(text[count - 1])) {
            // Half a pair at the end waits for its other half.
            --count;
        }
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
