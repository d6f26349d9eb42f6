#include "exchange/SecondText.h"

#include <gtest/gtest.h>

#include "base/Utf8.h"

TEST(SecondText, SplitsWhatWasJoined) {
    const std::tuple<const wchar_t*, const wchar_t*, const wchar_t*> cases[] = {
        {L"x\n\u3010y\u3011", L"x", L"y"},
        {L"", L"", L""},
        {L"\n\u3010y\u3011", L"", L"y"},
        {L"x\u3010y\u3011", L"x\u3010y\u3011", L""},
        {L"x\u3011", L"x\u3011", L""},
        {L"x\n\u3010y\u3011z", L"x\n\u3010y\u3011z", L""},
        // The first opening and the last closing bracket count.
        {L"x\n\u3010y\n\u3010z\u3011\u3011", L"x", L"y\n\u3010z\u3011"},
    };
    for (const auto& [stored, expectedMain, expectedSecond] : cases) {
        const std::u16string side = ToUtf16(stored);
        const SplitSide parts = SplitSecondText(side);
        EXPECT_EQ(parts.Main, ToUtf16(expectedMain)) << stored;
        EXPECT_EQ(parts.Second, ToUtf16(expectedSecond)) << stored;
        EXPECT_EQ(JoinSecondText(expectedMain, expectedSecond), stored);
    }
}
