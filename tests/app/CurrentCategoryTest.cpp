#include "storefile/CurrentCategory.h"

#include "support/GuiTest.h"

TEST_F(GuiStoreTest, OnlyCategoriesOfTheStoreAndNoneAreCurrent) {
    EXPECT_EQ(mDatabase.CategoryInsert("Latin"), 0);
    const std::pair<const char*, int32_t> cases[] = {
        {"1", 1}, {"7", 0}, {"-5", 0}, {"-1", -1}, {"nonsense", 0}};
    for (const auto& [stored, current] : cases) {
        OpenSettings()->Write("CurrentCategoryId", stored);
        EXPECT_EQ(GetCurrentCategoryId(mDatabase), current) << stored;
    }
    // A store without categories gets one, whatever the choice.
    for (const char* const stored : {"", "-1", "4"}) {
        EXPECT_EQ(mDatabase.Execute("DELETE FROM Categories"), 0);
        OpenSettings()->Write("CurrentCategoryId", stored);
        EXPECT_EQ(GetCurrentCategoryId(mDatabase), 0);
        EXPECT_EQ(Query("SELECT Id,Name FROM Categories"), Strings{"0|Default"});
    }
    EXPECT_EQ(mDatabase.CategoryInsert("Latin"), 0);
    SetCurrentCategoryId(mDatabase, 1);
    SetCurrentCategoryId(mDatabase, 9);
    EXPECT_EQ(GetCurrentCategoryId(mDatabase), 1);
    SetCurrentCategoryId(mDatabase, -1);
    EXPECT_EQ(GetCurrentCategoryId(mDatabase), -1);
    EXPECT_EQ(GetCategoryName(mDatabase, -1), "Deleted Items");
    EXPECT_EQ(GetCategoryName(mDatabase, 9), "Error");
}
