#include "files/StoreBackup.h"

#include <wx/confbase.h>
#include <wx/filename.h>
#include <wx/intl.h>
#include <wx/utils.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <filesystem>
#include <iterator>
#include <limits>
#include <set>
#include <system_error>
#include <utility>

#include "base/Files.h"
#include "base/SettingsFile.h"
#include "base/Time.h"
#include "files/StoreFiles.h"
#include "store/CardUuid.h"
#include "store/StoreSchema.h"

namespace {

namespace fs = std::filesystem;

constexpr char kExtension[] = ".vlm";
constexpr char kUnfinished[] = ".unfinished";

struct CauseRow {
    BackupCause Cause;
    // In file names.
    const char* Word;
    const char* Name;
};

constexpr CauseRow kCauses[] = {
    {BackupCause::kDay, "day", wxTRANSLATE("Before the first change of the day")},
    {BackupCause::kImport, "import", wxTRANSLATE("Before an import")},
    {BackupCause::kMerge, "merge", wxTRANSLATE("Before a merge of categories")},
    {BackupCause::kMaintenance, "maintenance", wxTRANSLATE("Before maintenance")},
    {BackupCause::kMove, "move", wxTRANSLATE("Before a move of the store file")},
    {BackupCause::kReplace, "replace", wxTRANSLATE("Before the store file was replaced")},
    {BackupCause::kRepair, "repair", wxTRANSLATE("Before a repair")},
    {BackupCause::kRestore, "restore", wxTRANSLATE("Before another backup was restored")},
    {BackupCause::kUser, "user", wxTRANSLATE("On request")},
};

const CauseRow& RowOf(BackupCause cause) {
    return *std::find_if(std::begin(kCauses), std::end(kCauses),
                         [&](const CauseRow& row) { return row.Cause == cause; });
}

// Opens another store quietly. Returns the number of its cards, or -1.
int32_t OpenToRead(QuietDatabase& database, const wxString& path) {
    int32_t count = 0;
    return database.OpenQuietly(path) == 0 && database.CountAllCards(count) >= 0 ? count : -1;
}

wxString StemOf(const wxString& storePath) {
    return wxFileName(storePath).GetName();
}

// "20261125T093000Z"
wxString FormatBackupTime(const wxDateTime& time) {
    wxString text = FormatTimeStamp(time);
    text.Replace("-", "");
    text.Replace(":", "");
    text.Replace(" ", "T");
    return text;
}

bool ParseBackupTime(const wxString& text, wxDateTime& time) {
    const wxString stamp = text.Left(4) + "-" + text.Mid(4, 2) + "-" + text.Mid(6, 2) + " " +
                           text.Mid(9, 2) + ":" + text.Mid(11, 2) + ":" + text.Mid(13, 2) + "Z";
    // Only a text that comes out the same again is one of ours.
    return ParseTimeStamp(stamp, time) == 0 && FormatBackupTime(time) == text;
}

wxString BackupName(const wxString& stem, const wxDateTime& time, BackupCause cause) {
    return stem + "." + FormatBackupTime(time) + "." + RowOf(cause).Word + kExtension;
}

// Reads the part of a name after the stem, ".20261125T093000Z.import.vlm". Returns false for other
// files.
bool ParseBackupName(const wxString& rest, StoreBackup& backup) {
    for (const CauseRow& row : kCauses) {
        const wxString end = wxString(".") + row.Word + kExtension;
        wxString time;
        if (rest.StartsWith(".") && rest.EndsWith(end, &time) &&
            ParseBackupTime(time.Mid(1), backup.Time)) {
            backup.Cause = row.Cause;
            return true;
        }
    }
    return false;
}

// Walks the cards of a store in the order of their identities.
class CardWalk {
  public:
    explicit CardWalk(Database& database)
        : mRun(database, database.GetStatement(kSelectCardsById)) {
        Next();
    }
    void Next() { mHasFailed = mRun.Step("CardWalk") < 0; }
    bool HasFailed() const { return mHasFailed; }
    bool HasCard() const { return !mHasFailed && !mRun.IsDone(); }
    int CompareIds(const CardWalk& other) const {
        return mRun.ColumnUtf16(0).compare(other.mRun.ColumnUtf16(0));
    }
    bool HasSameContent(const CardWalk& other) const {
        return IsSame(other, 1, kForwardScheduleColumn);
    }
    bool HasSameSchedule(const CardWalk& other) const {
        return IsSame(other, kForwardScheduleColumn, kRowIdColumn);
    }
    int64_t RowId() const { return mRun.ColumnInt64(kRowIdColumn); }

  private:
    // Compares numbers as numbers, since their texts would have to be made for each card.
    bool IsSame(const CardWalk& other, int first, int end) const {
        for (; first < end; ++first) {
            const bool isText = first < 3 || first == 4 || first == 5 || first == 9;
            if (isText ? mRun.ColumnUtf16(first) != other.mRun.ColumnUtf16(first)
                       : mRun.ColumnDouble(first) != other.mRun.ColumnDouble(first)) {
                return false;
            }
        }
        return true;
    }

    StatementRun mRun;
    bool mHasFailed = false;
};

// Makes a directory and those above it, and makes them last. Returns 0 or the error's number.
int MakeDirectories(const fs::path& directory) {
    std::error_code error;
    if (fs::is_directory(directory, error)) {
        return 0;
    }
    const fs::path above = directory.parent_path();
    const int result = above.empty() || above == directory ? 0 : MakeDirectories(above);
    if (result != 0) {
        return result;
    }
    fs::create_directory(directory, error);
    SyncDirectory(directory);
    return error.value();
}

// Removes copies of a store that were never finished because the program or the system ended.
// Leaves new ones, which another program may be about to finish.
void RemoveUnfinished(const fs::path& directory, const wxString& storePath) {
    const auto limit = fs::file_time_type::clock::now() - std::chrono::hours(1);
    const wxString stem = StemOf(storePath) + ".";
    std::error_code error;
    for (fs::directory_iterator entry(directory, error), end; !error && entry != end;
         entry.increment(error)) {
        const wxString name = FromPath(entry->path().filename());
        std::error_code ignored;
        if (name.StartsWith(stem) && name.EndsWith(kUnfinished) &&
            entry->last_write_time(ignored) < limit) {
            fs::remove(entry->path(), ignored);
        }
    }
}

}  // namespace

BackupSettings ReadBackupSettings(BackupCause cause) {
    BackupSettings settings;
    const auto file = OpenSettingsFile(kApplicationName);
    long least = 0;
    settings.IsOn = file->ReadBool(kSettingBackups, settings.IsOn);
    settings.Directory = file->Read(kSettingBackupDirectory, wxString());
    if (file->Read(kSettingLeastBackups, &least) && least <= std::numeric_limits<int32_t>::max()) {
        settings.Least = static_cast<size_t>(std::max(1L, least));
    }
    if (cause == BackupCause::kRestore) {
        settings.Least = std::numeric_limits<size_t>::max();
        settings.MostBytes = std::numeric_limits<uint64_t>::max();
    }
    settings.IsOn = settings.IsOn || cause == BackupCause::kRestore || cause == BackupCause::kUser;
    return settings;
}

wxString GetBackupDirectory() {
    wxString data;
    if (!wxGetEnv("XDG_DATA_HOME", &data) || !wxIsAbsolutePath(data)) {
        data = wxFileName::GetHomeDir() + "/.local/share";
    }
    return data + "/velomind/backups";
}

wxString NameOfCause(BackupCause cause) {
    return wxGetTranslation(RowOf(cause).Name);
}

std::vector<StoreBackup> ListBackups(const wxString& directory, const wxString& storePath) {
    std::vector<StoreBackup> backups;
    const wxString stem = StemOf(storePath);
    std::error_code error;
    for (fs::directory_iterator entry(ToPath(directory), error), end; !error && entry != end;
         entry.increment(error)) {
        const wxString name = FromPath(entry->path().filename());
        StoreBackup backup;
        wxString rest;
        std::error_code unreadable;
        if (name.StartsWith(stem, &rest) && ParseBackupName(rest, backup)) {
            backup.Path = FromPath(entry->path());
            backup.Bytes = entry->file_size(unreadable);
            if (!unreadable) {
                const uintmax_t log = fs::file_size(ToPath(ReviewLogPath(backup.Path)), unreadable);
                backup.Bytes += unreadable ? 0 : log;
                backups.push_back(backup);
            }
        }
    }
    std::sort(backups.begin(), backups.end(),
              [](const StoreBackup& left, const StoreBackup& right) {
                  return left.Time == right.Time ? left.Path > right.Path : left.Time > right.Time;
              });
    return backups;
}

BackupThinning ThinBackups(const std::vector<StoreBackup>& backups, const wxDateTime& now,
                           const BackupSettings& settings) {
    const wxDateTime twoDaysAgo = now - wxTimeSpan::Days(2);
    const wxDateTime monthAgo = now - wxTimeSpan::Days(31);
    BackupThinning thinning;
    std::set<wxString> periods;
    uint64_t bytes = 0;
    size_t kept = 0;
    for (const StoreBackup& backup : backups) {
        const wxString day = backup.Time.FormatISODate();
        const bool isFirstOfDay = periods.insert(day).second;
        const bool isFirstOfMonth = periods.insert(day.Left(7)).second;
        const bool staysByAge =
            backup.Time >= twoDaysAgo || (backup.Time >= monthAgo ? isFirstOfDay : isFirstOfMonth);
        if (kept >= settings.Least && !staysByAge) {
            thinning.Gone.push_back(backup);
            continue;
        }
        const bool fits = bytes + backup.Bytes <= settings.MostBytes;
        if (kept >= settings.Least && !fits) {
            thinning.Gone.push_back(backup);
            ++thinning.GoneBySize;
            continue;
        }
        thinning.IsOverLimit = thinning.IsOverLimit || !fits;
        bytes += backup.Bytes;
        ++kept;
    }
    return thinning;
}

int CopyOpenStore(Database& database, const wxString& target) {
    const fs::path file = ToPath(target);
    std::error_code failure;
    CardUuid unique;
    if (fs::exists(file, failure)) {
        return EEXIST;
    }
    if (GenerateUuid(unique) != 0) {
        return EIO;
    }
    // Only a copy that is known to be whole gets the name.
    const wxString unfinished = target + "." + FormatUuid(unique).Left(8) + kUnfinished;
    int32_t expected = 0;
    int error = database.CopyFile(unfinished, expected);
    if (error == 0) {
        QuietDatabase copy;
        error = OpenToRead(copy, unfinished) == expected ? 0 : EIO;
    }
    if (error == 0) {
        fs::rename(ToPath(unfinished), file, failure);
        error = failure.value();
        SyncDirectory(file);
    }
    if (error == 0) {
        CopyReviewLog(database.GetPath(), target);
    } else {
        fs::remove(ToPath(unfinished), failure);
    }
    return error;
}

int RestoreBackup(const wxString& backup, const wxString& storePath) {
    {
        QuietDatabase database;
        if (!wxFileName::FileExists(backup) || OpenToRead(database, backup) < 0) {
            return wxFileName::FileExists(backup) ? EILSEQ : ENOENT;
        }
    }
    // The store is whole by itself until it is replaced.
    PlayBackJournal(ToPath(storePath));
    return CopyStoreFile(backup, storePath);
}

int CompareStores(Database& store, Database& backup, StoreDifference& difference) {
    difference = StoreDifference();
    if (backup.CountAllCards(difference.BackupCards) < 0) {
        return -1;
    }
    CardWalk now(store);
    CardWalk then(backup);
    while (now.HasCard() || then.HasCard()) {
        const int order = !now.HasCard() ? 1 : !then.HasCard() ? -1 : now.CompareIds(then);
        if (order < 0) {
            ++difference.Added;
        } else if (order > 0) {
            difference.MissingRowIds.push_back(then.RowId());
        } else {
            difference.Changed += now.HasSameContent(then) ? 0 : 1;
            difference.Scored += now.HasSameSchedule(then) ? 0 : 1;
        }
        if (order <= 0) {
            now.Next();
        }
        if (order >= 0) {
            then.Next();
        }
    }
    return now.HasFailed() || then.HasFailed() ? -1 : 0;
}

StoreBackups::StoreBackups(const BackupSettings& settings, Tell tell)
    : mSettings(settings), mTell(std::move(tell)) {}

wxString StoreBackups::GetDirectory() const {
    return mSettings.Directory.empty() ? GetBackupDirectory() : mSettings.Directory;
}

int StoreBackups::Make(Database& database, BackupCause cause, const wxDateTime& now) {
    if (!mSettings.IsOn || database.IsEmpty()) {
        return 0;
    }
    return MakeCopy(database.GetPath(), cause, now,
                    [&](const wxString& target) { return CopyOpenStore(database, target); });
}

int StoreBackups::MakeOfFile(const wxString& path, BackupCause cause, const wxDateTime& now) {
    std::error_code error;
    QuietDatabase database;
    if (!mSettings.IsOn || fs::file_size(ToPath(path), error) == 0 || error) {
        return 0;
    }
    if (database.OpenQuietly(path) >= 0) {
        return Make(database, cause, now);
    }
    return MakeCopy(path, cause, now, [&](const wxString& target) {
        return wxFileName::Exists(target) ? EEXIST : KeepStoreFile(path, target);
    });
}

int StoreBackups::MakeCopy(const wxString& storePath, BackupCause cause, const wxDateTime& now,
                           const Copy& copy) {
    const fs::path directory = ToPath(GetDirectory());
    int error = MakeDirectories(directory);
    RemoveUnfinished(directory, storePath);
    // Two backups in one second get two names.
    for (wxDateTime time = now; error == 0 || error == EEXIST; time += wxTimeSpan::Second()) {
        const wxString name = BackupName(StemOf(storePath), time, cause);
        error = copy(FromPath(directory / ToPath(name)));
        if (error != EEXIST) {
            break;
        }
    }
    if (error != 0) {
        TellOnce(wxString::Format(
            _("No backup of the store file could be written to \"%s\" (%s). Your cards are safe in "
              "the store file itself."),
            GetDirectory(), SystemErrorText(error)));
        return error;
    }
    mTold.clear();
    Thin(storePath, now);
    return 0;
}

bool StoreBackups::IsDayDone(const wxString& storePath, const wxDateTime& now) const {
    if (!mSettings.IsOn || (mDay.IsValid() && now.IsSameDate(mDay) && storePath == mDayStore)) {
        return true;
    }
    const std::vector<StoreBackup> backups = ListBackups(GetDirectory(), storePath);
    return !backups.empty() && backups.front().Time.IsSameDate(now);
}

void StoreBackups::MakeDaily(Database& database, const wxDateTime& now) {
    const bool isDone = IsDayDone(database.GetPath(), now);
    mDay = now;
    mDayStore = database.GetPath();
    if (!isDone) {
        Make(database, BackupCause::kDay, now);
    }
}

void StoreBackups::Thin(const wxString& storePath, const wxDateTime& now) {
    const BackupThinning thinning =
        ThinBackups(ListBackups(GetDirectory(), storePath), now, mSettings);
    for (const StoreBackup& backup : thinning.Gone) {
        std::error_code ignored;
        fs::remove(ToPath(backup.Path), ignored);
        fs::remove(ToPath(ReviewLogPath(backup.Path)), ignored);
    }
    if (thinning.IsOverLimit || thinning.GoneBySize > 0) {
        const wxString limit = wxFileName::GetHumanReadableSize(wxULongLong(mSettings.MostBytes));
        TellOnce(thinning.IsOverLimit
                     ? wxString::Format(_("The newest backups of the store file take more than %s "
                                          "together. They are kept all the same."),
                                        limit)
                     : wxString::Format(_("The backups of the store file would take more than %s. "
                                          "The oldest have been deleted."),
                                        limit));
    }
}

void StoreBackups::TellOnce(const wxString& text) {
    if (mTell && text != mTold) {
        mTell(text);
    }
    mTold = text;
}
