#include "exchange/VlmTextWriter.h"

#include <algorithm>
#include <cstdint>

#include "exchange/TextSink.h"

namespace {

constexpr char16_t kComment = u'#';
constexpr char16_t kSeparator = u':';

constexpr size_t kRun = 8;

bool IsInRun(const char16_t* run, char16_t wanted) {
    uint16_t found = 0;
    for (size_t i = 0; i < kRun; ++i) {
        found = static_cast<uint16_t>(found | (run[i] == wanted ? 1U : 0U));
    }
    return found != 0;
}

// Names and values are many and short, and the library looks at one unit after the other.
bool Contains(std::u16string_view text, char16_t wanted) {
    if (text.size() < kRun) {
        return text.find(wanted) != std::u16string_view::npos;
    }
    // The last run begins within the one before.
    const char16_t* const last = text.data() + text.size() - kRun;
    for (const char16_t* run = text.data(); run < last; run += kRun) {
        if (IsInRun(run, wanted)) {
            return true;
        }
    }
    return IsInRun(last, wanted);
}

}  // namespace

int VlmTextWriter::WriteAttribute(std::u16string_view name, std::u16string_view value) {
    if (Contains(name, kSeparator) || (!name.empty() && name.front() == kComment)) {
        return -1;
    }
    if (value.empty()) {
        return 0;
    }
    while (Contains(value, u'\n')) {
        const size_t length = value.find(u'\n');
        AppendLine(name, value.substr(0, length));
        value.remove_prefix(length + 1);
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
