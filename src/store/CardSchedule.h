#pragma once

#include <wx/datetime.h>

#include <cstdint>

#include "base/Clock.h"

// When a card is to come back in one direction of study. A flat record: the history saves and
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
    // Review block number with random low bits; the order of early review.
    int32_t ERC = 0;

    // LastReview plus the whole seconds of ReviewInterval.
    wxDateTime NextReview() const;

    bool operator==(const CardSchedule& other) const;
    bool operator!=(const CardSchedule& other) const { return !(*this == other); }
};

// The interval in whole seconds, truncated toward zero, within the range of 32 bits.
int32_t WholeSeconds(float interval);
