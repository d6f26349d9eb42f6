#include "scheduler/Scheduler.h"

#include "support/StoreFixture.h"

namespace {

constexpr auto kBoth = static_cast<ReviewDirection>(kReviewForward | kReviewReverse);
constexpr ReviewDirection F = kReviewForward;
constexpr ReviewDirection R = kReviewReverse;

// A card of one direction, excluded in the other: scored some seconds ago, with Number as its ERC,
// or with a negative time a new one, with Number as its order.
struct CardRow {
    const char* Name;
    ReviewDirection Direction;
    int64_t SecondsAgo;
    float Interval;
    int32_t Number;
};

struct SchedulerTest : StoreFixture {
    void InsertRow(const CardRow& row) {
        FlashCard card = MakeCard(row.Name, "back");
        card.ForwardX = row.Direction == R;
        card.ReverseX = row.Direction == F;
        CardSchedule& schedule = row.Direction == F ? card.Forward : card.Reverse;
        schedule.Introduced = row.SecondsAgo >= 0;
        schedule.LastReview = mClock.Now() - wxTimeSpan::Seconds(row.SecondsAgo);
        schedule.ReviewInterval = row.Interval;
        (schedule.Introduced ? schedule.ERC : card.IntroductionOrder) = row.Number;
        Insert(card);
    }

    FakeClock mClock;
    FakeRandom mRandom;
    FakeCategorySource mCategory;
    SilentMaintenance mMaintenance;
    Scheduler mScheduler{mDatabase, {mCategory, mMaintenance, mClock, mRandom}};
};

TEST_F(SchedulerTest, ChoosesByRatioThenNewThenLeastErc) {
    const struct {
        const char* Story;
        std::vector<CardRow> Cards;
        const char* Expected;
        float Random = 0.5f;
        int32_t EarlyInterval = -1;
    } cases[] = {
        {"highest ratio", {{"a", F, 100, 50, 0}, {"b", F, 30, 10, 0}, {"c", R, 29, 10, 0}}, "b"},
        {"just due", {{"a", F, 10001, 10000, 0}, {"b", F, -1, 0, 3}}, "a"},
        {"due now", {{"a", F, 99, 99, 0}, {"b", F, -1, 0, 3}}, "b"},
        {"due now, walked over", {{"a", F, 99, 99, 0}, {"b", F, -1, 0, 3}}, "b", 0, 180},
        {"equal: forward first", {{"a", R, 40, 20, 0}, {"b", F, 20, 10, 0}}, "b"},
        {"equal: earlier due first", {{"a", F, 20, 10, 0}, {"b", F, 40, 20, 0}}, "b"},
        {"tiny interval", {{"a", F, 9000, 1, 0}, {"b", R, 5, 0.5f, 0}}, "b"},
        {"stored due time out of range", {{"a", F, 9, 3e9f, 0}, {"b", F, -1, 0, 3}}, "b"},
        {"then the next due", {{"a", F, 1, 90, 9}, {"b", F, 1, 80, 9}, {"c", R, 1, 20, 9}}, "c", 0},
        {"then chance, below", {{"a", F, 1, 90, 9}, {"b", R, 1, 90, 9}}, "a", 0.49f},
        {"then chance, half", {{"a", F, 1, 90, 9}, {"b", R, 1, 90, 9}}, "b", 0.5f},
        {"early: interval as set", {{"a", F, 999, 180, 0}, {"b", F, -1, 0, 3}}, "a", 0, 180},
        {"early: past it", {{"a", F, 999, 180.5f, 0}, {"b", F, -1, 0, 3}}, "b", 0, 180},
        {"soon", {{"a", F, 999, 200, 0}, {"b", F, -1, 0, 3}, {"c", F, 1, 180, 0}}, "a", 0, 180},
        {"late", {{"a", F, 999, 200, 0}, {"b", F, -1, 0, 3}, {"c", F, 0, 180, 0}}, "b", 0, 180},
    };
    mScheduler.SetDirections(kBoth);
    for (const auto& c : cases) {
        ASSERT_EQ(mDatabase.Execute("DELETE FROM Cards"), 0);
        for (const CardRow& row : c.Cards) {
            InsertRow(row);
        }
        mScheduler.SetEarlyIntroduction(c.EarlyInterval >= 0);
        mScheduler.SetEarlyIntroductionInterval(c.EarlyInterval);
        mRandom = FakeRandom();
        mRandom.Feed(c.Random);
        mScheduler.Refresh();
        EXPECT_EQ(mScheduler.GetCurrentCard().Front, c.Expected) << c.Story;
    }
}

TEST_F(SchedulerTest, TellsListenersInOrderAndLetsThemAsk) {
    InsertRow({"first", F, -1, 0.0f, 1});
    InsertRow({"second", F, -1, 0.0f, 2});
    mScheduler.SetDirections(F);
    std::string told;
    mScheduler.AddListener([&](int value) { told += value == 1 ? "1 " : "0 "; });
    mScheduler.AddListener([&](int) { told += mScheduler.GetCurrentCard().Front + ", "; });
    mScheduler.ScoreCard(3);
    EXPECT_EQ(mScheduler.GetShownScore(), -1);
    mScheduler.SetHistoryIndex(5);
    EXPECT_EQ(mScheduler.GetShownScore(), 3);
    mScheduler.ScoreCard(4);  // Leaves the move, and so the notice, to the caller.
    mScheduler.SetHistoryIndex(-7);
    mScheduler.SetDirections(kBoth);  // The live card's direction is still among them.
    mScheduler.SetDirections(R);
    mScheduler.Initialise();
    mScheduler.Refresh();
    EXPECT_EQ(told, "1 second, 0 first, 0 second, 1 Empty, 0 Empty, 0 Empty, ");
    // Without a category of its own the scheduler takes the first one.
    mCategory.Current = -1;
    mScheduler.SetDirections(F);
    mScheduler.Initialise();
    EXPECT_EQ(mScheduler.GetCurrentCard().Front, "second");
    // What cannot be read is no card, and nothing is ready.
    mDatabase.Close();
    mScheduler.SetHistoryIndex(-1);
    EXPECT_EQ(mScheduler.GetCurrentCard().Front, "Error");
    mScheduler.Refresh();
    EXPECT_EQ(mScheduler.GetCurrentCard().Front, "Empty");
    mScheduler.SetDirections(R);
    EXPECT_EQ(mScheduler.GetReadyCount() + mScheduler.GetHistoryCount(), 0);
}

TEST_F(SchedulerTest, TellsWhatIsReadyAndWhyThereIsNoCard) {
    for (const CardRow& row :
         {CardRow{"a", F, 100, 50, 0}, CardRow{"b", F, 90, 50, 0}, CardRow{"c", R, 60, 50, 0},
          CardRow{"due now", F, 50, 50, 16383}, CardRow{"due now", R, 50, 50, 0}}) {
        InsertRow(row);
    }
    const std::tuple<ReviewDirection, int, const char*> cases[] = {
        {F, 2, "a"}, {R, 1, "c"}, {kBoth, 3, "c"}};
    for (const auto& [directions, ready, card] : cases) {
        mScheduler.SetDirections(directions);
        EXPECT_EQ(mScheduler.GetReadyCount(), ready);
        EXPECT_EQ(mScheduler.GetCurrentCard().Front, card);
        EXPECT_FALSE(mScheduler.IsBreakTime());
    }
    mScheduler.SetDirections(F);
    mScheduler.ScoreCard(5);
    mScheduler.ScoreCard(5);
    // It is not break time in the history, nor at the moment in which the card is due.
    EXPECT_TRUE(mScheduler.IsBreakTime());
    mScheduler.SetHistoryIndex(0);
    EXPECT_FALSE(mScheduler.IsBreakTime());
    mScheduler.SetHistoryIndex(-1);
    mClock.Set(mScheduler.GetCurrentCard().Forward.NextReview().GetTicks());
    EXPECT_FALSE(mScheduler.IsBreakTime());

    mCategory.Current = 1;
    mScheduler.Refresh();
    EXPECT_TRUE(mScheduler.IsCategoryEmpty() && !mScheduler.IsAllExcluded());
    Query("UPDATE Cards SET CategoryId = 1, ForwardX = 1, ReverseX = 1");
    mScheduler.Refresh();
    EXPECT_TRUE(!mScheduler.IsCategoryEmpty() && mScheduler.IsAllExcluded());
}

TEST_F(SchedulerTest, ARescoreStaysWithItsCardWhenOthersHaveGone) {
    InsertRow({"a", F, 8000000, 7.5e6f, 0});
    for (const char* const name : {"b", "c", "d", "e"}) {
        InsertRow({name, F, -1, 5.0f, *name});
    }
    mScheduler.SetDirections(F);
    for (int i = 0; i < 5; ++i) {
        mScheduler.ScoreCard(5);
    }
    mScheduler.SetHistoryIndex(3);
    Query("DELETE FROM Cards WHERE Front IN ('c', 'd', 'e')");
    mScheduler.Refresh();
    EXPECT_EQ(mScheduler.GetCurrentCard().Front, "b");
    mScheduler.ScoreCard(3);
    EXPECT_EQ(Query("SELECT ReviewInterval FROM Cards WHERE Front = 'b'"), Strings{"3600.0"});
}

// Both ends of 64 bits. The past has waited for longer than anything, the future for nothing.
TEST_F(SchedulerTest, DamagedTimesSaturate) {
    InsertRow({"damaged", F, 9, 1e6f, 0});
    InsertRow({"ready", F, 100, 10.0f, 0});
    const std::tuple<const char*, const char*, const char*> cases[] = {
        {"-9223372036854775808", "damaged", "9.22337247494144e+15"},
        {"9223372036854775807", "ready", "100.0"}};
    for (const auto& [last, shown, interval] : cases) {
        Query(std::string("UPDATE Cards SET NextReview = 0, LastReview = ") + last +
              " WHERE Front = 'damaged'");
        mScheduler.SetDirections(R);
        mScheduler.SetDirections(F);
        EXPECT_EQ(mScheduler.GetCurrentCard().Front, shown);
        mScheduler.ScoreCard(3);
        EXPECT_EQ(
            Query(std::string("SELECT ReviewInterval FROM Cards WHERE Front = '") + shown + "'"),
            Strings{interval});
    }
}

TEST_F(SchedulerTest, AnIdentityInCapitalsIsShownAndScored) {
    InsertRow({"ready", F, 100, 10.0f, 0});
    InsertRow({"new", F, -1, 5.0f, 0});
    Query("UPDATE Cards SET CardId = UPPER(CardId)");
    mScheduler.SetDirections(F);
    for (const char* const name : {"ready", "new"}) {
        EXPECT_EQ(mScheduler.GetCurrentCard().Front, name);
        mScheduler.ScoreCard(4);
    }
    EXPECT_EQ(Query("SELECT LastScore, CardId = LOWER(CardId) FROM Cards"),
              (Strings{"4|1", "4|1"}));
}

}  // namespace
