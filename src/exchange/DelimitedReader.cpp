#include "exchange/DelimitedReader.h"

#include <string_view>

#include "exchange/CharSource.h"
#include "exchange/TrimView.h"

namespace {

constexpr wchar_t kQuote = L'"';
// The names of all attributes take a few hundred. A file without line breaks is no table, and must
// not be read as far as the longest record before that is known.
constexpr size_t kLongestHeader = size_t{1} << 20;

bool IsLineEnd(wchar_t character) {
    return character == L'\r' || character == L'\n';
}

// Puts a field's text into the wanted form: no white space at the ends, escapes replaced.
std::wstring_view FinishField(std::wstring& field) {
    const std::wstring_view trimmed = TrimView(field);
    if (trimmed.size() < 2 || trimmed.find(L'\\') == std::wstring_view::npos) {
        return trimmed;
    }
    // The result is never longer, so it is written over what was read already.
    wchar_t* const begin = field.data() + (trimmed.data() - field.data());
    const wchar_t* const end = begin + trimmed.size();
    wchar_t* out = begin;
    for (const wchar_t* in = begin; in != end; ++in) {
        const wchar_t next = *in == L'\\' && in + 1 != end ? in[1] : L'\0';
        switch (next) {
            case L'\\':
                *out++ = L'\\';
                ++in;
                break;
            case L'n':
                *out++ = L'\n';
                ++in;
                break;
            case L'r':
                *out++ = L'\r';
                ++in;
                break;
            default:
                *out++ = *in;
                break;
        }
    }
    return {begin, static_cast<size_t>(out - begin)};
}

}  // namespace

DelimitedReader::DelimitedReader(CharSource& source, wchar_t delimiter)
    : mSource(source), mDelimiter(delimiter) {
    if (!mSource.AtEnd()) {
        mSource.StartRecord(kLongestHeader);
        ReadRow([this](size_t, std::wstring_view field) {
            mColumns.emplace_back(field.data(), field.size());
        });
    }
}

uint32_t DelimitedReader::GetAttributeCount() const {
    return static_cast<uint32_t>(mAttributes.Count());
}

float DelimitedReader::GetProgress() const {
    return mSource.GetProgress();
}

bool DelimitedReader::ReadRecord() {
    mAttributes.Clear();
    while (!mSource.AtEnd()) {
        ++mRowNumber;
        mAttributes.Clear();
        mSource.StartRecord();
        const Row row = ReadRow([this](size_t index, std::wstring_view field) {
            if (index < mColumns.size()) {
                mAttributes.Append().Value.assign(field.data(), field.size());
            }
        });
        if (row.Fields > 1 || row.HasText) {
            for (size_t i = 0; i < mColumns.size(); ++i) {
                CardAttribute& attribute = i < row.Fields ? mAttributes[i] : mAttributes.Append();
                if (i >= row.Fields) {
                    attribute.Value.clear();
                }
                attribute.Name = mColumns[i];
                attribute.Line = mRowNumber;
            }
            return true;
        }
    }
    mAttributes.Clear();
    return false;
}

// Reads the fields up to the end of the row and hands each over with its place.
template <class TakeField>
DelimitedReader::Row DelimitedReader::ReadRow(TakeField take) {
    Row row;
    bool done = false;
    while (!done) {
        mField.clear();
        mLastTerminator = ReadField();
        const std::wstring_view field = FinishField(mField);
        if (mLastTerminator != 0 || !field.empty()) {
            take(row.Fields, field);
            ++row.Fields;
            row.HasText = row.HasText || !field.empty();
        }
        // A character behind a closing quote is a field still to come, also at the end.
        done = mLastTerminator == 0 || IsLineEnd(mLastTerminator) ||
               (mLastTerminator == mDelimiter && mSource.AtEnd());
    }
    return row;
}

// Appends the next field's text to mField and returns what ended it.
wchar_t DelimitedReader::ReadField() {
    bool quoted = false;
    wchar_t character = ReadFirst(quoted);
    if (character == 0) {
        return 0;
    }
    while (character != 0) {
        if (!quoted && IsBreak(character)) {
            return character;
        }
        if (quoted && character == kQuote) {
            character = mSource.GetChar();
            if (character != kQuote) {
                return character;
            }
        }
        mField.push_back(character);
        character = mSource.GetChar();
    }
    // The text ended inside a field, which counts as the end of a line.
    return L'\n';
}

// The first character of the next field, behind its opening quote if it has one.
wchar_t DelimitedReader::ReadFirst(bool& quoted) {
    const bool isPending = mLastTerminator != 0 && !IsBreak(mLastTerminator);
    if (isPending) {
        return mLastTerminator;
    }
    wchar_t character = mSource.GetChar();
    const bool isOtherHalf = (mLastTerminator == L'\r' && character == L'\n') ||
                             (mLastTerminator == L'\n' && character == L'\r');
    if (isOtherHalf) {
        character = mSource.GetChar();
    }
    if (character == kQuote) {
        quoted = true;
        character = mSource.GetChar();
    }
    return character;
}

bool DelimitedReader::IsBreak(wchar_t character) const {
    return character == mDelimiter || IsLineEnd(character);
}
