#include "base/Folding.h"

#include <gtest/gtest.h>

#include <string>

namespace {

struct Row {
    const wchar_t* One;
    const wchar_t* Other;
};

std::string Show(const wchar_t* text) {
    return std::string(wxString(text).utf8_str());
}

}  // namespace

TEST(Folding, WordsThatPeopleTakeForTheSameAreEqual) {
    constexpr Row kRows[] = {
        {L"\u00c9cole", L"ecole"},
        {L"Stra\u00dfe STRASSE", L"strasse Stra\u1e9ee"},
        {L"\u0152uvre \u00c6r\u00f8 \u0141\u00f3d\u017a \u00f0\u00fe", L"oeuvre aero lodz dth"},
        {L"I\u0130\u0131", L"iii"},
        {L"\u0386\u03a3\u039f\u03a3 \u03c4\u1fc7", L"\u03b1\u03c3\u03bf\u03c2 \u03c4\u03b7"},
        {L"\u0401\u041b\u041a\u0410 \u0439", L"\u0435\u043b\u043a\u0430 \u0418"},
        // Katakana in both widths, and the Latin letters of East Asian texts.
        {L"\u30ab\u30fc\u30c9 \u30f4", L"\u304b\u30fc\u3069 \u3094"},
        {L"\uff76\uff70\uff84\uff9e", L"\u304b\u30fc\u3069"},
        {L"\uff21\uff42\uff11\u2460", L"ab11"},
        // The two Unicode forms of one text.
        {L"e\u0301\u0323", L"\u00e9\u0323"},
        {L"\u304b\u3099", L"\u304c"},
        {L"\u1112\u1161\u11ab", L"\ud55c"},
        {L"\u0915\u093c", L"\u0958"},
        {L"\u0627\u0651\u0654", L"\u0623"},
        {L"=\u0338", L"\u2260"},
        // Vowel points, marks that cannot be seen, and marks of writing.
        {L"\u05e9\u05b8\u05c1\u05dc\u05d5\u05b9\u05dd", L"\u05e9\u05dc\u05d5\u05dd"},
        {L"\u0628\u064e\u0640", L"\u0628"},
        {L"co\u00adop\ufb01", L"coopfi"},
        {L"l\u2019\u00e9t\u00e9 \u2013 \u201co\u00f9\u201d", L"l'ete - \"ou\""},
        {L"\U00010400\U0001f600\U0001d400", L"\U00010428\U0001f600a"},
        {L"\u0301", L""},
    };
    for (const Row& row : kRows) {
        EXPECT_EQ(FoldText(wxString(row.One)), FoldText(wxString(row.Other)))
            << Show(row.One) << " and " << Show(row.Other);
    }
}

TEST(Folding, MarksThatMakeAnotherLetterStay) {
    constexpr Row kRows[] = {
        {L"\u304c", L"\u304b"},       {L"\u3071", L"\u3070"}, {L"\u3063", L"\u3064"},
        {L"\uac00", L"\uac01"},       {L"\u0958", L"\u0915"}, {L"\u0915\u093f", L"\u0915"},
        {L"\u0e01\u0e49", L"\u0e01"}, {L"\u0622", L"\u0627"}, {L"\u2260", L"="},
        {L"\u0622", L"\u0627\u064e"}, {L"a", L"b"},           {L"\u4e2d", L"\u56fd"},
    };
    for (const Row& row : kRows) {
        EXPECT_NE(FoldText(wxString(row.One)), FoldText(wxString(row.Other)))
            << Show(row.One) << " and " << Show(row.Other);
    }
    EXPECT_TRUE(IsLetterMark(0x093C));
    EXPECT_FALSE(IsLetterMark(0x0301));
}

// Tries every unit.
TEST(Folding, AFoldedTextFoldsToItself) {
    std::u16string all;
    for (unsigned unit = 0; unit < 0x10000; ++unit) {
        const std::u16string text{u'x', static_cast<char16_t>(unit), u'y'};
        const std::u16string folded = FoldText(text);
        EXPECT_EQ(FoldText(folded), folded) << std::hex << unit;
        for (const char16_t at : folded) {
            EXPECT_TRUE(at < kFirstFreeUnit || at > kLastFreeUnit) << std::hex << unit;
        }
    }
}
