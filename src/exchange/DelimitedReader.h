#pragma once

#include <string>
#include <vector>

#include "exchange/AttributeList.h"
#include "exchange/CardRecordReader.h"

class CharSource;

// Reads a table: the first row names the columns, each further row is a record with an attribute
// for every column. Fields lie between delimiters, may be quoted, and hold escapes for backslash
// and line breaks. Lines are counted as rows. Has no errors of its own.
class DelimitedReader : public CardRecordReader {
  public:
    // Reads the header. The source is not owned.
    DelimitedReader(CharSource& source, wchar_t delimiter);

    size_t GetColumnCount() const { return mColumns.size(); }
    // As spelled in the file.
    const wxString& GetColumnName(size_t index) const { return mColumns[index]; }

    int32_t GetLineNumber() const override { return mRowNumber; }
    int32_t GetError() const override { return kNoError; }
    uint32_t GetAttributeCount() const override;
    const CardAttribute& GetAttribute(uint32_t index) const override { return mAttributes[index]; }
    bool ReadRecord() override;
    float GetProgress() const override;

  private:
    // What a row held: how many fields, and whether any of them had text.
    struct Row {
        size_t Fields = 0;
        bool HasText = false;
    };

    template <class TakeField>
    Row ReadRow(TakeField take);
    wchar_t ReadField();
    wchar_t ReadFirst(bool& quoted);
    bool IsBreak(wchar_t character) const;

    CharSource& mSource;
    wchar_t mDelimiter;
    std::vector<wxString> mColumns;
    int32_t mRowNumber = 1;
    AttributeList mAttributes;
    // What ended the field before: a delimiter, a line break, 0, or the character behind a closing
    // quote, which is the first of the next field.
    wchar_t mLastTerminator = 0;
    std::wstring mField;
};
