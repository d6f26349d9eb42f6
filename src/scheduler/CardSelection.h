#pragma once

#include <cstdint>
#include <list>
#include <utility>

#include "base/Time.h"
#include "scheduler/ReviewArithmetic.h"
#include "store/Database.h"
#include "store/FlashCard.h"

// What is studied, and how eagerly new cards come in.
struct StudyOptions {
    int32_t CategoryId = -1;
    // The directions studied, as a set.
    ReviewDirection Directions = kReviewForward;
    // Introduces a new card even while others are due, when the intervals of all cards that are due
    // within the next EarlyIntroductionInterval seconds are longer than that.
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
    // The result of a walk over the due cards.
    struct ReadyCard {
        // The chosen card is known by its row: its identity may be stored in a form, such as
        // capitals, by which no query finds it.
        int64_t RowId;
        ReviewDirection Direction;
        // Seconds; the shortest interval seen, including cards that fall due within the horizon.
        float LeastInterval;
    };
    using FirstCard = int (Database::*)(ReviewDirection, int32_t, std::list<FlashCard>&);
    using SortKey = std::pair<int64_t, int64_t> (*)(const FlashCard&, ReviewDirection);

    int FindReadyCard(int32_t horizon, ReadyCard& ready);
    int ReadCard(const ReadyCard& ready, ReviewCard& chosen);
    // Both succeed without a card too, and then leave chosen unchanged.
    int IntroduceCard(ReviewCard& chosen);
    int PickEarlyReviewCard(ReviewCard& chosen);
    // Takes the first card of each direction studied and keeps the one with the lower key; chance
    // decides between equal keys.
    int ChooseFirst(FirstCard select, SortKey key, ReviewCard& chosen);
    bool Studies(ReviewDirection direction) const { return (mOptions.Directions & direction) != 0; }

    Database& mDatabase;
    const StudyOptions& mOptions;
    const Clock& mTime;
    ReviewRandom& mRandom;
};
