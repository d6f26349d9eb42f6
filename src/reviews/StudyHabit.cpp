#include "reviews/StudyHabit.h"

#include <vector>

#include "reviews/ReviewFigures.h"
#include "reviews/StudyTally.h"

StudyHabit FindStudyHabit(const ReviewHistory& history, int64_t now) {
    const int32_t today = DayOf(now);
    const int64_t quarter = StartOfDay(today - SpanDays(ReviewSpan::kQuarter) + 1);
    const int64_t month = StartOfDay(today - SpanDays(ReviewSpan::kMonth) + 1);
    const int64_t end = StartOfDay(today + 1);
    StudyHabit habit;
    StudyTally tally;
    // The day of the last lapse of each card, forward and reverse.
    std::vector<std::array<int32_t, 2>> forgotten(history.Cards().size());
    for (const ReviewHistory::Review& review : history.Reviews()) {
        if (review.IsReplaced || review.Time < quarter || review.Time >= end) {
            continue;
        }
        ReviewRecord record;
        record.Time = review.Time;
        record.Elapsed = 0;
        record.Score = review.Score;
        tally.Add(record);
        if (review.Elapsed >= 0) {
            ++(review.WasKnown ? habit.Known : habit.Learning)[review.Score];
        }
        if (review.Time < month) {
            continue;
        }
        const int32_t day = DayOf(review.Time);
        int32_t& lapse = forgotten[review.Card][review.IsReverse ? 1 : 0];
        ++habit.Answers;
        habit.AnswersToday += day == today ? 1 : 0;
        habit.AfterForgotten += lapse == day ? 1 : 0;
        habit.Passes += review.Score >= kLeastPass ? 1 : 0;
        habit.Threes += review.Score == kLeastPass ? 1 : 0;
        if (review.WasKnown && review.Score < kLeastPass) {
            lapse = day;
        }
    }
    habit.SecondsPerAnswer = tally.SecondsPerAnswer(today);
    return habit;
}
