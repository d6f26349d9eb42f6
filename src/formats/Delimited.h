#pragma once

#include <wx/string.h>

#include <cstddef>
#include <string>
#include <vector>

#include "formats/CardRecord.h"

class CharSource;
class TextSink;

// Reads a table. The first row names the columns; each further row is a record with an attribute
// for every column. Fields are separated by the delimiter, may be quoted, and have the escapes \\,
// \n and \r. A quote opens a quoted field only as its first character, and text after the closing
// quote begins a new field: "x,"y" is x, and y". The line number counts rows.
//
// The only error is a quote that a person has left open: the field crosses a line end, and its
// closing quote, if there is one, is followed by neither a delimiter nor a line end. An exported
// row has one line. In the tables of others a quote may also be text: there it opens a quoted field
// only when that field is closed before a delimiter or a line end.
class DelimitedReader : public CardRecordReader {
  public:
    // Reads the header. The source is not owned.
    DelimitedReader(CharSource& source, wchar_t delimiter);

    // How to read the rows of a table that is not in this program's own form.
    struct Foreign {
        // The names that the columns get; the table has no header, or the caller has read past it.
        std::vector<wxString> Columns;
        // The number of the row before the first one that is read.
        int32_t RowNumber = 0;
        // Rows that begin with this character are left out, unless it is quoted; 0 for none.
        wchar_t Comment = 0;
        // True to replace the escapes.
        bool HasEscapes = false;
        // True when no quote opens a field; and the columns, from 0, in which none does.
        bool QuotesAreText = false;
        std::vector<bool> TextColumns = {};
        // True when the text is the beginning of a longer one, which may cut its last field off.
        bool IsCut = false;
    };
    DelimitedReader(CharSource& source, wchar_t delimiter, Foreign foreign);

    // The fields of a column that begin with a quote.
    struct QuoteCount {
        size_t Closed = 0;
        size_t Open = 0;
    };
    // Returns the counts of the columns of a foreign table, up to the last one with a quote.
    const std::vector<QuoteCount>& GetQuoteCounts() const { return mQuotes; }

    size_t GetColumnCount() const { return mColumns.size(); }
    const wxString& GetColumnName(size_t index) const { return mColumns[index]; }
    // Leaves \n, \r and \\ as they are, before the first record is read.
    void KeepEscapes() { mHasEscapes = false; }

    // Returns the line of the quote after an error, and otherwise the row.
    int32_t GetLineNumber() const override { return mError == kNoError ? mRowNumber : mErrorLine; }
    int32_t GetError() const override { return mError; }
    std::vector<SourceNotice> GetNotices() const override { return mNotices; }
    int32_t CountFieldLines() const override { return mFieldLines; }
    uint32_t GetAttributeCount() const override;
    const CardAttribute& GetAttribute(uint32_t index) const override { return mAttributes[index]; }
    bool ReadRecord() override;
    float GetProgress() const override;

  private:
    struct Row {
        size_t Fields = 0;
        bool HasText = false;
        bool IsComment = false;
    };

    template <class TakeField>
    Row ReadRow(TakeField take);
    wchar_t ReadField(size_t column);
    wchar_t ReadFirst();
    wchar_t ReadQuoted();
    bool ReadForeignQuoted(size_t column, wchar_t& terminator);
    void NoteOpenQuote(int32_t line);
    void SkipFaultyRow();
    bool IsBreak(wchar_t character) const;
    wchar_t GetChar();
    bool AtEnd();

    CharSource& mSource;
    wchar_t mDelimiter;
    std::vector<wxString> mColumns;
    int32_t mRowNumber = 1;
    wchar_t mComment = 0;
    bool mHasEscapes = true;
    bool mIsQuoted = false;
    // How the quotes of a foreign table are read, and what was found.
    bool mIsForeign = false;
    bool mQuotesAreText = false;
    bool mIsCut = false;
    std::vector<bool> mTextColumns;
    std::vector<QuoteCount> mQuotes;
    std::vector<SourceNotice> mNotices;
    int32_t mFieldLines = 0;
    int32_t mError = kNoError;
    int32_t mErrorLine = 0;
    // The line of the next character, from 1, and the character before that.
    int32_t mLine = 1;
    wchar_t mPrevious = 0;
    // Characters that were read to find the end of a quoted field, and the index of the first that
    // is still to be delivered.
    std::wstring mAhead;
    size_t mNextAhead = 0;
    bool mKeepsAhead = false;
    AttributeList mAttributes;
    // What ended the field before: a delimiter, a line break, or 0 at the end of the text. After a
    // closing quote it may be any character, and is then the first of the next field.
    wchar_t mLastTerminator = 0;
    std::wstring mField;
};

// Writes records as the rows of a table, one line each, after a row with the names of the columns.
// The columns are added first; EndHeader then writes their row, and the records follow.
class DelimitedWriter : public CardRecordWriter {
  public:
    // The sink is not owned.
    DelimitedWriter(TextSink& sink, wchar_t delimiter);

    // Returns 0, or -1 when the header has ended or has such a column already.
    int AddColumn(std::u16string_view name);
    void EndHeader();

    // Refuses a name that is not a column, and every name before EndHeader.
    int WriteAttribute(const AttributeName& name, std::u16string_view value) override;
    // A column that the record did not set stays empty.
    void EndRecord() override;
    void Flush() override;

  private:
    struct Column {
        std::u16string Name;
        std::u16string Value;
    };

    // Returns the index of a column, or the number of columns when there is none.
    size_t FindColumn(std::u16string_view name) const;
    void AppendField(const std::u16string& value);
    void AppendSpecialField(const std::u16string& value);

    TextSink& mSink;
    std::u16string mDelimiter;
    bool mHeaderOpen = true;
    std::vector<Column> mColumns;
    // One past the column found last. Attributes mostly come in the order of the columns, so the
    // search starts there.
    size_t mNext = 0;
    // The rows since the last flush, and room for one of their fields.
    std::u16string mRows;
    std::u16string mField;
};
