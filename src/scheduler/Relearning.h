#pragma once

#include <wx/string.h>

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <utility>

#include "base/Job.h"
#include "reviews/ReviewLog.h"
#include "scheduler/ReviewArithmetic.h"
#include "store/CardUuid.h"
#include "store/FlashCard.h"

// What the cards that are being relearned have lost (LostInterval). The store keeps only the
// schedule after the last review, so it comes from the log.

// What the cards have lost by the reviews that it is told, in the order of the log. Remembers the
// last two of a card, so that the last one can be taken back.
class LostIntervals {
  public:
    void Take(const ReviewRecord& record);
    // Returns what a card had lost by the review that left it with this schedule. Returns 0 when
    // that is not one of the last two: its line is missing, or the card was changed by other means
    // than a score.
    float Find(const CardUuid& card, ReviewDirection direction, const CardSchedule& schedule) const;
    bool Knows(const CardUuid& card, ReviewDirection direction) const {
        return mCards.count({card, direction}) > 0;
    }
    // Adds the cards of which this table knows nothing.
    void AddMissing(const LostIntervals& others) {
        mCards.insert(others.mCards.begin(), others.mCards.end());
    }
    // Forgets the cards that are not being relearned.
    void Prune();
    void Clear() { mCards.clear(); }
    size_t GetCount() const { return mCards.size(); }

  private:
    struct Review {
        float Lost = 0;
        // Seconds since 1970.
        int64_t Time = -1;
        uint8_t Score = 0;
    };
    struct Entry {
        Review Last;
        Review Before;
    };
    std::map<std::pair<CardUuid, ReviewDirection>, Entry> mCards;
};

// The same from the log of the store under study. A worker reads the log; until it is done, the
// lines of a card that is asked for are looked for at once. Main thread only.
class Relearning {
  public:
    // Starts to read this log, and forgets what was known from another.
    void Read(const wxString& logPath);
    // Forgets everything and reads nothing.
    void Stop();
    // The path of the log; empty while none is read.
    const wxString& GetPath() const { return mPath; }
    // False while the worker reads.
    bool IsRead() const { return mpJob == nullptr || mpJob->IsFinished(); }

    // Returns what a card with this schedule has lost.
    float Find(const CardUuid& card, ReviewDirection direction, const CardSchedule& schedule);
    // Takes a review that has just been added to the log. Find must have been called for the
    // schedule that it began with, before it was added.
    void Take(const ReviewRecord& record) { mKnown.Take(record); }

  private:
    void TakeOver();

    wxString mPath;
    LostIntervals mKnown;
    // True once mKnown has what the worker has read.
    bool mKnowsAll = false;
    // Both are written by the worker, and read once it has ended.
    LostIntervals mRead;
    bool mIsWhole = false;
    std::unique_ptr<Job> mpJob;
};
