#include "exchange/dialogs/ImportNewCategoryMessageBox.h"

#include <wx/button.h>
#include <wx/intl.h>
#include <wx/sizer.h>
#include <wx/stattext.h>

namespace {

constexpr int kDialogId = 10038;
constexpr int kTextWidth = 380;
// What is longer is no name that a person gave, and would not fit on the screen.
constexpr size_t kLongestName = 200;

wxString Question(const wxString& name) {
    const wxString shown =
        name.length() <= kLongestName ? name : name.substr(0, kLongestName) + wxString(L'\u2026');
    return wxString::Format(_("Category \"%s\" does not exist.  Would you like to create it?"),
                            shown);
}

}  // namespace

ImportNewCategoryMessageBox::ImportNewCategoryMessageBox(wxWindow* parent,
                                                         const wxString& categoryName)
    : wxDialog(parent, kDialogId, _("New Category"), wxDefaultPosition, wxSize(400, 300)) {
    auto* const text = new wxStaticText(this, wxID_ANY, wxString());
    // An ampersand of the name is no mnemonic.
    text->SetLabelText(Question(categoryName));
    text->Wrap(FromDIP(kTextWidth));
    auto* const yes = new wxButton(this, wxID_YES, _("&Yes"));
    auto* const yesToAll = new wxButton(this, wxID_YESTOALL, _("Yes to All"));
    auto* const cancel = new wxButton(this, wxID_CANCEL, _("&Cancel"));

    auto* const buttons = new wxBoxSizer(wxHORIZONTAL);
    buttons->Add(yes, wxSizerFlags().Border(wxRIGHT, 5));
    buttons->Add(yesToAll, wxSizerFlags().Border(wxRIGHT, 5));
    buttons->Add(cancel);
    auto* const rows = new wxBoxSizer(wxVERTICAL);
    rows->Add(text, wxSizerFlags().Expand().Border(wxALL, 10));
    rows->Add(buttons, wxSizerFlags().Centre().Border(wxLEFT | wxRIGHT | wxBOTTOM, 10));
    SetSizerAndFit(rows);
    CentreOnParent();

    yes->SetDefault();
    yes->SetFocus();
    yes->Bind(wxEVT_BUTTON, [this](wxCommandEvent&) { EndModal(wxID_YES); });
    yesToAll->Bind(wxEVT_BUTTON, [this](wxCommandEvent&) {
        mYesToAll = true;
        EndModal(wxID_YES);
    });
    // The cancel button, Escape and the title bar end with wxID_CANCEL by themselves.
}
