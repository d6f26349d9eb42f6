#include "scheduler/ScheduleFold.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <map>
#include <queue>
#include <set>
#include <tuple>
#include <utility>

#include "scheduler/ReviewArithmetic.h"

namespace {

using EventTest = std::function<bool(const ScheduleEvent&)>;

int64_t SecondsOf(const wxDateTime& time) {
    return time.GetValue().GetValue() / 1000;
}

uint32_t BitsOf(float number) {
    uint32_t bits = 0;
    std::memcpy(&bits, &number, sizeof bits);
    return bits;
}

// The chance of a review that is given again: the same on every computer.
class EventRandom : public ReviewRandom {
  public:
    explicit EventRandom(const ScheduleEvent& event)
        : mState(event.Session ^ static_cast<uint64_t>(event.Number) * 0xD6E8FEB86659FD93U) {}

    // splitmix64, of which 24 bits fit into the number.
    float Next() override {
        mState += 0x9E3779B97F4A7C15U;
        uint64_t mixed = (mState ^ (mState >> 30)) * 0xBF58476D1CE4E5B9U;
        mixed = (mixed ^ (mixed >> 27)) * 0x94D049BB133111EBU;
        mixed ^= mixed >> 31;
        return static_cast<float>(mixed >> 40) / 16777215.0f;
    }

  private:
    uint64_t mState;
};

// What tells one schedule from another.
using ScheduleBits = std::tuple<bool, bool, int64_t, uint32_t, uint8_t>;
ScheduleBits BitsOf(const CardSchedule& schedule) {
    const bool counts = schedule.Introduced && schedule.LastReview.IsValid();
    return {schedule.Introduced, counts, counts ? SecondsOf(schedule.LastReview) : 0,
            BitsOf(schedule.ReviewInterval), schedule.Difficulty};
}

// Puts the events into their order: always the first one by its key of those whose predecessors
// have been taken.
class EventOrder {
  public:
    // What was set later is no cause of a review for which the test is true.
    EventOrder(std::vector<ScheduleEvent> events, const EventTest& isAhead,
               const EventTest& needsNoSet)
        : mEvents(std::move(events)), mIsAhead(isAhead), mNeedsNoSet(needsNoSet) {
        const auto isBefore = [](const ScheduleEvent& one, const ScheduleEvent& other) {
            return KeyOf(one) < KeyOf(other);
        };
        const auto isSame = [](const ScheduleEvent& one, const ScheduleEvent& other) {
            return KeyOf(one) == KeyOf(other);
        };
        std::sort(mEvents.begin(), mEvents.end(), isBefore);
        mEvents.erase(std::unique(mEvents.begin(), mEvents.end(), isSame), mEvents.end());
        mFollowers.resize(mEvents.size());
        mWaitsFor.resize(mEvents.size());
    }

    std::vector<ScheduleEvent> Take() {
        LinkSessions();
        LinkSchedules();
        std::priority_queue<size_t, std::vector<size_t>, std::greater<>> ready;
        std::vector<bool> isTaken(mEvents.size());
        std::vector<ScheduleEvent> ordered;
        ordered.reserve(mEvents.size());
        for (size_t i = 0; i < mEvents.size(); ++i) {
            if (mWaitsFor[i] == 0) {
                ready.push(i);
            }
        }
        for (size_t first = 0; ordered.size() < mEvents.size();) {
            size_t next = 0;
            if (ready.empty()) {
                // Events that wait for each other are no history. The first one breaks the circle.
                while (isTaken[first]) {
                    ++first;
                }
                next = first;
            } else {
                next = ready.top();
                ready.pop();
            }
            if (isTaken[next]) {
                continue;
            }
            isTaken[next] = true;
            ordered.push_back(mEvents[next]);
            for (const size_t follower : mFollowers[next]) {
                if (--mWaitsFor[follower] == 0) {
                    ready.push(follower);
                }
            }
        }
        return ordered;
    }

    // Tells, after Take, whether a schedule that was set may have been set before a review that is
    // dated earlier and began from it.
    bool HasLateSets() const { return mHasLateSets; }

  private:
    void Link(size_t before, size_t after) {
        mFollowers[before].push_back(after);
        ++mWaitsFor[after];
    }

    void LinkSessions() {
        std::vector<size_t> places(mEvents.size());
        for (size_t i = 0; i < places.size(); ++i) {
            places[i] = i;
        }
        const auto order = [this](size_t place) {
            const ScheduleEvent& event = mEvents[place];
            return std::tuple(event.Session, event.Number, !event.IsSet, place);
        };
        std::sort(places.begin(), places.end(),
                  [&order](size_t one, size_t other) { return order(one) < order(other); });
        for (size_t i = 1; i < places.size(); ++i) {
            const uint64_t session = mEvents[places[i]].Session;
            if (session != 0 && session == mEvents[places[i - 1]].Session) {
                Link(places[i - 1], places[i]);
            }
        }
    }

    void LinkSchedules() {
        // The first event that left each schedule. Each card begins as one that was never scored,
        // so an event that made it such a card again is taken for the cause only where the order
        // of time cannot tell.
        std::map<ScheduleBits, size_t> left;
        for (size_t i = 0; i < mEvents.size(); ++i) {
            if (BitsOf(mEvents[i].After) != BitsOf(CardSchedule()) || IsAhead(mEvents[i])) {
                left.emplace(BitsOf(mEvents[i].After), i);
            }
        }
        for (size_t i = 0; i < mEvents.size(); ++i) {
            const auto found = mEvents[i].IsSet ? left.end() : left.find(BitsOf(mEvents[i].From));
            if (found == left.end() || found->second == i) {
                continue;
            }
            const ScheduleEvent& cause = mEvents[found->second];
            const bool isLateSet = cause.IsSet && found->second > i && !IsAhead(cause);
            mHasLateSets = mHasLateSets || isLateSet;
            if (!isLateSet || !mNeedsNoSet(mEvents[i])) {
                Link(found->second, i);
            }
        }
    }

    bool IsAhead(const ScheduleEvent& event) const { return mIsAhead && mIsAhead(event); }

    std::vector<ScheduleEvent> mEvents;
    const EventTest& mIsAhead;
    const EventTest& mNeedsNoSet;
    bool mHasLateSets = false;
    std::vector<std::vector<size_t>> mFollowers;
    std::vector<size_t> mWaitsFor;
};

// Takes the reviews out in whose place this one stands. It names the last of them; when the same
// score had been given again, that one began from the other, and this one where the first of them
// did.
void DropReplaced(const ScheduleEvent& event, std::vector<ScheduleEvent>& kept) {
    const auto end =
        kept.size() > kFarthestReplaced ? kept.rbegin() + kFarthestReplaced : kept.rend();
    const auto find = [&](auto from, bool isSameSession, const auto& isWanted) {
        return std::find_if(from, end, [&](const ScheduleEvent& earlier) {
            return !earlier.IsSet && isWanted(earlier) &&
                   (!isSameSession || earlier.Session == event.Session);
        });
    };
    const auto isNamed = [&event](const ScheduleEvent& earlier) {
        return earlier.Time == event.Review.Replaces;
    };
    const auto hasSameBegin = [&event](const ScheduleEvent& earlier) {
        return BitsOf(earlier.From) == BitsOf(event.From);
    };
    const auto own = find(kept.rbegin(), true, isNamed);
    if (own == end) {
        const auto replaced = find(kept.rbegin(), false, isNamed);
        if (replaced != end) {
            kept.erase(std::next(replaced).base());
        }
        return;
    }
    const auto found = find(own, true, hasSameBegin);
    const auto first = std::next(found == end ? own : found).base();
    const auto isReplaced = [&event](const ScheduleEvent& earlier) {
        return !earlier.IsSet && earlier.Session == event.Session;
    };
    const auto last = own.base();
    kept.erase(std::remove_if(first, last, isReplaced), last);
}

std::vector<ScheduleEvent> WithoutReplaced(std::vector<ScheduleEvent> events) {
    std::vector<ScheduleEvent> kept;
    kept.reserve(events.size());
    for (ScheduleEvent& event : events) {
        if (!event.IsSet && event.Review.Replaces >= 0) {
            DropReplaced(event, kept);
        }
        kept.push_back(std::move(event));
    }
    return kept;
}

// Returns the seconds that passed before a review with this schedule; not negative.
int64_t ElapsedBefore(const ScheduleEvent& event, const CardSchedule& state) {
    return state.LastReview.IsValid()
               ? std::max<int64_t>(0, event.Time - SecondsOf(state.LastReview))
               : 0;
}

// Returns true when a review began from this schedule, as far as its lines tell.
bool BeganFrom(const ScheduleEvent& event, const CardSchedule& state) {
    if (event.HasExtension) {
        return BitsOf(event.From) == BitsOf(state);
    }
    const float interval = std::max(1.0f, state.ReviewInterval);
    return event.From.Introduced == state.Introduced && event.From.Difficulty == state.Difficulty &&
           BitsOf(event.From.ReviewInterval) == BitsOf(interval) &&
           (!state.Introduced || event.Review.Elapsed == ElapsedBefore(event, state));
}

class Fold {
  public:
    explicit Fold(const EventTest& isAhead) : mIsAhead(isAhead) {}

    // Returns true for a review that began from what the events before it had left.
    bool Take(const ScheduleEvent& event) {
        const bool follows = !event.IsSet && !mIsFirst && BeganFrom(event, mResult.Schedule);
        if (event.IsSet) {
            mResult.Schedule = event.After;
            mLost = 0.0f;
        } else {
            TakeReview(event);
        }
        mIsFirst = false;
        return follows;
    }
    const FoldResult& Result() const { return mResult; }

  private:
    void TakeReview(const ScheduleEvent& event) {
        CardSchedule& state = mResult.Schedule;
        if (mIsFirst) {
            state = event.From;
            state.ERC = 0;
        }
        const int32_t erc = event.HasExtension ? event.After.ERC : state.ERC;
        if (BeganFrom(event, state)) {
            mLost = LostInterval(mLost, event.Review.Score, event.Review.OldInterval);
            state = event.After;
        } else {
            mResult.HasForked = true;
            Replay(event);
        }
        state.ERC = erc;
    }

    void Replay(const ScheduleEvent& event) {
        CardSchedule& state = mResult.Schedule;
        const int score = event.Review.Score;
        const bool usesRecorded = mIsAhead && mIsAhead(event) && event.Review.Elapsed >= 0;
        const wxDateTime now = event.After.LastReview;
        const int64_t elapsed = usesRecorded ? event.Review.Elapsed : ElapsedBefore(event, state);
        state.LastReview = wxDateTime(wxLongLong((event.Time - elapsed) * 1000));
        EventRandom random(event);
        const ReviewResult result =
            Review(state, score, now, random, RelearnedInterval(mLost, score, event.Share));
        mLost = LostInterval(mLost, score, result.OldInterval);
        state = {true, now, event.Review.Score, result.NewInterval, result.Difficulty, state.ERC};
    }

    const EventTest& mIsAhead;
    FoldResult mResult;
    float mLost = 0.0f;
    bool mIsFirst = true;
};

}  // namespace

// An undo sets the schedule from which a review began, after it. A review that follows what came
// before it anyhow was no consequence of that, whatever the clocks say.
FoldResult FoldEvents(std::vector<ScheduleEvent> events,
                      const std::function<bool(const ScheduleEvent&)>& isAhead) {
    std::set<EventKey> following;
    const auto fold = [&](const EventTest& needsNoSet, bool& hasLateSets) {
        EventOrder order(events, isAhead, needsNoSet);
        Fold result(isAhead);
        const std::vector<ScheduleEvent> ordered = WithoutReplaced(order.Take());
        hasLateSets = order.HasLateSets();
        for (const ScheduleEvent& event : ordered) {
            if (result.Take(event) && hasLateSets) {
                following.insert(KeyOf(event));
            }
        }
        return result.Result();
    };
    bool hasLateSets = false;
    const FoldResult result = fold([](const ScheduleEvent&) { return true; }, hasLateSets);
    if (!hasLateSets) {
        return result;
    }
    const std::set<EventKey> known = following;
    return fold([&known](const ScheduleEvent& event) { return known.count(KeyOf(event)) > 0; },
                hasLateSets);
}
