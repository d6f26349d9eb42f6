#pragma once

#include <functional>
#include <vector>

#include "reviews/ScheduleEvents.h"
#include "store/FlashCard.h"

// The schedule that a set of events leaves, whatever the order in which they came from several
// computers: the result depends on the set alone.
//
// As long as each review began from the schedule that the event before it had left, the last one
// stands, bit for bit. Where a review began from another one, a fork, it is given again by the
// arithmetic of study, with a chance that is made of the review itself, and so are those after it
// that do not fit.
//
// The order is that of EventKey, but for two things that a wrong clock cannot change: the events of
// a process keep the order of their numbers, and a review follows the event that left the schedule
// from which it began.

struct FoldResult {
    CardSchedule Schedule;
    // True when the events were no single chain.
    bool HasForked = false;
};

// Takes the events of one card in one direction, in any order; an event that is there twice counts
// once. isAhead, which may be empty, tells which events were dated by a clock that was ahead: where
// such a review is given again, the time that it recorded as elapsed counts. Without events returns
// a new schedule.
FoldResult FoldEvents(std::vector<ScheduleEvent> events,
                      const std::function<bool(const ScheduleEvent&)>& isAhead);
