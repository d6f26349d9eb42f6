#pragma once

#include <array>
#include <cstdint>
#include <limits>
#include <map>
#include <vector>

#include "reviews/ReviewLog.h"
#include "store/CardUuid.h"
#include "store/FlashCard.h"

// What was done on one local day.
struct DayTally {
    // A card that was scored for the first time in one direction, and its category then; kUnknown
    // until somebody asks the store.
    struct NewCard {
        static constexpr int32_t kUnknown = std::numeric_limits<int32_t>::min();
        CardUuid CardId;
        int32_t CategoryId = kUnknown;
    };
    // A score in place of another is no further answer.
    int32_t Answers = 0;
    // An answer takes the time since the one before, but never more than a minute: what is longer
    // was a pause.
    int64_t Seconds = 0;
    std::vector<NewCard> NewCards;
};

// Counts the lines of the log as they come, so that a score need not read the log: the days of
// study, and the lapses of each card. Any thread, one at a time.
class StudyTally {
  public:
    // New cards are kept from that day on.
    explicit StudyTally(int32_t firstDay = 0) : mFirstDay(firstDay) {}

    void Add(const ReviewRecord& record, int32_t categoryId = DayTally::NewCard::kUnknown);

    int32_t FirstDay() const { return mFirstDay; }
    // The reference is valid until Add. A day without study has a tally of zeros.
    DayTally& On(int32_t day) { return mDays[day]; }
    // Counts the lapses since the card was last begun anew.
    int32_t CountLapses(const CardUuid& card, ReviewDirection direction) const;
    // Returns the mean seconds of an answer in the 90 days up to that one, or a usual time.
    double SecondsPerAnswer(int32_t today) const;

  private:
    int32_t FindDay(int64_t time);

    int32_t mFirstDay;
    std::map<int32_t, DayTally> mDays;
    // The times of the lapses, forward and reverse, so that one can be taken back.
    std::array<std::map<CardUuid, std::vector<int64_t>>, 2> mLapses;
    int64_t mLastTime = std::numeric_limits<int64_t>::min() / 2;
    // The day found last, as a log is nearly in order and the system's calendar is slow.
    int32_t mDay = 0;
    int64_t mDayStart = 0;
    int64_t mDayEnd = 0;
};
