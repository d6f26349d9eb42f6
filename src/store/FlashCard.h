#pragma once

#include <wx/string.h>

#include <cstdint>

#include "store/CardSchedule.h"
#include "store/CardUuid.h"

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
