#pragma once

#include <wx/datetime.h>
#include <wx/string.h>

#include <cstddef>
#include <cstdint>
#include <vector>

// The backups of stores as files: their names, which of them belong to a store, and which of them
// go.
//
// A backup is a store file like any other. It lies in a directory of its own and is named by the
// store's file name, a short sum of the store's whole path, the time in UTC and the cause:
//
//     FlashCards2.5c1f09ab.20261125T093000Z.import.vlm
//
// so that a person who finds the directory can tell what each one is, and two stores of one name
// never meet. FlashCards2.5c1f09ab.txt beside it has the whole path. A name without the sum is that
// of an earlier version: such a backup may be of any store of that name, so it is offered to each
// and never deleted. The log of reviews lies beside a backup, as beside any store, and is restored
// with it.
//
// A backup has the time of its name as its time of change. One that has another was changed since,
// by a person who opened it as a store, and is never deleted either.

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
    // Made before an exchange with other computers changes many cards, or after an hour.
    kExchange,
    // The file was damaged and is kept byte by byte.
    kDamaged,
    // The user asked for it.
    kUser
};

struct StoreBackup {
    wxString Path;
    wxDateTime Time;
    BackupCause Cause = BackupCause::kUser;
    // With its log of reviews.
    uint64_t Bytes = 0;
    // Whose it is: the asked store's, that of another one of the same file name, or not known.
    enum class Owner : uint8_t { kThisStore, kOtherStore, kUnknown };
    Owner Of = Owner::kThisStore;
    // The path of another store; empty where it is not known.
    wxString OtherPath;
    bool IsChanged = false;
};

struct BackupSettings {
    bool IsOn = true;
    // Empty for GetBackupDirectory.
    wxString Directory;
    // The number that stays whatever room they take.
    size_t Least = 10;
    // The room for all backups of a store together.
    uint64_t MostBytes = uint64_t{2} << 30;
    // The room that a backup leaves for the change that comes after it.
    uint64_t LeastRoom = uint64_t{32} << 20;
    // The store that the settings name, which may be a backup itself.
    wxString ChosenStore;
    // The backup that was made just now, which stays.
    wxString JustMade;
};

// Returns the user's settings for a backup of that cause. Whatever the settings say, one is made on
// request and before a restoration, which deletes none, as it may go back to the oldest.
BackupSettings ReadBackupSettings(BackupCause cause = BackupCause::kDay);

// Returns velomind/backups in the user's data directory (XDG_DATA_HOME, else ~/.local/share).
wxString GetBackupDirectory();
// Returns the directory of the settings, or the usual one.
wxString GetBackupDirectory(const BackupSettings& settings);

// Returns what the cards of a list or deck of so many bytes take in a store, at most: a letter of
// one byte takes two, in the table and once more in the index of texts.
constexpr uint64_t ImportedBytes(uint64_t fileBytes) {
    return 4 * fileBytes;
}

// Returns what a window calls the cause.
wxString NameOfCause(BackupCause cause);

// Returns the path of a backup that is to be made.
wxString BackupPath(const wxString& directory, const wxString& storePath, const wxDateTime& time,
                    BackupCause cause);
// Gives a new backup the time of its name, and notes the path of its store. Neither is worth a
// failure.
void SealBackup(const wxString& backupPath, const wxString& storePath, const wxDateTime& time);

// Returns the backups of a store in the directory, the newest first, and after them those of other
// stores with the same file name, since a folder may have been renamed. Skips files of other names.
// The store itself need not exist.
std::vector<StoreBackup> ListBackups(const wxString& directory, const wxString& storePath);
// Returns true for a file that lies in the directory and is named as a backup.
bool IsBackup(const wxString& directory, const wxString& path);
// Leaves those that are the store's own for certain.
std::vector<StoreBackup> OwnBackups(std::vector<StoreBackup> backups);

// Removes copies of a store that were never finished, because the program or the system ended.
// Another program may be about to finish a new one.
void RemoveUnfinishedBackups(const wxString& directory, const wxString& storePath);
// Ends the name of a copy until it is known to be whole.
constexpr char kUnfinishedBackup[] = ".unfinished";

// What thinning would do. It keeps all of the last two days, but only the newest four of those
// before an exchange, which may come every hour; the newest of each day for 31 days and the newest
// of each month for ever. Only days on which a backup was made count, so that a clock that was
// wrong for a while makes nothing old.
//
// When all together take too much, what lies closest together goes first: further backups of a day,
// then days within a month, so that what is left spreads over the whole time. The newest stays, and
// so does the last one of a day as long as another day has more.
struct BackupThinning {
    std::vector<StoreBackup> Gone;
    // Backups that would stay by age, but go because all together take more than MostBytes.
    size_t GoneBySize = 0;
    // True when the remaining ones still take more.
    bool IsOverLimit = false;
};
// Decides by the arguments alone; days and months are in the local time zone. The newest backup
// comes first.
BackupThinning ThinBackups(const std::vector<StoreBackup>& backups, const BackupSettings& settings);
