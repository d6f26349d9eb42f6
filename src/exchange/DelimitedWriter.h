#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "exchange/CardRecordWriter.h"

class TextSink;

// Writes records as the rows of a table, one line each, behind a row with the names of the columns.
// First come the columns, then the end of the header, then the records.
class DelimitedWriter : public CardRecordWriter {
  public:
    // The sink is not owned.
    DelimitedWriter(TextSink& sink, wchar_t delimiter) : mSink(sink), mDelimiter(delimiter) {}

    // 0, or -1 when the header has ended or has such a column already.
    int AddColumn(const wxString& name);
    void EndHeader();

    // Refuses a name that is no column, and any before the header's end.
    int WriteAttribute(const wxString& name, const wxString& value) override;
    // A column that the record did not set stays empty.
    void EndRecord() override;

  private:
    struct Column {
        wxString Name;
        wxString Value;
    };

    // The place of a column, or their number.
    size_t FindColumn(const wxString& name) const;
    void AppendField(const std::wstring& value);

    TextSink& mSink;
    wchar_t mDelimiter;
    bool mHeaderOpen = true;
    std::vector<Column> mColumns;
    // Behind the column that was found last: attributes mostly come in the order of the columns.
    size_t mNext = 0;
    // The row, which is written as a whole, and room for one of its fields.
    std::wstring mRow;
    std::wstring mField;
};
