#include "formats/Delimited.h"

#include <wx/intl.h>

#include <algorithm>
#include <string_view>
#include <utility>

#include "base/Text.h"
#include "base/Unicode.h"
#include "formats/TextSink.h"
#include "formats/TextSource.h"

namespace {

constexpr wchar_t kQuote = L'"';
// The names of all attributes take a few hundred characters. A file without line breaks is no
// table, which this limit notices long before the limit of a record.
constexpr size_t kLongestHeader = size_t{1} << 20;
// A quote in the tables of others is text when its field would be longer.
constexpr size_t kLongestQuoted = size_t{1} << 20;
// A field that the end of a sample cuts off has at most so many lines, if it is quoted at all.
constexpr int32_t kMostCutLines = 20;
constexpr size_t kMostNotices = 100;
// Longer rows are written before the next flush.
constexpr size_t kLongText = size_t{1} << 20;

bool IsLineEnd(wchar_t character) {
    return character == L'\r' || character == L'\n';
}

// Trims a field and replaces its escapes.
std::wstring_view FinishField(std::wstring& field) {
    const std::wstring_view trimmed = TrimView(field);
    if (trimmed.size() < 2 || trimmed.find(L'\\') == std::wstring_view::npos) {
        return trimmed;
    }
    // The result is never longer, so it overwrites the text that was read.
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

DelimitedReader::DelimitedReader(CharSource& source, wchar_t delimiter, Foreign foreign)
    : mSource(source),
      mDelimiter(delimiter),
      mColumns(std::move(foreign.Columns)),
      mRowNumber(foreign.RowNumber),
      mComment(foreign.Comment),
      mHasEscapes(foreign.HasEscapes),
      mIsForeign(true),
      mQuotesAreText(foreign.QuotesAreText),
      mIsCut(foreign.IsCut),
      mTextColumns(std::move(foreign.TextColumns)),
      mLine(foreign.RowNumber + 1) {}

uint32_t DelimitedReader::GetAttributeCount() const {
    return static_cast<uint32_t>(mAttributes.Count());
}

float DelimitedReader::GetProgress() const {
    return mSource.GetProgress();
}

bool DelimitedReader::ReadRecord() {
    mAttributes.Clear();
    SkipFaultyRow();
    while (!AtEnd()) {
        ++mRowNumber;
        mAttributes.Clear();
        mSource.StartRecord();
        mFieldLines = 0;
        const Row row = ReadRow([this](size_t index, std::wstring_view field) {
            if (index < mColumns.size()) {
                mAttributes.Append().Value.assign(field.data(), field.size());
            }
        });
        if (mError != kNoError) {
            break;
        }
        if (!row.IsComment && (row.Fields > 1 || row.HasText)) {
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

// Reads the fields up to the end of the row and passes each on with its index.
template <class TakeField>
DelimitedReader::Row DelimitedReader::ReadRow(TakeField take) {
    Row row;
    bool done = false;
    while (!done) {
        mField.clear();
        mLastTerminator = ReadField(row.Fields);
        const std::wstring_view field = mHasEscapes ? FinishField(mField) : TrimView(mField);
        if (mComment != 0 && row.Fields == 0) {
            row.IsComment = !mIsQuoted && !field.empty() && field.front() == mComment;
        }
        if (mLastTerminator != 0 || !field.empty()) {
            take(row.Fields, field);
            ++row.Fields;
            row.HasText = row.HasText || !field.empty();
        }
        // A character after a closing quote begins another field, even at the end of the text.
        done = mLastTerminator == 0 || IsLineEnd(mLastTerminator) || mError != kNoError ||
               (mLastTerminator == mDelimiter && AtEnd());
    }
    return row;
}

// Appends the next field's text to mField and returns what ended it.
wchar_t DelimitedReader::ReadField(size_t column) {
    const bool isPending = mLastTerminator != 0 && !IsBreak(mLastTerminator);
    wchar_t character = isPending ? mLastTerminator : ReadFirst();
    mIsQuoted = !isPending && character == kQuote;
    if (mIsQuoted && !mIsForeign) {
        return ReadQuoted();
    }
    if (mIsQuoted) {
        wchar_t terminator = 0;
        if (ReadForeignQuoted(column, terminator)) {
            return terminator;
        }
        mIsQuoted = false;
    }
    if (character == 0) {
        return 0;
    }
    while (character != 0) {
        if (IsBreak(character)) {
            return character;
        }
        mField.push_back(character);
        character = GetChar();
    }
    // A text that ends inside a field ends its line.
    return L'\n';
}

// Returns the first character of the next field.
wchar_t DelimitedReader::ReadFirst() {
    const wchar_t character = GetChar();
    const bool isOtherHalf = (mLastTerminator == L'\r' && character == L'\n') ||
                             (mLastTerminator == L'\n' && character == L'\r');
    return isOtherHalf ? GetChar() : character;
}

// Reads a field of the program's own form after its opening quote.
wchar_t DelimitedReader::ReadQuoted() {
    const int32_t line = mLine;
    bool hasCrossed = false;
    for (wchar_t character = GetChar(); character != 0; character = GetChar()) {
        if (character == kQuote) {
            character = GetChar();
            if (character != kQuote) {
                if (hasCrossed && character != 0 && !IsBreak(character)) {
                    mError = kOpenQuote;
                    mErrorLine = line;
                }
                return character;
            }
        }
        hasCrossed = hasCrossed || IsLineEnd(character);
        mField.push_back(character);
    }
    if (hasCrossed) {
        mError = kOpenQuote;
        mErrorLine = line;
    }
    return mField.empty() ? L'\0' : L'\n';
}

// Reads a field of another table after its opening quote. Returns false, with nothing read, for one
// that is not closed as a quoted field is, so that the quote is text.
bool DelimitedReader::ReadForeignQuoted(size_t column, wchar_t& terminator) {
    if (mQuotesAreText || (column < mTextColumns.size() && mTextColumns[column])) {
        return false;
    }
    if (mNextAhead == mAhead.size()) {
        mAhead.clear();
        mNextAhead = 0;
    }
    const size_t start = mNextAhead;
    const int32_t line = mLine;
    int32_t lines = 0;
    bool isClosed = false;
    mKeepsAhead = true;
    while (mField.size() < kLongestQuoted) {
        wchar_t character = GetChar();
        lines = mLine - line;
        if (character == 0) {
            isClosed = mIsCut && lines < kMostCutLines;
            terminator = mField.empty() ? L'\0' : L'\n';
            break;
        }
        if (character == kQuote) {
            character = GetChar();
            if (character != kQuote) {
                isClosed = character == 0 || IsBreak(character);
                terminator = character;
                break;
            }
        }
        mField.push_back(character);
    }
    mKeepsAhead = false;
    if (column >= mQuotes.size()) {
        mQuotes.resize(column + 1);
    }
    if (isClosed) {
        ++mQuotes[column].Closed;
        mFieldLines = std::max(mFieldLines, lines + 1);
        return true;
    }
    ++mQuotes[column].Open;
    NoteOpenQuote(line);
    mNextAhead = start;
    mLine = line;
    mPrevious = kQuote;
    mField.clear();
    return false;
}

void DelimitedReader::NoteOpenQuote(int32_t line) {
    if (mNotices.size() < kMostNotices) {
        mNotices.push_back(
            {line, _("A field begins with a double quote and does not end with one, so that the "
                     "quote is taken for text.")});
    }
}

// Goes on after the line in which the last call has failed.
void DelimitedReader::SkipFaultyRow() {
    if (mError == kNoError) {
        return;
    }
    mError = kNoError;
    while (mLastTerminator != 0 && !IsLineEnd(mLastTerminator)) {
        mLastTerminator = GetChar();
    }
}

bool DelimitedReader::AtEnd() {
    return mNextAhead == mAhead.size() && mSource.AtEnd();
}

// Returns the next character, or 0 at the end.
wchar_t DelimitedReader::GetChar() {
    wchar_t character = 0;
    if (mNextAhead < mAhead.size()) {
        character = mAhead[mNextAhead++];
    } else {
        character = mSource.GetChar();
        if (mKeepsAhead && character != 0) {
            mAhead.push_back(character);
            ++mNextAhead;
        }
    }
    if (IsLineEnd(character) && !(character == L'\n' && mPrevious == L'\r')) {
        ++mLine;
    }
    mPrevious = character;
    return character;
}

bool DelimitedReader::IsBreak(wchar_t character) const {
    return character == mDelimiter || IsLineEnd(character);
}

namespace {

// Writes line breaks, which would end the row, and backslashes as escapes.
void AppendEscaped(std::u16string& field, std::u16string_view value) {
    for (const char16_t unit : value) {
        switch (unit) {
            case u'\\':
                field.append(u"\\\\");
                break;
            case u'\r':
                field.append(u"\\r");
                break;
            case u'\n':
                field.append(u"\\n");
                break;
            default:
                field.push_back(unit);
                break;
        }
    }
}

}  // namespace

DelimitedWriter::DelimitedWriter(TextSink& sink, wchar_t delimiter)
    : mSink(sink), mDelimiter(ToUtf16(wxString(delimiter))) {}

int DelimitedWriter::AddColumn(std::u16string_view name) {
    if (!mHeaderOpen || FindColumn(name) < mColumns.size()) {
        return -1;
    }
    mColumns.push_back({std::u16string(name), std::u16string()});
    return 0;
}

void DelimitedWriter::EndHeader() {
    mHeaderOpen = false;
    for (Column& column : mColumns) {
        column.Value = column.Name;
    }
    EndRecord();
}

int DelimitedWriter::WriteAttribute(const AttributeName& name, std::u16string_view value) {
    const size_t place = mHeaderOpen ? mColumns.size() : FindColumn(name.Text());
    if (place == mColumns.size()) {
        return -1;
    }
    mColumns[place].Value = value;
    mNext = place + 1;
    return 0;
}

void DelimitedWriter::EndRecord() {
    for (Column& column : mColumns) {
        if (&column != &mColumns.front()) {
            mRows.append(mDelimiter);
        }
        AppendField(column.Value);
        column.Value.clear();
    }
    mRows.push_back(u'\n');
    mNext = 0;
    if (mRows.size() > kLongText) {
        Flush();
    }
}

void DelimitedWriter::Flush() {
    mSink.Write(mRows);
    mRows.clear();
}

size_t DelimitedWriter::FindColumn(std::u16string_view name) const {
    for (size_t i = mNext; i < mColumns.size(); ++i) {
        if (mColumns[i].Name == name) {
            return i;
        }
    }
    for (size_t i = 0; i < mNext; ++i) {
        if (mColumns[i].Name == name) {
            return i;
        }
    }
    return mColumns.size();
}

void DelimitedWriter::AppendField(const std::u16string& value) {
    const char16_t delimiter = mDelimiter.front();
    const bool isSpecial = std::any_of(value.begin(), value.end(), [delimiter](char16_t unit) {
        return unit == delimiter || unit == kQuote || unit == u'\\' || unit == u'\r' ||
               unit == u'\n';
    });
    if (isSpecial) {
        AppendSpecialField(value);
    } else {
        mRows.append(value);
    }
}

// Doubles quotes, except in a value that also has the delimiter: files have always been written so,
// and other programs have learnt to read them.
void DelimitedWriter::AppendSpecialField(const std::u16string& value) {
    mField.clear();
    AppendEscaped(mField, value);
    const bool hasDelimiter = mField.find(mDelimiter) != std::u16string::npos;
    const bool hasQuote = mField.find(kQuote) != std::u16string::npos;
    if (!hasDelimiter && !hasQuote) {
        mRows.append(mField);
        return;
    }
    mRows.push_back(kQuote);
    for (const char16_t unit : mField) {
        if (unit == kQuote && !hasDelimiter) {
            mRows.push_back(kQuote);
        }
        mRows.push_back(unit);
    }
    mRows.push_back(kQuote);
}
