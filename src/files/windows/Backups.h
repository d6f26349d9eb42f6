#pragma once

#include <wx/string.h>

#include <cstdint>
#include <vector>

#include "files/StoreBackup.h"
#include "store/Subject.h"

class wxWindow;

// The backups of the store that the program has open, as the settings want them. Main thread only,
// unless said otherwise.

// Keeps the backups of the program's store while it lives, whichever file that has open: makes one
// before the first change of a day, and tells what goes wrong through the log.
class BackupKeeper : private Observer {
  public:
    // Both must outlive the keeper. The notifier tells of changed settings.
    BackupKeeper(Database& database, Subject& settingsNotifier);
    ~BackupKeeper() override;
    BackupKeeper(const BackupKeeper&) = delete;
    BackupKeeper& operator=(const BackupKeeper&) = delete;

    // Makes a backup of the store before something is done to it; behind a wait dialog where the
    // store is large. Before a restoration one is made whatever the settings say, and none goes.
    // Returns 0, or the system's number of the error, which was told and is no reason to stop where
    // the cards stay in the store.
    int BackUp(wxWindow* parent, BackupCause cause);
    // The same for a worker that is about to change the store.
    int BackUpOnWorker(BackupCause cause);
    // The same for a store file that the program is about to replace, which may be another one; a
    // file that cannot be opened is copied as it is.
    int BackUpFile(wxWindow* parent, const wxString& path);
    // Says what the next change of the store begins, such as an import, and the bytes that it
    // needs. The backup then makes itself before that change, on its thread; none is made when
    // nothing changes. kDay is back to the usual.
    void ExpectChange(BackupCause cause, uint64_t bytes) { mBackups.ExpectChange(cause, bytes); }
    // Makes the day's backup of a large store now and shows a wait dialog. Call it before a change
    // that is often the first of a day; before other changes, and for a small store, the backup is
    // made while the change waits. Events are handled meanwhile.
    void BackUpDay(wxWindow* parent);

  private:
    void Update(Subject* subject) override;

    Database& mDatabase;
    // Has the settings as a value, as a worker may use it while they change.
    StoreBackups mBackups;
    SubjectAttachment mSettingsAttachment;
};

// Asks whether a store file is to be replaced although its backup has failed with that error, so
// that its cards would be lost.
bool MayGoOnWithoutBackup(wxWindow* parent, int error, const wxString& caption);

// Backs up a file that nobody has open, and replaces it by a new store. Returns 0, or the system's
// number of the error with the file as it was; ECANCELED when there is no backup and the user does
// not go on without one.
int ReplaceByNewStore(wxWindow* parent, const wxString& path);

// Asks for a file and writes a backup into it.
void BackUpWhereWanted(wxWindow* parent, Database& database);

// Puts cards of a backup, by their row ids there, into the store as they were. A category whose
// name the store lacks is created. Returns 0, or a negative value with some of the cards in the
// store.
int BringCardsBack(Database& backup, Database& store, const std::vector<int64_t>& rowIds);

// Returns a free path beside a store file: "FlashCards2 repaired.vlm" for the word "repaired", or
// with a number after the word.
wxString FreePathBeside(const wxString& storePath, const wxString& word);
