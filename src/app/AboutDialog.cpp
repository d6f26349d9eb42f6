#include "app/AboutDialog.h"

#include <wx/button.h>
#include <wx/frame.h>
#include <wx/intl.h>
#include <wx/settings.h>
#include <wx/sizer.h>
#include <wx/stattext.h>

#include "shell/Makers.h"
#include "shell/Version.h"

namespace {

constexpr int kDialogId = 10056;
constexpr int kVersionId = 10058;
constexpr int kBorder = 5;
constexpr int kTextWidth = 230;

}  // namespace

AboutDialog::AboutDialog(wxWindow* parent) {
    SetExtraStyle(wxFRAME_EX_METAL | wxWS_EX_BLOCK_EVENTS);
    wxDialog::Create(parent, kDialogId, _("About Velomind"), wxDefaultPosition,
                     FromDIP(wxSize(400, 300)));
    SetFont(wxSystemSettings::GetFont(wxSYS_DEFAULT_GUI_FONT));
    CreateControls();
    GetSizer()->SetSizeHints(this);
    CentreOnScreen();
}

void AboutDialog::CreateControls() {
    auto* const column = new wxBoxSizer(wxVERTICAL);
    SetSizer(column);
    const int border = FromDIP(kBorder);
    const auto addText = [&](int id, const wxString& content) {
        auto* const text = new wxStaticText(this, id, content);
        text->Wrap(FromDIP(kTextWidth));
        column->Add(text, wxSizerFlags().Border(wxALL, border));
    };
    addText(kVersionId, GetVersionText());
    addText(wxID_STATIC, wxString::Format(wxGetTranslation(kLegalLines), kLegalLastYear));
    addText(wxID_STATIC, wxGetTranslation(kLegalNotice));

    auto* const ok = new wxButton(this, wxID_OK, _("&OK"));
    column->Add(ok, wxSizerFlags().Right().Border(wxALL, border));
    ok->SetDefault();
    ok->SetFocus();
    // Nobody sees it: it is there for Esc.
    auto* const cancel =
        new wxButton(this, wxID_CANCEL, _("&Cancel"), wxDefaultPosition, wxSize(0, 0));
    cancel->SetCanFocus(false);
}
