#pragma once

#include <wx/string.h>

#include <cstdint>

// What an attribute of a record means for the card. The codes of a schedule's attributes count on
// their own; one code serves both directions of study.
enum CardAttributeCode : int {
    kAttributeId = 0,
    kAttributeFront = 1,
    kAttributeFront2 = 2,
    kAttributeBack = 3,
    kAttributeBack2 = 4,
    kAttributeAuthor = 5,
    kAttributeCategory = 6,
    kAttributeChapter = 7,
    kAttributeIntroductionOrder = 8,
    kAttributeForwardX = 9,
    kAttributeReverseX = 10,
    kAttributeNotes = 11,

    kAttributeIntroduced = 0,
    kAttributeLastReview = 1,
    kAttributeLastScore = 2,
    kAttributeReviewInterval = 3,
    kAttributeDifficulty = 4,
    kAttributeErc = 5
};

// A known attribute. Names that mean the same share their code and so their mask.
struct AttributeInfo {
    bool IsSchedule = false;
    bool IsReverse = false;
    int Code = kAttributeId;
    // One bit, for sets of attributes.
    uint32_t Mask = 0;
};

// The bit of an attribute.
constexpr uint32_t AttributeMask(bool schedule, bool reverse, int code) {
    return uint32_t{1} << (code + (schedule ? 12 : 0) + (schedule && reverse ? 6 : 0));
}

// Finds the attribute of a name in any case of letters and of any length. False when none has it.
bool LookupAttribute(const wxString& name, AttributeInfo& info);
