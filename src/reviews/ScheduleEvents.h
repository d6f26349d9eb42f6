#pragma once

#include <wx/string.h>

#include <atomic>
#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "reviews/ReviewLog.h"
#include "store/CardUuid.h"
#include "store/FlashCard.h"

// What happened to a schedule: a review, or that it was set by other means than a score. The logs
// of several computers become one by them, and a schedule can be worked out from the events of a
// card (scheduler/ScheduleFold.h). ReviewLog.h tells how the log has them.

// The total order of events: by its members in their order. A schedule that is set precedes a
// review of the same number.
struct EventKey {
    int64_t Time = 0;
    uint64_t Session = 0;
    int64_t Number = 0;
    bool IsReview = false;

    bool operator<(const EventKey& other) const;
    bool operator==(const EventKey& other) const;
};

struct ScheduleEvent {
    // Seconds since 1970.
    int64_t Time = 0;
    CardUuid CardId;
    ReviewDirection Direction = kReviewForward;
    // The process that wrote the event, a random number that is not 0, and a number that counts up
    // in the process. An event has both for ever, whatever log it is in. A review without an
    // extension has session 0 and a number that is made of its line: another one once the card has
    // another identity.
    uint64_t Session = 0;
    int64_t Number = 0;
    // True for a schedule that was set, false for a review.
    bool IsSet = false;
    // The review.
    ReviewRecord Review;
    // The schedule that the review began from, without its ERC. Without an extension it is what
    // the line tells of it: neither LastScore, nor an interval below 1.
    CardSchedule From;
    // The schedule after the event. Its ERC is 0 for a review without an extension.
    CardSchedule After;
    // The part of its interval that a forgotten card kept then, in hundredths.
    int Share = 0;
    // True for a review that has an extension.
    bool HasExtension = false;
};

EventKey KeyOf(const ScheduleEvent& event);

// Returns the number of this process, and the next number in it. Any thread.
uint64_t EventSession();
int64_t NextEventNumber();

// Return an event of this process, with its next number.
ScheduleEvent MakeReviewEvent(const ReviewRecord& record, const CardSchedule& from, int share,
                              int32_t erc);
ScheduleEvent MakeSetEvent(int64_t time, const CardUuid& card, ReviewDirection direction,
                           const CardSchedule& after);

// Returns the lines of an event, one or two, with their ends. What no line can hold, such as an
// interval that is no number, becomes 0.
std::string FormatEvent(const ScheduleEvent& event);
// Reads an event from its line, and from the line after it, which may be empty; an extension that
// is none is passed over. Returns false when the first line is no event.
bool ParseEvent(std::string_view line, std::string_view extension, ScheduleEvent& event);

// Calls visit with all events of the log from an offset on, where a line begins, in the order of
// the file. Returns where the next call goes on: after the last whole line that was visited, and 0
// when there is no log or it is shorter than the offset. Stops when cancelled becomes true. Any
// thread.
int64_t VisitEvents(const wxString& path, int64_t offset,
                    const std::function<void(const ScheduleEvent&)>& visit,
                    const std::atomic<bool>& cancelled);

// Puts events into the log, each at its place in the order of time, which is after all lines of
// earlier events; the lines that are there keep their order. An event that is there already is left
// out. Renames cards, from the first identity to the second, in all lines and events. A log to
// which nothing comes keeps its bytes. The new log takes the place of the old one by one rename,
// under a lock under which nothing is done but to copy what Append has added meanwhile. Returns 0,
// or the error's number with the log as it was. Any thread, one at a time.
int MergeEvents(const wxString& path, std::vector<ScheduleEvent> events,
                const std::map<CardUuid, CardUuid>& renamed);
// The same, but no event comes after the limit, an offset where a line begins: what follows it was
// added meanwhile and stays at the end. Moves the limit to where those lines begin then.
int MergeEvents(const wxString& path, std::vector<ScheduleEvent> events,
                const std::map<CardUuid, CardUuid>& renamed, int64_t& limit);
