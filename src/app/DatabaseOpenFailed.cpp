#include "app/DatabaseOpenFailed.h"

#include <wx/button.h>
#include <wx/filefn.h>
#include <wx/intl.h>
#include <wx/log.h>
#include <wx/sizer.h>
#include <wx/stattext.h>
#include <wx/textctrl.h>

#include "app/StoreFileDialogs.h"
#include "shell/AccessibleName.h"
#include "shell/TextHeight.h"

namespace {

enum : int {
    ID_EXIT = 10000,
    ID_DIALOG = 10066,
    ID_RETRY = 10068,
    ID_OPEN = 10070,
    ID_NEW = 10071,
    ID_PATH = 10121
};

}  // namespace

DatabaseOpenFailed::DatabaseOpenFailed(wxWindow* parent, const wxString& path, bool mustExist)
    : wxDialog(parent, ID_DIALOG, "Velomind", wxDefaultPosition, wxSize(400, 300),
               wxDEFAULT_DIALOG_STYLE | wxRESIZE_BORDER),
      mMustExist(mustExist) {
    auto* const message =
        new wxStaticText(this, wxID_ANY, _("Unable to open the flash card store file."));
    mpPath = new wxTextCtrl(this, ID_PATH, path, wxDefaultPosition, FromDIP(wxSize(390, -1)),
                            wxTE_READONLY);
    SetAccessibleName(*mpPath, message->GetLabelText());

    auto* const buttons = new wxBoxSizer(wxHORIZONTAL);
    const auto addButton = [&](int id, const wxString& label) {
        auto* const button = new wxButton(this, id, label);
        buttons->Add(button, wxSizerFlags().Border(wxALL, 5));
        return button;
    };
    wxButton* const retry = addButton(ID_RETRY, _("Retry"));
    addButton(ID_OPEN, _("Open"));
    addButton(ID_NEW, _("New"));
    addButton(ID_EXIT, _("Exit"));

    auto* const rows = new wxBoxSizer(wxVERTICAL);
    rows->Add(message, wxSizerFlags().Border(wxALL, 5));
    rows->Add(mpPath, wxSizerFlags().Expand().Border(wxALL, 5));
    rows->Add(buttons, wxSizerFlags().Center());
    FitTextHeights(*this);
    SetSizerAndFit(rows);
    Centre();

    Bind(wxEVT_BUTTON, &DatabaseOpenFailed::OnRetry, this, ID_RETRY);
    Bind(wxEVT_BUTTON, &DatabaseOpenFailed::OnOpen, this, ID_OPEN);
    Bind(wxEVT_BUTTON, &DatabaseOpenFailed::OnNew, this, ID_NEW);
    Bind(wxEVT_BUTTON, &DatabaseOpenFailed::OnExit, this, ID_EXIT);
    Bind(wxEVT_CLOSE_WINDOW, &DatabaseOpenFailed::OnClose, this);
    SetEscapeId(ID_EXIT);
    retry->SetDefault();
    retry->SetFocus();
}

wxString DatabaseOpenFailed::GetPath() const {
    return mpPath->GetValue();
}

void DatabaseOpenFailed::OnRetry(wxCommandEvent&) {
    mMustExist = true;
    EndModal(kTryAgain);
}

void DatabaseOpenFailed::OnOpen(wxCommandEvent&) {
    wxString path = GetPath();
    if (ChooseStoreFileToOpen(this, path)) {
        mpPath->SetValue(path);
        mMustExist = true;
        EndModal(kTryAgain);
    }
}

void DatabaseOpenFailed::OnNew(wxCommandEvent&) {
    wxString path = GetPath();
    if (!ChooseStoreFileToSave(this, _("New Store File"), true, path)) {
        return;
    }
    if (wxFileExists(path)) {
        // A file that cannot be deleted shows itself when the store is opened.
        const wxLogNull silence;
        wxRemoveFile(path);
    }
    mpPath->SetValue(path);
    mMustExist = false;
    EndModal(kTryAgain);
}

void DatabaseOpenFailed::OnExit(wxCommandEvent&) {
    EndModal(kGiveUp);
}

void DatabaseOpenFailed::OnClose(wxCloseEvent&) {
    EndModal(kGiveUp);
}
