#include <gtest/gtest.h>

#include "base/Text.h"
#include "base/Unicode.h"

TEST(Text, Utf8TakesEveryTextThereAndBack) {
    const wxString text(L"a\0\u00e4\u4e2d\U0001F600z", 6);
    const std::string bytes("a\0\xc3\xa4\xe4\xb8\xad\xf0\x9f\x98\x80z", 12);
    EXPECT_EQ(ToUtf8(text), bytes);
    EXPECT_EQ(FromUtf8(bytes), text);
    wxString broken = "a";
    broken += wxUniChar(0xD83D);
    broken += wxUniChar(0x110000);
    EXPECT_EQ(ToUtf8(broken + "z"), "a\xef\xbf\xbd\xef\xbf\xbdz");
}

TEST(Text, WideSpaceAndLowerCaseKnowEveryScript) {
    EXPECT_EQ(TrimWide(L"\u3000\u00A0 a b\t\u202F\n"), "a b");
    EXPECT_EQ(TrimWide(L" \u3000"), "");
    EXPECT_EQ(LowerWide(L"\u00c4\u0416AIZ[@1"), L"\u00e4\u0436aiz[@1");
}
