#pragma once

#include <wx/datetime.h>
#include <wx/string.h>

#include <cstdint>

#include "base/Time.h"
#include "store/CardUuid.h"

// Returns when a card scored at lastReview is due: that time plus the interval in whole seconds,
// truncated toward zero. Saturates at the limits of a time, which only a damaged store and
// intervals of many million years reach; an interval that is not a number counts as 0.
wxDateTime DueTime(const wxDateTime& lastReview, float interval);

// Returns the whole seconds from one valid time to another, truncated toward zero, negative when
// the first is later. Saturates likewise.
int64_t SecondsBetween(const wxDateTime& from, const wxDateTime& to);

// A set of study directions: which side of a card is shown first.
enum ReviewDirection : int {
    kReviewNone = 0,
    // Shows the front; the back is to be recalled.
    kReviewForward = 1,
    // Shows the back; the front is to be recalled.
    kReviewReverse = 2
};
constexpr ReviewDirection kEachDirection[] = {kReviewForward, kReviewReverse};

// Says when a card comes back in one direction of study. A flat record: the history saves and
// restores it as a block.
struct CardSchedule {
    // The card was scored at least once in this direction.
    bool Introduced = false;
    // When it was last scored.
    wxDateTime LastReview = CurrentTime();
    // 0 to 5.
    uint8_t LastScore = 0;
    // Seconds to wait after LastReview. At least 1 once a card was scored.
    float ReviewInterval = 5.0f;
    // 0 is easiest, 32 hardest, 16 neutral.
    uint8_t Difficulty = 16;
    // A review block number with random low bits; gives the order of early review.
    int32_t ERC = 0;

    // The DueTime; invalid while LastReview is.
    wxDateTime NextReview() const { return DueTime(LastReview, ReviewInterval); }

    bool operator==(const CardSchedule& other) const;
    bool operator!=(const CardSchedule& other) const { return !(*this == other); }
};

// One flash card: two texts, where it belongs, and a schedule for each direction of study.
// A plain value; it can be stored only when its CardId is set.
struct FlashCard {
    CardUuid CardId;
    wxString Front;
    wxString Back;
    // Id of the Category; -1 means no category.
    int32_t CategoryId = -1;
    wxString Author;
    wxString Chapter;
    // Position among the not yet introduced cards of its category.
    int32_t IntroductionOrder = 0;
    // Excluded from front to back study.
    bool ForwardX = false;
    // Excluded from back to front study.
    bool ReverseX = false;
    wxString Notes;
    CardSchedule Forward;
    CardSchedule Reverse;
};

// The card's schedule for one direction.
inline CardSchedule& ScheduleOf(FlashCard& card, ReviewDirection direction) {
    return direction == kReviewForward ? card.Forward : card.Reverse;
}
inline const CardSchedule& ScheduleOf(const FlashCard& card, ReviewDirection direction) {
    return direction == kReviewForward ? card.Forward : card.Reverse;
}

// The schedules of a card without its texts, for figures over many cards.
struct CardSchedules {
    struct Side {
        bool Introduced = false;
        bool Excluded = false;
        uint8_t Difficulty = 0;
        float Interval = 0;
        // Seconds since 1970.
        int64_t LastReview = 0;
    };
    // Zero when the store has no valid identity.
    CardUuid CardId;
    int32_t CategoryId = -1;
    Side Forward;
    Side Reverse;
};

// A named group of cards. A new one gets the smallest unused id from 0.
struct Category {
    int32_t Id = -1;
    wxString Name;
};
