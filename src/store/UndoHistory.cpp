#include "store/UndoHistory.h"

#include <wx/filename.h>
#include <wx/translation.h>

#include <algorithm>
#include <cstddef>
#include <map>
#include <set>
#include <utility>

#include "base/Text.h"
#include "store/CardParts.h"
#include "store/CardRow.h"
#include "store/Database.h"

namespace {

using Kind = StoreChange::Kind;

bool IsSameCard(const FlashCard& one, const FlashCard& other) {
    return one.Front == other.Front && one.Back == other.Back &&
           one.CategoryId == other.CategoryId && one.Author == other.Author &&
           one.Chapter == other.Chapter && one.IntroductionOrder == other.IntroductionOrder &&
           one.ForwardX == other.ForwardX && one.ReverseX == other.ReverseX &&
           one.Notes == other.Notes && one.Forward == other.Forward && one.Reverse == other.Reverse;
}

// Adds the category to those that the change knows by name.
int NoteCategory(Database& database, int32_t id, StoreChange& change) {
    const auto isKnown = [id](const Category& category) { return category.Id == id; };
    if (std::any_of(change.Categories.begin(), change.Categories.end(), isKnown)) {
        return 0;
    }
    std::list<Category> found;
    if (database.SelectCategoryById(id, found) < 0) {
        return -1;
    }
    change.Categories.splice(change.Categories.end(), found);
    return 0;
}

int NoteCategories(Database& database, const std::set<int32_t>& ids, StoreChange& change) {
    const bool areNoted = std::all_of(ids.begin(), ids.end(), [&](int32_t id) {
        return NoteCategory(database, id, change) == 0;
    });
    return areNoted ? 0 : -1;
}

// Notes the sounds and pictures of cards that are about to go.
int NoteMedia(Database& database, const std::vector<int64_t>& rowIds, StoreChange& change) {
    const int result = database.SelectMedia(rowIds, UndoHistory::kMostMediaBytes, change.Media);
    change.HasTooMuchMedia = change.HasTooMuchMedia || result > 0;
    change.IsTooLarge = change.IsTooLarge || change.HasTooMuchMedia;
    return std::min(result, 0);
}

// Drops the contents of a change that is too large or gets so by that many more cards, and returns
// false.
bool HasRoomFor(size_t cards, StoreChange& change) {
    if (change.IsTooLarge || change.CountCards() + cards > UndoHistory::kMostCards) {
        change.IsTooLarge = true;
        change.Cards.clear();
        change.Media.clear();
        change.Texts.clear();
        change.Orders.clear();
        change.MovedCards.clear();
    }
    return !change.IsTooLarge;
}

int NoteMovedRows(Database& database, const std::vector<int64_t>& rowIds, StoreChange& change) {
    if (!HasRoomFor(rowIds.size(), change)) {
        return 0;
    }
    std::set<int32_t> categories;
    const auto visit = [&](const CardRow& row) {
        CardUuid id;
        if (row.CategoryId() == change.IntoId) {
            return;
        }
        if (row.CardId(id) < 0) {
            ++change.Nameless;
            return;
        }
        change.MovedCards.push_back({id, row.CategoryId(), change.IntoId});
        categories.insert(row.CategoryId());
    };
    return database.VisitCardsByRowId(rowIds, visit) < 0
               ? -1
               : NoteCategories(database, categories, change);
}

// Keeps the changes whose rows were written.
template <typename Change>
std::vector<Change> OnlyWritten(std::vector<Change> changes, std::vector<int64_t> rowIds) {
    std::sort(rowIds.begin(), rowIds.end());
    const auto isLeft = [&rowIds](const Change& change) {
        return !std::binary_search(rowIds.begin(), rowIds.end(), change.RowId);
    };
    changes.erase(std::remove_if(changes.begin(), changes.end(), isLeft), changes.end());
    return changes;
}

// Finds the categories to which cards return, and recreates those that are gone.
class FormerPlaces {
  public:
    FormerPlaces(Database& database, const std::list<Category>& categories)
        : mDatabase(database), mCategories(categories) {}

    // Returns 0 or -1. A category that had no name then, such as -1, stays the same.
    int Find(int32_t formerId, int32_t& id) {
        const auto known = mIds.find(formerId);
        if (known != mIds.end()) {
            id = known->second;
            return 0;
        }
        id = formerId;
        for (const Category& category : mCategories) {
            if (category.Id == formerId && FindOrMake(category, id) < 0) {
                return -1;
            }
        }
        mIds.emplace(formerId, id);
        return 0;
    }

  private:
    int FindOrMake(const Category& former, int32_t& id) {
        std::list<Category> found;
        if (mDatabase.SelectCategoryById(former.Id, found) < 0) {
            return -1;
        }
        // Another category may have taken the id of one that is gone. A renaming is a step of its
        // own and was taken back before.
        if (!found.empty() && found.front().Name == former.Name) {
            return 0;
        }
        std::list<Category> named;
        if (mDatabase.SelectCategoryByName(former.Name, named) < 0 ||
            (named.empty() && mDatabase.CategoryBringBack(former) < 0)) {
            return -1;
        }
        return mDatabase.FindOrInsertCategory(former.Name, id);
    }

    Database& mDatabase;
    const std::list<Category>& mCategories;
    std::map<int32_t, int32_t> mIds;
};

// Writes the cards. One that a group fails at is written by itself, so that it is reported.
int InsertAll(Database& database, const std::vector<FlashCard>& cards) {
    for (std::vector<FlashCard> left = cards; !left.empty();) {
        size_t inserted = 0;
        if (database.InsertFlashCards(left, inserted) == 0) {
            return 0;
        }
        if (database.InsertFlashCard(left[inserted]) < 0) {
            return -1;
        }
        left.erase(left.begin(), left.begin() + static_cast<std::ptrdiff_t>(inserted) + 1);
    }
    return 0;
}

int PutBackDeleted(Database& database, const StoreChange& change, UndoOutcome& outcome,
                   StoreChange& opposite) {
    FormerPlaces places(database, change.Categories);
    std::vector<FlashCard> missing;
    for (const FlashCard& card : change.Cards) {
        int32_t count = 0;
        if (database.SelectCardIdCount(card.CardId, count) < 0) {
            return -1;
        }
        if (count > 0 || card.CardId.IsZero()) {
            ++outcome.LeftAlone;
            continue;
        }
        missing.push_back(card);
        if (places.Find(card.CategoryId, missing.back().CategoryId) < 0) {
            return -1;
        }
    }
    if (InsertAll(database, missing) < 0) {
        return -1;
    }
    outcome.Restored = static_cast<int32_t>(missing.size());
    std::set<CardUuid> restored;
    for (const FlashCard& card : missing) {
        restored.insert(card.CardId);
    }
    for (const CardMedia& media : change.Media) {
        if (restored.count(media.CardId) != 0 && database.UpdateMedia(media) < 0) {
            return -1;
        }
    }
    for (const FlashCard& card : missing) {
        if (database.SelectRowIdById(card.CardId, outcome.RowIds) < 0) {
            return -1;
        }
    }
    opposite.Cards = std::move(missing);
    return 0;
}

int TakeBackCopies(Database& database, const StoreChange& change, UndoOutcome& outcome,
                   StoreChange& opposite) {
    std::list<FlashCard> found;
    std::vector<int64_t> rowIds;
    for (const FlashCard& card : change.Cards) {
        if (database.SelectCardById(card.CardId, found) < 0) {
            return -1;
        }
        if (found.empty() || !IsSameCard(found.front(), card)) {
            ++outcome.LeftAlone;
            continue;
        }
        if (database.SelectRowIdById(card.CardId, rowIds) < 0 ||
            NoteCategory(database, card.CategoryId, opposite) < 0) {
            return -1;
        }
        opposite.Cards.push_back(card);
        ++outcome.Restored;
    }
    return NoteMedia(database, rowIds, opposite) < 0 ? -1 : database.CardsDeleteByRowId(rowIds);
}

int MoveBack(Database& database, const StoreChange& change, UndoOutcome& outcome,
             StoreChange& opposite) {
    FormerPlaces places(database, change.Categories);
    std::map<int32_t, std::vector<int64_t>> rowIds;
    std::list<FlashCard> found;
    for (const StoreChange::Moved& moved : change.MovedCards) {
        if (database.SelectCardById(moved.CardId, found) < 0) {
            return -1;
        }
        if (found.empty() || found.front().CategoryId != moved.IntoId) {
            ++outcome.LeftAlone;
            continue;
        }
        int32_t id = -1;
        if (places.Find(moved.FromId, id) < 0 ||
            database.SelectRowIdById(moved.CardId, rowIds[id]) < 0 ||
            NoteCategory(database, moved.IntoId, opposite) < 0) {
            return -1;
        }
        opposite.MovedCards.push_back({moved.CardId, moved.IntoId, id});
        ++outcome.Restored;
    }
    for (const auto& [id, rows] : rowIds) {
        if (database.CardsUpdateCategory(rows, id) < 0) {
            return -1;
        }
        outcome.RowIds.insert(outcome.RowIds.end(), rows.begin(), rows.end());
    }
    return 0;
}

// A merge removed a category, which comes back even if it had no cards.
int PartAgain(Database& database, const StoreChange& change, UndoOutcome& outcome,
              StoreChange& opposite) {
    FormerPlaces places(database, change.Categories);
    int32_t parted = -1;
    for (const Category& category : change.Categories) {
        int32_t id = -1;
        if (places.Find(category.Id, id) < 0) {
            return -1;
        }
        parted = category.Id == change.Categories.front().Id ? id : parted;
    }
    opposite.IntoId = change.IntoId;
    if (database.SelectCategoryById(parted, opposite.Categories) < 0) {
        return -1;
    }
    return MoveBack(database, change, outcome, opposite);
}

// Moves the cards once more, and removes the category that they leave unless others are in it now.
int MergeAgain(Database& database, const StoreChange& change, UndoOutcome& outcome,
               StoreChange& opposite) {
    opposite.Categories.push_back(change.Categories.front());
    opposite.IntoId = change.IntoId;
    if (MoveBack(database, change, outcome, opposite) < 0) {
        return -1;
    }
    int32_t left = 0;
    const int32_t from = change.Categories.front().Id;
    if (database.SelectCategoryIdCount(from, left) < 0) {
        return -1;
    }
    if (left > 0) {
        return 0;
    }
    outcome.GoneId = from;
    outcome.IntoId =
        opposite.MovedCards.empty() ? change.IntoId : opposite.MovedCards.front().IntoId;
    return database.DeleteCategory(from);
}

int RenameBack(Database& database, const StoreChange& change, UndoOutcome& outcome,
               StoreChange& opposite) {
    const Category& former = change.Categories.front();
    std::list<Category> found;
    std::list<Category> named;
    if (database.SelectCategoryById(former.Id, found) < 0 ||
        database.SelectCategoryByName(former.Name, named) < 0) {
        return -1;
    }
    const bool isTaken = !named.empty() && named.front().Id != former.Id;
    const bool isSame = !found.empty() && found.front().Name == change.NewName;
    outcome.NameTaken = isTaken || !isSame;
    if (outcome.NameTaken) {
        return 0;
    }
    opposite.Categories = std::move(found);
    opposite.NewName = former.Name;
    return database.UpdateCategory(former);
}

// Gives a value of a card its former state if the step changed it. Returns false when it was
// changed once more since.
template <typename Value>
bool Revert(const Value& before, const Value& after, Value& now) {
    if (before == after) {
        return true;
    }
    if (!(now == after)) {
        return false;
    }
    now = before;
    return true;
}

bool RevertCard(const FlashCard& before, const FlashCard& after, FlashCard& now) {
    return Revert(before.Front, after.Front, now.Front) &&
           Revert(before.Back, after.Back, now.Back) &&
           Revert(before.CategoryId, after.CategoryId, now.CategoryId) &&
           Revert(before.Author, after.Author, now.Author) &&
           Revert(before.Chapter, after.Chapter, now.Chapter) &&
           Revert(before.IntroductionOrder, after.IntroductionOrder, now.IntroductionOrder) &&
           Revert(before.ForwardX, after.ForwardX, now.ForwardX) &&
           Revert(before.ReverseX, after.ReverseX, now.ReverseX) &&
           Revert(before.Notes, after.Notes, now.Notes) &&
           Revert(before.Forward, after.Forward, now.Forward) &&
           Revert(before.Reverse, after.Reverse, now.Reverse);
}

// Adds a card that an edit changes, with its front, which may name it, but without the other texts
// that stay. A schedule is kept whole, so that one that
// was studied since is not taken for the one that the edit left.
void AddChanged(const FlashCard& before, const FlashCard& after, StoreChange& change) {
    const CardParts parts = FindDifferences(before, after);
    if (parts.none()) {
        return;
    }
    FlashCard kept;
    kept.CardId = before.CardId;
    kept.Front = before.Front;
    kept.Forward = before.Forward;
    kept.Reverse = before.Reverse;
    change.Cards.push_back(kept);
    CopyParts(before, parts, change.Cards.back());
    CopyParts(after, parts, kept);
    change.Cards.push_back(std::move(kept));
}

// Finds the former category of an edited card. Returns 0 or -1; a category that is gone leaves
// hasPlace false, unless the step knows its name.
int FindFormerPlace(Database& database, const StoreChange& change, int32_t formerId,
                    FormerPlaces& places, int32_t& id, bool& hasPlace) {
    if (places.Find(formerId, id) < 0) {
        return -1;
    }
    const bool isKnown =
        std::any_of(change.Categories.begin(), change.Categories.end(),
                    [formerId](const Category& category) { return category.Id == formerId; });
    std::list<Category> found;
    if (!isKnown && database.SelectCategoryById(formerId, found) < 0) {
        return -1;
    }
    hasPlace = isKnown || formerId == -1 || !found.empty();
    return 0;
}

// Gives each card the values that it had, unless it was changed in them since. A card that was
// edited and then studied keeps its present schedule.
int EditBack(Database& database, const StoreChange& change, UndoOutcome& outcome,
             StoreChange& opposite) {
    FormerPlaces places(database, change.Categories);
    std::vector<FlashCard> cards;
    CardParts parts;
    for (size_t i = 0; i + 1 < change.Cards.size(); i += 2) {
        const FlashCard& before = change.Cards[i];
        const FlashCard& after = change.Cards[i + 1];
        std::list<FlashCard> found;
        if (database.SelectCardById(before.CardId, found) < 0) {
            return -1;
        }
        FlashCard card = found.empty() ? FlashCard() : found.front();
        bool canRevert = !found.empty() && RevertCard(before, after, card);
        if (canRevert && before.CategoryId != after.CategoryId &&
            (FindFormerPlace(database, change, before.CategoryId, places, card.CategoryId,
                             canRevert) < 0 ||
             NoteCategory(database, after.CategoryId, opposite) < 0)) {
            return -1;
        }
        if (!canRevert) {
            ++outcome.LeftAlone;
            continue;
        }
        if (database.SelectRowIdById(card.CardId, outcome.RowIds) < 0) {
            return -1;
        }
        parts |= FindDifferences(before, after);
        AddChanged(found.front(), card, opposite);
        cards.push_back(std::move(card));
    }
    outcome.Restored = static_cast<int32_t>(cards.size());
    const auto cardAt = [&cards](size_t place) -> const FlashCard& { return cards[place]; };
    return database.UpdateParts(outcome.RowIds, parts, cardAt);
}

// Writes the former texts back, where the present ones are those of the step.
int TextsBack(Database& database, const StoreChange& change, UndoOutcome& outcome,
              StoreChange& opposite) {
    std::vector<CardTextChange> wanted;
    wanted.reserve(change.Texts.size());
    std::vector<int64_t> rowIds;
    for (const CardTextChange& text : change.Texts) {
        rowIds.clear();
        if (database.SelectRowIdById(text.CardId, rowIds) < 0) {
            return -1;
        }
        if (rowIds.empty()) {
            continue;
        }
        wanted.push_back(text);
        wanted.back().RowId = rowIds.front();
        for (CardTextChange::Text& one : wanted.back().Texts) {
            std::swap(one.Before, one.After);
        }
    }
    const int result = database.UpdateTexts(wanted, outcome.RowIds);
    opposite.Texts = OnlyWritten(std::move(wanted), outcome.RowIds);
    outcome.Restored = static_cast<int32_t>(opposite.Texts.size());
    outcome.LeftAlone = static_cast<int32_t>(change.Texts.size()) - outcome.Restored;
    return result;
}

// Gives each value that the step has changed its former state. One that was changed since, as a
// schedule is by a score, stays.
void RevertEach(const FlashCard& before, const FlashCard& after, FlashCard& now) {
    Revert(before.Front, after.Front, now.Front);
    Revert(before.Back, after.Back, now.Back);
    Revert(before.CategoryId, after.CategoryId, now.CategoryId);
    Revert(before.Author, after.Author, now.Author);
    Revert(before.Chapter, after.Chapter, now.Chapter);
    Revert(before.IntroductionOrder, after.IntroductionOrder, now.IntroductionOrder);
    Revert(before.ForwardX, after.ForwardX, now.ForwardX);
    Revert(before.ReverseX, after.ReverseX, now.ReverseX);
    Revert(before.Notes, after.Notes, now.Notes);
    Revert(before.Forward, after.Forward, now.Forward);
    Revert(before.Reverse, after.Reverse, now.Reverse);
}

// Parts two cards that were merged, or merges them again: the kept one gets its other state, and
// the other one comes back or goes.
int PartCards(Database& database, const StoreChange& change, UndoOutcome& outcome,
              StoreChange& opposite) {
    FlashCard before = change.Cards[change.IsTakenBack ? 1 : 0];
    const FlashCard& after = change.Cards[change.IsTakenBack ? 0 : 1];
    StoreChange other;
    other.Cards = {change.Cards[2]};
    other.Media = change.Media;
    other.Categories = change.Categories;
    StoreChange otherOpposite;
    std::list<FlashCard> found;
    if (database.SelectCardById(before.CardId, found) < 0) {
        return -1;
    }
    // A kill between the two writes must leave both cards rather than none.
    if (!change.IsTakenBack && PutBackDeleted(database, other, outcome, otherOpposite) < 0) {
        return -1;
    }
    if (found.empty()) {
        ++outcome.LeftAlone;
    } else {
        FlashCard card = found.front();
        FormerPlaces places(database, change.Categories);
        if (before.CategoryId != after.CategoryId &&
            places.Find(before.CategoryId, before.CategoryId) < 0) {
            return -1;
        }
        RevertEach(before, after, card);
        if (database.UpdateDifferences(found.front(), card) < 0 ||
            database.SelectRowIdById(card.CardId, outcome.RowIds) < 0) {
            return -1;
        }
        ++outcome.Restored;
        opposite.Cards = change.Cards;
        opposite.Present = {found.front(), card};
        opposite.Categories = change.Categories;
        opposite.Media = change.Media;
    }
    // Without the kept card the other one is all that is left of both.
    const bool mayGo = change.IsTakenBack && !found.empty();
    return mayGo ? TakeBackCopies(database, other, outcome, otherOpposite) : 0;
}

// Parts many cards or merges them again, the last ones first, as one card may have been merged
// several times.
int PartEach(Database& database, const StoreChange& change, UndoOutcome& outcome,
             StoreChange& opposite) {
    for (auto one = change.Unions.rbegin(); one != change.Unions.rend(); ++one) {
        StoreChange back;
        back.What = one->What;
        back.IsTakenBack = !one->IsTakenBack;
        if (PartCards(database, *one, outcome, back) < 0) {
            return -1;
        }
        if (!back.Cards.empty()) {
            opposite.Unions.push_back(std::move(back));
        }
    }
    return 0;
}

// The rows of the outcome stay empty: what the user had moved stays selected, without the cards
// that made room for it.
int OrdersBack(Database& database, const StoreChange& change, UndoOutcome& outcome,
               StoreChange& opposite) {
    CardRenumberings wanted;
    std::vector<int64_t> rowIds;
    for (const CardRenumbering& one : change.Orders) {
        rowIds.clear();
        if (database.SelectRowIdById(one.CardId, rowIds) < 0) {
            return -1;
        }
        if (!rowIds.empty()) {
            wanted.push_back({rowIds.front(), one.After, one.Before, one.CardId});
        }
    }
    std::vector<int64_t> written;
    const int result = database.UpdateOrders(wanted, written);
    opposite.Orders = OnlyWritten(std::move(wanted), std::move(written));
    outcome.Restored = static_cast<int32_t>(opposite.Orders.size());
    outcome.LeftAlone = static_cast<int32_t>(change.Orders.size()) - outcome.Restored;
    return result;
}

int TakeBack(Database& database, const StoreChange& change, UndoOutcome& outcome,
             StoreChange& opposite) {
    switch (change.What) {
        case Kind::kDeletion:
            return change.IsTakenBack ? TakeBackCopies(database, change, outcome, opposite)
                                      : PutBackDeleted(database, change, outcome, opposite);
        case Kind::kPaste:
        case Kind::kNewCard:
            return change.IsTakenBack ? PutBackDeleted(database, change, outcome, opposite)
                                      : TakeBackCopies(database, change, outcome, opposite);
        case Kind::kMove:
            return MoveBack(database, change, outcome, opposite);
        case Kind::kRename:
            return RenameBack(database, change, outcome, opposite);
        case Kind::kMerge:
            return change.IsTakenBack ? MergeAgain(database, change, outcome, opposite)
                                      : PartAgain(database, change, outcome, opposite);
        case Kind::kEdit:
            return EditBack(database, change, outcome, opposite);
        case Kind::kTexts:
            return TextsBack(database, change, outcome, opposite);
        case Kind::kUnion:
            return change.Unions.empty() ? PartCards(database, change, outcome, opposite)
                                         : PartEach(database, change, outcome, opposite);
        case Kind::kOrder:
            return OrdersBack(database, change, outcome, opposite);
    }
    return 0;
}

bool IsEmptyChange(const StoreChange& change) {
    const bool hasCategory =
        (change.What == Kind::kRename || change.What == Kind::kMerge) && !change.Categories.empty();
    return !hasCategory && !change.IsTooLarge && change.CountCards() == 0;
}

wxString FormatForCards(const StoreChange& step) {
    const auto number = static_cast<unsigned>(step.CountCards());
    const bool isRedo = step.IsTakenBack;
    switch (step.What) {
        case Kind::kDeletion:
            return isRedo
                       ? wxPLURAL("Redo deletion of %i card", "Redo deletion of %i cards", number)
                       : wxPLURAL("Undo deletion of %i card", "Undo deletion of %i cards", number);
        case Kind::kMove:
            return isRedo ? wxPLURAL("Redo moving of %i card", "Redo moving of %i cards", number)
                          : wxPLURAL("Undo moving of %i card", "Undo moving of %i cards", number);
        case Kind::kTexts:
            return isRedo ? wxPLURAL("Redo replacement in %i card", "Redo replacement in %i cards",
                                     number)
                          : wxPLURAL("Undo replacement in %i card", "Undo replacement in %i cards",
                                     number);
        default:
            return isRedo ? wxPLURAL("Redo pasting of %i card", "Redo pasting of %i cards", number)
                          : wxPLURAL("Undo pasting of %i card", "Undo pasting of %i cards", number);
    }
}

wxString DescribeEdits(const StoreChange& step) {
    const auto count = static_cast<int>(step.CountCards());
    const auto number = static_cast<unsigned>(count);
    return wxString::Format(
        step.IsTakenBack ? wxPLURAL("Redo change of %i card", "Redo change of %i cards", number)
                         : wxPLURAL("Undo change of %i card", "Undo change of %i cards", number),
        count);
}

wxString DescribeUnions(const StoreChange& step) {
    std::set<CardUuid> kept;
    for (const StoreChange& one : step.Unions) {
        kept.insert(one.Cards.front().CardId);
    }
    const auto number = static_cast<unsigned>(kept.size() + step.Unions.size());
    return wxString::Format(
        step.IsTakenBack ? wxPLURAL("Redo merging of %i card", "Redo merging of %i cards", number)
                         : wxPLURAL("Undo merging of %i card", "Undo merging of %i cards", number),
        static_cast<int>(number));
}

// Returns the menu's text for a step, which names the same thing to take it back and to do it
// again.
wxString DescribeStep(const StoreChange& step, const UndoHistory::CardNaming& nameCard) {
    const bool isRedo = step.IsTakenBack;
    switch (step.What) {
        case Kind::kDeletion:
        case Kind::kMove:
        case Kind::kPaste:
        case Kind::kTexts:
            return wxString::Format(FormatForCards(step), static_cast<int>(step.CountCards()));
        case Kind::kRename:
            return wxString::Format(
                isRedo ? _("Redo renaming of category \"%s\"")
                       : _("Undo renaming of category \"%s\""),
                ShownName(isRedo ? step.NewName : step.Categories.front().Name));
        case Kind::kMerge:
            return wxString::Format(isRedo ? _("Redo merging of category \"%s\"")
                                           : _("Undo merging of category \"%s\""),
                                    ShownName(step.Categories.front().Name));
        case Kind::kEdit:
            if (step.Cards.size() > 2) {
                return DescribeEdits(step);
            }
            return wxString::Format(
                isRedo ? _("Redo editing of \"%s\"") : _("Undo editing of \"%s\""),
                ShownName(nameCard((isRedo ? step.Cards.front() : step.Cards.back()).Front)));
        case Kind::kNewCard:
            return wxString::Format(isRedo ? _("Redo new card \"%s\"") : _("Undo new card \"%s\""),
                                    ShownName(nameCard(step.Cards.back().Front)));
        case Kind::kUnion:
            if (!step.Unions.empty()) {
                return DescribeUnions(step);
            }
            return wxString::Format(
                isRedo ? _("Redo merging of cards \"%s\"") : _("Undo merging of cards \"%s\""),
                ShownName(nameCard(step.Cards[1].Front)));
        case Kind::kOrder:
            return isRedo ? _("Redo reordering of cards") : _("Undo reordering of cards");
    }
    return wxString();
}

}  // namespace

size_t StoreChange::CountMediaBytes() const {
    size_t bytes = 0;
    for (const CardMedia& media : Media) {
        bytes += media.CountBytes();
    }
    for (const StoreChange& one : Unions) {
        bytes += one.CountMediaBytes();
    }
    return bytes;
}

void UndoHistory::Add(StoreChange change) {
    if (IsEmptyChange(change)) {
        return;
    }
    Tell(change);
    mTakenBack.clear();
    mSteps.push_back(std::move(change));
    if (mSteps.back().IsTooLarge) {
        mSteps.clear();
    }
    size_t cards = 0;
    size_t bytes = 0;
    auto oldest = mSteps.end();
    while (oldest != mSteps.begin()) {
        cards += std::prev(oldest)->CountCards();
        bytes += std::prev(oldest)->CountMediaBytes();
        if (cards > kMostCards || bytes > kMostMediaBytes) {
            break;
        }
        --oldest;
    }
    mSteps.erase(mSteps.begin(), oldest);
}

void UndoHistory::Clear() {
    mSteps.clear();
    mTakenBack.clear();
}

wxString UndoHistory::GetUndoLabel() const {
    return mSteps.empty() ? wxString() : DescribeStep(mSteps.back(), mNaming);
}

wxString UndoHistory::GetRedoLabel() const {
    return mTakenBack.empty() ? wxString() : DescribeStep(mTakenBack.back(), mNaming);
}

int UndoHistory::TakeLast(std::list<StoreChange>& from, std::list<StoreChange>& to,
                          Database& database, UndoOutcome& outcome) {
    outcome = UndoOutcome();
    if (from.empty()) {
        return 0;
    }
    const StoreChange change = std::move(from.back());
    from.pop_back();
    StoreChange opposite;
    opposite.What = change.What;
    opposite.IsTakenBack = !change.IsTakenBack;
    const StoreChangeGroup group(database);
    const int result = TakeBack(database, change, outcome, opposite);
    if (result == 0 && !IsEmptyChange(opposite)) {
        Tell(opposite);
        to.push_back(std::move(opposite));
        if (to.back().IsTooLarge) {
            to.clear();
        }
    }
    return result;
}

int UndoHistory::UndoLast(Database& database, UndoOutcome& outcome) {
    return TakeLast(mSteps, mTakenBack, database, outcome);
}

int UndoHistory::RedoLast(Database& database, UndoOutcome& outcome) {
    return TakeLast(mTakenBack, mSteps, database, outcome);
}

wxString DescribeWithoutUndo(const StoreChange& change) {
    if (change.HasTooMuchMedia) {
        const wxString most =
            wxFileName::GetHumanReadableSize(wxULongLong(UndoHistory::kMostMediaBytes), "", 0);
        return wxString::Format(_("The store has more than %s of sounds and pictures of these "
                                  "cards. What was done to them cannot be undone."),
                                most);
    }
    const auto count = static_cast<int>(change.Nameless);
    return count == 0 ? wxString()
                      : wxString::Format(wxPLURAL("The store has no proper identity for %i of these"
                                                  " cards. What was done to it cannot be undone.",
                                                  "The store has no proper identity for %i of these"
                                                  " cards. What was done to them cannot be undone.",
                                                  static_cast<unsigned>(count)),
                                         count);
}

int NoteDeletion(Database& database, const std::vector<int64_t>& rowIds, StoreChange& change) {
    change.What = Kind::kDeletion;
    if (!HasRoomFor(rowIds.size(), change)) {
        return 0;
    }
    change.Cards.reserve(rowIds.size());
    std::set<int32_t> categories;
    const auto visit = [&](const CardRow& row) {
        FlashCard card;
        if (row.Read(card) < 0) {
            ++change.Nameless;
            return;
        }
        categories.insert(card.CategoryId);
        change.Cards.push_back(std::move(card));
    };
    if (database.VisitCardsByRowId(rowIds, visit) < 0 ||
        NoteCategories(database, categories, change) < 0 ||
        NoteMedia(database, rowIds, change) < 0) {
        return -1;
    }
    HasRoomFor(0, change);
    return 0;
}

void NoteCopy(const FlashCard& card, StoreChange& change) {
    change.What = Kind::kPaste;
    if (HasRoomFor(1, change)) {
        change.Cards.push_back(card);
    }
}

StoreChange NoteEdit(const FlashCard& before, const FlashCard& after) {
    StoreChange change;
    change.What = Kind::kEdit;
    if (!IsSameCard(before, after)) {
        change.Cards = {before, after};
    }
    return change;
}

void NoteEdit(const FlashCard& before, const FlashCard& after, StoreChange& change) {
    change.What = Kind::kEdit;
    if (!IsSameCard(before, after) && HasRoomFor(1, change)) {
        change.Cards.push_back(before);
        change.Cards.push_back(after);
    }
}

StoreChange NoteUnions(std::vector<StoreChange> unions) {
    if (unions.size() == 1) {
        return std::move(unions.front());
    }
    StoreChange change;
    change.What = Kind::kUnion;
    change.Unions = std::move(unions);
    return change;
}

StoreChange NoteNewCard(const FlashCard& card) {
    StoreChange change;
    change.What = Kind::kNewCard;
    change.Cards = {card};
    return change;
}

StoreChange NoteTexts(std::vector<CardTextChange> written) {
    StoreChange change;
    change.What = Kind::kTexts;
    const auto named =
        std::stable_partition(written.begin(), written.end(),
                              [](const CardTextChange& text) { return !text.CardId.IsZero(); });
    change.Nameless = static_cast<int32_t>(written.end() - named);
    written.erase(named, written.end());
    if (HasRoomFor(written.size(), change)) {
        change.Texts = std::move(written);
    }
    return change;
}

int NoteUnion(Database& database, const FlashCard& kept, const FlashCard& other,
              const FlashCard& merged, StoreChange& change) {
    std::vector<int64_t> rowIds;
    if (database.SelectRowIdById(other.CardId, rowIds) < 0 ||
        NoteDeletion(database, rowIds, change) < 0) {
        return -1;
    }
    change.What = Kind::kUnion;
    change.Cards = {kept, merged, other};
    return NoteCategories(database, {kept.CategoryId, merged.CategoryId}, change);
}

int NoteMove(Database& database, const std::vector<int64_t>& rowIds, int32_t intoId,
             StoreChange& change) {
    change.What = Kind::kMove;
    change.IntoId = intoId;
    return NoteMovedRows(database, rowIds, change);
}

int NoteChange(Database& database, const std::vector<int64_t>& rowIds,
               const std::function<void(FlashCard&)>& edit, StoreChange& change) {
    change.What = Kind::kEdit;
    if (!HasRoomFor(rowIds.size(), change)) {
        return 0;
    }
    std::set<int32_t> categories;
    const auto visit = [&](const CardRow& row) {
        FlashCard before;
        const bool isNameless = row.Read(before) < 0;
        FlashCard after = before;
        edit(after);
        if (isNameless) {
            ++change.Nameless;
            return;
        }
        if (before.CategoryId != after.CategoryId) {
            categories.insert(before.CategoryId);
        }
        AddChanged(before, after, change);
    };
    return database.VisitCardsByRowId(rowIds, visit) < 0
               ? -1
               : NoteCategories(database, categories, change);
}

int NoteOrders(Database& database, CardRenumberings changes, std::vector<int64_t> written,
               StoreChange& change) {
    change.What = Kind::kOrder;
    changes = OnlyWritten(std::move(changes), std::move(written));
    if (!HasRoomFor(changes.size(), change)) {
        return 0;
    }
    std::vector<int64_t> rowIds;
    rowIds.reserve(changes.size());
    for (const CardRenumbering& one : changes) {
        rowIds.push_back(one.RowId);
    }
    std::map<int64_t, CardUuid> ids;
    const auto visit = [&ids](const CardRow& row) { row.CardId(ids[row.RowId()]); };
    if (database.VisitCardsByRowId(rowIds, visit) < 0) {
        return -1;
    }
    for (CardRenumbering& one : changes) {
        one.CardId = ids[one.RowId];
    }
    const auto named =
        std::stable_partition(changes.begin(), changes.end(),
                              [](const CardRenumbering& one) { return !one.CardId.IsZero(); });
    change.Nameless += static_cast<int32_t>(changes.end() - named);
    changes.erase(named, changes.end());
    change.Orders = std::move(changes);
    return 0;
}

int NoteMerge(Database& database, const Category& from, int32_t intoId, StoreChange& change) {
    change.What = Kind::kMerge;
    change.IntoId = intoId;
    change.Categories.push_back(from);
    std::vector<int64_t> rowIds;
    if (database.CardSelectRowIdsOrder(from.Id, CardColumn::kIntroductionOrder, rowIds) < 0) {
        return -1;
    }
    return NoteMovedRows(database, rowIds, change);
}
