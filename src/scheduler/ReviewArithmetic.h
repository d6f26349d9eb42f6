#pragma once

#include <wx/string.h>

#include <cstdint>

#include "scheduler/SchedulerSources.h"
#include "store/Database.h"
#include "store/FlashCard.h"

// A set of study directions: which side of a card is shown first.
enum ReviewDirection : int {
    kReviewNone = 0,
    // The front is shown, the back to be recalled.
    kReviewForward = 1,
    // The back is shown, the front to be recalled.
    kReviewReverse = 2
};

// The card's schedule for one direction.
inline CardSchedule& ScheduleOf(FlashCard& card, ReviewDirection direction) {
    return direction == kReviewForward ? card.Forward : card.Reverse;
}
inline const CardSchedule& ScheduleOf(const FlashCard& card, ReviewDirection direction) {
    return direction == kReviewForward ? card.Forward : card.Reverse;
}

// The units in which a length of time is shown: 0 seconds, 1 minutes, 2 hours, 3 days, 4 weeks,
// 5 months, 6 years. An unknown index counts as seconds.
constexpr int kIntervalUnitCount = 7;
float IntervalUnitSeconds(int unit);
// The unit's word, translated.
wxString IntervalUnitName(int unit);

// A length of time as a value of one unit.
struct IntervalInUnits {
    float Value;
    int Unit;
};
// The largest unit of which the time is more than twice, else seconds.
IntervalInUnits SplitInterval(float seconds);

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

// The ERC number of a card puts the introduced cards of a category into blocks of 4096: the upper
// bits count the blocks, and the low 12 bits are random, so that the cards of a block have a
// shuffled order. Early review takes the lowest number, a card that has waited for the most blocks.
//
// Gives the card the number that it gets at a score in that direction; the caller stores it. When
// the numbers are used up, all cards of the store go back to block 0, this one in both directions,
// while the prompt keeps the person informed.
void RenumberCard(Database& database, int32_t categoryId, FlashCard& card,
                  ReviewDirection direction, MaintenancePrompt& prompt, ReviewRandom& random);
