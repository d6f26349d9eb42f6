#pragma once

#include <atomic>
#include <cstdint>
#include <optional>
#include <vector>

#include "store/FlashCard.h"

class Database;
struct StoreChange;

// Cards that a person takes for the same (base/Folding.h), and how two of them become one.
//
// The kept card goes on with its identity, so that its lines in the log of reviews stay its own.
// The other one's lines stay in the log too, as those of a deleted card: they count in the figures
// of all categories, but not in a category's and not in the plot of the kept card. The log names
// cards by their identity and is never rewritten, and an undo gives the other card its lines back.
// Therefore the card with the latest review is the one to keep.

enum class SameBy { kFront, kFrontAndBack };

struct DuplicatesFound {
    // The row ids of cards that are the same, in their order; two or more in each group.
    std::vector<std::vector<int64_t>> Groups;
    // True when the store could not be read to the end.
    bool IsStoreFailed = false;
};

// Looks in a category, or in the whole store. Any thread. Stops when cancelled becomes true. A
// failure of the store is a result and not reported.
DuplicatesFound FindDuplicates(Database& database, SameBy by, std::optional<int32_t> categoryId,
                               const std::atomic<bool>& cancelled);

// Looks for another card with the same front. Returns true with the first one. Likewise.
bool FindCardWithFront(Database& database, const wxString& front, const CardUuid& except,
                       const std::atomic<bool>& cancelled, FlashCard& found);

// Returns true when the second card was reviewed later than the first one, in any direction.
bool IsReviewedLater(const FlashCard& first, const FlashCard& second);
// Gives a card the other one's schedule in each direction that was reviewed later there.
void TakeLaterReviews(const FlashCard& other, FlashCard& card);
// Returns what the two become unless the user wants else: the kept card, with texts of the other
// one where it has none, and the later reviews of both.
FlashCard SuggestUnion(const FlashCard& kept, const FlashCard& other);

// Writes the merged card in the place of the kept one and deletes the other one.
enum class UnionOutcome {
    kDone,
    // A card is gone or was changed, so nothing was written.
    kChangedMeanwhile,
    // The store failed and has reported it.
    kStoreFailed
};
UnionOutcome UniteCards(Database& database, const FlashCard& kept, const FlashCard& other,
                        const FlashCard& merged, StoreChange& change);
