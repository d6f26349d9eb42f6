#include "formats/VlmText.h"

#include <algorithm>
#include <cstdint>

#include "base/Text.h"
#include "formats/TextSink.h"
#include "formats/TextSource.h"

namespace {

constexpr wchar_t kComment = L'#';
constexpr std::wstring_view kSeparators = L":\uFF1A";
// A record with this many attributes has its names in a hash.
constexpr size_t kManyAttributes = 32;

std::wstring_view View(const wxString& text) {
    return {text.wc_str(), text.length()};
}

void Assign(wxString& text, std::wstring_view value) {
    text.assign(value.data(), value.size());
}

}  // namespace

VlmTextReader::VlmTextReader(CharSource& source, bool ignoreNameCase)
    : mSource(source), mIgnoreNameCase(ignoreNameCase) {}

uint32_t VlmTextReader::GetAttributeCount() const {
    return static_cast<uint32_t>(mAttributes.Count());
}

float VlmTextReader::GetProgress() const {
    return mSource.GetProgress();
}

bool VlmTextReader::ReadRecord() {
    mAttributes.Clear();
    mNames.clear();
    mHasLast = false;
    bool found = false;
    mSource.StartRecord();
    SkipFaultyRecord();
    while (!mSource.AtEnd()) {
        mSource.ReadLine(mLine);
        const std::wstring_view line = TrimView(mLine);
        if (line.empty()) {
            found = true;
            ++mLineNumber;
            break;
        }
        if (line.front() == kComment) {
            if (!found) {
                // Comments before a record do not count towards its length.
                mSource.StartRecord();
            }
        } else {
            if (!AddLine(line)) {
                return false;
            }
            found = true;
        }
        ++mLineNumber;
    }
    TrimValues();
    return found;
}

// Skips the rest of the record in which the last call failed; its faulty line was read.
void VlmTextReader::SkipFaultyRecord() {
    while (mError != kNoError) {
        ++mLineNumber;
        if (mSource.AtEnd()) {
            mError = kNoError;
            return;
        }
        mSource.ReadLine(mLine);
        if (TrimView(mLine).empty()) {
            ++mLineNumber;
            mError = kNoError;
        }
    }
}

// Takes a line "Name: value" as a new attribute, or as a further line of the last one.
bool VlmTextReader::AddLine(std::wstring_view line) {
    const size_t separator = line.find_first_of(kSeparators);
    if (separator == std::wstring_view::npos) {
        mError = kMissingSeparator;
        return false;
    }
    const std::wstring_view name = TrimView(line.substr(0, separator));
    const std::wstring_view value = TrimView(line.substr(separator + 1));
    if (mHasLast) {
        CardAttribute& last = mAttributes[mAttributes.Count() - 1];
        if (IsSameName(last.Name, name)) {
            last.Value += L'\n';
            last.Value.append(value.data(), value.size());
            return true;
        }
    }
    if (IsTaken(name)) {
        mError = kRepeatedAttribute;
        return false;
    }
    CardAttribute& attribute = mAttributes.Append();
    Assign(attribute.Name, name);
    Assign(attribute.Value, value);
    attribute.Line = mLineNumber;
    mHasLast = true;
    return true;
}

bool VlmTextReader::IsTaken(std::wstring_view name) {
    const size_t count = mAttributes.Count();
    if (count < kManyAttributes) {
        for (size_t i = 0; i < count; ++i) {
            if (IsSameName(mAttributes[i].Name, name)) {
                return true;
            }
        }
        return false;
    }
    if (mNames.empty()) {
        for (size_t i = 0; i < count; ++i) {
            mNames.insert(Key(View(mAttributes[i].Name)));
        }
    }
    // Inserted at once, as the caller appends every name that is not taken.
    return !mNames.insert(Key(name)).second;
}

// Returns the form of a name that all names which count as the same have in common.
std::wstring VlmTextReader::Key(std::wstring_view name) const {
    if (mIgnoreNameCase) {
        return LowerWide(wxString(name.data(), name.size())).ToStdWstring();
    }
    return std::wstring(name);
}

bool VlmTextReader::IsSameName(const wxString& known, std::wstring_view name) const {
    if (View(known) == name) {
        return true;
    }
    return mIgnoreNameCase && known.length() == name.size() && Key(View(known)) == Key(name);
}

// Drops the blank lines at both ends of each value. Its lines were trimmed when they were read.
void VlmTextReader::TrimValues() {
    for (size_t i = 0; i < mAttributes.Count(); ++i) {
        wxString& value = mAttributes[i].Value;
        const std::wstring_view whole = View(value);
        const std::wstring_view trimmed = TrimView(whole);
        if (trimmed.size() != whole.size()) {
            value = wxString(trimmed.data(), trimmed.size());
        }
    }
}

namespace {

constexpr char16_t kSeparator = u':';

constexpr size_t kRun = 8;
// Longer text is written before the next flush.
constexpr size_t kLongText = size_t{1} << 20;

// A carriage return ends a line for the reader. One that stayed in a value would make a line
// without a name, and the file could not be read back.
bool IsLineEnd(char16_t unit) {
    return unit == u'\n' || unit == u'\r';
}

bool HasLineEndInRun(const char16_t* run) {
    uint16_t found = 0;
    for (size_t i = 0; i < kRun; ++i) {
        found = static_cast<uint16_t>(found | (IsLineEnd(run[i]) ? 1U : 0U));
    }
    return found != 0;
}

// Looks at eight units at once, because an export asks this of every text and the library's search
// looks at one unit after the other.
bool HasLineEnd(std::u16string_view text) {
    if (text.size() < kRun) {
        return std::any_of(text.begin(), text.end(), IsLineEnd);
    }
    // The last run begins within the one before.
    const char16_t* const last = text.data() + text.size() - kRun;
    for (const char16_t* run = text.data(); run < last; run += kRun) {
        if (HasLineEndInRun(run)) {
            return true;
        }
    }
    return HasLineEndInRun(last);
}

}  // namespace

// Makes room for more units after the text.
void VlmTextWriter::Reserve(size_t units) {
    if (mText.size() - mLength < units) {
        mText.resize(2 * (mLength + units));
    }
}

template <class Value>
void VlmTextWriter::AppendLine(std::u16string_view name, Value value) {
    const size_t length = name.size() + value.size() + 3;
    Reserve(length);
    char16_t* out = std::copy(name.begin(), name.end(), mText.data() + mLength);
    *out++ = kSeparator;
    *out++ = u' ';
    *std::copy(value.begin(), value.end(), out) = u'\n';
    mLength += length;
}

int VlmTextWriter::WriteAttribute(const AttributeName& name, std::u16string_view value) {
    if (name.IsMistakable()) {
        return -1;
    }
    if (value.empty()) {
        return 0;
    }
    while (HasLineEnd(value)) {
        const size_t length = value.find_first_of(u"\r\n");
        AppendLine(name.Text(), value.substr(0, length));
        const bool isPair = value.substr(length, 2) == u"\r\n";
        value.remove_prefix(length + (isPair ? 2 : 1));
    }
    AppendLine(name.Text(), value);
    return 0;
}

int VlmTextWriter::WritePlain(const AttributeName& name, std::string_view value) {
    if (name.IsMistakable()) {
        return -1;
    }
    AppendLine(name.Text(), value);
    return 0;
}

void VlmTextWriter::EndRecord() {
    Reserve(1);
    mText[mLength++] = u'\n';
    mEnded = mLength;
    if (mLength > kLongText) {
        Flush();
    }
}

void VlmTextWriter::Flush() {
    mSink.Write({mText.data(), mEnded});
    mLength = 0;
    mEnded = 0;
}
