#include "reviews/CardFailures.h"

#include <utility>
#include <vector>

bool CardFailures::Update(const wxString& logPath, const std::atomic<bool>& isCancelled,
                          Counts& counts) {
    if (!mHistory.Update(logPath, isCancelled)) {
        return false;
    }
    std::vector<std::array<int32_t, 2>> ofCards(mHistory.Cards().size());
    for (const ReviewHistory::Review& review : mHistory.Reviews()) {
        if (!review.IsReplaced && review.Elapsed >= 0 && review.Score < kLeastRemembered) {
            ++ofCards[review.Card][review.IsReverse ? 1 : 0];
        }
    }
    Counts failed;
    for (size_t card = 0; card < ofCards.size(); ++card) {
        if (ofCards[card] != std::array<int32_t, 2>{}) {
            failed.emplace(mHistory.Cards()[card], ofCards[card]);
        }
    }
    counts = std::move(failed);
    return true;
}

int32_t CardFailures::Count(const Counts& counts, const CardUuid& card, ReviewDirection direction) {
    const auto found = counts.find(card);
    return found == counts.end() ? 0 : found->second[direction == kReviewReverse ? 1 : 0];
}
