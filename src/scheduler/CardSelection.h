#pragma once

#include <cstdint>
#include <functional>
#include <list>
#include <utility>

#include "base/Time.h"
#include "scheduler/ReviewArithmetic.h"
#include "store/Database.h"
#include "store/FlashCard.h"

// What to study, and how eagerly to introduce new cards.
struct StudyOptions {
    CategoryChoice Categories;
    // The set of directions to study.
    ReviewDirection Directions = kReviewForward;
    // Introduces a new card even while others are due, if all cards due within the next
    // EarlyIntroductionInterval seconds have longer intervals than that.
    bool EarlyIntroduction = false;
    int32_t EarlyIntroductionInterval = 180;
    // Asked before a new card of a category is taken; when it says no, study goes on as though
    // there were none. Empty takes all.
    std::function<bool(int32_t categoryId)> MayIntroduce;
};

// A card and the direction in which it is shown; kReviewNone means no card.
struct ReviewCard {
    FlashCard Card;
    ReviewDirection Direction = kReviewNone;
};

// Chooses the next card to review: the due card that has waited longest in proportion to its
// interval, else a new card, else one that is not due yet, so that study never runs dry while there
// are cards. Goes by computed due times, while the counts take a stored time outside its range as
// due.
//
// Of several categories, an upper one and those below it, the due cards are one heap: the one that
// has waited longest in proportion comes first, wherever it stands. New cards come category by
// category, the upper one first and the others in the order of the drop-down, each in its own order
// of introduction: "Course::Unit 2" begins when "Course::Unit 1" has no new card left, or none that
// today has room for. Early review numbers its blocks in each category by itself, so that the
// numbers of two categories tell nothing; it takes the card that lies the most blocks behind the
// newest of its own category.
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
        // The row names the chosen card: its identity may be stored in a form, such as capitals, by
        // which no query finds it.
        int64_t RowId;
        ReviewDirection Direction;
        // Seconds; the shortest interval seen, including cards that fall due within the horizon.
        float LeastInterval;
    };
    using FirstCard = int (Database::*)(ReviewDirection, int32_t, std::list<FlashCard>&);
    using SortKey = std::pair<int64_t, int64_t> (*)(const FlashCard&, ReviewDirection);

    int FindReadyCard(int32_t horizon, ReadyCard& ready);
    int ReadCard(const ReadyCard& ready, ReviewCard& chosen);
    // Both also succeed without a card, and then leave chosen unchanged.
    int IntroduceCard(ReviewCard& chosen);
    int PickEarlyReviewCard(ReviewCard& chosen);
    // Takes the category's first card of each direction studied and keeps the one with the lower
    // key; chance decides between equal keys.
    int ChooseFirst(FirstCard select, SortKey key, int32_t categoryId, ReviewCard& chosen);
    bool Studies(ReviewDirection direction) const { return (mOptions.Directions & direction) != 0; }

    Database& mDatabase;
    const StudyOptions& mOptions;
    const Clock& mTime;
    ReviewRandom& mRandom;
};
