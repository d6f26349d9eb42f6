#include "app/CurrentCategory.h"

#include "shell/CategoryName.h"
#include "support/GuiTest.h"

TEST_F(GuiStoreTest, AnUnknownCurrentCategoryIsRepairedToOneOfTheStore) {
    EXPECT_EQ(mDatabase.CategoryInsert("Latin"), 0);
    struct Case {
        const char* Stored;
        int32_t Current;
    };
    for (const Case& expected :
         {Case{"1", 1}, Case{"7", 0}, Case{"-5", 0}, Case{"-1", -1}, Case{"nonsense", 0}}) {
        OpenSettings()->Write("CurrentCategoryId", expected.Stored);
        EXPECT_EQ(GetCurrentCategoryId(mDatabase), expected.Current) << expected.Stored;
    }
    // A store without categories gets one, whatever the choice.
    for (const char* const stored : {"", "-1", "4"}) {
        EXPECT_EQ(mDatabase.Execute("DELETE FROM Categories"), 0);
        OpenSettings()->Write("CurrentCategoryId", stored);
        EXPECT_EQ(GetCurrentCategoryId(mDatabase), 0);
        EXPECT_EQ(Query("SELECT Id,Name FROM Categories"), Strings{"0|Default"});
    }
}

TEST_F(GuiStoreTest, OnlyCategoriesOfTheStoreAndNoneCanBecomeCurrent) {
    EXPECT_EQ(mDatabase.CategoryInsert("Latin"), 0);
    SetCurrentCategoryId(mDatabase, 1);
    SetCurrentCategoryId(mDatabase, 9);
    EXPECT_EQ(GetCurrentCategoryId(mDatabase), 1);
    SetCurrentCategoryId(mDatabase, -1);
    EXPECT_EQ(GetCurrentCategoryId(mDatabase), -1);
    EXPECT_EQ(GetCategoryName(mDatabase, -1), "Deleted Items");
    EXPECT_EQ(GetCategoryName(mDatabase, 9), "Error");
}
