#include "study/StudyTexts.h"

#include <wx/button.h>
#include <wx/intl.h>
#include <wx/settings.h>
#include <wx/sizer.h>
#include <wx/stattext.h>
#include <wx/statusbr.h>

#include "scheduler/Scheduler.h"

ScoreLabels GetScoreLabels(bool compact) {
    if (compact) {
        return {"5", "4", "3", "2", "1", "0"};
    }
    return {_("5 - Pass (no hesitation)"),   _("4 - Pass (some hesitation)"),
            _("3 - Pass (with difficulty)"), _("2 - Pass (not confident)"),
            _("1 - Pass (by guessing)"),     _("0 - Fail (incorrect)")};
}

wxString ShowBackLabel(bool compact) {
    return compact ? wxString(">") : _("Show Back");
}

wxString StoreEmptyMessage() {
    return _(
        "Thank you for choosing Ostrel Velomind!  Your flash card database is empty. Click the "
        "'File' menu and 'New Card' menu item to create a flash card.");
}

wxString CategoryEmptyMessage() {
    return _(
        "There are no flash cards in the current category.\nClick the 'File' menu and 'New Card' "
        "menu item to create a flash card.\nTo change the current category, click on the 'View' "
        "menu, click on the 'List View' menu item and select a category from the category drop "
        "down menu.");
}

wxString AllExcludedMessage() {
    return _(
        "All of the flash cards are excluded from review.\nTry switching review direction.  Click "
        "the 'Tools' menu, click 'Study Back to Front' or 'Study Front to Back' menu item.");
}

wxString CategoryExcludedMessage() {
    return _(
        "All of the flash cards in this category are excluded from review.\nTo change the current "
        "category, click on the 'View' menu, click on the 'List View' menu item and select a "
        "category from the category drop down menu.\nTo change review direction click the 'Tools' "
        "menu, click 'Study Back to Front' or 'Study Front to Back' menu item.");
}

namespace {

bool IsAsWideAsField(const wxString& text, const wxStatusBar& bar, int field) {
    wxRect rectangle;
    bar.GetFieldRect(field, rectangle);
    // Measured in the frame's font, which is that of the whole window.
    return bar.GetParent()->GetTextExtent(text).GetWidth() >= rectangle.GetWidth();
}

}  // namespace

wxString StudyStepText(const Scheduler& scheduler, bool backShown, const wxStatusBar& bar) {
    const int position = scheduler.GetHistoryIndex();
    if (position < 0) {
        return backShown ? _("Score yourself") : _("Try to remember");
    }
    const bool narrow = IsAsWideAsField(_("Recently studied 00/00"), bar, kStepField);
    return wxString::Format(narrow ? _("Recent %i/%i") : _("Recently studied %i/%i"), position + 1,
                            scheduler.GetHistoryCount());
}

wxString StudyReadyText(Scheduler& scheduler, const wxStatusBar& bar) {
    if (scheduler.IsBreakTime()) {
        return _("Break Time");
    }
    const bool narrow = IsAsWideAsField(_("Ready for Review: 0000"), bar, kReadyField);
    return wxString::Format(narrow ? _("Ready: %i") : _("Ready for Review: %i"),
                            scheduler.GetReadyCount());
}

namespace {

constexpr int kRescoreDialogId = 10052;
constexpr int kRescoreId = 10063;
constexpr int kOriginalScoreId = 10065;
constexpr int kBorder = 5;
constexpr int kTextWidth = 215;

}  // namespace

RescoreMessageBox::RescoreMessageBox(wxWindow* parent) {
    SetExtraStyle(wxFRAME_EX_METAL | wxWS_EX_BLOCK_EVENTS);
    wxDialog::Create(parent, kRescoreDialogId, _("Rescore"), wxDefaultPosition, wxSize(400, 300),
                     wxDEFAULT_DIALOG_STYLE, "dialog");
    SetFont(wxSystemSettings::GetFont(wxSYS_DEFAULT_GUI_FONT));
    CreateControls();
    GetSizer()->SetSizeHints(this);
    Centre(wxBOTH);
}

void RescoreMessageBox::AddText(const wxString& words) {
    auto* const text = new wxStaticText(this, wxID_STATIC, words);
    text->Wrap(kTextWidth);
    GetSizer()->Add(text, wxSizerFlags().Centre().Border(wxALL, kBorder));
}

void RescoreMessageBox::CreateControls() {
    SetSizer(new wxBoxSizer(wxVERTICAL));
    AddText(
        _("You have changed the score on a flash card in your card history. If you keep the new "
          "score the previous score will be undone and the score you have selected will be "
          "recorded in its place.  "));
    AddText(_("Do you want to rescore the card or leave it with its original score?"));

    auto* const buttons = new wxBoxSizer(wxHORIZONTAL);
    GetSizer()->Add(buttons, wxSizerFlags().Centre().Border(wxALL, kBorder));
    auto* const rescore = new wxButton(this, kRescoreId, _("Rescore"));
    buttons->Add(rescore, wxSizerFlags().Centre().Border(wxRIGHT, kBorder));
    auto* const original = new wxButton(this, kOriginalScoreId, _("Original Score"));
    buttons->Add(original, wxSizerFlags().Centre());

    rescore->Bind(wxEVT_BUTTON, [this](wxCommandEvent&) { EndModal(wxYES); });
    original->Bind(wxEVT_BUTTON, [this](wxCommandEvent&) { EndModal(wxNO); });
    // Enter keeps the score that was just chosen.
    rescore->SetDefault();
    rescore->SetFocus();
}
