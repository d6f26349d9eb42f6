#include "list/CardList.h"

#include <wx/utils.h>

#include <iterator>
#include <limits>
#include <list>
#include <random>
#include <utility>

#include "base/Text.h"
#include "shell/AppServices.h"
#include "shell/MessageBox.h"
#include "store/Database.h"
#include "store/UndoHistory.h"

// What the commands do with the cards of the list.

void CardList::EditSelected() {
    EditFrom(
        mpListCtrl->GetNextItem(-1, wxLIST_NEXT_ALL, wxLIST_STATE_FOCUSED | wxLIST_STATE_SELECTED));
}

// Opens the card of a row, or all selected cards where there are several.
void CardList::EditFrom(long row) {
    if (mpListCtrl->GetSelectedItemCount() < 2) {
        EditRow(row);
        return;
    }
    std::vector<int64_t> rowIds;
    CollectSelection(rowIds, false);
    mServices.OpenEditorOfMany(rowIds);
}

void CardList::EditRow(long row) {
    if (row < 0 || static_cast<size_t>(row) >= mRowIds.size()) {
        return;
    }
    std::list<FlashCard> cards;
    if (mpDatabase->SelectCardByRowId(mRowIds[static_cast<size_t>(row)], cards) >= 0 &&
        !cards.empty()) {
        mServices.OpenEditor(cards.front());
    }
}

void CardList::PutOnClipboard(bool cut) {
    if (HasTarget()) {
        mpListCtrl->SelectSomeRow();
        std::vector<int64_t> rowIds;
        CollectSelection(rowIds, false);
        mServices.PutCardsOnClipboard(rowIds, cut);
    }
}

void CardList::Paste() {
    if (CanPaste()) {
        mServices.PasteCards(mChoice.Id, AppServices::EmptyCut::kBefore);
    }
}

bool CardList::CanPaste() const {
    return mpDatabase != nullptr && mServices.CanPasteCards();
}

void CardList::ReplaceTexts() {
    if (mHasFirstPageOnly) {
        ReadAll();
    }
    std::vector<int64_t> selected;
    CollectSelection(selected, false);
    // The list reads its rows anew while the dialog has them.
    const std::vector<int64_t> shown = mRowIds;
    mServices.ReplaceInCards(*this, selected, shown);
}

void CardList::WriteOrders(const CardRenumberings& changes, const wxString& caption) {
    if (changes.empty()) {
        return;
    }
    StoreChange change;
    const wxBusyCursor busy;
    // The store reports a failure; what was written can be taken back all the same.
    Renumber(*mpDatabase, changes, change);
    const wxString notice = DescribeWithoutUndo(change);
    mServices.GetUndoHistory().Add(std::move(change));
    mpDatabase->Notify();
    if (mpListCtrl->GetFocusedRow() >= 0) {
        mpListCtrl->EnsureVisible(mpListCtrl->GetFocusedRow());
    }
    if (!notice.empty()) {
        ShowMessageBox(notice, caption, wxOK | wxCENTRE, this);
    }
}

void CardList::MoveSelected(bool isDown) {
    if (!HasTarget()) {
        return;
    }
    mpListCtrl->SelectSomeRow();
    std::vector<int64_t> rowIds;
    CollectSelection(rowIds, false);
    const bool isTurned = mOrder.Column == ListColumn::kNumber && mOrder.IsDescending;
    CardRenumberings changes;
    if (FindMoves(*mpDatabase, std::move(rowIds), isDown != isTurned, changes) == 0) {
        WriteOrders(changes, _("Move Cards"));
    }
}

void CardList::RenumberSelected() {
    if (!HasTarget()) {
        return;
    }
    mpListCtrl->SelectSomeRow();
    std::vector<int64_t> rowIds;
    CollectSelection(rowIds, false);
    std::vector<OrderedCard> places;
    if (mpDatabase->SelectPlaces(rowIds, places) < 0 || places.empty()) {
        return;
    }
    const int32_t most =
        std::numeric_limits<int32_t>::max() - static_cast<int32_t>(places.size()) + 1;
    const wxString caption = _("Renumber Cards");
    TextQuestion dialog(this,
                        _("Please enter the number of the first selected card. The others follow "
                          "in the order of the list."),
                        caption, wxString::Format("%i", places.front().Order));
    int32_t first = 0;
    while (dialog.ShowModal() == wxID_OK) {
        if (ParseWholeNumber(TrimWide(dialog.GetValue()), first) && first >= 0 && first <= most) {
            WriteOrders(NumberFrom(places, first), caption);
            return;
        }
        ShowMessageBox(wxString::Format(_("The number must be a whole number from 0 to %i."), most),
                       caption, wxOK | wxCENTRE, this);
    }
}

void CardList::DealNewCards() {
    if (mpDatabase == nullptr) {
        return;
    }
    CardUuid chance;
    if (GenerateUuid(chance) < 0) {
        return;
    }
    std::seed_seq seed(std::begin(chance.Bytes), std::end(chance.Bytes));
    std::mt19937 generator(seed);
    const auto random = [&generator](size_t end) {
        return std::uniform_int_distribution<size_t>(0, end - 1)(generator);
    };
    // Numbers stay in their categories.
    CardRenumberings changes;
    const bool isRead = mChoice.ForEach([&](int32_t id) {
        std::vector<OrderedCard> places;
        if (mpDatabase->SelectNewPlaces(GetDirection(), id, places) < 0) {
            return false;
        }
        const CardRenumberings dealt = DealNumbers(places, random);
        changes.insert(changes.end(), dealt.begin(), dealt.end());
        return true;
    });
    if (isRead) {
        WriteOrders(changes, _("New Cards in Random Order"));
    }
}

void CardList::DeleteSelected() {
    if (!HasTarget()) {
        return;
    }
    mpListCtrl->SelectSomeRow();
    const int answer =
        ShowMessageBox(_("Do you really want to delete the selected card(s)?") +
                           AboutCards(mpListCtrl->GetSelectedItemCount()),
                       _("Delete Card(s)"), wxOK | wxCANCEL | wxICON_EXCLAMATION, this);
    if (answer != wxOK) {
        return;
    }
    mServices.BackUpDay(this);
    const wxBusyCursor busy;
    const std::vector<long> rows = mpListCtrl->GetSelectedRows();
    if (rows.empty()) {
        return;
    }
    std::vector<int64_t> rowIds;
    CollectSelection(rowIds, false);
    StoreChange change;
    if (NoteDeletion(*mpDatabase, rowIds, change) < 0) {
        return;
    }
    // The store itself reports a failure; the other cards are deleted all the same.
    mpDatabase->CardsDeleteByRowId(rowIds);
    const wxString notice = DescribeWithoutUndo(change);
    mServices.GetUndoHistory().Add(std::move(change));
    mpListCtrl->SelectEveryRow(false);
    mpListCtrl->SetFocusedRow(-1);
    mpDatabase->Notify();
    // The keys go on where the deleted cards were.
    RestoreFocus(kNoCard, rows.front());
    if (mpListCtrl->GetFocusedRow() >= 0) {
        mpListCtrl->EnsureVisible(mpListCtrl->GetFocusedRow());
    }
    if (!notice.empty()) {
        ShowMessageBox(notice, _("Delete Card(s)"), wxOK | wxCENTRE, this);
    }
}
