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
    DelimitedWriter(TextSink& sink, wchar_t delimiter);

    // 0, or -1 when the header has ended or has such a column already.
    int AddColumn(std::u16string_view name);
    void EndHeader();

    // Refuses a name that is no column, and any before the header's end.
    int WriteAttribute(std::u16string_view name, std::u16string_view value) override;
    // A column that the record did not set stays empty.
    void EndRecord() override;

  private:
    struct Column {
        std::u16string Name;
        std::u16string Value;
    };

    // The place of a column, or their number.
    size_t FindColumn(std::u16string_view name) const;
    void AppendField(const std::u16string& value);
    void AppendSpecialField(const std::u16string& value);

    TextSink& mSink;
    std::u16string mDelimiter;
    bool mHeaderOpen = true;
    std::vector<Column> mColumns;
    // Behind the column that was found last: attributes mostly come in the order of the columns.
    size_t mNext = 0;
    // The row, which is written as a whole, and room for one of its fields.
    std::u16string mRow;
    std::u16string mField;
};
