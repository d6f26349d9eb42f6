#include "list/SearchWords.h"

#include <gtest/gtest.h>

TEST(SearchWordsTest, ASearchReadsAsItIsMeant) {
    const struct {
        const wchar_t* Text;
        const char* Words;
    } rows[] = {
        {L"", ""},
        {L"ecole \"big house\"", R"("ecole", "big house")"},
        {L"front:a -notes:\"b c\"", R"(Front: "a", not Notes: "b c")"},
        {L"is:due -reverse:is:new", "Due Cards, not New Cards (Back to Front)"},
        {L"is:hard hard:7", "Hardest Cards (20), Hardest Cards (7)"},
        {L"due<-2w interval>=90min", "Next Review < -14 days, Interval >= 90 minutes"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(SearchInWords(SearchQuery::Words(row.Text)), row.Words);
    }
    EXPECT_EQ(SearchInWords(SearchQuery::Exact("is:due x")), "\"is:due x\"");
}
