#include <sqlite3.h>

#include "support/StoreFixture.h"

struct CategoryStoreTest : StoreFixture {
    // "id name" of every category, in the order of the ids.
    Strings Categories() { return Query("SELECT Id || ' ' || Name FROM Categories ORDER BY Id"); }
};

TEST_F(CategoryStoreTest, TheSmallestFreeIdIsTakenAndStrayCardsLeaveIt) {
    EXPECT_EQ(mDatabase.CategoryInsert("One"), 0);
    EXPECT_EQ(mDatabase.CategoryInsert("Two"), 0);
    EXPECT_EQ(mDatabase.DeleteCategory(1), 0);
    const FlashCard stray = Insert(MakeCard("front", "back", 1));
    EXPECT_EQ(mDatabase.CategoryInsert("Again"), 0);
    EXPECT_EQ(Categories(), (Strings{"0 Default", "1 Again", "2 Two"}));
    EXPECT_EQ(Stored(stray.CardId).CategoryId, -1);
}

TEST_F(CategoryStoreTest, TheLookupSeesNamesAsTheStoreDoes) {
    EXPECT_EQ(mDatabase.CategoryInsert("007"), 0);
    std::list<Category> found;
    EXPECT_EQ(mDatabase.SelectCategoryByName("007", found), 0);
    ASSERT_EQ(found.size(), 1U);
    EXPECT_EQ(found.front().Name, "7");
    EXPECT_EQ(mDatabase.UpdateCategory({found.front().Id, L"\u00c4pfel"}), 0);
    EXPECT_EQ(mDatabase.SelectCategoryByName("007", found), 0);
    EXPECT_TRUE(found.empty());
    EXPECT_EQ(mDatabase.SelectCategoryById(1, found), 0);
    EXPECT_EQ(found.front().Name, L"\u00c4pfel");
    EXPECT_LT(mDatabase.CategoryInsert("Default"), 0);
    EXPECT_EQ(mDatabase.GetLastError(), "UNIQUE constraint failed: Categories.Name");
}
