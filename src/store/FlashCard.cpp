#include "store/FlashCard.h"

#include <cmath>
#include <limits>

namespace {

constexpr int64_t kGreatest = std::numeric_limits<int64_t>::max();

// All sums of times go through here. The least number is never reached, as it stands for an invalid
// time.
int64_t AddSaturated(int64_t left, int64_t right) {
    if (right > 0 ? left > kGreatest - right : left < -kGreatest - right) {
        return right > 0 ? kGreatest : -kGreatest;
    }
    return left + right;
}

// Returns the whole seconds of an interval in milliseconds.
int64_t WaitMilliseconds(float interval) {
    // Close to the greatest number of milliseconds, 291 million years.
    constexpr float kBound = 9.2e15f;
    if (std::isnan(interval)) {
        return 0;
    }
    if (std::abs(interval) > kBound) {
        return interval > 0.0f ? kGreatest : -kGreatest;
    }
    return static_cast<int64_t>(interval) * 1000;
}

}  // namespace

wxDateTime DueTime(const wxDateTime& lastReview, float interval) {
    if (!lastReview.IsValid()) {
        return lastReview;
    }
    return wxDateTime(
        wxLongLong(AddSaturated(lastReview.GetValue().GetValue(), WaitMilliseconds(interval))));
}

int64_t SecondsBetween(const wxDateTime& from, const wxDateTime& to) {
    return AddSaturated(to.GetValue().GetValue(), -from.GetValue().GetValue()) / 1000;
}

bool CardSchedule::operator==(const CardSchedule& other) const {
    return Introduced == other.Introduced && LastReview == other.LastReview &&
           LastScore == other.LastScore && ReviewInterval == other.ReviewInterval &&
           Difficulty == other.Difficulty && ERC == other.ERC;
}
