#include "files/windows/Backups.h"

#include <wx/filedlg.h>
#include <wx/filename.h>
#include <wx/intl.h>
#include <wx/log.h>
#include <wx/utils.h>

#include <cerrno>
#include <list>
#include <map>

#include "base/Files.h"
#include "base/Time.h"
#include "files/StoreFiles.h"
#include "files/windows/StoreOpening.h"
#include "media/MediaFolder.h"
#include "shell/MessageBox.h"
#include "shell/Settings.h"

namespace {

// A smaller store is copied before anyone could read a dialog.
constexpr uint64_t kLargeStoreBytes = 100'000'000;

// A worker's warnings are shown once the main thread is idle.
void TellByLog(const wxString& text) {
    wxLogWarning("%s", text);
}

bool IsLarge(const wxString& storePath) {
    const wxULongLong size = wxFileName::GetSize(storePath);
    return size != wxInvalidSize && size.GetValue() > kLargeStoreBytes;
}

// Runs a job at once, or on a thread behind a wait dialog where the store is large. Returns its
// result.
int RunBackup(wxWindow* parent, const wxString& storePath, const std::function<int()>& job) {
    if (IsLarge(storePath)) {
        return RunBehindWait(parent, _("Backing Up"), job);
    }
    const wxBusyCursor busy;
    return job();
}

int BackUpClosedFile(wxWindow* parent, const wxString& path) {
    return RunBackup(parent, path, [&path] {
        return StoreBackups(ReadBackupSettings(), TellByLog)
            .MakeOfFile(path, BackupCause::kReplace, CurrentTime());
    });
}

}  // namespace

BackupKeeper::BackupKeeper(Database& database, Subject& settingsNotifier)
    : mDatabase(database),
      mBackups(ReadBackupSettings(), TellByLog),
      mSettingsAttachment(&settingsNotifier, this) {
    mDatabase.SetBeforeChange([this] { mBackups.MakeBeforeChange(mDatabase, CurrentTime()); });
}

BackupKeeper::~BackupKeeper() {
    mDatabase.SetBeforeChange(nullptr);
}

void BackupKeeper::Update(Subject*) {
    mBackups.SetSettings(ReadBackupSettings());
}

int BackupKeeper::BackUp(wxWindow* parent, BackupCause cause) {
    StoreBackups keepingAll(ReadBackupSettings(BackupCause::kRestore), TellByLog);
    StoreBackups& backups = cause == BackupCause::kRestore ? keepingAll : mBackups;
    return RunBackup(parent, mDatabase.GetPath(),
                     [&] { return backups.Make(mDatabase, cause, CurrentTime()); });
}

int BackupKeeper::BackUpOnWorker(BackupCause cause) {
    return mBackups.Make(mDatabase, cause, CurrentTime());
}

void BackupKeeper::BackUpDay(wxWindow* parent) {
    const wxDateTime now = CurrentTime();
    if (IsLarge(mDatabase.GetPath()) && !mBackups.IsDayDone(mDatabase.GetPath(), now)) {
        RunBehindWait(parent, _("Backing Up"),
                      [&] { return mBackups.Make(mDatabase, BackupCause::kDay, now); });
    }
}

int BackupKeeper::BackUpFile(wxWindow* parent, const wxString& path) {
    return mDatabase.IsStoreFile(path) ? BackUp(parent, BackupCause::kReplace)
                                       : BackUpClosedFile(parent, path);
}

bool MayGoOnWithoutBackup(wxWindow* parent, int error, const wxString& caption) {
    return ShowMessageBox(
               wxString::Format(_("The store file as it is now could not be kept (%s). Its "
                                  "cards would be lost. Do you want to continue?"),
                                SystemErrorText(error)),
               caption, wxYES_NO | wxNO_DEFAULT, parent) == wxYES;
}

int ReplaceByNewStore(wxWindow* parent, const wxString& path) {
    const int error = BackUpClosedFile(parent, path);
    if (error != 0 && !MayGoOnWithoutBackup(parent, error, _("New Store File"))) {
        return ECANCELED;
    }
    return ReplaceByNewStore(path);
}

namespace {

// Writes the backup under another name first, so that a file there stays whole until the backup is.
int WriteBackup(wxWindow* parent, Database& database, const wxString& path) {
    const wxString unfinished = FreePathBeside(path, "unfinished");
    return RunBackup(parent, database.GetPath(), [&] {
        int error = CopyOpenStore(database, unfinished);
        error = error == 0 ? MoveStoreFile(unfinished, path) : error;
        if (error != 0 && wxFileName::FileExists(unfinished)) {
            // The log tells when it cannot be removed.
            wxRemoveFile(unfinished);
        }
        return error;
    });
}

}  // namespace

void BackUpWhereWanted(wxWindow* parent, Database& database) {
    const wxString caption = _("Back Up");
    const wxString name =
        wxFileName(database.GetPath()).GetName() + " " + wxDateTime::Now().FormatISODate() + ".vlm";
    wxFileDialog dialog(parent, _("Back Up Store File"), wxString(), name,
                        _("Flash Card Store Files (*.vlm)|*.vlm|All files (*.*)|*.*"),
                        wxFD_SAVE | wxFD_OVERWRITE_PROMPT);
    if (dialog.ShowModal() != wxID_OK) {
        return;
    }
    const wxString path = dialog.GetPath();
    if (database.IsStoreFile(path)) {
        ShowMessageBox(_("The store file cannot be its own backup. Please choose another file."),
                       caption, wxOK | wxCENTRE, parent);
        return;
    }
    const int error = WriteBackup(parent, database, path);
    const wxString hint = HintOfMedia(database);
    const wxString text =
        error == 0 ? wxString::Format(_("The backup was written to \"%s\"."), path) +
                         (hint.empty() ? "" : "\n\n" + hint)
                   : wxString::Format(_("The backup could not be written to \"%s\" (%s)."), path,
                                      SystemErrorText(error));
    ShowMessageBox(text, caption, wxOK | wxCENTRE, parent);
}

namespace {

// Finds or makes the category of a backup in the store. Returns 0 or a negative value.
int FindCategory(Database& backup, Database& store, int32_t id, int32_t& found) {
    std::list<Category> then;
    found = -1;
    // Deleted cards stay among the deleted ones, and so do those of unknown categories.
    if (id == -1 || backup.SelectCategoryById(id, then) < 0 || then.empty()) {
        return 0;
    }
    return store.FindOrInsertCategory(then.front().Name, found);
}

}  // namespace

int BringCardsBack(Database& backup, Database& store, const std::vector<int64_t>& rowIds) {
    std::map<int32_t, int32_t> categories;
    std::vector<FlashCard> back;
    for (const int64_t rowId : rowIds) {
        std::list<FlashCard> cards;
        if (backup.SelectCardByRowId(rowId, cards) < 0 || cards.empty()) {
            return -1;
        }
        FlashCard& card = cards.front();
        const auto [place, isNew] = categories.emplace(card.CategoryId, -1);
        if (isNew && FindCategory(backup, store, card.CategoryId, place->second) < 0) {
            return -1;
        }
        card.CategoryId = place->second;
        back.push_back(card);
    }
    size_t inserted = 0;
    return store.InsertFlashCards(back, inserted);
}

wxString FreePathBeside(const wxString& storePath, const wxString& word) {
    wxFileName path(storePath);
    const wxString stem = path.GetName() + " " + word;
    path.SetName(stem);
    for (int number = 2; path.Exists(); ++number) {
        path.SetName(wxString::Format("%s %i", stem, number));
    }
    return path.GetFullPath();
}
