#include "study/RescoreMessageBox.h"

#include <wx/button.h>
#include <wx/frame.h>
#include <wx/intl.h>
#include <wx/settings.h>
#include <wx/sizer.h>
#include <wx/stattext.h>

namespace {

constexpr int kRescoreId = 10063;
constexpr int kOriginalScoreId = 10065;
constexpr int kBorder = 5;
constexpr int kTextWidth = 215;

}  // namespace

RescoreMessageBox::RescoreMessageBox(wxWindow* parent, wxWindowID id, const wxString& title,
                                     const wxPoint& position, const wxSize& size, long style) {
    SetExtraStyle(wxFRAME_EX_METAL | wxWS_EX_BLOCK_EVENTS);
    wxDialog::Create(parent, id, title, position, size, style, "dialog");
    SetFont(wxSystemSettings::GetFont(wxSYS_DEFAULT_GUI_FONT));
    CreateControls();
    GetSizer()->SetSizeHints(this);
    Centre(wxBOTH);
}

void RescoreMessageBox::CreateControls() {
    const wxSizerFlags centred = wxSizerFlags().Centre().Border(wxALL, kBorder);
    auto* const column = new wxBoxSizer(wxVERTICAL);
    SetSizer(column);

    mpExplanationText = new wxStaticText(
        this, wxID_STATIC,
        _("You have changed the score on a flash card in your card history. If you keep the new "
          "score the previous score will be undone and the score you have selected will be "
          "recorded in its place.  "));
    mpExplanationText->Wrap(kTextWidth);
    column->Add(mpExplanationText, centred);

    mpQuestionText =
        new wxStaticText(this, wxID_STATIC,
                         _("Do you want to rescore the card or leave it with its original score?"));
    mpQuestionText->Wrap(kTextWidth);
    column->Add(mpQuestionText, centred);

    auto* const buttons = new wxBoxSizer(wxHORIZONTAL);
    column->Add(buttons, centred);
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
