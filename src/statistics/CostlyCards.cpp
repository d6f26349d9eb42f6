#include "statistics/CostlyCards.h"

#include <wx/button.h>
#include <wx/intl.h>
#include <wx/listctrl.h>
#include <wx/sizer.h>
#include <wx/stattext.h>

#include <algorithm>
#include <functional>
#include <list>
#include <utility>

#include "base/Text.h"
#include "media/MediaLines.h"
#include "shell/AppServices.h"
#include "shell/Forms.h"
#include "store/Database.h"
#include "store/UndoHistory.h"

namespace {

constexpr int kFrontWidth = 320;
constexpr int kListHeight = 110;
// More editors at once would bury the screen.
constexpr size_t kMostEditors = 10;

void Exclude(FlashCard& card, ReviewDirection direction, const wxDateTime&) {
    (direction == kReviewForward ? card.ForwardX : card.ReverseX) = true;
}

void Reset(FlashCard& card, ReviewDirection direction, const wxDateTime& now) {
    CardSchedule fresh;
    fresh.LastReview = now;
    ScheduleOf(card, direction) = fresh;
}

}  // namespace

CostlyCardsPanel::CostlyCardsPanel(wxWindow* parent, AppServices& services)
    : wxPanel(parent, wxID_ANY, wxDefaultPosition, wxDefaultSize, wxTAB_TRAVERSAL, "costlyCards"),
      mServices(services) {
    auto* const column = new wxBoxSizer(wxVERTICAL);
    mpList = new wxListCtrl(this, kListId, wxDefaultPosition, FromDIP(wxSize(-1, kListHeight)),
                            wxLC_REPORT);
    mpList->AppendColumn(_("Front"), wxLIST_FORMAT_LEFT, FromDIP(kFrontWidth));
    mpList->AppendColumn(_("Forgotten"), wxLIST_FORMAT_RIGHT, wxLIST_AUTOSIZE_USEHEADER);
    column->Add(MakeFormLabel(_("Cards that take too much:"), *mpList));
    column->Add(mpList, wxSizerFlags(1).Expand().Border(wxTOP | wxBOTTOM, FromDIP(kFormGap)));
    auto* const row = new wxBoxSizer(wxHORIZONTAL);
    const std::pair<int, wxString> buttons[] = {
        {kExcludeId, _("Exclude")}, {kEditId, _("Edit")}, {kResetId, _("Reset")}};
    const wxString tips[] = {_("Asks these cards no more in the directions in which they take too "
                               "much. The list can take it back."),
                             _("Opens the editor, where a card can be made easier."),
                             _("Makes these cards new again, as if they had never been scored. The "
                               "list can take it back.")};
    for (const auto& [id, label] : buttons) {
        auto* const button = new wxButton(this, id, label);
        button->SetToolTip(tips[mButtons.size()]);
        row->Add(button, wxSizerFlags().Border(wxRIGHT, FromDIP(kFormGap)));
        mButtons.push_back(button);
    }
    column->Add(row);
    SetSizer(column);
    const auto enable = [this](wxListEvent& event) {
        event.Skip();
        EnableButtons();
    };
    mpList->Bind(wxEVT_LIST_ITEM_SELECTED, enable);
    mpList->Bind(wxEVT_LIST_ITEM_DESELECTED, enable);
    mpList->Bind(wxEVT_LIST_ITEM_ACTIVATED, [this](wxListEvent&) { Edit(); });
    Bind(
        wxEVT_BUTTON, [this](wxCommandEvent&) { Change(Exclude); }, kExcludeId);
    Bind(
        wxEVT_BUTTON, [this](wxCommandEvent&) { Edit(); }, kEditId);
    Bind(
        wxEVT_BUTTON, [this](wxCommandEvent&) { Change(Reset); }, kResetId);
    EnableButtons();
}

// Keeps the selection of cards that stay.
void CostlyCardsPanel::SetCards(const std::vector<CostlyCard>& cards) {
    const std::vector<CostlyCard> selected = GetSelected();
    mCards = cards;
    mpList->DeleteAllItems();
    for (size_t i = 0; i < mCards.size(); ++i) {
        const CostlyCard& card = mCards[i];
        const long row =
            mpList->InsertItem(static_cast<long>(i), CellText(WithNamedMediaMarks(card.Front)));
        mpList->SetItem(row, 1, wxString::Format("%i", card.Lapses));
        if (std::any_of(selected.begin(), selected.end(),
                        [&card](const CostlyCard& each) { return each.CardId == card.CardId; })) {
            mpList->SetItemState(row, wxLIST_STATE_SELECTED, wxLIST_STATE_SELECTED);
        }
    }
    EnableButtons();
}

std::vector<CostlyCard> CostlyCardsPanel::GetSelected() const {
    std::vector<CostlyCard> selected;
    long row = -1;
    while ((row = mpList->GetNextItem(row, wxLIST_NEXT_ALL, wxLIST_STATE_SELECTED)) >= 0) {
        selected.push_back(mCards[static_cast<size_t>(row)]);
    }
    return selected;
}

void CostlyCardsPanel::EnableButtons() {
    for (wxButton* const button : mButtons) {
        button->Enable(mpList->GetSelectedItemCount() > 0);
    }
}

void CostlyCardsPanel::Edit() {
    std::vector<CostlyCard> selected = GetSelected();
    selected.resize(std::min(selected.size(), kMostEditors));
    for (const CostlyCard& each : selected) {
        FlashCard card;
        card.CardId = each.CardId;
        mServices.OpenEditor(card);
    }
}

// A card that is gone meanwhile is passed over.
void CostlyCardsPanel::Change(void (*change)(FlashCard& card, ReviewDirection direction,
                                             const wxDateTime& now)) {
    if (mpDatabase == nullptr) {
        return;
    }
    StoreChange step;
    {
        const StoreChangeGroup group(*mpDatabase);
        for (const CostlyCard& each : GetSelected()) {
            std::list<FlashCard> found;
            if (mpDatabase->SelectCardById(each.CardId, found) < 0 || found.empty()) {
                continue;
            }
            FlashCard card = found.front();
            for (const ReviewDirection direction : kEachDirection) {
                if ((each.Directions & direction) != 0) {
                    change(card, direction, mServices.GetClock().Now());
                }
            }
            if (mpDatabase->UpdateDifferences(found.front(), card) >= 0) {
                NoteEdit(found.front(), card, step);
            }
        }
    }
    mServices.GetUndoHistory().Add(std::move(step));
    mpDatabase->Notify();
}
