#include "store/CardSort.h"

#include <numeric>

#include "support/StoreFixture.h"

struct CardSortTest : StoreFixture {
    std::vector<int64_t> Sorted(CardOrder order, std::vector<int64_t> rowIds) {
        EXPECT_TRUE(SortByText(mDatabase, order, mIsCancelled, rowIds));
        return rowIds;
    }
    std::atomic<bool> mIsCancelled{false};
};

using RowIds = std::vector<int64_t>;

TEST_F(CardSortTest, CardsOfTheSameTextStayInTheOrderGiven) {
    EXPECT_EQ(mDatabase.CategoryInsert("another"), 0);
    for (const auto& [front, category] :
         std::vector<std::pair<const wchar_t*, int32_t>>{{L"яблоко", 0},
                                                         {L"Card 10", 1},
                                                         {L"card", 0},
                                                         {L"Card 9", 0},
                                                         {L"", 1},
                                                         {L"card", 1}}) {
        Insert(MakeCard(front, "same", category));
    }
    // The other rows lie far away in the file.
    Query("UPDATE Cards SET ROWID = ROWID + 1000 WHERE ROWID > 4");
    const RowIds given{1006, 3, 1, 1005, 2, 4};
    EXPECT_EQ(Sorted(CardColumn::kFront, given), (RowIds{1005, 1006, 3, 4, 2, 1}));
    EXPECT_EQ(Sorted({CardColumn::kFront, true}, given), (RowIds{1, 2, 4, 1006, 3, 1005}));
    EXPECT_EQ(Sorted(CardColumn::kBack, given), given);
    EXPECT_EQ(Sorted(CardColumn::kCategoryName, given), (RowIds{1006, 1005, 2, 3, 1, 4}));
    // One that is gone is left out.
    EXPECT_EQ(Sorted(CardColumn::kFront, {2, 77, 3}), (RowIds{3, 2}));
    EXPECT_EQ(Sorted(CardColumn::kFront, {}), RowIds());

    RowIds kept = given;
    mIsCancelled = true;
    EXPECT_FALSE(SortByText(mDatabase, CardColumn::kFront, mIsCancelled, kept));
    mIsCancelled = false;
    mDatabase.Close();
    EXPECT_FALSE(SortByText(mDatabase, CardColumn::kFront, mIsCancelled, kept));
    EXPECT_EQ(kept, given);
}

TEST_F(CardSortTest, ManyCardsOfNearlyTheSameTextAreSorted) {
    // More than are sorted in one go, in no order, with texts that differ after what a key's
    // beginning holds.
    constexpr int64_t kCards = 70000;
    Query(
        "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 70000)"
        " INSERT INTO Cards (CardId, Front) SELECT printf('%08x-0000-4000-8000-000000000000', i),"
        " CASE i % 2 WHEN 0 THEN 'a quite long text ' ELSE 'a quite long texture ' END"
        " || (i * 7919 % 70000) FROM n");
    RowIds rowIds(kCards);
    std::iota(rowIds.begin(), rowIds.end(), 1);
    const RowIds sorted = Sorted(CardColumn::kFront, rowIds);
    ASSERT_EQ(sorted.size(), rowIds.size());
    std::pair<int64_t, int64_t> former(0, -1);
    for (const int64_t rowId : sorted) {
        const std::pair<int64_t, int64_t> next(rowId % 2, rowId * 7919 % kCards);
        ASSERT_LT(former, next) << rowId;
        former = next;
    }
}
