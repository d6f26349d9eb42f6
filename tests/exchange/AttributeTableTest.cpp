#include "exchange/AttributeTable.h"

#include <gtest/gtest.h>
#include <wx/arrstr.h>

namespace {

struct NameCase {
    const char* Names;
    bool Schedule;
    bool Reverse;
    int Code;
    int Bit;
};

const NameCase kNames[] = {
    {"id cardid", false, false, 0, 0},
    {"front f q question", false, false, 1, 1},
    {"front2", false, false, 2, 2},
    {"back b a answer", false, false, 3, 3},
    {"back2", false, false, 4, 4},
    {"author", false, false, 5, 5},
    {"category c", false, false, 6, 6},
    {"chapter", false, false, 7, 7},
    {"introductionorder", false, false, 8, 8},
    {"forwardx", false, false, 9, 9},
    {"reversex", false, false, 10, 10},
    {"notes", false, false, 11, 11},
    {"active introduced", true, false, 0, 12},
    {"lastreview", true, false, 1, 13},
    {"lastscore", true, false, 2, 14},
    {"reviewinterval", true, false, 3, 15},
    {"difficulty", true, false, 4, 16},
    {"erc", true, false, 5, 17},
    {"rintroduced", true, true, 0, 18},
    {"rlastreview", true, true, 1, 19},
    {"rlastscore", true, true, 2, 20},
    {"rreviewinterval", true, true, 3, 21},
    {"rdifficulty", true, true, 4, 22},
    {"rerc", true, true, 5, 23},
};

}  // namespace

TEST(AttributeTable, GivesAliasesOneBitAndEachAttributeItsOwn) {
    for (const NameCase& row : kNames) {
        for (const wxString& name : wxSplit(row.Names, ' ')) {
            AttributeInfo info;
            ASSERT_TRUE(LookupAttribute(name, info)) << name;
            ASSERT_TRUE(LookupSpelledAttribute(name.Upper(), info)) << name;
            EXPECT_EQ(info.IsSchedule, row.Schedule) << name;
            EXPECT_EQ(info.IsReverse, row.Reverse) << name;
            EXPECT_EQ(info.Code, row.Code) << name;
            EXPECT_EQ(info.Mask, 1U << row.Bit) << name;
        }
    }
}

TEST(AttributeTable, KnowsNoOtherName) {
    for (const char* name : {"", "ractive", "Front", "front ", "fronts", "rid", "rfront"}) {
        AttributeInfo info;
        EXPECT_FALSE(LookupAttribute(name, info)) << name;
    }
    AttributeInfo info;
    EXPECT_FALSE(LookupSpelledAttribute("IntroductionOrderX", info));
    EXPECT_FALSE(LookupSpelledAttribute(wxString('i', 1000), info));
}
