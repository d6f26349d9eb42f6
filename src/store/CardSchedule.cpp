#include "store/CardSchedule.h"

#include <cmath>
#include <limits>

int32_t WholeSeconds(float interval) {
    // The first float past the range; the range's own greatest number has no float.
    constexpr float kBound = 2147483648.0f;
    if (std::isnan(interval)) {
        return 0;
    }
    if (interval >= kBound) {
        return std::numeric_limits<int32_t>::max();
    }
    if (interval <= -kBound) {
        return std::numeric_limits<int32_t>::min();
    }
    return static_cast<int32_t>(interval);
}

wxDateTime CardSchedule::NextReview() const {
    if (!LastReview.IsValid()) {
        return LastReview;
    }
    const int64_t wait = int64_t{WholeSeconds(ReviewInterval)} * 1000;
    const int64_t last = LastReview.GetValue().GetValue();
    if (wait > 0 && last > std::numeric_limits<int64_t>::max() - wait) {
        return LastReview;
    }
    return wxDateTime(wxLongLong(last + wait));
}

bool CardSchedule::operator==(const CardSchedule& other) const {
    return Introduced == other.Introduced && LastReview == other.LastReview &&
           LastScore == other.LastScore && ReviewInterval == other.ReviewInterval &&
           Difficulty == other.Difficulty && ERC == other.ERC;
}
