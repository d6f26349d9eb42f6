#include <sqlite3.h>

#include "store/CategoryTree.h"
#include "store/SearchQuery.h"
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

TEST(CategoryTree, WhatIsBelowACategoryGoesByTheNamesAlone) {
    const char* const names[] = {"Languages",
                                 "Languages::Greek",
                                 "Languagesx",
                                 "Languages:x",
                                 "languages::Latin",
                                 "Languages::French",
                                 "Languages::French::Verbs",
                                 "Languages::",
                                 "Music::Blues",
                                 "My Languages::Thai",
                                 "Music::Blues::Slow"};
    std::list<Category> categories;
    for (const char* const name : names) {
        categories.push_back({static_cast<int32_t>(categories.size()), name});
    }
    const struct {
        int32_t Id;
        std::vector<int32_t> Below;
    } cases[] = {{0, {5, 6, 1}}, {1, {}},   {5, {6}}, {6, {}},
                 {7, {}},        {8, {10}}, {-1, {}}, {99, {}}};
    for (const auto& c : cases) {
        const CategoryChoice choice = ChooseAmong(categories, c.Id);
        EXPECT_EQ(choice.Id, c.Id);
        EXPECT_EQ(choice.Below, c.Below) << c.Id;
    }
}

// Each of three categories has three cards, of which one search finds one.
TEST_F(CategoryStoreTest, AChoiceOfSeveralIsListedFoundAndCountedTogether) {
    mDatabase.CategoryInsert("Default::One");
    mDatabase.CategoryInsert("Other");
    mDatabase.CategoryInsert("Default::Two");
    for (int32_t i = 0; i < 12; ++i) {
        FlashCard card = MakeCard(i < 4 ? "dog" : "cat", "", i % 4);
        card.IntroductionOrder = 20 - i;
        card.ReverseX = i == 3 || i == 6;
        card.Forward.Introduced = i == 7;
        Insert(card);
    }
    const CategoryChoice choice = FindChoice(mDatabase, 0);
    using RowIds = std::vector<int64_t>;
    const auto read = [](const auto& select) {
        RowIds rowIds;
        EXPECT_EQ(select(rowIds), 0);
        return rowIds;
    };
    const CardOrder order = CardColumn::kIntroductionOrder;
    const RowIds all{12, 10, 9, 8, 6, 5, 4, 2, 1};
    EXPECT_EQ(
        read([&](RowIds& ids) { return mDatabase.CardSelectRowIdsOrder(choice, order, ids); }),
        all);
    EXPECT_EQ(
        read([&](RowIds& ids) { return mDatabase.CardSelectFirstRowIds(choice, false, 4, ids); }),
        RowIds(all.begin(), all.begin() + 4));
    EXPECT_EQ(
        read([&](RowIds& ids) { return mDatabase.CardSelectFirstRowIds(choice, true, 4, ids); }),
        RowIds(all.rbegin(), all.rbegin() + 4));
    for (const SearchQuery& query : {SearchQuery::Exact("do_"), SearchQuery::Words("DOG is:new")}) {
        CardSearch search;
        search.Query = query;
        EXPECT_EQ(read([&](RowIds& ids) {
                      return mDatabase.SearchRowIdsOrder(choice, search, order, ids);
                  }),
                  (RowIds{4, 2, 1}));
    }
    int32_t counts[4] = {};
    EXPECT_EQ(mDatabase.SelectCategoryIdCount(choice, counts[0]), 0);
    EXPECT_EQ(mDatabase.CountReverse(0, counts[1]), 0);
    EXPECT_EQ(mDatabase.Count(kReviewReverse, choice, counts[2]), 0);
    EXPECT_EQ(mDatabase.CountIntroduced(kReviewForward, choice, counts[3]), 0);
    EXPECT_THAT(counts, testing::ElementsAre(9, 3, 8, 1));
}
