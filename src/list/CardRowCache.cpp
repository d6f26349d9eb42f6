#include "list/CardRowCache.h"

#include <utility>

const FlashCard* CardRowCache::Find(int32_t row) const {
    const auto found = mCards.find(row);
    return found == mCards.end() ? nullptr : &found->second;
}

void CardRowCache::Trim(int32_t top, int32_t page) {
    // The last row at or above the page before stays.
    auto first = mCards.upper_bound(top - page);
    if (first != mCards.begin()) {
        mCards.erase(mCards.begin(), --first);
    }
    mCards.erase(mCards.lower_bound(top + 2 * page + 1), mCards.end());
}

const FlashCard& CardRowCache::Insert(int32_t row, FlashCard card) {
    return mCards.insert_or_assign(row, std::move(card)).first->second;
}
