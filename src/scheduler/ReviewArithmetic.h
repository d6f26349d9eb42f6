#pragma once

#include <cstdint>

#include "scheduler/ReviewRandom.h"
#include "store/CardSchedule.h"

// What one score does to a schedule. What counts is not the planned interval but the time that
// really passed since the last review: the score turns it into the next interval. All arithmetic
// is in 32-bit float, one operation after the other, so that the same reviews give the same bits on
// every machine.

// How much faster an easy card grows than a neutral one: 1 at difficulty 16, within 0.2 to 5.
float DifficultyFactor(int difficulty);

// What the elapsed time is multiplied by for a score of 0 to 5.
float ScoreMultiplier(int score, int difficulty);

// Breaks up cards that were learnt together: a factor around 1 by a random number of 0 to 1.
float SpreadFactor(float random);

struct ReviewResult {
    // Seconds since the last review as they were counted.
    float Elapsed;
    float OldInterval;
    float NewInterval;
    uint8_t Difficulty;
    // The card's first score in this direction, and a pass.
    bool FirstPass;
};

// The effect of a score on a schedule that is reviewed now. Draws a random number only when the
// interval is spread.
ReviewResult Review(const CardSchedule& schedule, int score, const wxDateTime& now,
                    ReviewRandom& random);
