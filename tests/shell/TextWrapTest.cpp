#include "shell/TextWrap.h"

#include <gtest/gtest.h>

#include <random>

#include "base/Text.h"

namespace {

constexpr wchar_t kAcute = L'\u0301';
// Wider while it is the last letter of a text, by more than another letter adds.
constexpr wchar_t kShrinking = L'\u0633';

// Ten pixels a character, a mark none.
wxSize Measure(const wxString& text) {
    int width = !text.empty() && text.Last() == kShrinking ? 25 : 0;
    for (const wxUniChar c : text) {
        width += c == kAcute ? 0 : 10;
    }
    return wxSize(width, 17);
}

WrappedText Wrap(const wxString& text, int32_t maxWidth, const WrapLimits& limits = {}) {
    WrappedText wrapped;
    wrapped.MaxWidth = maxWidth;
    WrapText(text, Measure, limits, wrapped);
    return wrapped;
}

std::vector<wxString> LinesOf(const wxString& text, const WrappedText& wrapped) {
    std::vector<wxString> lines;
    for (const TextLine& line : wrapped.Lines) {
        lines.push_back(LineText(text, line));
    }
    return lines;
}

std::vector<wxString> Lines(const wxString& text, int32_t maxWidth) {
    return LinesOf(text, Wrap(text, maxWidth));
}

TEST(TextWrap, CutsAtLineEndsBetweenWordsAndInsideALongWord) {
    const std::tuple<const char*, wxString, int32_t, std::vector<wxString>> rows[] = {
        {"between words", "one two three", 60, {"one", "two", "three"}},
        {"three fit and one is taken", "abcd", 20, {"a", "b", "cd"}},
        {"empty lines are dropped", "\na\n\n\nb\n", 60, {"a", "b"}},
        {"a line of a space stays", "a\n \nb", 60, {"a", " ", "b"}},
        {"only white space", " \n\t\n ", 60, {}},
        {"a carriage return is a space", "a\r\nb", 60, {"a ", "b"}},
        {"spaces of other scripts", L"one\u3000two\u00A0three", 60, {"one", "two", "three"}},
        {"a mark stays with its letter", L"aaaaae\u0301bb", 60, {"aaaaa", L"e\u0301bb"}},
    };
    for (const auto& [what, text, maxWidth, lines] : rows) {
        EXPECT_EQ(Lines(text, maxWidth), lines) << what;
    }
    const WrappedText wrapped = Wrap("a\nbb\nccc", 100);
    EXPECT_EQ(wrapped.Lines.back().Width, 30);
    EXPECT_TRUE(wrapped.IsWhole);
    // One line more than fits says that there are more.
    EXPECT_EQ(Wrap("a\nbb\nccc\nd", 100, {17}).Lines.size(), 2U);
}

// The rule as it reads: lengths are tried one after the other.
size_t PlainTake(const wxString& rest, int32_t maxWidth) {
    if (Measure(rest).x <= maxWidth) {
        return rest.length();
    }
    size_t lastBreak = 0;
    for (size_t n = 1; n <= rest.length(); ++n) {
        if (Measure(TrimWide(rest.Left(n + 1))).x > maxWidth) {
            return lastBreak != 0 ? lastBreak : n <= 2 ? 1 : n - 1;
        }
        if (n < rest.length() && IsWideSpace(rest[n]) && !IsWideSpace(rest[n - 1])) {
            lastBreak = n;
        }
    }
    return rest.length();
}

std::vector<wxString> PlainLines(wxString rest, int32_t maxWidth) {
    std::vector<wxString> lines;
    while (!rest.empty()) {
        const size_t taken = PlainTake(rest, maxWidth);
        lines.push_back(rest.Left(taken));
        rest = TrimWide(rest.Mid(taken));
    }
    return lines;
}

// Also where a longer beginning is less wide than a shorter one.
TEST(TextWrap, TheQuickSearchFindsWhatTryingEveryLengthFinds) {
    std::mt19937 random(1);
    const wchar_t letters[] = {L'a', L'b', L' ', L' ', kShrinking, L'\u65E5'};
    for (int round = 0; round < 400; ++round) {
        wxString text = "x";
        for (auto length = random() % 120; length > 0; --length) {
            text += letters[random() % WXSIZEOF(letters)];
        }
        text += "x";
        const auto maxWidth = static_cast<int32_t>(random() % 200);
        EXPECT_EQ(Lines(text, maxWidth), PlainLines(text, maxWidth)) << text << " at " << maxWidth;
        // The same lines in any number of steps.
        WrappedText steps;
        steps.MaxWidth = maxWidth;
        while (!steps.IsWhole) {
            WrapText(text, Measure, {INT64_MAX, 7}, steps);
        }
        EXPECT_EQ(LinesOf(text, steps), PlainLines(text, maxWidth)) << text << " at " << maxWidth;
    }
}

TEST(TextWrap, TheCostOfALongTextGrowsWithItsLengthOnly) {
    const size_t length = 200000;
    wxString words('w', length);
    words.Replace("wwwww", "word ");
    for (const wxString& text : {words, wxString('m', length), "a" + wxString(kAcute, length)}) {
        size_t measured = 0;
        WrappedText wrapped;
        wrapped.MaxWidth = 600;
        const TextMeasure measure = [&measured](const wxString& part) {
            measured += part.length();
            return Measure(part);
        };
        WrapText(text, measure, {}, wrapped);
        EXPECT_LT(measured, 20 * length) << text.Left(6);
    }
}

}  // namespace
