#include "scheduler/Backlog.h"

#include <cmath>

#include "scheduler/Scheduler.h"
#include "support/StoreFixture.h"

namespace {

constexpr int64_t kDay = 86400;

struct BacklogTest : StoreFixture {
    // Cards with intervals of ten to sixty days that fell due one after the other, from that many
    // days ago to so many days ahead.
    void InsertCards(int count, int64_t daysAgo, int64_t daysAhead) {
        for (int i = 0; i < count; ++i) {
            FlashCard card = MakeCard("front", "back");
            const int64_t interval = (10 + i * 7 % 50) * kDay;
            const int64_t due =
                mClock.Now().GetTicks() - daysAgo * kDay + (daysAgo + daysAhead) * kDay * i / count;
            card.Forward.Introduced = true;
            card.Forward.ReviewInterval = static_cast<float>(interval);
            card.Forward.LastReview = wxDateTime(static_cast<time_t>(due - interval - 60));
            card.ReverseX = true;
            Insert(card);
        }
    }
    // Returns the day on which a learner ends the backlog who gives each known card that score in
    // its turn, and all others a 4.
    int StudyToTheEnd(int perDay, const std::vector<int>& scores, int share = 0) {
        ReviewLog log(ReviewLogPath(StorePath()));
        Scheduler scheduler(mDatabase, {mCategory, mMaintenance, mClock, mRandom, &log});
        scheduler.SetRelearnShare(share);
        const int64_t start = mClock.Now().GetTicks();
        size_t turn = 0;
        for (int day = 0; day < 365; ++day) {
            mClock.Set(start + day * kDay);
            scheduler.SetDirections(kReviewReverse);
            scheduler.SetDirections(kReviewForward);
            for (int i = 0; i < perDay && !scheduler.IsBreakTime(); ++i) {
                const bool isKnown =
                    scheduler.GetCurrentCard().Forward.ReviewInterval >= kKnownInterval;
                mClock.Advance(8);
                scheduler.ScoreCard(isKnown ? scores[turn++ % scores.size()] : 4);
            }
            if (scheduler.IsBreakTime()) {
                return day;
            }
        }
        return BacklogForecast::kNever;
    }

    FakeClock mClock;
    SequenceRandom mRandom;
    FakeCategorySource mCategory;
    SilentMaintenance mMaintenance;
    std::atomic<bool> mCancelled{false};
};

}  // namespace

// Three weeks of holiday, 900 cards and a measure of 90 a day, as the study window says it on the
// first morning.
TEST_F(BacklogTest, AfterAHolidayTheBacklogIsGoneTenDaysLater) {
    InsertCards(900, 21, 0);
    ReviewRecord last;
    last.Time = mClock.Now().GetTicks() - 22 * kDay;
    ReviewLog(ReviewLogPath(StorePath())).Append(last, CardSchedule(), 0, 0);
    StudyDay day(mClock);
    day.SetLimits({1, false, 90, false, 0});
    day.Open(&mDatabase, nullptr);
    day.MayIntroduce(0);
    ASSERT_NE(day.GetPause(), nullptr);
    EXPECT_EQ(day.GetPause()->Backlog.Due, 900);
    EXPECT_EQ(day.GetPause()->Backlog.DoneAfter, 9);
    EXPECT_EQ(day.GetPause()->LastAnswer, last.Time);
    EXPECT_EQ(StudyToTheEnd(90, {4}), 9);
}

TEST_F(BacklogTest, EndsOnTheDayOnWhichALearnerEndsIt) {
    const struct {
        int Cards;
        int64_t DaysAhead;
        int PerDay;
        std::vector<int> Scores;
        int RelearnShare = 0;
    } cases[] = {{200, 0, 200, {4}},
                 {300, 30, 20, {4, 5, 3}},
                 {300, 10, 60, {4, 4, 0, 4, 5}},
                 {200, 10, 30, {4, 4, 0, 4, 5}, 25},
                 {200, 0, 40, {4, 2, 4, 1}},
                 {60, 0, 1, {0}}};
    for (const auto& c : cases) {
        ASSERT_EQ(mDatabase.Execute("DELETE FROM Cards"), 0);
        InsertCards(c.Cards, 21, c.DaysAhead);
        BacklogPlan plan;
        std::vector<CardSchedules> cards;
        int64_t rowId = INT64_MIN;
        ASSERT_EQ(mDatabase.SelectSchedules(1000, rowId, cards), c.Cards);
        plan.Schedules = StudiedSchedules(cards, ReviewQuery());
        ASSERT_EQ(plan.Schedules.size(), static_cast<size_t>(c.Cards));
        plan.AnswersPerDay = c.PerDay;
        plan.RelearnShare = c.RelearnShare;
        plan.Now = mClock.Now().GetTicks();
        for (const int score : c.Scores) {
            plan.Habit.Known[static_cast<size_t>(score)] += 20;
        }
        plan.Habit.Learning = {0, 0, 0, 0, 20, 0};
        const BacklogForecast forecast = ForecastBacklog(plan, mCancelled);
        EXPECT_EQ(forecast.DoneAfter, StudyToTheEnd(c.PerDay, c.Scores, c.RelearnShare))
            << c.PerDay;
    }
}
