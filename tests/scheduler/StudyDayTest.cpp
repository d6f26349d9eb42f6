#include "scheduler/StudyDay.h"

#include <cstdlib>
#include <map>

#include "scheduler/Scheduler.h"
#include "support/StoreFixture.h"

namespace {

struct StudyDayTest : StoreFixture {
    StudyDayTest() {
        ::setenv("TZ", "Europe/Berlin", 1);
        ::tzset();
        mDatabase.CategoryInsert("Other");
    }
    ~StudyDayTest() override {
        mDay.Open(nullptr, nullptr);
        ::unsetenv("TZ");
        ::tzset();
    }

    void InsertNew(int count, int32_t category) {
        for (int i = 0; i < count; ++i) {
            Insert(MakeCard("new", "card", category));
        }
    }
    Scheduler MakeScheduler() {
        mDay.Open(&mDatabase, nullptr);
        return {mDatabase, {mCategory, mMaintenance, mClock, mRandom, &mLog, &mDay}};
    }
    // Answers that many cards, ten seconds each, and scores one of them again. Returns how many
    // were new.
    int Answer(Scheduler& scheduler, int count) {
        int introduced = 0;
        for (int i = 0; i < count && scheduler.HasCard(); ++i) {
            introduced += scheduler.GetCurrentCard().Forward.Introduced ? 0 : 1;
            mClock.Advance(10);
            scheduler.ScoreCard(4);
        }
        scheduler.SetHistoryIndex(0);
        scheduler.ScoreCard(5);
        scheduler.SetHistoryIndex(-1);
        return introduced;
    }
    int Done(StudyDay& day) {
        // The question waits for the counts; the progress does not.
        day.MayIntroduce(0);
        const auto progress = day.GetProgress();
        return progress ? progress->Done : -1;
    }

    FakeClock mClock{1698530000};
    SequenceRandom mRandom;
    FakeCategorySource mCategory;
    SilentMaintenance mMaintenance;
    ReviewLog mLog{ReviewLogPath(StorePath())};
    StudyDay mDay{mClock};
};

}  // namespace

// What the worker reads from the log is what was counted in memory.
TEST_F(StudyDayTest, TheDayEndsAtMidnightByTheClockOnTheWall) {
    InsertNew(30, 0);
    mDay.SetLimits({3, false, 40, false, 0});
    Scheduler scheduler = MakeScheduler();
    const struct {
        const char* Story;
        int64_t Time;
        int Day;
        int New;
        bool RestartsBefore = false;
        int Answers = 12;
    } visits[] = {
        {"ten minutes to midnight", 1698529800, 28, 3},
        {"midnight", 1698530400, 29, 3},
        {"half past two, in summer time", 1698539400, 29, 0},
        {"half past two again, an hour later", 1698543000, 29, 0, true},
        {"just before midnight, after 25 hours", 1698620220, 29, 0},
        {"the next day", 1698620400, 30, 3, true},
        {"the clock set back to a day that had its cards", 1698577200, 29, 0},
        {"the clock set back to before the start", 1698404400, 27, 3},
        {"the clock is right again", 1698624000, 30, 0, true},
        {"the first second of a day of 23 hours, when all is due", 1711839600, 31, 3, false, 60},
        {"its last hour", 1711918800, 31, 0}};
    std::map<int, int> answers;
    for (const auto& visit : visits) {
        mClock.Set(visit.Time);
        if (visit.RestartsBefore) {
            mDay.Open(&mDatabase, nullptr);
        }
        EXPECT_EQ(Answer(scheduler, visit.Answers), visit.New) << visit.Story;
        answers[visit.Day] += visit.Answers;
        StudyDay later(mClock);
        later.SetLimits(mDay.GetLimits());
        later.Open(&mDatabase, nullptr);
        EXPECT_EQ(Done(mDay), answers[visit.Day]) << visit.Story;
        EXPECT_EQ(Done(later), answers[visit.Day]) << visit.Story;
    }
}

TEST_F(StudyDayTest, NewCardsAreCountedInEachCategoryOrInAllAndMoreCanBeHad) {
    for (const bool perCategory : {true, false}) {
        ASSERT_EQ(mDatabase.Execute("DELETE FROM Cards"), 0);
        mClock.Advance(86400);
        mCategory.Current = 0;
        InsertNew(9, 0);
        InsertNew(9, 1);
        mDay.SetLimits({2, perCategory, 0, false, 0});
        Scheduler scheduler = MakeScheduler();
        EXPECT_EQ(Answer(scheduler, 5), 2);
        EXPECT_TRUE(scheduler.HoldsNewCards());
        EXPECT_TRUE(scheduler.IsBreakTime());
        EXPECT_EQ(scheduler.CountCategories()[1].New, perCategory ? 9 : 0);
        // After a start the log tells in which category they were.
        mDay.Open(&mDatabase, nullptr);
        mCategory.Current = 1;
        scheduler.Refresh();
        EXPECT_EQ(scheduler.HasCard(), perCategory);
        mDay.GrantMore(1);
        scheduler.Refresh();
        EXPECT_EQ(Answer(scheduler, 7), 2);
        EXPECT_EQ(mDay.MayIntroduce(0), false);
        // The grant is for today.
        mClock.Advance(86400);
        EXPECT_EQ(Answer(scheduler, 7), 2);
        // A category below another one still has its own.
        mDatabase.UpdateCategory({1, "Default::Other"});
        mCategory.Current = 0;
        mClock.Advance(86400);
        scheduler.Refresh();
        EXPECT_EQ(Answer(scheduler, 20), perCategory ? 4 : 2);
        EXPECT_TRUE(scheduler.HoldsNewCards());
        mDay.GrantMore(1);
        EXPECT_FALSE(scheduler.HoldsNewCards());
        mDatabase.UpdateCategory({1, "Other"});
    }
}

TEST_F(StudyDayTest, MinutesArePausesLeftOut) {
    InsertNew(9, 0);
    mClock.Advance(36000);
    mDay.SetLimits({0, false, 5, true, 0});
    Scheduler scheduler = MakeScheduler();
    Answer(scheduler, 6);
    mClock.Advance(7200);
    Answer(scheduler, 6);
    mDay.SetLimits({1, false, 5, true, 0});
    // Twice a first answer of a minute, and five of ten seconds.
    EXPECT_EQ(Done(mDay), 3);
    EXPECT_EQ(mDay.GetLimits().AnswersPerDay(12.5), 24);
}
