#pragma once

#include <wx/string.h>

#include <cstddef>
#include <cstdint>
#include <deque>

struct CardSchedule;

// One attribute of a record as a reader delivers it.
struct CardAttribute {
    // As spelled in the file.
    wxString Name;
    wxString Value;
    // Where it stands in the file, from 1.
    int32_t Line = 0;
};

// The attributes of the record that a reader stands on. Entries keep their memory from one record
// to the next, so that reading does not allocate once the longest record was seen.
class AttributeList {
  public:
    size_t Count() const { return mCount; }
    CardAttribute& operator[](size_t index) { return mEntries[index]; }
    const CardAttribute& operator[](size_t index) const { return mEntries[index]; }

    void Clear() { mCount = 0; }
    // The new last entry; it still holds what an earlier record left in it.
    CardAttribute& Append() {
        if (mCount == mEntries.size()) {
            mEntries.emplace_back();
        }
        return mEntries[mCount++];
    }

  private:
    // Grows without copying what is in it.
    std::deque<CardAttribute> mEntries;
    size_t mCount = 0;
};

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

// The forms of attribute values that are not plain text. Each sets the field and gives the empty
// text, or leaves the field alone and gives what is wrong with the value of that name.

wxString SetIntroductionOrder(const wxString& name, const wxString& value, int32_t& order);
wxString SetFlag(const wxString& name, const wxString& value, bool& flag);
// An attribute of the schedule, by its code.
wxString SetScheduleValue(int code, const wxString& name, const wxString& value,
                          CardSchedule& schedule);
