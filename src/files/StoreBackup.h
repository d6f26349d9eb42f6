#pragma once

#include <wx/datetime.h>
#include <wx/string.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

#include "store/Database.h"

// Whole copies of a store that are made by themselves before something changes much of it.
//
// A backup is a store file like any other. It lies in a directory of its own and is named by the
// store, the time in UTC and the cause:
//
//     FlashCards2.20261125T093000Z.import.vlm
//
// so that a person who finds the directory can tell what each one is, and open it. The log of
// reviews lies beside it, as beside any store, and is restored with it. The backups of
// stores of the same file name share their row.

enum class BackupCause : uint8_t {
    // Before the first change of a day.
    kDay,
    kImport,
    kMerge,
    kMaintenance,
    kMove,
    kReplace,
    kRepair,
    kRestore,
    // The user asked for it.
    kUser
};

struct StoreBackup {
    wxString Path;
    wxDateTime Time;
    BackupCause Cause = BackupCause::kUser;
    // With its log of reviews.
    uint64_t Bytes = 0;
};

struct BackupSettings {
    bool IsOn = true;
    // Empty for GetBackupDirectory.
    wxString Directory;
    // So many of the newest always stay.
    size_t Least = 10;
    // What all backups of a store may take together. The oldest go first, but never the newest
    // Least.
    uint64_t MostBytes = uint64_t{2} << 30;
};

// Returns the settings of the user for a backup of that cause. Before a restoration, which may go
// back to the oldest backup, one is made whatever the settings say, and none goes; one that was
// asked for is made as well.
BackupSettings ReadBackupSettings(BackupCause cause = BackupCause::kDay);

// Returns velomind/backups in the user's data directory (XDG_DATA_HOME, else ~/.local/share).
wxString GetBackupDirectory();

// Returns what a window calls the cause.
wxString NameOfCause(BackupCause cause);

// Returns the backups of a store in the directory, the newest first. Files of other names are
// passed over. The store itself need not exist.
std::vector<StoreBackup> ListBackups(const wxString& directory, const wxString& storePath);

// What thinning would do. All of the last two days stay, the newest of each day for 31 days, and
// the newest of each month for ever; at least settings.Least stay, the newest ones.
struct BackupThinning {
    std::vector<StoreBackup> Gone;
    // Those that would stay by their age, but go as all together take more than MostBytes.
    size_t GoneBySize = 0;
    // True when what stays takes more all the same.
    bool IsOverLimit = false;
};
// Decides by the arguments alone; days and months are those of the local time zone. The backups are
// the newest first.
BackupThinning ThinBackups(const std::vector<StoreBackup>& backups, const wxDateTime& now,
                           const BackupSettings& settings);

// Copies an open store, as it is now, to a file that is not there, and opens the copy to see that
// it is a store of as many cards. The store stays open; others can read it meanwhile. Returns 0, or
// the system's number of the error, with nothing left behind.
int CopyOpenStore(Database& database, const wxString& target);

// Puts a copy of a backup, which is opened first, in the place of a store. Nobody may have the
// store open. Returns 0, or the system's number of the error with the store as it was; EILSEQ when
// the backup is no store.
int RestoreBackup(const wxString& backup, const wxString& storePath);

// What a store has now, seen from a backup of it.
struct StoreDifference {
    int32_t BackupCards = 0;
    // Cards of the store that the backup does not have.
    int32_t Added = 0;
    // Row ids, in the backup, of cards that the store does not have. Each can be brought back by
    // SelectCardByRowId from the backup and InsertFlashCard into the store.
    std::vector<int64_t> MissingRowIds;
    // Cards whose texts, category or exclusions differ.
    int32_t Changed = 0;
    // Cards with another schedule, in either direction.
    int32_t Scored = 0;
};
// Returns 0, or a negative value when either cannot be read.
int CompareStores(Database& store, Database& backup, StoreDifference& difference);

// Keeps the backups of a store by the settings. Lives with the store that is open; Make may be
// called on any thread, one at a time, and needs no window.
class StoreBackups {
  public:
    // Told of what the user should know, in whole sentences. A disk that is full is told of once
    // until a backup succeeds again, and so is a size limit that is passed. Called on the thread of
    // Make.
    using Tell = std::function<void(const wxString& text)>;

    StoreBackups(const BackupSettings& settings, Tell tell);

    // Makes a backup and thins out the older ones. Returns 0, also when backups are off or there is
    // nothing to keep (a store without cards); else the system's number of the error. A failure is
    // told and is no reason to stop what was to be done.
    int Make(Database& database, BackupCause cause, const wxDateTime& now);

    // The same for a store file that nobody has open. One that cannot be opened is copied byte by
    // byte, with what the engine left beside it.
    int MakeOfFile(const wxString& path, BackupCause cause, const wxDateTime& now);

    // True when a store needs no backup of that day any more.
    bool IsDayDone(const wxString& storePath, const wxDateTime& now) const;
    // Makes the backup of a day unless one was made on that day. For Database::SetBeforeChange.
    void MakeDaily(Database& database, const wxDateTime& now);

  private:
    using Copy = std::function<int(const wxString& target)>;

    int MakeCopy(const wxString& storePath, BackupCause cause, const wxDateTime& now,
                 const Copy& copy);
    wxString GetDirectory() const;
    void TellOnce(const wxString& text);
    void Thin(const wxString& storePath, const wxDateTime& now);

    const BackupSettings mSettings;
    const Tell mTell;
    // The last text told, so that none is told twice in a row.
    wxString mTold;
    // The local day on which MakeDaily last did its work, and the store that it did it for.
    wxDateTime mDay;
    wxString mDayStore;
};
