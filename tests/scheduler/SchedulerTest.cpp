#include "scheduler/Scheduler.h"

#include <gtest/gtest.h>

#include <memory>

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

class SchedulerTest : public StoreFixture {
  protected:
    void Start(ReviewDirection mask = F) {
        mpScheduler = std::make_unique<Scheduler>(
            mDatabase, Scheduler::Sources{mCategory, mMaintenance, mClock, mRandom});
        mpScheduler->SetDirections(mask);
    }
    FlashCard InsertRow(const CardRow& row) {
        FlashCard card = MakeCard(row.Name, "back");
        card.ForwardX = row.Direction == R;
        card.ReverseX = row.Direction == F;
        CardSchedule& schedule = row.Direction == F ? card.Forward : card.Reverse;
        schedule.Introduced = row.SecondsAgo >= 0;
        schedule.LastReview = mClock.Now() - wxTimeSpan::Seconds(row.SecondsAgo);
        schedule.ReviewInterval = row.Interval;
        (schedule.Introduced ? schedule.ERC : card.IntroductionOrder) = row.Number;
        return Insert(card);
    }
    std::string Flags() const {
        return std::string(mpScheduler->IsStoreEmpty() ? "store" : "") +
               (mpScheduler->IsCategoryEmpty() ? "category" : "") +
               (mpScheduler->IsAllExcluded() ? "excluded" : "") +
               (mpScheduler->HasCard() ? "card" : "");
    }

    FakeClock mClock;
    FakeRandom mRandom;
    FakeCategorySource mCategory;
    SilentMaintenance mMaintenance;
    std::unique_ptr<Scheduler> mpScheduler;
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
        {"equal: forward first", {{"a", R, 40, 20, 0}, {"b", F, 20, 10, 0}}, "b"},
        {"equal: earlier due first", {{"a", F, 20, 10, 0}, {"b", F, 40, 20, 0}}, "b"},
        {"tiny interval", {{"a", F, 9000, 1, 0}, {"b", R, 5, 0.5f, 0}}, "b"},
        {"due exactly now waits", {{"a", F, 10, 10, 0}, {"b", F, -1, 0, 3}}, "b"},
        {"due for a second", {{"a", F, 11, 10, 0}, {"b", F, -1, 0, 3}}, "a"},
        {"part of a second is cut", {{"a", F, 11, 10.99f, 0}, {"b", F, -1, 0, 3}}, "a"},
        {"stored due time out of range", {{"a", F, 9, 3e9f, 0}, {"b", F, -1, 0, 3}}, "b"},
        {"lower order first", {{"a", F, -1, 0, 3}, {"b", R, -1, 0, 2}}, "b"},
        {"equal order by chance, below", {{"a", F, -1, 0, 3}, {"b", R, -1, 0, 3}}, "a", 0.49f},
        {"equal order by chance, half", {{"a", F, -1, 0, 3}, {"b", R, -1, 0, 3}}, "b", 0.5f},
        {"least ERC", {{"a", F, 1, 90, 9}, {"b", F, 1, 80, 8}, {"c", R, 1, 20, 9}}, "b"},
        {"then the next due", {{"a", F, 1, 90, 9}, {"b", F, 1, 80, 9}, {"c", R, 1, 20, 9}}, "c", 0},
        {"early: due exactly now waits", {{"a", F, 10, 10, 0}, {"b", F, -1, 0, 3}}, "b", 0, 180},
        {"then chance, below", {{"a", F, 1, 90, 9}, {"b", R, 1, 90, 9}}, "a", 0.49f},
        {"then chance, half", {{"a", F, 1, 90, 9}, {"b", R, 1, 90, 9}}, "b", 0.5f},
        {"early: short interval", {{"a", F, 99, 10, 0}, {"b", F, -1, 0, 3}}, "a", 0, 180},
        {"early: interval as set", {{"a", F, 999, 180, 0}, {"b", F, -1, 0, 3}}, "a", 0, 180},
        {"early: past it", {{"a", F, 999, 180.5f, 0}, {"b", F, -1, 0, 3}}, "b", 0, 180},
        {"not early", {{"a", F, 999, 180.5f, 0}, {"b", F, -1, 0, 3}}, "a"},
        {"early: short one within the horizon",
         {{"a", F, 999, 200, 0}, {"b", F, -1, 0, 3}, {"c", F, 1, 180, 0}},
         "a",
         0,
         180},
        {"early: short one at the horizon",
         {{"a", F, 999, 200, 0}, {"b", F, -1, 0, 3}, {"c", F, 0, 180, 0}},
         "b",
         0,
         180},
        {"early: nothing new", {{"a", F, 999, 200, 0}, {"b", F, 1, 200, 0}}, "a", 0, 180},
    };
    for (const auto& c : cases) {
        ASSERT_EQ(mDatabase.Execute("DELETE FROM Cards"), 0);
        Start(kBoth);
        for (const CardRow& row : c.Cards) {
            InsertRow(row);
        }
        mpScheduler->SetEarlyIntroduction(c.EarlyInterval >= 0);
        mpScheduler->SetEarlyIntroductionInterval(c.EarlyInterval);
        mRandom = FakeRandom();
        mRandom.Feed(c.Random);
        mpScheduler->Refresh();
        EXPECT_EQ(mpScheduler->GetCurrentCard().Front, c.Expected) << c.Story;
    }
}

TEST_F(SchedulerTest, SaysWhyThereIsNoCard) {
    Start();
    EXPECT_EQ(Flags(), "store");
    EXPECT_TRUE(mpScheduler->GetCurrentCardId().IsZero());
    InsertRow({"card", R, 100, 5.0f, 0});
    mCategory.Current = 1;
    mpScheduler->Refresh();
    EXPECT_EQ(Flags(), "category");
    mCategory.Current = 0;
    mpScheduler->Refresh();
    EXPECT_EQ(Flags(), "excluded");
    EXPECT_EQ(mpScheduler->GetReadyCount(), 0);
    mpScheduler->SetDirections(kBoth);
    EXPECT_EQ(Flags(), "card");
    EXPECT_EQ(mpScheduler->GetReadyCount(), 1);
    EXPECT_FALSE(mpScheduler->IsBreakTime());
    mpScheduler->ScoreCard(4);
    EXPECT_TRUE(mpScheduler->IsBreakTime());
    EXPECT_EQ(mpScheduler->GetShownScore(), -1);
    mpScheduler->SetHistoryIndex(0);
    EXPECT_FALSE(mpScheduler->IsBreakTime());
    EXPECT_EQ(mpScheduler->GetShownScore(), 4);
}

TEST_F(SchedulerTest, TellsListenersInOrderAndLetsThemAsk) {
    InsertRow({"first", F, -1, 0.0f, 1});
    InsertRow({"second", F, -1, 0.0f, 2});
    Start();
    std::string told;
    mpScheduler->AddListener([&](int value) { told += value == 1 ? "1 " : "0 "; });
    mpScheduler->AddListener([&](int) { told += mpScheduler->GetCurrentCard().Front + ", "; });
    mpScheduler->ScoreCard(3);
    mpScheduler->SetHistoryIndex(5);
    mpScheduler->ScoreCard(4);  // Leaves the move, and so the notice, to the caller.
    mpScheduler->SetHistoryIndex(-7);
    mpScheduler->SetDirections(kBoth);  // The live card's direction is still among them.
    mpScheduler->SetDirections(R);
    mpScheduler->Initialise();
    EXPECT_EQ(told, "1 second, 0 first, 0 second, 1 Empty, 0 Empty, ");
}

TEST_F(SchedulerTest, ForgetsCardsThatAreGone) {
    const struct {
        std::vector<int> Deleted;  // Positions in a history of five.
        int Position;
        int NewPosition;
    } cases[] = {
        {{0}, 3, 2},           // One before the card shown.
        {{4}, 3, 3},           // One behind it.
        {{3}, 3, 2},           // The card shown itself.
        {{0, 1}, 2, 0},        // Two before.
        {{0, 1, 2, 3}, 4, 1},  // The fourth is counted as place 3, past the position of 1.
    };
    for (const auto& c : cases) {
        mDatabase.Execute("DELETE FROM Cards");
        for (int32_t i = 5; i >= 0; --i) {
            InsertRow({"card", F, -1, 0.0f, 5 - i});
        }
        Start();
        for (int i = 0; i < 5; ++i) {
            mpScheduler->ScoreCard(3);
        }
        mpScheduler->SetHistoryIndex(c.Position);
        for (const int place : c.Deleted) {
            mDatabase.Execute(
                wxString::Format("DELETE FROM Cards WHERE IntroductionOrder=%i", 4 - place));
        }
        mpScheduler->Refresh();
        EXPECT_EQ(mpScheduler->GetHistoryIndex(), c.NewPosition);
        EXPECT_EQ(mpScheduler->GetHistoryCount(), 5 - static_cast<int>(c.Deleted.size()));
    }
    // A position that the count has left past the end restores nothing, and comes back to a card
    // that there is.
    mpScheduler->ScoreCard(5);
    EXPECT_EQ(Query("SELECT ReviewInterval FROM Cards WHERE IntroductionOrder=0")[0], "3600.0");
    mpScheduler->Refresh();
    EXPECT_EQ(mpScheduler->GetHistoryIndex(), 0);
}

}  // namespace
