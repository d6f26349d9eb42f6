#pragma once

#include <wx/string.h>

#include <cstdint>

#include "store/FlashCard.h"

// The units in which an interval is shown: 0 seconds, 1 minutes, 2 hours, 3 days, 4 weeks, 5
// months, 6 years. An unknown index counts as seconds.
constexpr int kIntervalUnitCount = 7;
float IntervalUnitSeconds(int unit);
// Returns the unit's word, translated.
wxString IntervalUnitName(int unit);

// An interval as a value of one unit.
struct IntervalInUnits {
    float Value;
    int Unit;
};
// Splits seconds into the largest unit that is exceeded more than twice, else seconds: 7200 is 120
// minutes, and 7201 is 2.0003 hours.
IntervalInUnits SplitInterval(float seconds);

// The source of chance in the schedule. Tests repeat or choose it.
class ReviewRandom {
  public:
    virtual ~ReviewRandom() = default;
    // Returns a number in the closed range 0 to 1.
    virtual float Next() = 0;
};

// The fixed sequence of a 15-bit linear congruential generator that begins with 1 at each start of
// the program: 41, 18467, 6334, 26500, ... each divided by 32767.
class SequenceRandom : public ReviewRandom {
  public:
    float Next() override;
    // Returns the next whole number, 0 to 32767.
    int NextWhole();

  private:
    uint32_t mState = 1;
};

// What a score does to a schedule. It multiplies the time that really passed since the last review,
// not the planned interval: a card remembered after a long gap is rewarded for the gap. All
// arithmetic is in 32-bit float, one operation after the other, so that the same reviews give the
// same bits on every machine.

// The settings for what a forgotten card keeps of its interval, in hundredths: with 0 it begins
// again.
constexpr int kRelearnShares[] = {0, 25, 50};

// A score of at least this passes a card; a lower one fails it.
constexpr int kLeastGoodScore = 3;

// A card is being relearned from a score that fails it until one that passes it. What it lost is
// the interval, in seconds, that the first failure met; 0 while it is not being relearned.
//
// Returns what it has lost after a score that met the old interval.
float LostInterval(float lost, int score, float oldInterval);
// Returns the least interval of a card after a score if it keeps a share of what it lost; 0 where
// the score alone decides. Such a pass has the least interval of a first pass, too: without it the
// card would come several times more on that day.
float RelearnedInterval(float lost, int score, int share);

// Returns how fast the interval of a card grows compared with that of a neutral card: 1 at
// difficulty 16, more below it, at least 0.2 and at most 5.
float DifficultyFactor(int difficulty);

// Returns the factor of the elapsed time for a score of 0 to 5.
float ScoreMultiplier(int score, int difficulty);

// Returns a factor around 1 for a random number of 0 to 1. It keeps cards learnt together from
// falling due together.
float SpreadFactor(float random);

struct ReviewResult {
    // Seconds since the last review; 5 for a new card.
    float Elapsed;
    float OldInterval;
    float NewInterval;
    uint8_t Difficulty;
    // True for the card's first score in this direction, if it is 3 or more.
    bool FirstPass;
};

// Returns the effect of a score given now, whose interval is at least the given one, in seconds.
// Draws a random number only if the interval is spread.
ReviewResult Review(const CardSchedule& schedule, int score, const wxDateTime& now,
                    ReviewRandom& random, float least = 0);

// The shortest and the longest interval, in seconds, that a score can give; chance decides between
// them. Both are the same when the interval is not spread.
struct IntervalRange {
    float Least;
    float Greatest;
};

// Returns what Review would make of the interval, without drawing a random number.
IntervalRange PredictReview(const CardSchedule& schedule, int score, const wxDateTime& now,
                            float least = 0);

// The ERC number of a card puts the introduced cards of a category into blocks of 4096: the upper
// bits count the blocks, and the low 12 bits are random, so that the cards of a block have a
// shuffled order. Early review takes the lowest number: a card that has waited for the most blocks.
//
// Returns the number of a card after a score. It had erc before, and greatest is the greatest
// number of its category.
int32_t NextErc(int32_t erc, int32_t greatest, ReviewRandom& random);
// Returns true when the numbers are used up: all cards of the store have to go back to block 0
// first, where NextErc puts this one.
bool IsErcUsedUp(int32_t erc, int32_t greatest);
// Returns the least number of the block.
int32_t ErcBlock(int32_t erc);
