#include "store/CardSequence.h"

#include "store/UndoHistory.h"
#include "support/StoreFixture.h"

struct CardSequenceTest : StoreFixture {
    // Stores cards of these numbers; their row ids begin with 1.
    void Store(const std::vector<int32_t>& orders, int32_t category = 0) {
        for (const int32_t order : orders) {
            mCards.push_back(MakeCard("f", "b", category));
            mCards.back().IntroductionOrder = order;
        }
        size_t inserted = 0;
        const auto first = mCards.end() - static_cast<std::ptrdiff_t>(orders.size());
        EXPECT_EQ(mDatabase.InsertFlashCards({first, mCards.end()}, inserted), 0);
    }
    // The row ids with their numbers, in the order of introduction.
    std::string Sequence() {
        return Query(
            "SELECT group_concat(r || ':' || o, ' ') FROM (SELECT rowid AS r,"
            " IntroductionOrder AS o FROM Cards ORDER BY CategoryId,o,r)")[0];
    }
    int Write(const CardRenumberings& changes) {
        StoreChange change;
        const int result = Renumber(mDatabase, changes, change);
        mHistory.Add(std::move(change));
        return result;
    }
    std::vector<FlashCard> mCards;
    UndoHistory mHistory;
};

TEST_F(CardSequenceTest, ChosenCardsMoveOnePlaceAndComeBackInOneStep) {
    struct Case {
        std::vector<int32_t> Orders;
        std::vector<int64_t> Chosen;
        bool IsLater;
        const char* Expected;
    };
    constexpr int32_t kMost = 2147483647;
    for (const Case& row :
         std::vector<Case>{{{1, 5, 9}, {2}, true, "1:1 3:5 2:9"},
                           {{1, 5, 9}, {3}, false, "1:1 3:5 2:9"},
                           {{1, 2, 3, 4}, {2, 4}, false, "2:1 1:2 4:3 3:4"},
                           {{1, 2, 3, 4}, {1, 2}, true, "3:1 1:2 2:3 4:4"},
                           // At the end already, alone or with a neighbour.
                           {{1, 2, 3}, {1}, false, "1:1 2:2 3:3"},
                           {{1, 2, 3}, {1, 2, 3}, true, "1:1 2:2 3:3"},
                           {{1, 2, 3}, {2, 3}, true, "1:1 2:2 3:3"},
                           // Equal numbers become different, and push those after them.
                           {{7, 7, 7, 8, 20}, {2}, true, "1:7 3:8 2:9 4:10 5:20"},
                           // There is no greater number.
                           {{5, kMost, kMost}, {2}, true, "1:1 3:2 2:3"}}) {
        mDatabase.Execute("DELETE FROM Cards");
        Store(row.Orders);
        const std::string before = Sequence();
        CardRenumberings changes;
        EXPECT_EQ(FindMoves(mDatabase, row.Chosen, row.IsLater, changes), 0);
        EXPECT_EQ(Write(changes), 0);
        EXPECT_EQ(Sequence(), row.Expected);
        UndoOutcome outcome;
        EXPECT_EQ(mHistory.UndoLast(mDatabase, outcome), 0);
        EXPECT_EQ(Sequence(), before);
        EXPECT_EQ(outcome.LeftAlone, 0);
    }
}

TEST_F(CardSequenceTest, CardsOfSeveralCategoriesMoveInTheirOwn) {
    EXPECT_EQ(mDatabase.CategoryInsert("Verbs"), 0);
    Store({1, 2});
    Store({1, 2}, 1);
    CardRenumberings changes;
    EXPECT_EQ(FindMoves(mDatabase, {4, 1, 99}, true, changes), 0);
    EXPECT_EQ(Write(changes), 0);
    EXPECT_EQ(Sequence(), "2:1 1:2 3:1 4:2");
}

TEST_F(CardSequenceTest, ManyNumbersAreWrittenAndTakenBackWithoutWhatWasChangedSince) {
    Store(std::vector<int32_t>(1100, 3));
    std::vector<OrderedCard> places;
    EXPECT_EQ(mDatabase.SelectPlaces(0, places), 0);
    EXPECT_EQ(Write(NumberFrom(places, 10)), 0);
    const std::string counts =
        "SELECT count(DISTINCT IntroductionOrder),min(IntroductionOrder),"
        "max(IntroductionOrder) FROM Cards";
    EXPECT_EQ(Query(counts), Strings{"1100|10|1109"});
    FlashCard studied = Stored(mCards[0].CardId);
    studied.Forward.Introduced = true;
    EXPECT_EQ(mDatabase.UpdateFlashCard(studied), 0);
    Query("UPDATE Cards SET IntroductionOrder=5000 WHERE rowid=2");
    UndoOutcome outcome;
    EXPECT_EQ(mHistory.UndoLast(mDatabase, outcome), 0);
    EXPECT_EQ(outcome.Restored, 1099);
    EXPECT_EQ(outcome.LeftAlone, 1);
    EXPECT_EQ(Query(counts), Strings{"2|3|5000"});
    EXPECT_TRUE(Stored(studied.CardId).Forward.Introduced);
    EXPECT_EQ(mHistory.RedoLast(mDatabase, outcome), 0);
    EXPECT_EQ(Query(counts), Strings{"1100|10|5000"});
}

TEST_F(CardSequenceTest, NewCardsShareTheirNumbersInAnotherOrder) {
    Store({4, 4, 6, 8});
    Query("UPDATE Cards SET Introduced=1 WHERE rowid=3");
    std::vector<OrderedCard> places;
    EXPECT_EQ(mDatabase.SelectNewPlaces(kReviewForward, 0, places), 0);
    EXPECT_EQ(Write(DealNumbers(places, [](size_t) { return 0; })), 0);
    EXPECT_EQ(Sequence(), "2:4 4:5 3:6 1:8");
}

TEST_F(CardSequenceTest, AGroupThatFailsIsWrittenCardByCard) {
    Query("CREATE UNIQUE INDEX one ON Cards(IntroductionOrder)");
    Reopen();
    Store({1, 2, 3});
    std::vector<int64_t> written;
    EXPECT_LT(mDatabase.UpdateOrders({{1, 1, 2, {}}, {3, 3, 9, {}}}, written), 0);
    EXPECT_EQ(written, std::vector<int64_t>{3});
    EXPECT_EQ(mReport.Texts.size(), 1U);
    EXPECT_EQ(Sequence(), "1:1 2:2 3:9");
}
