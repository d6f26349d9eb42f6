#pragma once

#include <wx/datetime.h>
#include <wx/string.h>

#include <cstdint>
#include <functional>
#include <mutex>
#include <vector>

#include "files/BackupFiles.h"
#include "store/Database.h"

// Whole copies of a store, made automatically before larger changes.

// Copies an open store, as it is now, to a new file, and opens the copy to check that it is a store
// with as many cards. The store stays open; others can read it meanwhile. Returns 0, or the
// system's number of the error, with nothing left behind.
int CopyOpenStore(Database& database, const wxString& target);

// Opens a backup to read. Returns 0 when it is a whole store, else EILSEQ or ENOENT. Nothing
// happens to the file.
int CheckBackup(const wxString& backup);

// Checks a backup, and puts a copy of it in the place of a store, which nobody may have open. The
// next exchange with other computers asks what that means for them. Returns 0, or the system's
// number of the error with the store and the backup as they were; EILSEQ when the backup is no
// whole store, EBUSY during an exchange.
int RestoreBackup(const wxString& backup, const wxString& storePath);

// How a store differs from a backup of it.
struct StoreDifference {
    int32_t BackupCards = 0;
    // Cards of the store that the backup lacks.
    int32_t Added = 0;
    // Row ids, in the backup, of cards that the store lacks. Each can be brought back by
    // SelectCardByRowId from the backup and InsertFlashCard into the store.
    std::vector<int64_t> MissingRowIds;
    // Cards whose texts, category or exclusions differ.
    int32_t Changed = 0;
    // Cards with another schedule, in either direction.
    int32_t Scored = 0;
};
// Returns 0, or a negative value when either cannot be read.
int CompareStores(Database& store, Database& backup, StoreDifference& difference);

// Keeps the backups of the open store as the settings say. Needs no window. May be used on any
// thread; a job goes on with the settings that it began with.
class StoreBackups {
  public:
    // Receives what the user should know, in whole sentences. A full disk and a passed size limit
    // are reported once until a backup succeeds again. Called on the thread of Make.
    using Tell = std::function<void(const wxString& text)>;

    StoreBackups(const BackupSettings& settings, Tell tell);

    void SetSettings(const BackupSettings& settings);

    // Makes a backup and thins out the older ones; makes none when the newest one is just what the
    // store has now. The change that follows needs so many bytes, which are left free. Returns 0,
    // also when backups are off or the store has no cards; else the system's number of the error,
    // which is reported. It must not stop a caller that leaves the cards in the store, and must
    // stop one that replaces them.
    int Make(Database& database, BackupCause cause, const wxDateTime& now, uint64_t change = 0);

    // The same for a store file that nobody has open. One that cannot be opened, or whose cards
    // cannot be counted, is copied byte by byte, with the engine's files beside it.
    int MakeOfFile(const wxString& path, BackupCause cause, const wxDateTime& now,
                   uint64_t change = 0);

    // Returns the backup that the last Make made or found to be the same; empty for none.
    wxString GetLast() const;

    // Returns true when a store needs no more backup of that day.
    bool IsDayDone(const wxString& storePath, const wxDateTime& now) const;
    // Says what the next change of the store begins, such as an import, which needs so many bytes;
    // kDay for nothing in particular.
    void ExpectChange(BackupCause cause, uint64_t bytes);
    // Makes the backup of the change that is expected, or that of a day unless that day has one.
    // For Database::SetBeforeChange.
    void MakeBeforeChange(Database& database, const wxDateTime& now);

  private:
    // One backup to be made.
    struct Task {
        wxString StorePath;
        BackupCause Cause;
        wxDateTime Now;
        // The sizes of the copy and of the change that comes after it.
        uint64_t Bytes;
        uint64_t Change;
        std::function<int(const wxString& target)> Copy;
    };
    // What a job begins with.
    BackupSettings GetSettings() const;

    int Run(const BackupSettings& settings, const Task& task);
    void TellFailure(const BackupSettings& settings, const Task& task, int error);
    void TellOnce(const wxString& text);
    void Thin(const BackupSettings& settings, const wxString& storePath);
    void SetLast(const wxString& path);

    const Tell mTell;
    // Guards all below.
    mutable std::mutex mMutex;
    BackupSettings mSettings;
    // The last text reported, so that none is repeated.
    wxString mTold;
    wxString mLast;
    // The local day on which MakeBeforeChange last did its work, and for which store.
    wxDateTime mDay;
    wxString mDayStore;
    BackupCause mExpected = BackupCause::kDay;
    uint64_t mExpectedBytes = 0;
};
