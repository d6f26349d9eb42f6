#include "base/Collator.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "base/Unicode.h"

TEST(CollatorTest, WordsStandInTheOrderOfEachLanguage) {
    using Words = std::vector<const wchar_t*>;
    const std::pair<const char*, Words> cases[] = {
        {"de_DE.UTF-8", {L"apfel", L"Baum", L"œuvre", L"Öl", L"Zebra", L"баба", L"яблоко"}},
        {"en", {L"Unit 9", L"Unit 10", L"Unit 010b", L"Zebra", L"баба", L"мама", L"яблоко"}},
        {"sv_SE", {L"apfel", L"Zebra", L"Öl"}},
        {"ja_JP", {L"Zebra", L"あ", L"カ", L"が", L"亜", L"日"}},
        {"", {L"a", L"A", L"á", L"b"}}};
    for (const auto& [locale, words] : cases) {
        const Collator collator(locale);
        ASSERT_TRUE(collator.IsLoaded());
        std::vector<std::string> keys;
        std::vector<wxString> texts(words.begin(), words.end());
        for (const wxString& text : texts) {
            keys.emplace_back();
            collator.AppendKey(ToUtf16(text), keys.back());
        }
        EXPECT_TRUE(std::is_sorted(keys.begin(), keys.end())) << locale;
        std::reverse(texts.begin(), texts.end());
        std::sort(texts.begin(), texts.end(),
                  [&](const wxString& a, const wxString& b) { return collator.IsLess(a, b); });
        EXPECT_EQ(texts, std::vector<wxString>(words.begin(), words.end())) << locale;
    }
}
