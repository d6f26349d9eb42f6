#include "exchange/SecondText.h"

#include <gtest/gtest.h>

TEST(SecondText, SplitsWhatWasJoined) {
    const struct {
        const wchar_t* Stored;
        const wchar_t* Main;
        const wchar_t* Second;
    } cases[] = {
        {L"x\n\u3010y\u3011", L"x", L"y"},
        {L"", L"", L""},
        {L"\n\u3010y\u3011", L"", L"y"},
        {L"x\u3010y\u3011", L"x\u3010y\u3011", L""},
        {L"x\u3011", L"x\u3011", L""},
        {L"x\n\u3010y\u3011z", L"x\n\u3010y\u3011z", L""},
        // The first opening and the last closing bracket count.
        {L"x\n\u3010y\n\u3010z\u3011\u3011", L"x", L"y\n\u3010z\u3011"},
    };
    for (const auto& row : cases) {
        wxString main = "old";
        wxString second = "old";
        SplitSecondText(row.Stored, main, second);
        EXPECT_EQ(main, row.Main) << row.Stored;
        EXPECT_EQ(second, row.Second) << row.Stored;
        EXPECT_EQ(JoinSecondText(main, second), row.Stored);
    }
}
