#include "formats/AnkiText.h"

#include "base/Unicode.h"
#include "formats/TextSink.h"
#include "media/MediaLines.h"

namespace {

using Text = std::u16string_view;

// The sides stand first among the columns that are fields, as in the simplest kind of note.
constexpr Text kNames[] = {u"id", u"Category", u"Front", u"Back", u"Notes", u"Front2", u"Back2"};
constexpr Text kPlain = u"#separator:tab\n#html:false\n";
constexpr Text kHtml = u"#separator:tab\n#html:true\n";
constexpr Text kHead =
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

// A blank at the edge of a line or after another one would be lost.
void AppendHtml(std::u16string& html, Text text) {
    char16_t before = u'\n';
    for (size_t i = 0; i < text.size(); ++i) {
        const char16_t unit = text[i];
        const bool isEdge = before == u' ' || before == u'\n' || i + 1 == text.size() ||
                            text[i + 1] == u'\n' || text[i + 1] == u'\r';
        before = unit;
        switch (unit) {
            case u'&':
                html += u"&amp;";
                break;
            case u'<':
                html += u"&lt;";
                break;
            case u'>':
                html += u"&gt;";
                break;
            case u'\n':
                html += u"<br>";
                break;
            case u'\r':
                break;
            case u'\t':
                html += u"&#9;";
                break;
            case u' ':
                html += isEdge ? Text(u"&nbsp;") : Text(u" ");
                break;
            default:
                html += unit;
        }
    }
}

// Returns a field with its pictures and sounds as tags.
std::u16string MakeHtml(Text field) {
    std::u16string html;
    if (!MayHaveMediaLine(field)) {
        AppendHtml(html, field);
        return html;
    }
    const wxString text = FromUtf16(field);
    size_t at = 0;
    for (const MediaLine& line : FindMediaLines(text)) {
        AppendHtml(html, ToUtf16(text.Mid(at, line.Begin - at)));
        const std::u16string name = ToUtf16(line.Name);
        if (line.Kind == MediaKind::kSound) {
            html += u"[sound:" + name + u"]";
        } else {
            html += u"<img src=\"";
            AppendHtml(html, name);
            html += u"\">";
        }
        at = line.End;
    }
    AppendHtml(html, ToUtf16(text.Mid(at)));
    return html;
}

}  // namespace

AnkiTextWriter::AnkiTextWriter(TextSink& sink, bool isHtml) : mSink(sink), mIsHtml(isHtml) {
    mSink.Write(isHtml ? kHtml : kPlain);
    mSink.Write(kHead);
}

int AnkiTextWriter::WriteAttribute(const AttributeName& name, std::u16string_view value) {
    for (size_t i = 0; i < kColumns; ++i) {
        if (kNames[i] == name.Text()) {
            // The first two are no fields.
            mFields[i] = mIsHtml && i > 1 ? MakeHtml(value) : std::u16string(value);
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
