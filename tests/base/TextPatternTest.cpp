#include "base/TextPattern.h"

#include <gtest/gtest.h>

#include <string>

#include "base/Unicode.h"

namespace {

constexpr TextPattern::Options kPlain{};
constexpr TextPattern::Options kCase{false, true, false};
constexpr TextPattern::Options kWords{false, false, true};
constexpr TextPattern::Options kCapitals{false, false, false, true};
constexpr TextPattern::Options kExpression{true, true, false};

TEST(TextPattern, ReplacesEachHitAndTellsWhereAnExpressionIsWrong) {
    const std::string runaway = std::string(40, 'a') + "b";
    const struct {
        TextPattern::Options Options;
        const char* Wanted;
        const char* Replacement;
        std::string Text;
        // The text afterwards, or the kind of fault and its place.
        std::string Expected;
    } cases[] = {
        {kPlain, "ecole", "école", "Ecole, ecole", "école, école"},
        {kPlain, "é", "e", "École e\u0301", "ecole e\u0301"},
        {kPlain, "été", "x", "ÉTÉ", "x"},
        {kPlain, "a.c", "$1\\n", "abc a.c", "abc $1\\n"},
        {kPlain, "\\E.", "x", "a\\E.b", "axb"},
        {kPlain, "か", "x", "がか", "がx"},
        {kCase, "Haus", "Heim", "haus Haus", "haus Heim"},
        {kWords, "art", "x", "art part arts art", "x part arts x"},
        {kWords, "C++", "D", "C++ and C++x", "D and C++x"},
        {kCapitals, "ecole", "école", "Ecole ECOLE ecole eCole", "École ÉCOLE école école"},
        {kCapitals, "a.", "$1\\U:}{\\", "A. a.", "$1\\U:}{\\ $1\\U:}{\\"},
        {{false, false, true, true}, "art", "été", "Art Arts l'ART", "Été Arts l'ÉTÉ"},
        {{false, true, false, true}, "art", "x", "Art art", "Art x"},
        // A search that went on in a cut text would find every letter.
        {kExpression, "\\b\\w", "_", "one two", "_ne _wo"},
        {kExpression, "^(.)", "<$1>", "aa", "<a>a"},
        {kExpression, "(\\w+) \\((\\w+)\\)", "\\2 \\1", "Haus (das)", "das Haus"},
        {kExpression, "(?<x>b)|c", "[${x}]", "abc", "a[b][]"},
        {kExpression, "x*", "-", "ab", "-a-b-"},
        {kExpression, "; ", "\\n", "a; b", "a\nb"},
        {{true, true, true}, "ab?", "x", "a ab abc", "x x abc"},
        {kExpression, "é(b", "", "", "expression 3"},
        {kExpression, "[z-a]", "", "", "expression 3"},
        {kExpression, "b", "x$", "abc", "replacement 2"},
        {kExpression, "b", "$7", "abc", "replacement 2"},
        {kExpression, "(a+)+$", "", runaway, "expression 0"},
        {kExpression, "(a|aa)+$", "", runaway, "expression 0"},
    };
    for (const auto& row : cases) {
        TextPattern pattern;
        TextPattern::Fault fault;
        const std::u16string text = ToUtf16(wxString::FromUTF8(row.Text));
        std::u16string result = text;
        auto outcome = TextPattern::Outcome::kFault;
        if (pattern.Set(wxString::FromUTF8(row.Wanted), wxString::FromUTF8(row.Replacement),
                        row.Options, fault)) {
            outcome = pattern.Replace(text, result, fault);
        }
        const std::string told =
            (fault.IsInReplacement ? "replacement " : "expression ") + std::to_string(fault.Place);
        const bool isFault = outcome == TextPattern::Outcome::kFault;
        EXPECT_EQ(isFault ? told : FromUtf16(result).utf8_string(), row.Expected)
            << row.Wanted << ": " << fault.Message;
        EXPECT_EQ(isFault, !fault.Message.empty());
    }
}

TEST(TextPattern, KeepsABrokenPartOfAText) {
    TextPattern pattern;
    TextPattern::Fault fault;
    ASSERT_TRUE(pattern.Set("a", "b", kPlain, fault));
    const std::u16string text{u'a', char16_t{0xD800}, u'a'};
    std::u16string result;
    EXPECT_EQ(pattern.Replace(text, result, fault), TextPattern::Outcome::kReplaced);
    EXPECT_EQ(result, (std::u16string{u'b', char16_t{0xD800}, u'b'}));
}

}  // namespace
