#pragma once

#include <wx/datetime.h>
#include <wx/string.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

#include "store/Database.h"

// Whole copies of a store, made automatically before larger changes.
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
    // Made before the first change of a day.
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
    // The newest backups that are never deleted.
    size_t Least = 10;
    // The room for all backups of a store together. The oldest go first, but never the newest
    // Least.
    uint64_t MostBytes = uint64_t{2} << 30;
};

// Returns the user's settings for a backup of that cause. Whatever the settings say, one is made on
// request and before a restoration, which deletes none, as it may go back to the oldest.
BackupSettings ReadBackupSettings(BackupCause cause = BackupCause::kDay);

// Returns velomind/backups in the user's data directory (XDG_DATA_HOME, else ~/.local/share).
wxString GetBackupDirectory();

// Returns what a window calls the cause.
wxString NameOfCause(BackupCause cause);

// Returns the backups of a store in the directory, the newest first. Skips files of other names.
// The store itself need not exist.
std::vector<StoreBackup> ListBackups(const wxString& directory, const wxString& storePath);

// What thinning would do. It keeps all of the last two days, the newest of each day for 31 days,
// the newest of each month for ever, and always the newest settings.Least.
struct BackupThinning {
    std::vector<StoreBackup> Gone;
    // Backups that would stay by age, but go because all together take more than MostBytes.
    size_t GoneBySize = 0;
    // True when the remaining ones still take more.
    bool IsOverLimit = false;
};
// Decides by the arguments alone; days and months are in the local time zone. The newest backup
// comes first.
BackupThinning ThinBackups(const std::vector<StoreBackup>& backups, const wxDateTime& now,
                           const BackupSettings& settings);

// Copies an open store, as it is now, to a new file, and opens the copy to check that it is a store
// with as many cards. The store stays open; others can read it meanwhile. Returns 0, or the
// system's number of the error, with nothing left behind.
int CopyOpenStore(Database& database, const wxString& target);

// Checks a backup by opening it, and puts a copy of it in the place of a store, which nobody may
// have open. Returns 0, or the system's number of the error with the store as it was; EILSEQ when
// the backup is no store.
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

// Keeps the backups of the open store as the settings say. Make may be called on any thread, one at
// a time, and needs no window.
class StoreBackups {
  public:
    // Receives what the user should know, in whole sentences. A full disk and a passed size limit
    // are reported once until a backup succeeds again. Called on the thread of Make.
    using Tell = std::function<void(const wxString& text)>;

    StoreBackups(const BackupSettings& settings, Tell tell);

    // Makes a backup and thins out the older ones. Returns 0, also when backups are off or the
    // store has no cards; else the system's number of the error. A failure is reported and must not
    // stop the caller.
    int Make(Database& database, BackupCause cause, const wxDateTime& now);

    // The same for a store file that nobody has open. One that cannot be opened is copied byte by
    // byte, with the engine's files beside it.
    int MakeOfFile(const wxString& path, BackupCause cause, const wxDateTime& now);

    // Returns true when a store needs no more backup of that day.
    bool IsDayDone(const wxString& storePath, const wxDateTime& now) const;
    // Makes the backup of a day unless that day has one. For Database::SetBeforeChange.
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
    // The last text reported, so that none is repeated.
    wxString mTold;
    // The local day on which MakeDaily last did its work, and for which store.
    wxDateTime mDay;
    wxString mDayStore;
};
