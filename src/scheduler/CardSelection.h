#pragma once

#include <cstdint>
#include <list>
#include <utility>

#include "base/Time.h"
#include "scheduler/ReviewArithmetic.h"
#include "scheduler/SchedulerSources.h"
#include "store/Database.h"
#include "store/FlashCard.h"

// What is studied, and how eagerly new cards come in.
struct StudyOptions {
    int32_t CategoryId = -1;
    // The directions studied, as a set.
    ReviewDirection Directions = kReviewForward;
    // New cards come also while scheduled cards wait, once the interval of each that is due within
    // the next EarlyIntroductionInterval seconds is longer than that.
    bool EarlyIntroduction = false;
    int32_t EarlyIntroductionInterval = 180;
};

// A card and the direction in which it is shown; no card while the direction is kReviewNone.
struct ReviewCard {
    FlashCard Card;
    ReviewDirection Direction = kReviewNone;
};

// Chooses the next card to review: the due card that has waited longest for its interval, else a
// new card, else one that is not due yet, so that study never runs dry while there are cards.
class CardSelection {
  public:
    CardSelection(Database& database, const StudyOptions& options, const Clock& time,
                  ReviewRandom& random)
        : mDatabase(database), mOptions(options), mTime(time), mRandom(random) {}

    // Returns 0, or -1 with chosen unchanged when there is no card.
    int GetReviewCard(ReviewCard& chosen);

  private:
    // What a walk over the due cards finds.
    struct ReadyCard {
        // The chosen card's row; its identity may be stored in a form by which no query finds it.
        int64_t RowId;
        ReviewDirection Direction;
        // The shortest interval seen, also of cards that are due only within the horizon.
        float LeastInterval;
    };
    using FirstCard = int (Database::*)(int32_t, std::list<FlashCard>&);
    using SortKey = std::pair<int64_t, int64_t> (*)(const FlashCard&, ReviewDirection);

    int FindReadyCard(int32_t horizon, ReadyCard& ready);
    int ReadCard(const ReadyCard& ready, ReviewCard& chosen);
    // These succeed also without a card, and chosen then is unchanged.
    int IntroduceCard(ReviewCard& chosen);
    int PickEarlyReviewCard(ReviewCard& chosen);
    // Compares the first card in each direction studied and takes the one with the lower key;
    // chance decides between equal ones.
    int ChooseFirst(FirstCard selectForward, FirstCard selectReverse, SortKey key,
                    ReviewCard& chosen);
    bool Studies(ReviewDirection direction) const { return (mOptions.Directions & direction) != 0; }

    Database& mDatabase;
    const StudyOptions& mOptions;
    const Clock& mTime;
    ReviewRandom& mRandom;
};
