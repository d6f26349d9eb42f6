#include "study/StudyFrame.h"

#include <wx/statusbr.h>

#include <algorithm>
#include <iterator>
#include <utility>
#include <vector>

#include "categories/CategoryList.h"
#include "shell/AppServices.h"
#include "shell/CommandIds.h"
#include "shell/MessageBox.h"
#include "shell/Settings.h"
#include "store/Database.h"
#include "store/UndoHistory.h"
#include "study/CardViewer.h"

// What the menus and their keys do in the study window.

namespace {

// The text shrinks to less than half and grows to more than ten times its size.
constexpr int32_t kLeastTextStep = -10;
constexpr int32_t kGreatestTextStep = 25;

}  // namespace

void StudyFrame::AddCommand(int id, const std::function<void(bool checked)>& run,
                            const std::function<void(wxUpdateUIEvent&)>& rule) {
    // While the answer is typed, commands that also concern texts go on to the application's.
    const int ofTexts[] = {wxID_UNDO, wxID_CUT, wxID_COPY, wxID_PASTE, wxID_DELETE, wxID_SELECTALL};
    const bool isOfTexts =
        std::find(std::begin(ofTexts), std::end(ofTexts), id) != std::end(ofTexts);
    Bind(
        wxEVT_MENU,
        [this, isOfTexts, run](wxCommandEvent& event) {
            if (isOfTexts && IsTyping()) {
                event.Skip();
            } else {
                run(event.IsChecked());
            }
        },
        id);
    Bind(
        wxEVT_UPDATE_UI,
        [this, isOfTexts, rule](wxUpdateUIEvent& event) {
            if (isOfTexts && IsTyping()) {
                event.Skip();
            } else {
                rule(event);
            }
        },
        id);
}

void StudyFrame::AddStudyCommands() {
    AddCommand(
        ID_STUDY_REVERSE, [this](bool checked) { OnDirection(checked); },
        [this](wxUpdateUIEvent& event) { event.Check(mReverseStudy); });
    AddCommand(
        ID_STUDY_FORWARD, [this](bool checked) { OnDirection(!checked); },
        [this](wxUpdateUIEvent& event) { event.Check(!mReverseStudy); });
    AddCommand(
        ID_CHOOSE_CATEGORY, [this](bool) { ChooseCategory(); },
        [this](wxUpdateUIEvent& event) { event.Enable(mpScheduler != nullptr); });
    AddCommand(
        ID_NEXT_DUE_CATEGORY, [this](bool) { GoToNextDue(); },
        [this](wxUpdateUIEvent& event) { event.Enable(mpScheduler != nullptr); });
    AddCommand(
        ID_SHOW_MORE_TODAY, [this](bool) { ShowMoreToday(); },
        [this](wxUpdateUIEvent& event) {
            event.Enable(mpScheduler != nullptr && mpScheduler->HoldsNewCards());
        });
    AddCommand(
        ID_TYPE_ANSWER, [this](bool checked) { SetTypesAnswer(checked); },
        [this](wxUpdateUIEvent& event) { event.Check(TypesAnswer()); });
    Bind(
        wxEVT_UPDATE_UI, [](wxUpdateUIEvent& event) { event.Check(true); }, ID_WINDOW_STUDY);
    Bind(
        wxEVT_MENU, [this](wxCommandEvent&) { Close(false); }, wxID_CLOSE);
}

void StudyFrame::AddCardCommands() {
    AddCommand(
        ID_EXPORT, [this](bool) { OnExport(); },
        [this](wxUpdateUIEvent& event) {
            // While a card is on show, the cards need not be counted.
            event.Enable(mpDatabase != nullptr && (HasCard() || !mpDatabase->IsEmpty()));
        });
    AddCommand(
        wxID_OPEN, [this](bool) { OnEdit(); },
        [this](wxUpdateUIEvent& event) { event.Enable(HasCard()); });
    const auto clipboardRule = [this](wxUpdateUIEvent& event) {
        event.Enable(HasCard() && !IsChoosingCategory());
    };
    AddCommand(
        wxID_CUT, [this](bool) { PutCardOnClipboard(true); }, clipboardRule);
    AddCommand(
        wxID_COPY, [this](bool) { PutCardOnClipboard(false); }, clipboardRule);
    AddCommand(
        wxID_DELETE, [this](bool) { OnDelete(); },
        [this](wxUpdateUIEvent& event) {
            event.Enable(IsChoosingCategory() ? mpCategoryList->HasFocusedCategory() : HasCard());
        });
    AddCommand(
        ID_RENAME, [this](bool) { mpCategoryList->Rename(); },
        [this](wxUpdateUIEvent& event) {
            event.Enable(IsChoosingCategory() && mpCategoryList->HasFocusedRow());
        });
    // Swallowed here, so that the application's commands for text fields never run.
    for (const int id : {wxID_UNDO, wxID_PASTE, wxID_SELECTALL}) {
        AddCommand(
            id, [](bool) {}, [](wxUpdateUIEvent& event) { event.Enable(false); });
    }
}

void StudyFrame::AddAppearanceCommands() {
    AddCommand(
        ID_COMPACT_SCORING, [this](bool) { SetCompactScoring(!IsCompact()); },
        [this](wxUpdateUIEvent& event) { event.Check(IsCompact()); });
    AddCommand(
        ID_STATUS_BAR, [this](bool checked) { ShowStatusBar(checked); },
        [this](wxUpdateUIEvent& event) { event.Check(mpStatusBar->IsShown()); });
    AddCommand(
        ID_LAYOUT_HORIZONTAL, [this](bool) { SetCardLayout(wxHORIZONTAL); },
        [this](wxUpdateUIEvent& event) { event.Check(mpCardViewer->GetLayout() == wxHORIZONTAL); });
    AddCommand(
        ID_LAYOUT_VERTICAL, [this](bool) { SetCardLayout(wxVERTICAL); },
        [this](wxUpdateUIEvent& event) { event.Check(mpCardViewer->GetLayout() == wxVERTICAL); });
}

void StudyFrame::SetCardLayout(int orientation) {
    if (orientation != mpCardViewer->GetLayout()) {
        WriteStringSetting(kSettingCardLayout,
                           orientation == wxHORIZONTAL ? "horizontal" : "vertical");
        mpCardViewer->SetLayout(orientation);
        Layout();
    }
}

void StudyFrame::AddTextSizeCommands() {
    const auto add = [this](int id, int32_t way) {
        AddCommand(
            id,
            [this, way](bool) {
                // The stored number may be out of range.
                const int32_t step = std::clamp(ReadIntegerSetting(kSettingStudyTextStep),
                                                kLeastTextStep, kGreatestTextStep);
                SetTextStep(way == 0 ? 0
                                     : std::clamp(step + way, kLeastTextStep, kGreatestTextStep));
            },
            [](wxUpdateUIEvent& event) { event.Enable(true); });
    };
    add(wxID_ZOOM_IN, 1);
    add(wxID_ZOOM_OUT, -1);
    add(wxID_ZOOM_100, 0);
}

void StudyFrame::SetTextStep(int32_t step) {
    WriteIntegerSetting(kSettingStudyTextStep, step);
    ApplySettings();
    Layout();
}

void StudyFrame::OnDirection(bool reverse) {
    if (mpScheduler == nullptr) {
        return;
    }
    mpScheduler->SetHistoryIndex(-1);
    mpCardViewer->ScrollToTop();
    if (mReverseStudy != reverse) {
        mReverseStudy = reverse;
        mServices.SetReverseStudy(reverse);
        mpScheduler->SetDirections(reverse ? kReviewReverse : kReviewForward);
    }
}

std::vector<int64_t> StudyFrame::FindCurrentRow() {
    std::vector<int64_t> rowIds;
    if (HasCard()) {
        mpDatabase->SelectRowIdById(mpScheduler->GetCurrentCardId(), rowIds);
    }
    return rowIds;
}

void StudyFrame::OnExport() {
    mServices.ExportCards(*this, FindCurrentRow(), AppServices::OfferFirst::kCategory);
}

void StudyFrame::OnEdit() {
    if (HasCard()) {
        // A copy, since opening an editor may make the Scheduler choose another card.
        const FlashCard card = mpScheduler->GetCurrentCard();
        mServices.OpenEditor(card);
    }
}

void StudyFrame::PutCardOnClipboard(bool cut) {
    const std::vector<int64_t> rowIds = FindCurrentRow();
    if (!rowIds.empty()) {
        mServices.PutCardsOnClipboard(rowIds, cut);
    }
}

void StudyFrame::OnDelete() {
    if (IsChoosingCategory()) {
        mpCategoryList->DeleteFocused();
        return;
    }
    if (!HasCard()) {
        return;
    }
    const int answer = ShowMessageBox(_("Do you really want to delete this card?"),
                                      _("Delete Card"), wxOK | wxCANCEL | wxICON_EXCLAMATION, this);
    if (answer == wxOK) {
        DeleteCurrentCard();
        mpDatabase->Notify();
    }
}

// The list can take the deletion back.
void StudyFrame::DeleteCurrentCard() {
    const CardUuid id = mpScheduler->GetCurrentCardId();
    std::vector<int64_t> rowIds;
    StoreChange change;
    if (mpDatabase->SelectRowIdById(id, rowIds) == 0 &&
        NoteDeletion(*mpDatabase, rowIds, change) == 0 && mpDatabase->DeleteCard(id) == 0) {
        mServices.GetUndoHistory().Add(std::move(change));
    }
}

void StudyFrame::ShowStatusBar(bool show) {
    mpStatusBar->Show(show);
    SendSizeEvent();
    Layout();
}
