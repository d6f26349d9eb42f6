#pragma once

#include <cstddef>
#include <cstdint>
#include <map>

#include "store/FlashCard.h"

// The cards of the list rows that are drawn, and of about a page on each side, so that a list of
// any length holds three pages of cards.
class CardRowCache {
  public:
    void Clear() { mCards.clear(); }

    // The card of a row, or null when it is not here.
    const FlashCard* Find(int32_t row) const;

    // Forgets the rows far from a page that begins with the row top.
    void Trim(int32_t top, int32_t page);

    const FlashCard& Insert(int32_t row, FlashCard card);

    size_t GetSize() const { return mCards.size(); }

  private:
    std::map<int32_t, FlashCard> mCards;
};
