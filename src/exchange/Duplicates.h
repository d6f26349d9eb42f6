#pragma once

#include <atomic>
#include <cstdint>
#include <optional>
#include <vector>

#include "base/Worker.h"
#include "store/CategoryChoice.h"
#include "store/FlashCard.h"
#include "store/UndoHistory.h"

class Database;

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
    // For each group, whether its cards become one without a choice: see IsPlainUnion.
    std::vector<bool> ArePlain;
    // True when the store could not be read to the end.
    bool IsStoreFailed = false;
};

// Looks in a category and those below it, or in the whole store. Any thread. Stops when cancelled
// becomes true. A failure of the store is a result and not reported.
DuplicatesFound FindDuplicates(Database& database, SameBy by,
                               const std::optional<CategoryChoice>& choice,
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

// Returns true when nothing that a person can see gets lost by that: the cards have the same back,
// are in one category and are excluded alike, and their other texts are the same or missing.
bool IsPlainUnion(const FlashCard& kept, const FlashCard& other);

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

// Makes one card of each group on a thread of its own: what SuggestUnion gives, in the place of the
// card with the latest review. A cancel, which the destructor does too, keeps what was done before
// it.
class UnionThread : public Worker {
  public:
    // The most cards that may be deleted in one step, so that it can be taken back.
    static constexpr size_t kMostGone = UndoHistory::kMostCards / StoreChange::kCardsOfUnion;

    // The groups as FindDuplicates has found them by that.
    UnionThread(Database& database, SameBy by, std::vector<std::vector<int64_t>> groups);
    ~UnionThread() override;

    int32_t GetMaximum() const override { return static_cast<int32_t>(mGroups.size()); }
    int32_t GetPosition() const override { return mPosition; }

    // Hands over what was done; one step without contents when it was too much to be taken back.
    // Call it once the worker has ended.
    std::vector<StoreChange> TakeDone() { return std::move(mDone); }
    // Returns the number of cards that stay, because they were changed meanwhile.
    int32_t CountLeftAlone() const { return mLeftAlone; }

  protected:
    void Work() override;

  private:
    bool ReadGroup(const std::vector<int64_t>& rowIds, std::vector<FlashCard>& cards);
    bool UniteGroup(std::vector<FlashCard> cards);
    void Keep(StoreChange change);

    Database& mDatabase;
    const SameBy mBy;
    const std::vector<std::vector<int64_t>> mGroups;
    // Written by the worker and read once it has ended.
    std::vector<StoreChange> mDone;
    size_t mMediaBytes = 0;
    int32_t mLeftAlone = 0;
    // The groups tried so far. Written by the worker.
    std::atomic<int32_t> mPosition{0};
};
