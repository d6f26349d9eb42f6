#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "store/CardUuid.h"

class Database;
struct StoreChange;

// A card's place in the order of introduction.
struct OrderedCard {
    int64_t RowId = 0;
    int32_t Order = 0;
    int32_t CategoryId = -1;
};

// What a command does to a card's number in the order of introduction.
struct CardRenumbering {
    int64_t RowId = 0;
    int32_t Before = 0;
    int32_t After = 0;
    // Only needed to take it back. Zero for a card of a damaged store that has no identity.
    CardUuid CardId;
};
using CardRenumberings = std::vector<CardRenumbering>;

// Return the new numbers of the cards whose numbers change. The places are those of one category
// in their order, but in NumberFrom, which takes cards in any order.

// Moves the chosen cards, given by ascending row ids, one place to the front or to the end.
// Neighbours move together, and cards that stand at the end already stay. Numbers stay with their
// places; equal ones become different where cards change places.
CardRenumberings MoveInSequence(const std::vector<OrderedCard>& places,
                                const std::vector<int64_t>& chosen, bool isLater);
// Gives the cards the numbers from the first one on, which must not exceed the greatest number.
CardRenumberings NumberFrom(const std::vector<OrderedCard>& places, int32_t first);
// Deals the numbers among the cards. The function returns a random number from 0 up to the given
// one, exclusively.
CardRenumberings DealNumbers(const std::vector<OrderedCard>& places,
                             const std::function<size_t(size_t)>& random);

// Finds how these cards, of any categories, move one place in their categories. Returns 0 or -1.
int FindMoves(Database& database, std::vector<int64_t> rowIds, bool isLater,
              CardRenumberings& changes);
// Writes the numbers and notes the step that takes them back. Returns 0 or a negative value, when
// the store has reported a failure; the change has what was written nevertheless.
int Renumber(Database& database, const CardRenumberings& changes, StoreChange& change);
