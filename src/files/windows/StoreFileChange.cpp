#include "files/windows/StoreFileChange.h"

#include <wx/filename.h>
#include <wx/intl.h>
#include <wx/log.h>
#include <wx/utils.h>

#include <utility>

#include "base/Files.h"
#include "files/StoreFiles.h"
#include "files/windows/Backups.h"
#include "files/windows/OpenFault.h"
#include "files/windows/RestoreDialog.h"
#include "files/windows/StoreOpening.h"
#include "media/MediaFolder.h"
#include "shell/MessageBox.h"
#include "store/Database.h"

namespace {

// One change on its way; the paths are as the user typed them.
class StoreFileChange {
  public:
    StoreFileChange(StoreFileActions& actions, wxWindow* parent, Database& database,
                    const wxString& currentPath, const wxString& newPath)
        : mActions(actions),
          mpParent(parent),
          mDatabase(database),
          mCurrentPath(currentPath),
          mNewPath(newPath),
          mExists(wxFileName::FileExists(newPath)) {}

    void Move();
    void Create();
    void Open();

  private:
    bool MayReplace(const wxString& caption) const;
    // Backs up the file in the way. Returns false when that fails and the user does not go on.
    bool KeepReplaced(const wxString& caption) const;
    // Fills the system's text of the error into the format.
    void Tell(const wxString& format, int error, const wxString& caption) const;
    void TellNotOpened(OpenFault fault, const wxString& caption) const;
    // Opens the new file in place of the one that was closed. Where that fails the user is told why
    // and works on with the former store, which is whole: nobody shall lose it for a mistyped path.
    void OpenNew(bool mustExist, const wxString& caption);
    // Opens the store that was closed again, and tells the windows.
    void Reopen(const wxString& path);

    StoreFileActions& mActions;
    wxWindow* mpParent;
    Database& mDatabase;
    const wxString& mCurrentPath;
    const wxString& mNewPath;
    const bool mExists;
};

void StoreFileChange::Move() {
    // Compares the files and not only their names: a store must never be moved over itself.
    if (IsSameFile(mNewPath, mCurrentPath) || !mActions.DiscardEdits(mpParent) ||
        !MayReplace(_("Move Store File"))) {
        return;
    }
    if (!KeepReplaced(_("Move Store File"))) {
        return;
    }
    // An error was told, and the move goes on.
    mActions.BackUp(mpParent, BackupCause::kMove);
    mDatabase.Close();
    int error = 0;
    {
        const wxBusyCursor busy;
        error = MoveStoreFile(mCurrentPath, mNewPath);
    }
    if (error == 0) {
        Reopen(mNewPath);
        const wxString left = FromPath(MediaFolder(mCurrentPath).GetPath());
        if (wxDirExists(left)) {
            ShowMessageBox(
                wxString::Format(_("The pictures and sounds of the cards could not be moved. They "
                                   "are still in \"%s\". Move that folder to \"%s\"."),
                                 left, FromPath(MediaFolder(mDatabase.GetPath()).GetPath())),
                _("Move Store File"), wxOK | wxCENTRE, mpParent);
        }
        return;
    }
    Tell(_("Unable to move the store file (%s)"), error, _("Move failed"));
    Reopen(mCurrentPath);
}

void StoreFileChange::Create() {
    const wxString caption = _("New Store File");
    if (!mActions.DiscardEdits(mpParent) || !MayReplace(caption)) {
        return;
    }
    if (!KeepReplaced(caption)) {
        return;
    }
    mDatabase.Close();
    const int error = mExists ? ReplaceByNewStore(mNewPath) : 0;
    if (error != 0) {
        // Otherwise the old file would be opened with all its cards, as if it were the new store.
        Tell(_("Unable to replace the store file (%s)"), error, caption);
        Reopen(mCurrentPath);
        return;
    }
    OpenNew(false, caption);
}

void StoreFileChange::Open() {
    if (MakeStorePathFull(mNewPath) == MakeStorePathFull(mCurrentPath)) {
        return;
    }
    const wxString caption = _("Open Store File");
    if (!mExists) {
        TellNotOpened(FindOpenFault(mNewPath, mDatabase), caption);
        return;
    }
    const OpenedBackup answer = AskAboutBackup(mpParent, mNewPath, mCurrentPath);
    if (answer == OpenedBackup::kRestore) {
        RestoreStore(mActions, mpParent, mDatabase, mNewPath);
        return;
    }
    if (answer == OpenedBackup::kCancel || !mActions.DiscardEdits(mpParent)) {
        return;
    }
    mDatabase.Close();
    OpenNew(true, caption);
}

bool StoreFileChange::KeepReplaced(const wxString& caption) const {
    const int error = mExists ? mActions.BackUpFile(mpParent, mNewPath) : 0;
    return error == 0 || MayGoOnWithoutBackup(mpParent, error, caption);
}

void StoreFileChange::OpenNew(bool mustExist, const wxString& caption) {
    if (mActions.TryStoreFile(mpParent, mDatabase, mNewPath, mustExist)) {
        mDatabase.Notify();
        return;
    }
    const OpenFault fault = FindOpenFault(mNewPath, mDatabase);
    Reopen(mCurrentPath);
    TellNotOpened(fault, caption);
}

void StoreFileChange::TellNotOpened(OpenFault fault, const wxString& caption) const {
    ShowMessageBox(
        wxString::Format(_("The store file \"%s\" could not be opened. %s\nThe store file \"%s\" "
                           "is open as before."),
                         mNewPath, DescribeOpenFault(fault), mDatabase.GetPath()),
        caption, wxOK | wxCENTRE, mpParent);
}

bool StoreFileChange::MayReplace(const wxString& caption) const {
    return !mExists || ShowMessageBox(wxString::Format(_("\"%s\" already exists.  Do you want to "
                                                         "replace that file and permanently "
                                                         "destroy all of the data in it?"),
                                                       mNewPath),
                                      caption, wxYES_NO | wxNO_DEFAULT) == wxYES;
}

void StoreFileChange::Tell(const wxString& format, int error, const wxString& caption) const {
    ShowMessageBox(wxString::Format(format, SystemErrorText(error)), caption, wxOK, mpParent);
}

void StoreFileChange::Reopen(const wxString& path) {
    mActions.ReopenStoreFile(mpParent, mDatabase, path);
    mDatabase.Notify();
}

}  // namespace

void ChangeStoreFile(StoreFileActions& actions, wxWindow* parent, Database& database,
                     StoreFileChoice choice, const wxString& currentPath, const wxString& newPath) {
    StoreFileChange change(actions, parent, database, currentPath, newPath);
    switch (choice) {
        case StoreFileChoice::kKeep:
            break;
        case StoreFileChoice::kMove:
            change.Move();
            break;
        case StoreFileChoice::kCreate:
            change.Create();
            break;
        case StoreFileChoice::kOpen:
            change.Open();
            break;
    }
}

AppStoreFileActions::AppStoreFileActions(BackupKeeper& backups, DiscardCheck discardEdits,
                                         std::function<void()> storeChanged)
    : mBackups(backups),
      mDiscardEdits(std::move(discardEdits)),
      mStoreChanged(std::move(storeChanged)) {}

int AppStoreFileActions::BackUp(wxWindow* parent, BackupCause cause) {
    return mBackups.BackUp(parent, cause);
}

int AppStoreFileActions::BackUpFile(wxWindow* parent, const wxString& path) {
    return mBackups.BackUpFile(parent, path);
}

wxString AppStoreFileActions::GetDefaultStorePath() {
    return ::GetDefaultStorePath();
}

bool AppStoreFileActions::ChooseToOpen(wxWindow* parent, wxString& path) {
    return ChooseStoreFileToOpen(parent, path);
}

bool AppStoreFileActions::ChooseToSave(wxWindow* parent, const wxString& title, wxString& path) {
    return ChooseStoreFileToSave(parent, title, false, path);
}

void AppStoreFileActions::OpenStoreFile(wxWindow* parent, Database& database, const wxString& path,
                                        bool mustExist) {
    ::OpenStoreFile(parent, database, path, mustExist);
    mStoreChanged();
}

void AppStoreFileActions::ReopenStoreFile(wxWindow* parent, Database& database,
                                          const wxString& path) {
    ::OpenStoreFile(parent, database, path, true);
    if (!database.IsStoreFile(path)) {
        mStoreChanged();
    }
}

bool AppStoreFileActions::TryStoreFile(wxWindow* parent, Database& database, const wxString& path,
                                       bool mustExist) {
    const bool isOpen = OpenChosenStore(parent, database, path, mustExist);
    if (isOpen) {
        mStoreChanged();
    }
    return isOpen;
}
