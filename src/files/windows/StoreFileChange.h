#pragma once

#include <wx/string.h>

#include <functional>

#include "files/StoreBackup.h"

class BackupKeeper;
class Database;
class wxWindow;

// What a change of the store file needs from the application. A seam for the tests of the change
// and of the preferences, which answer without a window.
class StoreFileActions {
  public:
    virtual ~StoreFileActions() = default;

    virtual wxString GetDefaultStorePath() = 0;
    // Ask the user for a path, beginning in the directory of the given one. Return true and the
    // chosen path, or false with path unchanged.
    virtual bool ChooseToOpen(wxWindow* parent, wxString& path) = 0;
    virtual bool ChooseToSave(wxWindow* parent, const wxString& title, wxString& path) = 0;
    // Returns true when no editor has unsaved changes, or when they may be discarded; all editors
    // are closed then.
    virtual bool DiscardEdits(wxWindow* parent) = 0;
    // Make a backup of the open store, and of a file that is about to be replaced. What goes wrong
    // is told; they return the system's number of the error, or 0.
    virtual int BackUp(wxWindow* parent, BackupCause cause) = 0;
    virtual int BackUpFile(wxWindow* parent, const wxString& path) = 0;
    // Opens that file, or another that the user names, in the place of another store. The Database
    // must be closed.
    virtual void OpenStoreFile(wxWindow* parent, Database& database, const wxString& path,
                               bool mustExist) = 0;
    // Opens the store that was closed again, wherever it is now. What belongs to it stays, unless
    // the user has to name another one.
    virtual void ReopenStoreFile(wxWindow* parent, Database& database, const wxString& path) = 0;
    // Opens just that file. Returns false, with the Database closed, when it cannot be opened.
    virtual bool TryStoreFile(wxWindow* parent, Database& database, const wxString& path,
                              bool mustExist) = 0;
};

// In the order in which the choice lists them.
enum class StoreFileChoice : int { kKeep, kMove, kCreate, kOpen };

// Carries out the choice on the open store, with its questions. Leaves the Database open, on the
// new file, or on the old one when the change was refused or failed, and tells the windows.
void ChangeStoreFile(StoreFileActions& actions, wxWindow* parent, Database& database,
                     StoreFileChoice choice, const wxString& currentPath, const wxString& newPath);

// The file dialogs, the recovery dialog and the discard check behind a change of the store file.
class AppStoreFileActions : public StoreFileActions {
  public:
    using DiscardCheck = std::function<bool(wxWindow* parent)>;

    // Calls storeChanged when another store has been opened. The keeper is not owned.
    AppStoreFileActions(BackupKeeper& backups, DiscardCheck discardEdits,
                        std::function<void()> storeChanged);

    wxString GetDefaultStorePath() override;
    bool ChooseToOpen(wxWindow* parent, wxString& path) override;
    bool ChooseToSave(wxWindow* parent, const wxString& title, wxString& path) override;
    bool DiscardEdits(wxWindow* parent) override { return mDiscardEdits(parent); }
    int BackUp(wxWindow* parent, BackupCause cause) override;
    int BackUpFile(wxWindow* parent, const wxString& path) override;
    void OpenStoreFile(wxWindow* parent, Database& database, const wxString& path,
                       bool mustExist) override;
    void ReopenStoreFile(wxWindow* parent, Database& database, const wxString& path) override;
    bool TryStoreFile(wxWindow* parent, Database& database, const wxString& path,
                      bool mustExist) override;

  private:
    BackupKeeper& mBackups;
    DiscardCheck mDiscardEdits;
    std::function<void()> mStoreChanged;
};
