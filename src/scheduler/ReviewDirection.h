#pragma once

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
