#pragma once

#include "reviews/ReviewLog.h"

// Appends a review to the log beside a store, for windows that read it: that long after the one
// before, of a schedule that had that interval.
struct LoggedReview {
    CardUuid CardId;
    int64_t Time = 0;
    int Score = 1;
    int64_t Elapsed = 60;
    float Interval = 0;
    ReviewDirection Direction = kReviewForward;

    void AppendTo(const wxString& storePath) const {
        ReviewRecord record;
        record.CardId = CardId;
        record.Time = Time;
        record.Score = static_cast<uint8_t>(Score);
        record.Elapsed = Elapsed;
        record.OldInterval = Interval;
        record.Direction = Direction;
        ReviewLog(ReviewLogPath(storePath)).Append(record, CardSchedule(), 0, 0);
    }
};
