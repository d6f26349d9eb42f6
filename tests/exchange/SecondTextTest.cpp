#include "exchange/SecondText.h"

#include <gtest/gtest.h>

TEST(SecondText, SplitsWhatWasJoined) {
    struct Case {
        const wchar_t* Stored;
        const wchar_t* Main;
        const wchar_t* Second;
    };
    const Case cases[] = {
        {L"x\n\u3010y\u3011", L"x", L"y"},
        {L"x", L"x", L""},
        {L"", L"", L""},
        {L"\n\u3010y\u3011", L"", L"y"},
        // No opening bracket on a line of its own.
        {L"x\u3010y\u3011", L"x\u3010y\u3011", L""},
        {L"x\u3011", L"x\u3011", L""},
        // Text behind the closing bracket.
        {L"x\n\u3010y\u3011z", L"x\n\u3010y\u3011z", L""},
        // The first opening and the last closing bracket count.
        {L"x\n\u3010y\n\u3010z\u3011\u3011", L"x", L"y\n\u3010z\u3011"},
    };
    for (const Case& row : cases) {
        wxString main = "old";
        wxString second = "old";
        SplitSecondText(row.Stored, main, second);
        EXPECT_EQ(main, row.Main) << row.Stored;
        EXPECT_EQ(second, row.Second) << row.Stored;
        EXPECT_EQ(HasSecondText(row.Stored), !second.empty()) << row.Stored;
        EXPECT_EQ(JoinSecondText(main, second), row.Stored);
    }
}
