#pragma once

#include <cstdint>
#include <functional>
#include <string_view>

#include "reviews/ScheduleEvents.h"

// Returns the number of a review whose lines tell none, of 62 bits. It is made of what the line
// says, so that it is the same in each log.
int64_t NumberOfReview(const ReviewRecord& record);

// Returns true for a line that would be the extension of a review before it.
bool LooksLikeExtension(std::string_view line);

// Makes events of the lines of a log. An event whose review may have an extension is told when the
// next line is there.
class EventScan {
  public:
    // Places are offsets in the file.
    using Visit = std::function<void(const ScheduleEvent& event, int64_t begin, int64_t end)>;

    explicit EventScan(const Visit& visit) : mVisit(visit) {}

    // Takes the next line, and returns true when it is an event or a part of one.
    bool Take(std::string_view line, int64_t begin, int64_t end);
    // Tells the last event, after which no line follows.
    void Finish();
    // Returns true while an event waits for its next line, and where that event begins.
    bool IsWaiting() const { return mIsWaiting; }
    int64_t GetBegin() const { return mBegin; }

  private:
    const Visit& mVisit;
    ScheduleEvent mReview;
    bool mIsWaiting = false;
    int64_t mBegin = 0;
    int64_t mEnd = 0;
};
