#pragma once

#include <array>
#include <cstdint>

#include "reviews/ReviewLog.h"

// How a person has answered of late, in all categories and directions. Replaced scores do not
// count.
struct StudyHabit {
    // Within the last 30 days.
    int32_t Answers = 0;
    // Answers to a card later on a day on which it had a lapse.
    int32_t AfterForgotten = 0;
    int32_t Passes = 0;
    // Passes with a 3, which keeps an interval as it is.
    int32_t Threes = 0;
    // Today.
    int32_t AnswersToday = 0;
    // Scores 0 to 5 within the last 90 days: of known cards, and all other scores but a card's
    // first.
    std::array<int32_t, 6> Known{};
    std::array<int32_t, 6> Learning{};
    // The mean time of an answer, without the pauses.
    double SecondsPerAnswer = 8.0;
};

// Any thread.
StudyHabit FindStudyHabit(const ReviewHistory& history, int64_t now);
