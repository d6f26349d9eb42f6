#pragma once

#include <wx/filename.h>

#include "files/windows/StoreFileChange.h"
#include "store/Database.h"
#include "support/Fakes.h"

// The application of a test, and what it was asked, in order.
struct FakeStoreFileActions : StoreFileActions {
    wxString GetDefaultStorePath() override { return "/default.vlm"; }
    bool ChooseToOpen(wxWindow*, wxString&) override { return false; }
    bool ChooseToSave(wxWindow*, const wxString&, wxString&) override { return false; }
    bool DiscardEdits(wxWindow*) override {
        Calls += "discard ";
        return MayDiscard;
    }
    int BackUp(wxWindow*, BackupCause) override {
        Calls += "backup ";
        return 0;
    }
    int BackUpFile(wxWindow*, const wxString&) override {
        Calls += "backup:file ";
        return BackupError;
    }
    void ReopenStoreFile(wxWindow* parent, Database& database, const wxString& path) override {
        OpenStoreFile(parent, database, path, true);
    }
    void OpenStoreFile(wxWindow*, Database& database, const wxString& path,
                       bool mustExist) override {
        Calls += "open:" + wxFileName(path).GetFullName() + (mustExist ? " " : ":new ");
        SilentUpgradeWait wait;
        database.Open(path, wait);
    }
    bool TryStoreFile(wxWindow*, Database& database, const wxString& path,
                      bool mustExist) override {
        OpenStoreFile(nullptr, database, path, mustExist);
        return database.IsOpen();
    }

    wxString Calls;
    bool MayDiscard = true;
    // What the backup of a file that is to be replaced comes to.
    int BackupError = 0;
};
