#pragma once

#include <wx/string.h>

#include <cstdint>
#include <functional>
#include <list>
#include <utility>
#include <vector>

#include "store/CardSequence.h"
#include "store/CardTexts.h"
#include "store/Database.h"
#include "store/FlashCard.h"

// What one command did to the cards or categories of the store, with all that is needed to take it
// back. Cards are named by their identities, since the engine gives the row of a deleted card to
// the next new one.
struct StoreChange {
    enum class Kind {
        kDeletion,
        kMove,
        kPaste,
        kRename,
        kMerge,
        kEdit,
        kNewCard,
        kTexts,
        kUnion,
        kOrder
    };

    // A card that went into another category, its former category and that one.
    struct Moved {
        CardUuid CardId;
        int32_t FromId = -1;
        int32_t IntoId = -1;
    };

    // The cards that a union of two keeps here.
    static constexpr size_t kCardsOfUnion = 3;

    Kind What = Kind::kDeletion;
    // True for a step that was taken back and can be done again.
    bool IsTakenBack = false;
    // Deletion: the cards as they were. Paste and new card: the cards as they were written. Edit:
    // each card before and after; of many cards without the texts that stay, but for the front.
    // Union of two cards: the kept card before and after, and the other one.
    std::vector<FlashCard> Cards;
    // Union of many: those of two cards each, in the order in which they were done.
    std::vector<StoreChange> Unions;
    // Union that was taken back or done again: the kept card before and after that, with what was
    // changed meanwhile.
    std::vector<FlashCard> Present;
    // Changed texts of many cards.
    std::vector<CardTextChange> Texts;
    // Deletion and union: what those of them had that this program does not show.
    std::vector<CardMedia> Media;
    // Cards that are changed with the others and cannot be taken back: a damaged store has no
    // identity for them by which they could be found.
    int32_t Nameless = 0;
    // New numbers in the order of introduction.
    CardRenumberings Orders;
    // Move and merge.
    std::vector<Moved> MovedCards;
    // The category the cards went into.
    int32_t IntoId = -1;
    // The former categories of the cards, with their names then. Rename and merge: the one whose
    // name is gone.
    std::list<Category> Categories;
    // Rename: the new name.
    wxString NewName;
    // True for a step with more cards, or more bytes of sounds and pictures, than the history
    // keeps. It cannot be taken back.
    bool IsTooLarge = false;
    bool HasTooMuchMedia = false;

    size_t CountCards() const {
        return (What == Kind::kEdit ? Cards.size() / 2 : Cards.size()) + Texts.size() +
               Orders.size() + MovedCards.size() + kCardsOfUnion * Unions.size();
    }
    size_t CountMediaBytes() const;
};

// The outcome of taking back a step.
struct UndoOutcome {
    // The cards that are as they were before the step, or after it when it was done again.
    int32_t Restored = 0;
    // Cards left alone, because they were changed, moved, deleted or made anew after the step.
    int32_t LeftAlone = 0;
    // True when the category was not renamed back: it is gone or renamed again, or another one has
    // its former name.
    bool NameTaken = false;
    // The present rows of the restored cards; none for copies that were taken away.
    std::vector<int64_t> RowIds;
    // Redo of a merge: the category that is gone once more, and the one that its cards are in now.
    // Both are -1 for all else.
    int32_t GoneId = -1;
    int32_t IntoId = -1;
};

// The steps of this session that Edit > Undo can take back, the last one first, and those that were
// taken back and that Edit > Redo does again. Taking back changes only what the step had changed: a
// card that was moved and then studied goes back into its category with its present schedule. What
// is done again is a step as any other, whose content is found while its opposite is taken back.
// Main thread only.
class UndoHistory {
  public:
    // The most cards in all steps together. The oldest steps are dropped first; a larger step
    // empties the history, since the step before it could not be taken back alone.
    static constexpr size_t kMostCards = 100000;
    // The most bytes of sounds and pictures in all steps together, likewise.
    static constexpr size_t kMostMediaBytes = size_t{64} << 20;

    // Is called with each step that was added, and with the opposite of each one that was taken
    // back or done again. A step that is too large has no contents.
    using Listener = std::function<void(const StoreChange&)>;
    void SetListener(Listener listener) { mListener = std::move(listener); }

    // Makes the name of a card in the menu's texts from its front, which may have lines that only
    // rooms above this one know.
    using CardNaming = std::function<wxString(const wxString& front)>;
    void SetCardNaming(CardNaming naming) { mNaming = std::move(naming); }

    void Add(StoreChange change);
    // Call it for another store, where the steps mean nothing.
    void Clear();
    bool IsEmpty() const { return mSteps.empty(); }
    bool CanRedo() const { return !mTakenBack.empty(); }

    // Return the menu's texts, such as "Undo deletion of 12 cards"; empty without a step.
    wxString GetUndoLabel() const;
    wxString GetRedoLabel() const;

    // Takes back the last step and drops it. Returns 0, or -1 when the store fails, which has then
    // reported it. The caller notifies in either case.
    int UndoLast(Database& database, UndoOutcome& outcome);
    // The same for the step that was taken back last, which is done again.
    int RedoLast(Database& database, UndoOutcome& outcome);

  private:
    // Takes the last step of one list back, and puts its opposite at the end of the other.
    int TakeLast(std::list<StoreChange>& from, std::list<StoreChange>& to, Database& database,
                 UndoOutcome& outcome);
    void Tell(const StoreChange& change) const {
        if (mListener) {
            mListener(change);
        }
    }

    Listener mListener;
    CardNaming mNaming = [](const wxString& front) { return front; };
    std::list<StoreChange> mSteps;
    std::list<StoreChange> mTakenBack;
};

// Returns what the user has to know of a step that was done; empty if it can be taken back whole.
wxString DescribeWithoutUndo(const StoreChange& change);

// These note what a command is about to do. Each returns 0, or -1 when the store fails, which has
// then reported it. They skip rows that are gone. A change that grows too large drops its cards.
// Any thread.

// Notes the cards that a deletion of these rows is about to take away.
int NoteDeletion(Database& database, const std::vector<int64_t>& rowIds, StoreChange& change);
// Adds a copy that is about to be written.
void NoteCopy(const FlashCard& card, StoreChange& change);
// Adds the categories of the cards in these rows, which are about to go into another.
int NoteMove(Database& database, const std::vector<int64_t>& rowIds, int32_t intoId,
             StoreChange& change);
// Returns what a save in the editor did to a card, or the writing of a new one.
StoreChange NoteEdit(const FlashCard& before, const FlashCard& after);
// Adds a card that is about to be changed with others by one command.
void NoteEdit(const FlashCard& before, const FlashCard& after, StoreChange& change);
StoreChange NoteNewCard(const FlashCard& card);
// Notes what is about to become of the cards in these rows, to which edit does the same in their
// order. Cards that stay as they are are left out.
int NoteChange(Database& database, const std::vector<int64_t>& rowIds,
               const std::function<void(FlashCard&)>& edit, StoreChange& change);
// Returns what a command did to the texts of these cards, without those that have no identity.
StoreChange NoteTexts(std::vector<CardTextChange> written);
// Notes that the second card is about to be deleted because the first one becomes the third.
int NoteUnion(Database& database, const FlashCard& kept, const FlashCard& other,
              const FlashCard& merged, StoreChange& change);
// Returns unions of two cards as one step.
StoreChange NoteUnions(std::vector<StoreChange> unions);
// Notes those of the changes of numbers whose rows were written.
int NoteOrders(Database& database, CardRenumberings changes, std::vector<int64_t> written,
               StoreChange& change);
// Notes the cards that a merge of one category into another is about to move.
int NoteMerge(Database& database, const Category& from, int32_t intoId, StoreChange& change);
