#include "exchange/dialogs/SqlCeRequired.h"

#include <wx/button.h>
#include <wx/hyperlink.h>
#include <wx/intl.h>
#include <wx/sizer.h>
#include <wx/stattext.h>
#include <wx/utils.h>

#include "shell/Makers.h"

namespace {

constexpr int kDialogId = 10115;
constexpr int kTextWidth = 230;
constexpr int kBorder = 5;

// Where the engine for this operating system is to be had.
wxString EngineAddress() {
    int major = 0;
    int minor = 0;
    wxGetOsVersion(&major, &minor);
    return wxString::Format("%s/?q=sqlce&wm=%i.%i", kSupportSite, major, minor);
}

}  // namespace

SqlCeRequired::SqlCeRequired(wxWindow* parent, const wxString& caption, const wxSize& size)
    : wxDialog(parent, kDialogId, caption, wxDefaultPosition, size) {
    auto* const text = new wxStaticText(
        this, wxID_ANY,
        _("Microsoft SQLCE 2.0 must be installed to import version 1.0 flash cards.\n\n1. Connect "
          "your device to the internet (just connect it to an internet connected desktop "
          "computer)\n2. Click on the link below to download\n3. Open the downloaded file\n"));
    text->Wrap(FromDIP(kTextWidth));
    const wxString address = EngineAddress();
    // The address is shown as it is, with an ampersand that is no mnemonic.
    auto* const link =
        new wxHyperlinkCtrl(this, wxID_ANY, wxControl::EscapeMnemonics(address), address);
    auto* const retry = new wxButton(this, wxID_OK, _("&Retry"));
    auto* const cancel = new wxButton(this, wxID_CANCEL, _("&Cancel"));

    auto* const buttons = new wxBoxSizer(wxHORIZONTAL);
    buttons->Add(retry, wxSizerFlags().Border(wxRIGHT, kBorder));
    buttons->Add(cancel);
    auto* const rows = new wxBoxSizer(wxVERTICAL);
    rows->Add(text, wxSizerFlags().Expand().Border(wxALL, 2 * kBorder));
    rows->Add(link, wxSizerFlags().Border(wxLEFT | wxRIGHT, 2 * kBorder));
    rows->AddStretchSpacer();
    rows->Add(buttons, wxSizerFlags().Centre().Border(wxALL, 2 * kBorder));
    SetSizer(rows);
    // At the size that was asked for, or larger where the content needs it.
    wxSize fitting = rows->ComputeFittingClientSize(this);
    fitting.IncTo(FromDIP(size));
    SetClientSize(fitting);
    Centre();

    retry->SetDefault();
    retry->SetFocus();
    retry->Bind(wxEVT_BUTTON, [this](wxCommandEvent&) { EndModal(wxOK); });
    // Escape and the title bar press this button too.
    cancel->Bind(wxEVT_BUTTON, [this](wxCommandEvent&) { EndModal(wxCANCEL); });
}
