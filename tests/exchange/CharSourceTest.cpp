#include "exchange/CharSource.h"

#include <gtest/gtest.h>

#include "exchange/ReaderTexts.h"

using namespace std::string_literals;

namespace {

std::wstring Characters(const std::string& bytes) {
    TextOfBytes text(bytes);
    std::wstring characters;
    while (!text.Source().AtEnd()) {
        characters.push_back(text.Source().GetChar());
    }
    EXPECT_EQ(text.Source().GetChar(), L'\0');
    EXPECT_EQ(text.Source().GetProgress(), 1.0f);
    EXPECT_EQ(text.Source().GetFailure(), CharSource::kNoFailure);
    return characters;
}

struct DecodingCase {
    const char* What;
    std::string Bytes;
    std::wstring Text;
};

const std::string kUtf8Mark = "\xEF\xBB\xBF";

const DecodingCase kDecodings[] = {
    {"nothing", "", L""},
    {"only a mark", kUtf8Mark, L""},
    {"half a mark", "\xEF\xBB", L"\u00EF\u00BB"},
    {"marked UTF-8", kUtf8Mark + "a\xC3\xA9\xE6\xBC\xA2\xF0\x9F\x98\x80",
     L"a\u00E9\u6F22\U0001F600"},
    {"UTF-8 without a mark", "a\xC3\xA9", L"a\u00E9"},
    {"Windows-1252", "a\xE9z\x80\x81", L"a\u00E9z\u20AC\u0081"},
    {"UTF-16, little end first",
     "\xFF\xFE"
     "a\0\x3D\xD8\0\xDE"s,
     L"a\U0001F600"},
    {"UTF-16, big end first", "\xFE\xFF\0a\xD8\x3D\xDE\0"s, L"a\U0001F600"},
    {"a second mark", kUtf8Mark + kUtf8Mark + "a", L"\uFEFFa"},
    {"a bad byte in marked UTF-8",
     kUtf8Mark + "a\xFF"
                 "b",
     L"a\uFFFDb"},
    {"a lone continuation",
     kUtf8Mark + "a\x80"
                 "b",
     L"a\uFFFDb"},
    {"a cut sequence",
     kUtf8Mark + "a\xE6\xBC"
                 "b",
     L"a\uFFFDb"},
    {"a cut sequence at the end", kUtf8Mark + "a\xF0\x9F\x98", L"a\uFFFD"},
    {"an overlong slash",
     kUtf8Mark + "\xC0\xAF"
                 "b",
     L"\uFFFD\uFFFDb"},
    {"an overlong NUL",
     kUtf8Mark + "\xE0\x80\x80"
                 "b",
     L"\uFFFD\uFFFD\uFFFDb"},
    {"a surrogate in UTF-8",
     kUtf8Mark + "\xED\xA0\x80"
                 "b",
     L"\uFFFD\uFFFD\uFFFDb"},
    {"past the last character",
     kUtf8Mark + "\xF4\x90\x80\x80"
                 "b",
     L"\uFFFD\uFFFD\uFFFD\uFFFDb"},
    {"a surrogate makes an unmarked file no UTF-8", "\xED\xA0\x80", L"\u00ED\u00A0\u20AC"},
    {"a lone high surrogate", "\xFE\xFF\xD8\x3D\0a"s, L"\uFFFDa"},
    {"a lone low surrogate", "\xFE\xFF\xDE\x00\0a"s, L"\uFFFDa"},
    {"two high surrogates", "\xFE\xFF\xD8\x3D\xD8\x3D\xDE\0"s, L"\uFFFD\U0001F600"},
    {"a high surrogate at the end", "\xFE\xFF\0a\xD8\x3D"s, L"a\uFFFD"},
    {"an odd byte at the end", "\xFE\xFF\0a\0"s, L"a\uFFFD"},
    {"an odd byte behind a high surrogate", "\xFE\xFF\xD8\x3D\xDE", L"\uFFFD\uFFFD"},
    // A NUL would cut the text in the store, and nothing behind it may be lost.
    {"NUL and the old end of text mark",
     "a\0b\x04"
     "c"s,
     L"a\uFFFDb\x04"
     L"c"},
    {"NUL in UTF-16", "\xFE\xFF\0a\0\0\0b"s, L"a\uFFFDb"},
};

}  // namespace

TEST(CharSource, DecodesEveryFileToItsEnd) {
    for (const DecodingCase& row : kDecodings) {
        EXPECT_EQ(Characters(row.Bytes), row.Text) << row.What;
    }
}

// Each character lies on a block's border at one of the offsets.
TEST(CharSource, JoinsCharactersThatLieAcrossBlocks) {
    for (size_t offset = 0; offset < 4; ++offset) {
        std::string utf8 = kUtf8Mark + std::string(offset, 'x');
        std::string utf16 = "\xFE\xFF";
        std::wstring expected(offset, L'x');
        for (size_t i = 0; i < offset; ++i) {
            utf16 += "\0x"s;
        }
        for (int i = 0; i < 40000; ++i) {
            utf8 += "\xF0\x9F\x98\x80";
            utf16 += "\xD8\x3D\xDE\0"s;
            expected += L'\U0001F600';
        }
        EXPECT_TRUE(Characters(utf8) == expected) << offset;
        EXPECT_TRUE(Characters(utf8.substr(3)) == expected) << offset;
        EXPECT_TRUE(Characters(utf16) == expected) << offset;
    }
}

// The decision for an unmarked file falls by its last byte too.
TEST(CharSource, LooksAtAWholeUnmarkedFile) {
    const std::string start = "\xC3\xA9" + std::string(200000, 'x');
    EXPECT_EQ(Characters(start).front(), L'\u00E9');
    EXPECT_EQ(Characters(start + "\xE9").front(), L'\u00C3');
}

TEST(CharSource, EndsLinesAtEveryLineBreak) {
    TextOfBytes text("a\rb\nc\r\n\r\r\nd\n\re");
    std::vector<std::wstring> lines;
    std::wstring line;
    while (!text.Source().AtEnd()) {
        text.Source().ReadLine(line);
        lines.push_back(line);
    }
    EXPECT_EQ(lines, (std::vector<std::wstring>{L"a", L"b", L"c", L"", L"", L"d", L"", L"e"}));
}

// A line break lies across a block's border at one of the lengths.
TEST(CharSource, TakesALineBreakAcrossBlocksAsOne) {
    for (size_t length = 32760; length < 32776; ++length) {
        TextOfBytes text(std::string(length, 'x') + "\r\ny");
        std::wstring line;
        text.Source().ReadLine(line);
        EXPECT_EQ(line.size(), length);
        text.Source().ReadLine(line);
        EXPECT_EQ(line, L"y");
    }
}

TEST(CharSource, TellsHowFarItIs) {
    TextOfBytes text(std::string(1000, 'x') + "\n" + std::string(99999, 'y'));
    EXPECT_EQ(text.Source().GetProgress(), 0.0f);
    std::wstring line;
    text.Source().ReadLine(line);
    EXPECT_NEAR(text.Source().GetProgress(), 0.01f, 0.0001f);
}

TEST(CharSource, EndsARecordThatWouldFillTheMemory) {
    const size_t limit = size_t{1} << 26;
    const auto failure = [](const std::string& bytes, size_t start) {
        TextOfBytes text(bytes);
        for (size_t i = 0; !text.Source().AtEnd(); ++i) {
            if (i == start) {
                text.Source().StartRecord();
            }
            text.Source().GetChar();
        }
        return text.Source().GetFailure();
    };
    const std::string bytes(limit + 100000, 'x');
    EXPECT_EQ(failure(bytes, 0), CharSource::kTooLong);
    EXPECT_EQ(failure(bytes, 200000), CharSource::kNoFailure);
}
