#include "exchange/VlmTextReader.h"

#include "exchange/CharSource.h"
#include "exchange/TrimView.h"

namespace {

constexpr wchar_t kComment = L'#';
constexpr std::wstring_view kSeparators = L":\uFF1A";
// From this many attributes on a record's names go through a hash.
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
                // However many come before a record, they are no part of it.
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

// Takes "Name: value", as a new attribute or as a further line of the last one.
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
    // The caller appends every name that is not taken.
    return !mNames.insert(Key(name)).second;
}

// What names that count as the same have in common.
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

// Values were trimmed line by line; this drops the blank lines at both ends of a whole value.
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
