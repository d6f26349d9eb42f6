#include "study/StudyFrame.h"

#include <wx/statusbr.h>

#include "shell/AppServices.h"
#include "shell/CommandIds.h"
#include "shell/MessageBox.h"
#include "study/CardViewer.h"

// What the menus and their keys do in the study window.

void StudyFrame::AddCommand(int id, const std::function<void(bool checked)>& run,
                            const std::function<void(wxUpdateUIEvent&)>& rule) {
    Bind(
        wxEVT_MENU, [run](wxCommandEvent& event) { run(event.IsChecked()); }, id);
    Bind(wxEVT_UPDATE_UI, rule, id);
}

void StudyFrame::AddStudyCommands() {
    AddCommand(
        ID_STUDY_REVERSE, [this](bool checked) { OnDirection(checked); },
        [this](wxUpdateUIEvent& event) { event.Check(mReverseStudy); });
    AddCommand(
        ID_STUDY_FORWARD, [this](bool checked) { OnDirection(!checked); },
        [this](wxUpdateUIEvent& event) { event.Check(!mReverseStudy); });
    Bind(
        wxEVT_UPDATE_UI, [](wxUpdateUIEvent& event) { event.Check(true); }, ID_WINDOW_STUDY);
    Bind(
        wxEVT_MENU, [this](wxCommandEvent&) { Close(false); }, wxID_CLOSE);
}

void StudyFrame::AddCardCommands() {
    AddCommand(
        ID_EXPORT, [this](bool) { OnExport(); },
        [this](wxUpdateUIEvent& event) {
            // A card on show spares the count of all cards.
            event.Enable(mpDatabase != nullptr && (HasCard() || !mpDatabase->IsEmpty()));
        });
    AddCommand(
        wxID_OPEN, [this](bool) { OnEdit(); },
        [this](wxUpdateUIEvent& event) { event.Enable(HasCard()); });
    const auto clipboardRule = [this](wxUpdateUIEvent& event) { event.Enable(HasCard()); };
    AddCommand(
        wxID_CUT, [this](bool) { PutCardOnClipboard(true); }, clipboardRule);
    AddCommand(
        wxID_COPY, [this](bool) { PutCardOnClipboard(false); }, clipboardRule);
    AddCommand(
        wxID_DELETE, [this](bool) { OnDeleteCard(); },
        [this](wxUpdateUIEvent& event) { event.Enable(HasCard()); });
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
    mServices.ExportCards(*this, FindCurrentRow());
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

void StudyFrame::OnDeleteCard() {
    if (!HasCard()) {
        return;
    }
    const int answer = ShowMessageBox(_("Do you really want to delete this card?"),
                                      _("Delete Card"), wxOK | wxCANCEL | wxICON_EXCLAMATION, this);
    if (answer == wxOK) {
        mpDatabase->DeleteCard(mpScheduler->GetCurrentCardId());
        mpDatabase->Notify();
    }
}

void StudyFrame::ShowStatusBar(bool show) {
    mpStatusBar->Show(show);
    SendSizeEvent();
    Layout();
}
