#include "exchange/VlmTextWriter.h"

#include <algorithm>
#include <cstdint>

#include "exchange/TextSink.h"

namespace {

constexpr char16_t kComment = u'#';
constexpr char16_t kSeparator = u':';

constexpr size_t kRun = 8;

bool IsSeparator(char16_t unit) {
    return unit == kSeparator;
}

// What ends a line for the reader. A carriage return that stayed in a value would leave a line
// without a name, and with it a file that cannot be read back.
bool IsLineEnd(char16_t unit) {
    return unit == u'\n' || unit == u'\r';
}

template <bool (*kIsWanted)(char16_t)>
bool IsInRun(const char16_t* run) {
    uint16_t found = 0;
    for (size_t i = 0; i < kRun; ++i) {
        found = static_cast<uint16_t>(found | (kIsWanted(run[i]) ? 1U : 0U));
    }
    return found != 0;
}

// Names and values are many and short, and the library looks at one unit after the other.
template <bool (*kIsWanted)(char16_t)>
bool Contains(std::u16string_view text) {
    if (text.size() < kRun) {
        return std::any_of(text.begin(), text.end(), kIsWanted);
    }
    // The last run begins within the one before.
    const char16_t* const last = text.data() + text.size() - kRun;
    for (const char16_t* run = text.data(); run < last; run += kRun) {
        if (IsInRun<kIsWanted>(run)) {
            return true;
        }
    }
    return IsInRun<kIsWanted>(last);
}

}  // namespace

int VlmTextWriter::WriteAttribute(std::u16string_view name, std::u16string_view value) {
    if (Contains<IsSeparator>(name) || (!name.empty() && name.front() == kComment)) {
        return -1;
    }
    if (value.empty()) {
        return 0;
    }
    while (Contains<IsLineEnd>(value)) {
        const size_t length = value.find_first_of(u"\r\n");
        AppendLine(name, value.substr(0, length));
        const bool isPair = value.substr(length, 2) == u"\r\n";
        value.remove_prefix(length + (isPair ? 2 : 1));
    }
    AppendLine(name, value);
    return 0;
}

void VlmTextWriter::AppendLine(std::u16string_view name, std::u16string_view value) {
    const size_t length = name.size() + value.size() + 3;
    if (mRecord.size() - mLength < length) {
        mRecord.resize(2 * (mLength + length));
    }
    char16_t* out = std::copy(name.begin(), name.end(), mRecord.data() + mLength);
    *out++ = kSeparator;
    *out++ = u' ';
    *std::copy(value.begin(), value.end(), out) = u'\n';
    mLength += length;
}

void VlmTextWriter::EndRecord() {
    mSink.Write({mRecord.data(), mLength});
    mSink.Write(u"\n");
    mLength = 0;
}
