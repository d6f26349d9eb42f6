// What becomes of the texts of a deck: HTML, templates, readings and deletions.

#include <gmock/gmock.h>

#include "formats/HtmlText.h"
#include "formats/decks/AnkiPlan.h"
#include "formats/decks/AnkiTemplate.h"

TEST(HtmlText, KeepsWhatAPersonReads) {
    struct Case {
        const wchar_t* Html;
        const wchar_t* Text;
        const wchar_t* Reading;
        // Pictures, sounds and formulas.
        int Losses[3];
    };
    const Case cases[] = {
        {L"plain", L"plain", L"", {}},
        {L" a \n  b&nbsp;&amp;&nbsp;c ", L"a b & c", L"", {}},
        {L"a<br>b<br />c", L"a\nb\nc", L"", {}},
        {L"<div>a</div><div>b</div>", L"a\nb", L"", {}},
        {L"a<div><br></div><div>b</div>", L"a\n\nb", L"", {}},
        {L"<ul><li>a</li><li>b</li></ul>c", L"- a\n- b\nc", L"", {}},
        {L"<table><tr><td>a</td><td>b</td></tr></table>", L"a b", L"", {}},
        {L"<style>x{}</style><SCRIPT>y<b></SCRIPT>a<!-- <b>z -->", L"a", L"", {}},
        {L"1 < 2 &lt; 3 <4", L"1 < 2 < 3 <4", L"", {}},
        {L"&#x41;&#66;&hellip;&unknown;&#0;&#xD800;", L"AB\u2026&unknown;\uFFFD\uFFFD", L"", {}},
        {L"a<img src=\"b>.jpg\">c[sound:d.mp3]", L"ac", L"", {1, 1, 0}},
        {L"\\(x^2 < y\\) and [$$]z[/$$]", L"x^2 < y and z", L"", {0, 0, 2}},
        {L"\\(a<b\\) <i>c</i> \\(<style>\\)<style>x</style>d", L"a<b c d", L"", {0, 0, 2}},
        {L"<ruby>\u6F22<rt>kan</rt></ruby> a", L"\u6F22 a", L"kan a", {}},
        {L"<b>unclosed <i", L"unclosed <i", L"", {}},
    };
    for (const Case& test : cases) {
        SCOPED_TRACE(wxString(test.Html).utf8_string());
        HtmlLosses losses;
        const HtmlText text = ReadHtml(test.Html, false, losses);
        EXPECT_EQ(text.Text, test.Text);
        EXPECT_EQ(text.Reading, test.Reading);
        EXPECT_THAT(test.Losses,
                    testing::ElementsAre(losses.Pictures, losses.Sounds, losses.Formulas));
    }
    HtmlLosses losses;
    EXPECT_EQ(ReadHtml("a\nb", true, losses).Text, "a\nb");
}

TEST(AnkiTemplate, TellsTheFieldsThatShow) {
    const std::vector<wxString> names = {"Front", "Back", "My Hint"};
    const std::pair<const char*, const char*> cases[] = {
        {"{{Front}}", "0 "},
        {"<b>{{ Front }}</b> {{Tags}} {{{Back}}}", "0 1 "},
        {"{{FrontSide}}<hr id=answer>{{Back}}", "1 "},
        {"<!-- {{Front}} -->{{Back}}", "1 "},
        {"{{#My Hint}}{{hint:My Hint}}{{/My Hint}}", "2h+2 "},
        {"{{^Back}}{{type:Front}}{{/Back}}", "0t-1 "},
        {"{{furigana:Front}}{{tts ja_JP:kana:Back}}", "0f 1k "},
        {"{{#Back}}{{#Back}}{{Front}}{{/Back}}{{Front}}{{/Back}}{{Front}}", "0+1 0+1 0 "},
        {"{{hint_transcription:Back}}", "1h "},
        {"{{=<% %>=}}\n<%Front%> {{Back}}", "0 "},
        {"{{Front", ""},
        {"{{#}}{{/Front}}{{/}}{{:}}{{Back:}}", ""},
    };
    using Filter = ShownField::Filter;
    for (const auto& [source, expected] : cases) {
        wxString text;
        for (const ShownField& field : ParseTemplate(source, names)) {
            text << field.Field << (field.IsHint ? "h" : "") << (field.IsTyped ? "t" : "")
                 << (field.How == Filter::kFurigana ? "f" : "")
                 << (field.How == Filter::kKana ? "k" : "");
            for (size_t i = 0; field.Within != nullptr && i < names.size(); ++i) {
                text << (field.Within->Filled[i] ? wxString::Format("+%zu", i) : wxString())
                     << (field.Within->Empty[i] ? wxString::Format("-%zu", i) : wxString());
            }
            text << " ";
        }
        EXPECT_EQ(text, expected) << source;
    }
}

TEST(AnkiTemplate, SplitsReadingsFromTheirBases) {
    const std::tuple<const wchar_t*, const wchar_t*, const wchar_t*> cases[] = {
        {L"\u6F22\u5B57[kanji]", L"\u6F22\u5B57", L"kanji"},
        {L"a \u6F22[kan]b \u5B57[ji]c", L"a\u6F22b\u5B57c", L"akanbjic"},
        {L"no reading", L"no reading", L""},
        {L"[alone] x[", L"[alone] x[", L""},
        {L"a[b\nc] d[e]", L"a[b\nc]d", L"a[b\nc]e"},
    };
    for (const auto& [source, base, reading] : cases) {
        const FuriganaText text = ReadFurigana(source);
        EXPECT_EQ(text.Base, base) << wxString(source);
        EXPECT_EQ(text.Reading, reading) << wxString(source);
    }
}

TEST(AnkiTemplate, HidesTheDeletionsOfOneNumber) {
    struct Case {
        const char* Source;
        int Number;
        // The question, what it hides, and the whole text.
        const char* Card;
    };
    const Case cases[] = {
        {"{{c1::a}} b {{c2::c}}", 1, "[...] b c|a|a b c"},
        {"{{c1::a}} b {{c2::c::hint}}", 2, "a b [hint]|c|a b c"},
        {"{{c1::a}} {{c1::b}}", 1, "[...] [...]|a,b|a b"},
        {"{{c1,2::a}} {{c2::b}}", 1, "[...] b|a|a b"},
        {"{{c1::a {{c2::b::h}} c::g}}", 1, "[g]|a b c|a b c"},
        {"{{c1::a {{c2::b::h}} c::g}}", 2, "a [h] c|b|a b c"},
        {"{{c1::open", 1, "{{c1::open||{{c1::open"},
        {"{{c1::a}}", 3, "a||a"},
    };
    for (const Case& test : cases) {
        const ClozeCard card = MakeClozeCard(test.Source, test.Number);
        wxString hidden;
        for (const wxString& text : card.Hidden) {
            hidden += (hidden.empty() ? "" : ",") + text;
        }
        EXPECT_EQ(card.Question + "|" + hidden + "|" + card.Whole, test.Card) << test.Source;
    }
}

TEST(AnkiPlan, APairHasOneMirrorAndAnAnswerKeepsTheFieldThatIsTyped) {
    AnkiNoteType type;
    type.Fields = {"A", "B", "C"};
    type.Templates = {
        {"{{A}}", "{{FrontSide}} {{B}}"}, {"{{B}}", "{{A}}"}, {"{{B}} {{C}}", "{{A}}"}};
    TypePlan plan = MakeTypePlan(type);
    ASSERT_EQ(plan.Pairs.size(), 2U) << "the third template asks a card of its own";
    EXPECT_EQ(plan.Pairs[0].Reverse, 1U);
    EXPECT_EQ(plan.Pairs[1].Forward, 2U);

    type.Templates = {{"{{A}} {{type:C}}", "{{FrontSide}} {{type:C}}"}};
    plan = MakeTypePlan(type);
    ASSERT_EQ(plan.Pairs.size(), 1U);
    EXPECT_EQ(FieldSet(plan.Pairs[0].Front), FieldBits(1));
    EXPECT_EQ(FieldSet(plan.Pairs[0].Back), FieldBits(4));
}
