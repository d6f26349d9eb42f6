#include "categories/CurrentCategory.h"

#include <functional>
#include <utility>

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

// Each window asks while a notice goes round.
TEST_F(GuiStoreTest, TheChoiceIsReadOnceForANoticeAndAgainAfterItIsWritten) {
    struct Window : Observer {
        explicit Window(std::function<void()> update) : mUpdate(std::move(update)) {}
        void Update(Subject*) override { mUpdate(); }
        std::function<void()> mUpdate;
    };
    EXPECT_EQ(mDatabase.CategoryInsert("Latin"), 0);
    const auto current = [this] { return GetCurrentCategoryId(mDatabase); };
    Window first([&] {
        EXPECT_EQ(current(), 0);
        // As another program would.
        OpenSettings()->Write("CurrentCategoryId", 1L);
    });
    Window second([&] {
        EXPECT_EQ(current(), 0);
        SetCurrentCategoryId(mDatabase, -1);
    });
    Window third([&] { EXPECT_EQ(current(), -1); });
    const SubjectAttachment attachments[] = {
        {&mDatabase, &first}, {&mDatabase, &second}, {&mDatabase, &third}};
    mDatabase.Notify();
    OpenSettings()->Write("CurrentCategoryId", 0L);
    EXPECT_EQ(current(), 0);
    mDatabase.Notify();
}
