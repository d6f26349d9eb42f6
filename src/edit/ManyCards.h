#pragma once

#include <cstdint>
#include <vector>

#include "store/CardParts.h"
#include "store/FlashCard.h"

class Database;
struct StoreChange;

// The cards that one editor changes together. They are known by their identities, since the engine
// may give the row of a deleted card to a new one while the editor is open. Owned by the editor;
// main thread only.
class ManyCards {
  public:
    ManyCards(Database& database, const std::vector<int64_t>& rowIds);

    // Leaves out the cards that the store no longer has, and finds the rows of the others. Returns
    // 0, or -1 when the store fails, which has then reported it.
    int FindStored(Database& database);
    // The rows as they were found last.
    const std::vector<int64_t>& GetRowIds() const { return mRowIds; }
    bool IsEmpty() const { return mRowIds.empty(); }
    // The cards that have gone since the editor was opened.
    int32_t CountGone() const { return mGone; }

    // Writes parts of the values into all cards that were found last, and notes the step. With a
    // blank introduction order the cards follow all others of their category, in their own order.
    // Returns 0 or -1.
    int Write(Database& database, const FlashCard& values, const CardParts& parts,
              StoreChange& change) const;

  private:
    int NumberCards(Database& database, const FlashCard& values, const CardParts& parts,
                    std::vector<int32_t>& orders) const;

    std::vector<int64_t> mRowIds;
    // The identity of each; zero where the store has no proper one.
    std::vector<CardUuid> mIds;
    int32_t mGone = 0;
};
