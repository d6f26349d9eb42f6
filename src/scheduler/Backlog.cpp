#include "scheduler/Backlog.h"

#include <algorithm>
#include <functional>
#include <limits>
#include <numeric>
#include <queue>
#include <utility>

#include "scheduler/ReviewArithmetic.h"

namespace {

constexpr int32_t kTellingScores = 20;

// Gives scores in the shares of the counts, as evenly as whole scores can: after any number of them
// none is more than about one away from its share.
class ScoreMix {
  public:
    explicit ScoreMix(const std::array<int32_t, 6>& counts) : mCounts(counts) {
        if (std::accumulate(counts.begin(), counts.end(), 0) < kTellingScores) {
            mCounts = {0, 0, 0, 0, 1, 0};
        }
        mSum = std::accumulate(mCounts.begin(), mCounts.end(), int64_t{0});
    }
    int Next() {
        ++mTotal;
        size_t next = 0;
        int64_t greatest = std::numeric_limits<int64_t>::min();
        for (size_t score = 0; score < mCounts.size(); ++score) {
            const int64_t owed = mTotal * mCounts[score] - mGiven[score] * mSum;
            if (owed > greatest) {
                greatest = owed;
                next = score;
            }
        }
        ++mGiven[next];
        return static_cast<int>(next);
    }

  private:
    std::array<int32_t, 6> mCounts;
    std::array<int64_t, 6> mGiven{};
    int64_t mSum = 0;
    int64_t mTotal = 0;
};

class BacklogStudy {
  public:
    BacklogStudy(const BacklogPlan& plan, const std::atomic<bool>& cancelled)
        : mPlan(plan),
          mCancelled(cancelled),
          mKnown(plan.Habit.Known),
          mLearning(plan.Habit.Learning) {
        for (const CardSchedules::Side& side : plan.Schedules) {
            CardSchedule schedule;
            schedule.Introduced = true;
            schedule.LastReview = wxDateTime(wxLongLong(side.LastReview * 1000));
            schedule.ReviewInterval = side.Interval;
            schedule.Difficulty = side.Difficulty;
            mWaiting.emplace(DueOf(schedule), mCards.size());
            mCards.push_back(schedule);
        }
        mLost.resize(mCards.size());
    }

    BacklogForecast Study() {
        BacklogForecast forecast;
        const int32_t today = DayOf(mPlan.Now);
        const int64_t hour = mPlan.Now - StartOfDay(today);
        for (int32_t day = 0; day < static_cast<int32_t>(kForecastDays) && !mCancelled; ++day) {
            mNow = day == 0 ? mPlan.Now : StartOfDay(today + day) + hour;
            Rank();
            forecast.Due = day == 0 ? CountDue() : forecast.Due;
            const int32_t answers = mPlan.AnswersPerDay - (day == 0 ? mPlan.Habit.AnswersToday : 0);
            if (IsDoneAfter(answers)) {
                forecast.DoneAfter = day;
                break;
            }
            forecast.LeftOver[static_cast<size_t>(day)] = CountDue();
        }
        return forecast;
    }

  private:
    using Index = size_t;
    // The card that has waited longest in proportion comes first; among equals, the one that fell
    // due first.
    struct Rating {
        double Ratio;
        int64_t Due;
        Index Card;
        bool operator<(const Rating& other) const {
            return Ratio != other.Ratio ? Ratio < other.Ratio : Due > other.Due;
        }
    };

    static int64_t DueOf(const CardSchedule& schedule) {
        return schedule.NextReview().GetValue().GetValue() / 1000;
    }
    Rating Rate(Index card) const {
        const CardSchedule& schedule = mCards[card];
        const auto elapsed = static_cast<double>(mNow - schedule.LastReview.GetTicks());
        const auto interval = static_cast<double>(schedule.ReviewInterval);
        return {interval < 1.0 ? std::numeric_limits<double>::max() : elapsed / interval,
                DueOf(schedule), card};
    }

    // Puts all cards that are due into their order at the beginning of a day. Within the day the
    // order of cards with long intervals does not change.
    void Rank() {
        std::vector<Rating> all;
        for (const Rating& each : mDue) {
            all.push_back(Rate(each.Card));
        }
        for (const Index card : mFresh) {
            mWaiting.emplace(DueOf(mCards[card]), card);
        }
        mFresh.clear();
        mDue = std::move(all);
        std::make_heap(mDue.begin(), mDue.end());
        TakeDue();
    }
    void TakeDue() {
        while (!mWaiting.empty() && mWaiting.top().first < mNow) {
            mDue.push_back(Rate(mWaiting.top().second));
            std::push_heap(mDue.begin(), mDue.end());
            mWaiting.pop();
        }
    }
    bool IsFreshDue(Index card) const { return DueOf(mCards[card]) < mNow; }
    int32_t CountDue() const {
        return static_cast<int32_t>(
            mDue.size() +
            static_cast<size_t>(std::count_if(mFresh.begin(), mFresh.end(),
                                              [this](Index card) { return IsFreshDue(card); })));
    }

    // Takes the next card out of the due ones. Returns false when there is none.
    bool TakeNext(Index& card) {
        auto best = mFresh.end();
        Rating rating{0.0, 0, 0};
        for (auto fresh = mFresh.begin(); fresh != mFresh.end(); ++fresh) {
            if (IsFreshDue(*fresh) && (best == mFresh.end() || rating < Rate(*fresh))) {
                best = fresh;
                rating = Rate(*fresh);
            }
        }
        if (!mDue.empty() && (best == mFresh.end() || rating < mDue.front())) {
            card = mDue.front().Card;
            std::pop_heap(mDue.begin(), mDue.end());
            mDue.pop_back();
            return true;
        }
        if (best == mFresh.end()) {
            return false;
        }
        card = *best;
        mFresh.erase(best);
        return true;
    }

    // Studies a day. Returns true when nothing is due after so many answers or before.
    bool IsDoneAfter(int32_t answers) {
        double clock = 0.0;
        const int64_t start = mNow;
        Index card = 0;
        while (answers > 0 && TakeNext(card)) {
            clock += mPlan.Habit.SecondsPerAnswer;
            mNow = start + static_cast<int64_t>(clock);
            Answer(card);
            TakeDue();
            --answers;
            if (CountDueAtMost() == 0) {
                return true;
            }
        }
        return CountDueAtMost() == 0;
    }
    size_t CountDueAtMost() const {
        return mDue.empty() ? static_cast<size_t>(CountDue()) : mDue.size();
    }

    void Answer(Index card) {
        CardSchedule& schedule = mCards[card];
        ScoreMix& mix = schedule.ReviewInterval >= kKnownInterval ? mKnown : mLearning;
        const wxDateTime now(wxLongLong(mNow * 1000));
        const int score = mix.Next();
        const float least = RelearnedInterval(mLost[card], score, mPlan.RelearnShare);
        const ReviewResult result = Review(schedule, score, now, mRandom, least);
        mLost[card] = LostInterval(mLost[card], score, result.OldInterval);
        schedule.LastReview = now;
        schedule.ReviewInterval = result.NewInterval;
        schedule.Difficulty = result.Difficulty;
        if (result.NewInterval < kKnownInterval) {
            mFresh.push_back(card);
        } else {
            mWaiting.emplace(DueOf(schedule), card);
        }
    }

    const BacklogPlan& mPlan;
    const std::atomic<bool>& mCancelled;
    ScoreMix mKnown;
    ScoreMix mLearning;
    SequenceRandom mRandom;
    int64_t mNow = 0;
    std::vector<CardSchedule> mCards;
    // The interval that the first of a card's present failures met; 0 for none.
    std::vector<float> mLost;
    // A heap of those that are due, and those that are not, first due first.
    std::vector<Rating> mDue;
    std::priority_queue<std::pair<int64_t, Index>, std::vector<std::pair<int64_t, Index>>,
                        std::greater<>>
        mWaiting;
    // Answered today, with intervals so short that their order changes while one studies.
    std::vector<Index> mFresh;
};

}  // namespace

BacklogForecast ForecastBacklog(const BacklogPlan& plan, const std::atomic<bool>& cancelled) {
    return BacklogStudy(plan, cancelled).Study();
}

std::vector<CardSchedules::Side> StudiedSchedules(const std::vector<CardSchedules>& cards,
                                                  const ReviewQuery& query) {
    std::vector<CardSchedules::Side> sides;
    for (const CardSchedules& card : cards) {
        if (query.Asked && !query.Asked->Has(card.CategoryId)) {
            continue;
        }
        for (const ReviewDirection direction : kEachDirection) {
            const CardSchedules::Side& side =
                direction == kReviewForward ? card.Forward : card.Reverse;
            if ((query.Directions & direction) != 0 && side.Introduced && !side.Excluded) {
                sides.push_back(side);
            }
        }
    }
    return sides;
}
