#include "scheduler/Relearning.h"

#include <algorithm>
#include <atomic>
#include <iterator>

#include "base/Process.h"

void LostIntervals::Take(const ReviewRecord& record) {
    const auto place = std::pair(record.CardId, record.Direction);
    if (record.Score >= kLeastGoodScore && mCards.count(place) == 0) {
        return;
    }
    Entry& entry = mCards[place];
    if (record.Replaces < 0 || record.Replaces != entry.Last.Time) {
        entry.Before = entry.Last;
    }
    // A review between the two may be missing in the log. A clock that was set back gives 0.
    const bool follows = record.Elapsed == std::max<int64_t>(0, record.Time - entry.Before.Time);
    entry.Last.Lost =
        LostInterval(follows ? entry.Before.Lost : 0.0f, record.Score, record.OldInterval);
    entry.Last.Time = record.Time;
    entry.Last.Score = record.Score;
}

float LostIntervals::Find(const CardUuid& card, ReviewDirection direction,
                          const CardSchedule& schedule) const {
    const auto found = mCards.find({card, direction});
    if (found == mCards.end() || !schedule.LastReview.IsValid()) {
        return 0.0f;
    }
    const int64_t time = schedule.LastReview.GetTicks();
    for (const Review& review : {found->second.Last, found->second.Before}) {
        if (review.Time == time && review.Score == schedule.LastScore) {
            return review.Lost;
        }
    }
    return 0.0f;
}

void LostIntervals::Prune() {
    for (auto card = mCards.begin(); card != mCards.end();) {
        card = card->second.Last.Lost == 0.0f ? mCards.erase(card) : std::next(card);
    }
}

void Relearning::Read(const wxString& logPath) {
    Stop();
    mPath = logPath;
    mpJob = std::make_unique<Job>([this, path = logPath](const std::atomic<bool>& isCancelled) {
        mIsWhole = VisitReviews(
            path, nullptr, [this](const ReviewRecord& record) { mRead.Take(record); }, isCancelled);
        mRead.Prune();
        VELOMIND_TRACE("%zu cards are being relearned", mRead.GetCount());
    });
    // Without a thread the lines of each card are looked for.
    mpJob->Start();
}

void Relearning::Stop() {
    mpJob.reset();
    mPath.clear();
    mKnown.Clear();
    mRead.Clear();
    mKnowsAll = mIsWhole = false;
}

// The scores since the start are newer than what the worker has read.
void Relearning::TakeOver() {
    if (mpJob != nullptr && mpJob->IsFinished()) {
        mpJob->Join();
        mpJob.reset();
        mKnowsAll = mIsWhole;
        if (mKnowsAll) {
            mKnown.AddMissing(mRead);
        }
        mRead.Clear();
    }
}

float Relearning::Find(const CardUuid& card, ReviewDirection direction,
                       const CardSchedule& schedule) {
    if (mPath.empty() || !schedule.Introduced || schedule.LastScore >= kLeastGoodScore) {
        return 0.0f;
    }
    TakeOver();
    if (!mKnowsAll && !mKnown.Knows(card, direction)) {
        const std::atomic<bool> isCancelled{false};
        LostIntervals found;
        VisitReviews(
            mPath, &card, [&found](const ReviewRecord& record) { found.Take(record); },
            isCancelled);
        mKnown.AddMissing(found);
    }
    return mKnown.Find(card, direction, schedule);
}
