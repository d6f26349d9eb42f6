#include "study/TypedAnswer.h"

#include <gtest/gtest.h>

#include <tuple>

namespace {

// The parts in one text: "ab" as typed, "~e>é~" near, "*a>b*" wrong, "+b+" missing, "-a-" extra.
wxString Written(const AnswerCheck& check) {
    wxString text;
    for (const AnswerPart& part : check.Parts) {
        switch (part.What) {
            case AnswerPart::Same:
                text += part.Right;
                break;
            case AnswerPart::Near:
                text += "~" + part.Typed + ">" + part.Right + "~";
                break;
            case AnswerPart::Wrong:
                text += "*" + part.Typed + ">" + part.Right + "*";
                break;
            case AnswerPart::Missing:
                text += "+" + part.Right + "+";
                break;
            case AnswerPart::Extra:
                text += "-" + part.Typed + "-";
                break;
        }
    }
    return text;
}

TEST(TypedAnswer, LettersThatDifferAreMarkedAndGiveTheProposedScore) {
    // What was typed, the side of the card, the differences, and the score.
    const std::tuple<const wchar_t*, const wchar_t*, const wchar_t*, int> rows[] = {
        {L"hello", L"hello", L"hello", 4},
        {L" good \u00A0day\n", L"good day", L"good day", 4},
        {L"helo", L"hello", L"hel+l+o", 2},
        {L"helllo", L"hello", L"hell-l-o", 2},
        {L"hallo", L"hello", L"h*a>e*llo", 2},
        {L"hal", L"hello", L"h*a>e*l+lo+", 0},
        {L"ab", L"abcd", L"ab+cd+", 1},
        {L"xyz", L"ab", L"*xy>ab*-z-", 0},
        // Accents and case.
        {L"ete", L"\u00E9t\u00E9", L"~e>\u00E9~t~e>\u00E9~", 3},
        {L"Haus", L"haus", L"~H>h~aus", 3},
        {L"\u00C9te", L"ete", L"~\u00C9>e~te", 3},
        {L"ete.", L"\u00E9t\u00E9s", L"~e>\u00E9~t~e>\u00E9~*.>s*", 2},
        // Composed and decomposed.
        {L"e\u0301te", L"\u00E9te", L"\u00E9te", 4},
        {L"n\u0303", L"\u00F1", L"\u00F1", 4},
        {L"q\u0301a", L"qa", L"~q\u0301>q~a", 3},
        // Typographic marks that keyboards do not have.
        {L"l'eau - \"ici\"", L"l\u2019eau \u2013 \u201Cici\u201D", L"l'eau - \"ici\"", 4},
        // Japanese: the voicing marks are another sound, the width is not.
        {L"\u304B\u304D", L"\u304C\u304D", L"*\u304B>\u304C*\u304D", 1},
        {L"\u304B\u3099\u304D", L"\u304C\u304D", L"\u304C\u304D", 4},
        {L"\uFF76", L"\u30AB", L"~\uFF76>\u30AB~", 3},
        {L"\u732B", L"\u732B\u3001\u306D\u3053", L"\u732B", 4},
        // From right to left: a word with and without its points, and a wrong letter.
        {L"\u05E9\u05DC\u05D5\u05DD", L"\u05E9\u05C1\u05DC\u05D5\u05DD",
         L"~\u05E9>\u05E9\u05C1~\u05DC\u05D5\u05DD", 3},
        {L"\u0628\u064A\u062A", L"\u0628\u0646\u062A", L"\u0628*\u064A>\u0646*\u062A", 1},
        // A letter of two code points, and one outside of the first plane.
        {L"\u0915\u0940", L"\u0915\u093F", L"*\u0915\u0940>\u0915\u093F*", 0},
        {L"\U0001F44D\U0001F3FD", L"\U0001F44D", L"*\U0001F44D\U0001F3FD>\U0001F44D*", 0},
        // One of the answers that a side lists, but the whole where that is nearer.
        {L"good day", L"hello, good day", L"good day", 4},
        {L"hello, good day", L"hello, good day", L"hello, good day", 4},
        {L"gooday", L"hello\ngood day", L"good+ d+ay", 2},
        {L"hello", L"", L"-hello-", 0},
    };
    for (const auto& [typed, side, differences, score] : rows) {
        const AnswerCheck check = CheckAnswer(typed, side);
        EXPECT_EQ(Written(check), wxString(differences))
            << wxString(typed) << " for " << wxString(side);
        EXPECT_EQ(check.ProposedScore(), score) << wxString(typed) << " for " << wxString(side);
    }
}

TEST(TypedAnswer, TheDifferencesAreSaidInWords) {
    EXPECT_EQ(CheckAnswer("hello", "hello").InWords(), "Your answer is right.");
    EXPECT_EQ(CheckAnswer("Halo", "hello!").InWords(),
              "accent or case: \"H\" for \"h\"; wrong: \"a\" for \"e\"; missing: \"l\"; "
              "missing: \"!\"");
    EXPECT_TRUE(CheckAnswer("a1b1c1d1e1f1g1h1i1j1", "abcdefghij").InWords().EndsWith("; and more"));
}

TEST(TypedAnswer, ATextOfAnyLengthIsComparedAtItsBeginning) {
    const AnswerCheck check = CheckAnswer(wxString('a', 1000000), wxString('a', 2000000));
    EXPECT_EQ(check.Letters, 1000);
    EXPECT_EQ(check.ProposedScore(), 4);
}

}  // namespace
