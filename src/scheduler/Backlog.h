#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <vector>

#include "reviews/ReviewFigures.h"
#include "reviews/StudyHabit.h"
#include "store/FlashCard.h"

// Tells when a person who answers so many cards a day has worked off what is due. The days are
// studied through as the Scheduler would: the card that has waited longest in proportion to its
// interval comes first, each score does to the interval what it does in study, and a card that is
// forgotten comes back and takes answers of its own. Scores come in the shares in which the person
// has given them of late, or are all 4 where the log does not tell. New cards are left out: they
// wait until nothing is due. Chance in the intervals and the order of the scores can move the end
// by a few cards, which is a day where they are the last ones.

struct BacklogPlan {
    // The introduced schedules that are not excluded.
    std::vector<CardSchedules::Side> Schedules;
    StudyHabit Habit;
    int32_t AnswersPerDay = 0;
    // What a forgotten card keeps of its interval, in percent.
    int32_t RelearnShare = 0;
    // Seconds since 1970. Each day is studied at this time of the day.
    int64_t Now = 0;
};

struct BacklogForecast {
    static constexpr int32_t kNever = -1;
    // The day, 0 is today, on which nothing is due any more before the day's answers are used up,
    // or just when they are; kNever when that is not within a year.
    int32_t DoneAfter = kNever;
    // Cards due now.
    int32_t Due = 0;
    // What is left due at the end of each day, up to the day on which it is done.
    std::array<int32_t, kForecastDays> LeftOver{};
};

// For a worker: a hundred thousand cards that are never worked off take about a second. Gives up,
// with kNever, when cancelled becomes true.
BacklogForecast ForecastBacklog(const BacklogPlan& plan, const std::atomic<bool>& cancelled);

// Returns the introduced schedules that are not excluded, of one category or all.
std::vector<CardSchedules::Side> StudiedSchedules(const std::vector<CardSchedules>& cards,
                                                  const ReviewQuery& query);
