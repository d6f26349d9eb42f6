#include "app/CurrentCategory.h"

#include <gtest/gtest.h>
#include <wx/confbase.h>

#include <vector>

#include "shell/CategoryName.h"
#include "shell/Settings.h"
#include "support/GuiTest.h"

namespace {

constexpr char kKey[] = "CurrentCategoryId";

class CurrentCategoryTest : public GuiTest {
  protected:
    CurrentCategoryTest() { EXPECT_EQ(mDatabase.Open(mStore.Path("store.vlm"), mWait), 0); }

    void AddCategories(const std::vector<wxString>& names) {
        for (const wxString& name : names) {
            ASSERT_GE(mDatabase.CategoryInsert(name), 0);
        }
    }

    TemporaryDirectory mStore;
    RecordingReport mReport;
    SilentUpgradeWait mWait;
    Database mDatabase{mReport};
};

TEST_F(CurrentCategoryTest, AnUnknownChoiceIsRepairedToTheFirstCategory) {
    AddCategories({"French", "Latin"});
    EXPECT_EQ(GetCurrentCategoryId(mDatabase), 0);
    struct Case {
        const char* Stored;
        int32_t Current;
    };
    for (const Case& expected : {Case{"1", 1}, Case{"0", 0}, Case{"7", 0}, Case{"-5", 0},
                                 Case{"-1", -1}, Case{"nonsense", 0}}) {
        SCOPED_TRACE(expected.Stored);
        OpenSettings()->Write(kKey, expected.Stored);
        EXPECT_EQ(GetCurrentCategoryId(mDatabase), expected.Current);
    }
}

TEST_F(CurrentCategoryTest, AStoreWithoutCategoriesGetsDefaultWhateverTheChoice) {
    for (const char* const stored : {"", "-1", "4"}) {
        SCOPED_TRACE(stored);
        OpenSettings()->Write(kKey, stored);
        EXPECT_EQ(GetCurrentCategoryId(mDatabase), 0);
        EXPECT_EQ(GetCategoryName(mDatabase, 0), "Default");
        // And it stays the answer.
        EXPECT_EQ(GetCurrentCategoryId(mDatabase), 0);
        ASSERT_EQ(mDatabase.DeleteCategory(0), 0);
    }
}

TEST_F(CurrentCategoryTest, OnlyCategoriesOfTheStoreAndNoneCanBeChosen) {
    AddCategories({"French", "Latin"});
    SetCurrentCategoryId(mDatabase, 1);
    SetCurrentCategoryId(mDatabase, 9);
    EXPECT_EQ(GetCurrentCategoryId(mDatabase), 1);
    SetCurrentCategoryId(mDatabase, -1);
    EXPECT_EQ(GetCurrentCategoryId(mDatabase), -1);
    EXPECT_EQ(GetCategoryName(mDatabase, -1), "Deleted Items");
    EXPECT_EQ(GetCategoryName(mDatabase, 9), "Error");
}

}  // namespace
