#pragma once

#include <wx/string.h>

#include <cstdint>
#include <list>
#include <vector>

#include "store/FlashCard.h"

class Database;

// What one command did to the cards or categories of the store, with all that is needed to take it
// back. Cards are named by their identities, since the engine gives the row of a deleted card to
// the next new one.
struct StoreChange {
    enum class Kind { kDeletion, kMove, kPaste, kRename, kMerge };

    // A card that went into another category, and the one that it was in.
    struct Moved {
        CardUuid CardId;
        int32_t FromId = -1;
    };

    Kind What = Kind::kDeletion;
    // Deletion: the cards as they were. Paste: the copies as they were written.
    std::vector<FlashCard> Cards;
    // Move and merge.
    std::vector<Moved> MovedCards;
    // The category the cards went into, or the one that was renamed.
    int32_t IntoId = -1;
    // The categories that the cards were in, as they were called. Rename and merge: the one whose
    // name is gone.
    std::list<Category> Categories;
    // Rename: the name it has since.
    wxString NewName;
    // It had more cards than the history keeps, and cannot be taken back.
    bool IsTooLarge = false;

    size_t CountCards() const { return Cards.size() + MovedCards.size(); }
};

// What became of a step that was taken back.
struct UndoOutcome {
    // Cards that are again as they were.
    int32_t Restored = 0;
    // Cards left alone, because they were changed, moved, deleted or made anew after the step.
    int32_t LeftAlone = 0;
    // The category was not renamed back: it has gone or has yet another name, or its former name
    // belongs to another one meanwhile.
    bool NameTaken = false;
    // The rows that the restored cards have now; none for copies that were taken away.
    std::vector<int64_t> RowIds;
};

// The steps of this session that Edit > Undo can take back, the last one first. Taking back changes
// only what the step itself had changed: a card that was moved and then studied goes back into its
// category with the schedule it has now. Main thread only.
class UndoHistory {
  public:
    // Cards that all steps together may hold. The oldest steps are dropped first; a step that is
    // larger by itself empties the history, since the step before it could not be taken back alone.
    static constexpr size_t kMostCards = 100000;

    void Add(StoreChange change);
    // The steps mean nothing for another store.
    void Clear() { mSteps.clear(); }
    bool IsEmpty() const { return mSteps.empty(); }

    // What the menu says, such as "Undo deletion of 12 cards"; empty without a step.
    wxString GetLabel() const;

    // Takes back the last step and drops it. Returns 0, or -1 when the store fails, which then has
    // reported it. The caller notifies in either case.
    int UndoLast(Database& database, UndoOutcome& outcome);

  private:
    std::list<StoreChange> mSteps;
};

// What a command is about to do, read before it does it. Each returns 0, or -1 when the store
// fails, which then has reported it. Rows that are gone are passed over. A change that grows too
// large lets go of its cards. Any thread.

// Reads what a deletion of these rows is about to take away.
int NoteDeletion(Database& database, const std::vector<int64_t>& rowIds, StoreChange& change);
// Adds a copy that is about to be written.
void NoteCopy(const FlashCard& card, StoreChange& change);
// Adds where the cards of these rows are that are about to go into a category.
int NoteMove(Database& database, const std::vector<int64_t>& rowIds, int32_t intoId,
             StoreChange& change);
// Reads which cards a merge of one category into another is about to move.
int NoteMerge(Database& database, const Category& from, int32_t intoId, StoreChange& change);
