#include "exchange/DelimitedWriter.h"

#include "exchange/TextSink.h"

namespace {

constexpr wchar_t kQuote = L'"';

// What would end a row, and the mark of such an escape itself, in two plain characters.
void AppendEscaped(std::wstring& field, const std::wstring& value) {
    for (const wchar_t character : value) {
        switch (character) {
            case L'\\':
                field.append(L"\\\\");
                break;
            case L'\r':
                field.append(L"\\r");
                break;
            case L'\n':
                field.append(L"\\n");
                break;
            default:
                field.push_back(character);
                break;
        }
    }
}

}  // namespace

int DelimitedWriter::AddColumn(const wxString& name) {
    if (!mHeaderOpen || FindColumn(name) < mColumns.size()) {
        return -1;
    }
    mColumns.push_back({name, wxString()});
    return 0;
}

void DelimitedWriter::EndHeader() {
    mHeaderOpen = false;
    for (Column& column : mColumns) {
        column.Value = column.Name;
    }
    EndRecord();
}

int DelimitedWriter::WriteAttribute(const wxString& name, const wxString& value) {
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
            mRow.push_back(mDelimiter);
        }
        AppendField(column.Value.ToStdWstring());
        column.Value.clear();
    }
    mRow.push_back(L'\n');
    mNext = 0;
    mSink.Write(mRow);
}

size_t DelimitedWriter::FindColumn(const wxString& name) const {
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

// A value that holds the delimiter keeps its quotes as they are, doubled or not: files of this form
// have always been written so.
void DelimitedWriter::AppendField(const std::wstring& value) {
    mField.clear();
    AppendEscaped(mField, value);
    const bool hasDelimiter = mField.find(mDelimiter) != std::wstring::npos;
    const bool hasQuote = mField.find(kQuote) != std::wstring::npos;
    if (!hasDelimiter && !hasQuote) {
        mRow.append(mField);
        return;
    }
    mRow.push_back(kQuote);
    for (const wchar_t character : mField) {
        if (character == kQuote && !hasDelimiter) {
            mRow.push_back(kQuote);
        }
        mRow.push_back(character);
    }
    mRow.push_back(kQuote);
}
