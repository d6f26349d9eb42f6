#include "formats/AnkiText.h"

#include "formats/TextSink.h"

namespace {

using Text = std::u16string_view;

// The sides stand first among the columns that are fields, as in the simplest kind of note.
constexpr Text kNames[] = {u"id", u"Category", u"Front", u"Back", u"Notes", u"Front2", u"Back2"};
constexpr Text kHead =
    u"#separator:tab\n"
    u"#html:false\n"
    u"#columns:id\tCategory\tFront\tBack\tNotes\tFront2\tBack2\n"
    u"#guid column:1\n"
    u"#deck column:2\n";

void AppendField(std::u16string& row, Text field) {
    const bool isSpecial = field.find_first_of(u"\t\"\r\n") != Text::npos;
    if (!isSpecial) {
        row.append(field);
        return;
    }
    row.push_back(u'"');
    for (const char16_t unit : field) {
        row.append(unit == u'"' ? 2 : 1, unit);
    }
    row.push_back(u'"');
}

}  // namespace

AnkiTextWriter::AnkiTextWriter(TextSink& sink) : mSink(sink) {
    mSink.Write(kHead);
}

int AnkiTextWriter::WriteAttribute(const AttributeName& name, std::u16string_view value) {
    for (size_t i = 0; i < kColumns; ++i) {
        if (kNames[i] == name.Text()) {
            mFields[i] = value;
        }
    }
    return 0;
}

void AnkiTextWriter::EndRecord() {
    mRow.clear();
    for (std::u16string& field : mFields) {
        AppendField(mRow, field);
        mRow.push_back(&field == &mFields.back() ? u'\n' : u'\t');
        field.clear();
    }
    mSink.Write(mRow);
}
