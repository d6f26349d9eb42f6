#include "reviews/StudyTally.h"

#include <gtest/gtest.h>

#include "reviews/StudyHabit.h"

namespace {

// A review of one card for each letter, a day apart: p a pass and f a failure while the interval is
// short, P and L while it is a day, n the first score after the card was begun anew; a minute after
// a letter, u and r replace it by a pass and by a failure.
ReviewRecord MakeReview(char letter, int64_t time) {
    ReviewRecord record;
    record.Time = time;
    record.Score = std::string_view("fLr").find(letter) == std::string_view::npos ? 4 : 1;
    record.OldInterval =
        std::string_view("PLur").find(letter) == std::string_view::npos ? 600.0f : 86400.0f;
    record.Elapsed = letter == 'n' ? -1 : 86400;
    return record;
}

}  // namespace

TEST(StudyTallyTest, CountsFailuresOfKnownCardsAndNoneThatWasTakenBack) {
    const struct {
        const char* Reviews;
        int Lapses;
        int Answers;
    } cases[] = {{"PLPLLLLLPLL", 8, 11}, {"LfffpL", 2, 6}, {"LLu", 1, 2},   {"PrP", 1, 2},
                 {"Lr", 1, 1},           {"LLLnP", 0, 5},  {"LLnfL", 1, 5}, {"Lur", 1, 1}};
    for (const auto& c : cases) {
        StudyTally tally;
        int64_t time = 0;
        int answers = 0;
        for (const char letter : std::string_view(c.Reviews)) {
            const bool replaces = letter == 'u' || letter == 'r';
            ReviewRecord record = MakeReview(letter, time + (replaces ? 60 : 86400));
            record.Replaces = replaces ? time : -1;
            time = record.Time;
            tally.Add(record);
        }
        for (int32_t day = -1; day <= 12; ++day) {
            answers += tally.On(day).Answers;
        }
        EXPECT_EQ(tally.CountLapses(CardUuid(), kReviewForward), c.Lapses) << c.Reviews;
        EXPECT_EQ(answers, c.Answers) << c.Reviews;
        EXPECT_EQ(tally.CountLapses(CardUuid(), kReviewReverse), 0);
    }
}

TEST(StudyTallyTest, TheHabitOfAMonthTellsWhatForgettingCostAndWhichPassesKeepAnInterval) {
    ReviewHistory history;
    const auto take = [&history](int64_t time, int score, float interval, int64_t replaces = -1) {
        ReviewRecord record = MakeReview('P', time);
        record.Score = static_cast<uint8_t>(score);
        record.OldInterval = interval;
        record.Replaces = replaces;
        history.Take(FormatReviewLine(record));
    };
    constexpr int64_t kDay = 86400;
    constexpr int64_t kNow = 19700 * kDay + kDay / 2;
    take(kNow - 100 * kDay, 1, 1e6f);
    take(kNow - 60 * kDay, 5, 1e6f);
    // Forgotten, asked three times more, and a day later as ever.
    for (const auto& [seconds, score, interval] :
         {std::tuple(0, 0, 1e6f), {20, 3, 1.0f}, {40, 3, 20.0f}, {60, 4, 40.0f}}) {
        take(kNow - 2 * kDay + seconds, score, interval);
    }
    take(kNow - kDay, 2, 60.0f);
    take(kNow - kDay + 30, 3, 60.0f, kNow - kDay);
    take(kNow + 3 * kDay, 0, 1e6f);
    const StudyHabit habit = FindStudyHabit(history, kNow);
    EXPECT_EQ(habit.Answers, 5);
    EXPECT_EQ(habit.AfterForgotten, 3);
    EXPECT_EQ(habit.Passes, 4);
    EXPECT_EQ(habit.Threes, 3);
    EXPECT_EQ(habit.AnswersToday, 0);
    EXPECT_EQ(habit.Known, (std::array<int32_t, 6>{1, 0, 0, 0, 0, 1}));
    EXPECT_EQ(habit.Learning, (std::array<int32_t, 6>{0, 0, 0, 3, 1, 0}));
}
