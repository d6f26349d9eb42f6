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
    int32_t Category = 0;
};

struct SchedulerTest : StoreFixture {
    void InsertRow(const CardRow& row) {
        FlashCard card = MakeCard(row.Name, "back", row.Category);
        card.ForwardX = row.Direction == R;
        card.ReverseX = row.Direction == F;
        CardSchedule& schedule = row.Direction == F ? card.Forward : card.Reverse;
        schedule.Introduced = row.SecondsAgo >= 0;
        schedule.LastReview = mClock.Now() - wxTimeSpan::Seconds(row.SecondsAgo);
        schedule.ReviewInterval = row.Interval;
        (schedule.Introduced ? schedule.ERC : card.IntroductionOrder) = row.Number;
        Insert(card);
    }
    // The card that is chosen among these alone.
    wxString Choose(const std::vector<CardRow>& cards) {
        EXPECT_EQ(mDatabase.Execute("DELETE FROM Cards"), 0);
        for (const CardRow& row : cards) {
            InsertRow(row);
        }
        mScheduler.Refresh();
        return mScheduler.GetCurrentCard().Front;
    }

    FakeClock mClock;
    FakeRandom mRandom;
    FakeCategorySource mCategory;
    SilentMaintenance mMaintenance;
    Scheduler mScheduler{mDatabase, {mCategory, mMaintenance, mClock, mRandom}};
};

// What the simulation of study rarely meets.
TEST_F(SchedulerTest, ChoosesAtTheLimitsAsTheRulesSay) {
    const struct {
        const char* Story;
        std::vector<CardRow> Cards;
        const char* Expected;
        int32_t EarlyInterval = -1;
    } cases[] = {
        {"due now", {{"a", F, 99, 99, 0}, {"b", F, -1, 0, 3}}, "b"},
        {"due now, walked over", {{"a", F, 99, 99, 0}, {"b", F, -1, 0, 3}}, "b", 180},
        {"tiny interval", {{"a", F, 9000, 1, 0}, {"b", R, 5, 0.5f, 0}}, "b"},
        {"stored due time out of range", {{"a", F, 9, 3e15f, 0}, {"b", F, -1, 0, 3}}, "b"},
        {"then a chance of exactly half", {{"a", F, 1, 90, 9}, {"b", R, 1, 90, 9}}, "b"},
        {"early: interval as set", {{"a", F, 999, 180, 0}, {"b", F, -1, 0, 3}}, "a", 180},
    };
    mScheduler.SetDirections(kBoth);
    for (const auto& c : cases) {
        mScheduler.SetEarlyIntroduction(c.EarlyInterval >= 0);
        mScheduler.SetEarlyIntroductionInterval(c.EarlyInterval);
        EXPECT_EQ(Choose(c.Cards), c.Expected) << c.Story;
    }
}

TEST_F(SchedulerTest, SeveralCategoriesAreStudiedTogether) {
    mDatabase.CategoryInsert("Default::Greek");
    mDatabase.CategoryInsert("Default::French");
    mDatabase.CategoryInsert("Other");
    constexpr int32_t kGreek = 1;
    constexpr int32_t kFrench = 2;
    constexpr int32_t kBlock = 4096;
    const struct {
        const char* Story;
        std::vector<CardRow> Cards;
        const char* Expected;
    } cases[] = {
        {"the longest wait of all",
         {{"a", F, 200, 99, 0, kFrench}, {"b", F, 500, 99, 0, kGreek}, {"c", F, 300, 99, 0}},
         "b"},
        {"new ones of the upper category first",
         {{"a", F, -1, 0, 1, kFrench}, {"b", F, -1, 0, 7}, {"c", F, -1, 0, 8}},
         "b"},
        {"then in the order of the names",
         {{"a", F, -1, 0, 1, kGreek}, {"b", F, -1, 0, 7, kFrench}, {"c", F, -1, 0, 9, kFrench}},
         "b"},
        {"none of a category beside them", {{"a", F, 500, 99, 0, 3}}, "Empty"},
        {"early: the one that lies most blocks behind its own category",
         {{"a", F, 1, 99, 3 * kBlock, kGreek},
          {"b", F, 1, 99, 70 * kBlock, kFrench},
          {"c", F, 1, 99, 79 * kBlock, kFrench}},
         "b"}};
    for (const auto& c : cases) {
        EXPECT_EQ(Choose(c.Cards), c.Expected) << c.Story;
    }
    EXPECT_EQ(mScheduler.GetNextDueTime(), mClock.Now() + wxTimeSpan::Seconds(98));
    mScheduler.ScoreCard(3);
    EXPECT_EQ(Query("SELECT ERC/4096 FROM Cards"), (Strings{"3", "79", "79"}));
    // A renamed category leaves with its cards.
    mDatabase.UpdateCategory({kFrench, "French"});
    mScheduler.Refresh();
    EXPECT_EQ(mScheduler.GetCurrentCard().Front, "a");
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
    mScheduler.Initialise();
    mScheduler.SetDirections(F);
    EXPECT_EQ(mScheduler.GetCurrentCard().Front, "second");
    // What cannot be read is no card, and nothing is ready.
    mDatabase.Close();
    mScheduler.SetHistoryIndex(-1);
    EXPECT_EQ(mScheduler.GetCurrentCard().Front, "Error");
    mScheduler.Refresh();
    EXPECT_EQ(mScheduler.GetCurrentCard().Front, "Empty");
    mScheduler.SetDirections(kBoth);
    EXPECT_EQ(mScheduler.GetReadyCount() + mScheduler.GetHistoryCount(), 0);
}

TEST(Categories, TheNextWithDueOrElseNewCardsIsFoundRoundTheEnd) {
    const struct {
        std::vector<std::pair<int, int>> Waiting;  // Due and new cards, by the id of the category.
        int32_t Current;
        int32_t Expected;
    } cases[] = {{{{}, {3, 0}, {2, 0}}, 0, 1},
                 {{{}, {3, 0}, {2, 0}}, 1, 2},
                 {{{1, 0}, {3, 0}, {2, 0}}, 2, 0},
                 {{{}, {}, {2, 9}}, 2, -1},
                 {{{}, {4, 0}, {}}, 2, 1},
                 {{{}, {4, 0}, {2, 0}}, -1, 1},
                 {{{0, 1}, {0, 1}, {2, 0}}, 0, 2},
                 {{{0, 1}, {}, {2, 0}}, 2, 0},
                 {{}, 0, -1}};
    for (const auto& c : cases) {
        std::vector<CategoryReady> categories;
        for (const auto& [ready, fresh] : c.Waiting) {
            categories.push_back({{static_cast<int32_t>(categories.size()), "c"}, ready, fresh});
        }
        const CategoryReady* const next = FindNextDue(categories, c.Current);
        EXPECT_EQ(next == nullptr ? -1 : next->Info.Id, c.Expected) << c.Current;
    }
}

// Both ends of 64 bits: the future is not due, the past has waited for longer than anything.
TEST_F(SchedulerTest, DamagedTimesSaturate) {
    InsertRow({"damaged", F, 9, 1e6f, 0});
    InsertRow({"ready", F, 100, 10.0f, 0});
    for (const char* const last : {"9223372036854775807", "-9223372036854775808"}) {
        Query(std::string("UPDATE Cards SET NextReview=0, LastReview=") + last + " WHERE ROWID=1");
        mScheduler.SetDirections(R);
        mScheduler.SetDirections(F);
        EXPECT_EQ(mScheduler.GetCurrentCard().Front, *last == '-' ? "damaged" : "ready");
    }
    mScheduler.ScoreCard(3);
    EXPECT_EQ(Query("SELECT ReviewInterval > 9e15, NextReview FROM Cards"),
              (Strings{"1|-1", "0|1699999910"}));
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

// What an exchange with another computer brings while a card is on show.
TEST_F(SchedulerTest, AScoreKeepsWhatOthersHaveChangedSinceTheCardWasLoaded) {
    const struct {
        const char* Change;
        const char* Query;
        const char* Expected;
    } cases[] = {
        {"SELECT 1", "Front,LastScore,Introduced", "card|4|1"},
        {"Front='new',CategoryId=7,ReverseX=1", "Front,CategoryId,ReverseX,LastScore", "new|7|1|4"},
        {"RIntroduced=1,RReviewInterval=77", "RReviewInterval,LastScore", "77.0|4"},
        {"Introduced=1,LastReview=1699000000,ReviewInterval=500000",
         "ReviewInterval>500000,LastScore", "1|4"},
        {"DELETE FROM Cards", "Front", ""},
    };
    for (const auto& c : cases) {
        ASSERT_EQ(mDatabase.Execute("DELETE FROM Cards"), 0);
        const FlashCard card = Insert(MakeCard("card", "back"));
        mScheduler.Initialise();
        ASSERT_EQ(mScheduler.GetCurrentCard().Front, "card");
        const std::string change = c.Change;
        const bool isWhole = change.find('=') == std::string::npos;
        Query(isWhole ? change : "UPDATE Cards SET " + change);
        mScheduler.ScoreCard(4);
        const Strings rows = Query(std::string("SELECT ") + c.Query + " FROM Cards");
        EXPECT_EQ(rows, *c.Expected == '\0' ? Strings() : Strings{c.Expected}) << c.Change;
        // Another score of the same card begins where the last one did.
        EXPECT_EQ(mScheduler.GetHistoryCount(), 1);
    }
}

}  // namespace
