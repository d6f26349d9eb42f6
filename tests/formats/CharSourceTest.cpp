#include "formats/TextSource.h"

#include <gtest/gtest.h>

#include "base/Unicode.h"
#include "formats/ReaderTexts.h"

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
    return characters;
}

const std::string kMark = "\xEF\xBB\xBF";

}  // namespace

TEST(CharSource, DecodesEveryFileToItsEnd) {
    const std::tuple<const char*, std::string, std::wstring> cases[] = {
        {"only a mark", kMark, L""},
        {"half a mark", "\xEF\xBB", L"\u00EF\u00BB"},
        {"two marks", kMark + kMark + "a", L"\uFEFFa"},
        {"marked UTF-8", kMark + "\xC3\xA9\xE6\xBC\xA2\xF0\x9F\x98\x80", L"\u00E9\u6F22\U0001F600"},
        {"Windows-1252", "a\xE9z\x80\x81", L"a\u00E9z\u20AC\u0081"},
        {"UTF-16, little end first", "\xFF\xFE\x61\0\x3D\xD8\0\xDE"s, L"a\U0001F600"},
        {"UTF-16, big end first", "\xFE\xFF\0a\xD8\x3D\xDE\0"s, L"a\U0001F600"},
        {"bad bytes", kMark + "a\xFFz\x80z", L"a\uFFFDz\uFFFDz"},
        {"cut sequences", kMark + "\xE6\xBCz\xF0\x9F\x98", L"\uFFFDz\uFFFD"},
        {"overlong", kMark + "\xC0\xAFz\xE0\x80\x80", L"\uFFFD\uFFFDz\uFFFD\uFFFD\uFFFD"},
        {"a surrogate in UTF-8", kMark + "\xED\xA0\x80z", L"\uFFFD\uFFFD\uFFFDz"},
        {"lone surrogates", "\xFE\xFF\xD8\x3D\0a\xDE\0\0a"s, L"\uFFFDa\uFFFDa"},
        {"a high surrogate at the end", "\xFE\xFF\0a\xD8\x3D"s, L"a\uFFFD"},
        {"an odd byte at the end", "\xFE\xFF\xD8\x3D\xDE", L"\uFFFD\uFFFD"},
        // Nothing behind a NUL, or behind the end mark of old texts, may be lost.
        {"NUL and code 4", "a\0z\x04z"s, L"a\uFFFDz\x04z"},
        {"NUL in UTF-16", "\xFE\xFF\0a\0\0\0b"s, L"a\uFFFDb"},
    };
    for (const auto& [what, bytes, text] : cases) {
        EXPECT_EQ(Characters(bytes), text) << what;
        if (bytes.compare(0, kMark.size(), kMark) == 0) {
            // What the clipboard and the store decode comes out like what a file holds.
            EXPECT_EQ(FromUtf8(bytes.substr(kMark.size())), text) << what;
        }
    }
}

// In these encodings an accent may follow a letter, which the C library therefore holds back: at
// the end of the text, at the end of each block, and before a byte that means nothing.
TEST(CharSource, LosesNoLetterThatAnAccentMightFollow) {
    constexpr size_t kCount = 200001;
    TextOfBytes hebrew(std::string(kCount, '\xE9'), wxFONTENCODING_CP1255);
    size_t letters = 0;
    for (; !hebrew.Source().AtEnd(); ++letters) {
        ASSERT_EQ(hebrew.Source().GetChar(), L'\u05D9');
    }
    EXPECT_EQ(letters, kCount);

    TextOfBytes vietnamese("Vi\xEA\xF2t a\xD2", wxFONTENCODING_CP1258);
    std::wstring text;
    vietnamese.Source().ReadLine(text);
    EXPECT_EQ(text, L"Vi\u1EC7t \u1EA3");
    TextOfBytes broken("a\xE9\xD9z", wxFONTENCODING_CP1255);
    broken.Source().ReadLine(text);
    EXPECT_EQ(text, L"a\u05D9\uFFFDz");
}

// Line breaks and characters lie across a block's border at one of the offsets.
TEST(CharSource, JoinsWhatLiesAcrossBlocks) {
    for (size_t offset = 0; offset < 8; ++offset) {
        std::string bytes(offset, '\n');
        for (int i = 0; i < 20000; ++i) {
            bytes += "\xF0\x9F\x98\x80x\r\n";
        }
        TextOfBytes text(bytes);
        std::wstring line;
        size_t count = 0;
        for (; !text.Source().AtEnd(); ++count) {
            text.Source().ReadLine(line);
            ASSERT_EQ(line, count < offset ? L"" : L"\U0001F600x") << offset;
        }
        EXPECT_EQ(count, 20000 + offset);
    }
}
