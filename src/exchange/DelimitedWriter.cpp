#include "exchange/DelimitedWriter.h"

#include <algorithm>

#include "base/Utf8.h"
#include "exchange/TextSink.h"

namespace {

constexpr char16_t kQuote = u'"';

// What would end a row, and the mark of such an escape itself, in two plain characters.
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

int DelimitedWriter::WriteAttribute(std::u16string_view name, std::u16string_view value) {
    const size_t place = mHeaderOpen ? mColumns.size() : FindColumn(name);
    if (place == mColumns.size()) {
        return -1;
    }
    mColumns[place].Value = value;
    mNext = place + 1;
    return 0;
}

void DelimitedWriter::EndRecord() {
    mRow.clear();
    for (Column& column : mColumns) {
        if (&column != &mColumns.front()) {
            mRow.append(mDelimiter);
        }
        AppendField(column.Value);
        column.Value.clear();
    }
    mRow.push_back(u'\n');
    mNext = 0;
    mSink.Write(mRow);
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
        mRow.append(value);
    }
}

// A value that holds the delimiter keeps its quotes as they are, doubled or not: files of this form
// have always been written so.
void DelimitedWriter::AppendSpecialField(const std::u16string& value) {
    mField.clear();
    AppendEscaped(mField, value);
    const bool hasDelimiter = mField.find(mDelimiter) != std::u16string::npos;
    const bool hasQuote = mField.find(kQuote) != std::u16string::npos;
    if (!hasDelimiter && !hasQuote) {
        mRow.append(mField);
        return;
    }
    mRow.push_back(kQuote);
    for (const char16_t unit : mField) {
        if (unit == kQuote && !hasDelimiter) {
            mRow.push_back(kQuote);
        }
        mRow.push_back(unit);
    }
    mRow.push_back(kQuote);
}
