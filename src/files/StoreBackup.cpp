#include "files/StoreBackup.h"

#include <sys/stat.h>
#include <wx/filename.h>
#include <wx/intl.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <string_view>
#include <system_error>
#include <utility>

#include "base/Files.h"
#include "files/ExchangeFiles.h"
#include "files/StoreFiles.h"
#include "media/MediaFolder.h"
#include "store/CardUuid.h"
#include "store/StoreSchema.h"

namespace {

namespace fs = std::filesystem;

// Returns the number of a store's cards, or -1.
int32_t OpenToCount(QuietDatabase& database, const wxString& path) {
    int32_t count = 0;
    return database.OpenToRead(path) == 0 && database.CountAllCards(count) >= 0 ? count : -1;
}

// The identities of the first schema have capitals, all others have none.
char16_t ToLower(char16_t letter) {
    return letter >= u'A' && letter <= u'F' ? static_cast<char16_t>(letter + (u'a' - u'A'))
                                            : letter;
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
        const std::u16string_view id = mRun.ColumnUtf16(0);
        const std::u16string_view otherId = other.mRun.ColumnUtf16(0);
        for (size_t i = 0; i < std::min(id.size(), otherId.size()); ++i) {
            if (const int difference = ToLower(id[i]) - ToLower(otherId[i])) {
                return difference;
            }
        }
        return static_cast<int>(id.size()) - static_cast<int>(otherId.size());
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

// Makes a directory and those above it, durably. Returns 0 or the error's number.
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

// How a copy is checked before it gets its name.
enum class CopyCheck { kSameCards, kNone };

int CopyStore(Database& database, const wxString& target, CopyCheck check) {
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
    const wxString unfinished = target + "." + FormatUuid(unique).Left(8) + kUnfinishedBackup;
    int32_t expected = 0;
    int error = database.CopyFile(unfinished, expected);
    if (error == 0 && check == CopyCheck::kSameCards) {
        QuietDatabase copy;
        error = expected >= 0 && OpenToCount(copy, unfinished) == expected ? 0 : EIO;
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

// Returns true when the cards of the store are about to go from it.
bool Replaces(BackupCause cause) {
    return cause == BackupCause::kReplace || cause == BackupCause::kRestore ||
           cause == BackupCause::kDamaged;
}

bool IsOnSameDisk(const fs::path& path, const fs::path& other) {
    struct stat status {};
    struct stat otherStatus {};
    return ::stat(path.c_str(), &status) == 0 && ::stat(other.c_str(), &otherStatus) == 0 &&
           status.st_dev == otherStatus.st_dev;
}

// Tells whether so many bytes fit into a directory and leave a reserve.
bool HasRoom(const fs::path& directory, uint64_t bytes, uint64_t reserve) {
    std::error_code error;
    const fs::space_info space = fs::space(directory, error);
    return error || (space.available >= bytes && space.available - bytes >= reserve);
}

}  // namespace

int CopyOpenStore(Database& database, const wxString& target) {
    return CopyStore(database, target, CopyCheck::kSameCards);
}

int CheckBackup(const wxString& backup) {
    QuietDatabase database;
    if (!wxFileName::FileExists(backup)) {
        return ENOENT;
    }
    return OpenToCount(database, backup) < 0 ? EILSEQ : 0;
}

int RestoreBackup(const wxString& backup, const wxString& storePath) {
    QuietDatabase database;
    if (!wxFileName::FileExists(backup)) {
        return ENOENT;
    }
    if (OpenToCount(database, backup) < 0) {
        return EILSEQ;
    }
    const fs::path store = ToPath(storePath);
    std::error_code failure;
    // A backup of the program has none of its own and needs those of the store, but a copy may.
    MediaFolderCopy media(fs::weakly_canonical(ToPath(backup), failure),
                          fs::weakly_canonical(store, failure));
    if (media.GetError() != 0) {
        return media.GetError();
    }
    ExchangeLock lock;
    if (const int error = lock.Take(store)) {
        return error;
    }
    ReplacedStoreMark mark(store);
    if (mark.GetError() != 0) {
        return mark.GetError();
    }
    // The store is whole by itself until it is replaced.
    PlayBackJournal(store);
    // What a program has left half done beside the backup is in the copy that is read then.
    const int error = CopyStoreFile(database.GetFileRead(), storePath);
    if (error == 0 && database.GetFileRead() != database.GetPath()) {
        CopyReviewLog(backup, storePath);
    }
    if (error == 0) {
        mark.Keep();
        media.Keep();
    }
    return error;
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

namespace {

// Returns the newest of a store's own backups, leaving out what a clock that was ahead has put into
// the future, when it is just what the store has now; else an empty text.
wxString FindSame(const BackupSettings& settings, Database& database, const wxDateTime& now) {
    const std::vector<StoreBackup> backups =
        OwnBackups(ListBackups(GetBackupDirectory(settings), database.GetPath()));
    const auto newest = std::find_if(backups.begin(), backups.end(),
                                     [&](const StoreBackup& backup) { return backup.Time <= now; });
    return newest != backups.end() && !newest->IsChanged && database.IsCopy(newest->Path)
               ? newest->Path
               : wxString();
}

}  // namespace

StoreBackups::StoreBackups(const BackupSettings& settings, Tell tell)
    : mTell(std::move(tell)), mSettings(settings) {}

void StoreBackups::SetSettings(const BackupSettings& settings) {
    const std::lock_guard<std::mutex> lock(mMutex);
    mSettings = settings;
}

BackupSettings StoreBackups::GetSettings() const {
    const std::lock_guard<std::mutex> lock(mMutex);
    return mSettings;
}

wxString StoreBackups::GetLast() const {
    const std::lock_guard<std::mutex> lock(mMutex);
    return mLast;
}

void StoreBackups::SetLast(const wxString& path) {
    const std::lock_guard<std::mutex> lock(mMutex);
    mLast = path;
}

int StoreBackups::Make(Database& database, BackupCause cause, const wxDateTime& now,
                       uint64_t change) {
    const BackupSettings settings = GetSettings();
    int32_t count = 0;
    SetLast(wxString());
    const bool isCounted = database.TryLocked([&] { database.CountAllCards(count); });
    if (!settings.IsOn || !database.IsOpen() || (isCounted && count == 0)) {
        return 0;
    }
    const wxString same = FindSame(settings, database, now);
    if (!same.empty()) {
        SetLast(same);
        return 0;
    }
    const bool isDamaged = !isCounted && Replaces(cause);
    const auto copy = [&](const wxString& target) {
        return CopyStore(database, target, isDamaged ? CopyCheck::kNone : CopyCheck::kSameCards);
    };
    return Run(settings, {database.GetPath(), isDamaged ? BackupCause::kDamaged : cause, now,
                          static_cast<uint64_t>(database.CountBytes()), change, copy});
}

int StoreBackups::MakeOfFile(const wxString& path, BackupCause cause, const wxDateTime& now,
                             uint64_t change) {
    const BackupSettings settings = GetSettings();
    SetLast(wxString());
    std::error_code error;
    const uint64_t bytes = fs::file_size(ToPath(path), error);
    if (!settings.IsOn || bytes == 0 || error) {
        return 0;
    }
    {
        QuietDatabase database;
        if (OpenToCount(database, path) >= 0) {
            return Make(database, cause, now, change);
        }
    }
    const bool isDamaged = Replaces(cause) && IsDatabaseFile(path);
    const auto copy = [&](const wxString& target) {
        return wxFileName::Exists(target) ? EEXIST : KeepStoreFile(path, target);
    };
    return Run(settings,
               {path, isDamaged ? BackupCause::kDamaged : cause, now, bytes, change, copy});
}

int StoreBackups::Run(const BackupSettings& settings, const Task& task) {
    const wxString directory = GetBackupDirectory(settings);
    int error = MakeDirectories(ToPath(directory));
    RemoveUnfinishedBackups(directory, task.StorePath);
    // A disk that the backup filled up would stop the change half way.
    const bool isShared = IsOnSameDisk(ToPath(directory), ToPath(task.StorePath));
    const uint64_t reserve = isShared ? std::max(settings.LeastRoom, task.Change) : 0;
    if (error == 0 && !HasRoom(ToPath(directory), task.Bytes, reserve)) {
        error = ENOSPC;
    }
    // Two backups in one second get two names.
    for (wxDateTime time = task.Now; error == 0 || error == EEXIST; time += wxTimeSpan::Second()) {
        const wxString path = BackupPath(directory, task.StorePath, time, task.Cause);
        error = task.Copy(path);
        if (error == 0) {
            SealBackup(path, task.StorePath, time);
            SetLast(path);
        }
        if (error != EEXIST) {
            break;
        }
    }
    if (error != 0) {
        TellFailure(settings, task, error);
        return error;
    }
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        mTold.clear();
    }
    Thin(settings, task.StorePath);
    return 0;
}

void StoreBackups::TellFailure(const BackupSettings& settings, const Task& task, int error) {
    const wxString text =
        Replaces(task.Cause)
            ? _("No backup of the store file could be written to \"%s\" (%s).")
            : _("No backup of the store file could be written to \"%s\" (%s). Your cards are safe "
                "in the store file itself.");
    TellOnce(wxString::Format(text, GetBackupDirectory(settings), SystemErrorText(error)));
}

bool StoreBackups::IsDayDone(const wxString& storePath, const wxDateTime& now) const {
    const BackupSettings settings = GetSettings();
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        if (!settings.IsOn || (mDay.IsValid() && now.IsSameDate(mDay) && storePath == mDayStore)) {
            return true;
        }
    }
    const std::vector<StoreBackup> backups =
        OwnBackups(ListBackups(GetBackupDirectory(settings), storePath));
    return std::any_of(backups.begin(), backups.end(),
                       [&](const StoreBackup& backup) { return backup.Time.IsSameDate(now); });
}

void StoreBackups::ExpectChange(BackupCause cause, uint64_t bytes) {
    const std::lock_guard<std::mutex> lock(mMutex);
    mExpected = cause;
    mExpectedBytes = bytes;
}

void StoreBackups::MakeBeforeChange(Database& database, const wxDateTime& now) {
    const wxString path = database.GetPath();
    const bool isDone = IsDayDone(path, now);
    BackupCause cause = BackupCause::kDay;
    uint64_t bytes = 0;
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        mDay = now;
        mDayStore = path;
        std::swap(cause, mExpected);
        std::swap(bytes, mExpectedBytes);
    }
    if (!isDone || cause != BackupCause::kDay) {
        Make(database, cause, now, bytes);
    }
}

void StoreBackups::Thin(const BackupSettings& settings, const wxString& storePath) {
    BackupSettings thinned = settings;
    thinned.JustMade = GetLast();
    const BackupThinning thinning =
        ThinBackups(OwnBackups(ListBackups(GetBackupDirectory(settings), storePath)), thinned);
    for (const StoreBackup& backup : thinning.Gone) {
        std::error_code ignored;
        fs::remove(ToPath(backup.Path), ignored);
        fs::remove(ToPath(ReviewLogPath(backup.Path)), ignored);
    }
    if (thinning.IsOverLimit || thinning.GoneBySize > 0) {
        const wxString limit = wxFileName::GetHumanReadableSize(wxULongLong(settings.MostBytes));
        TellOnce(thinning.IsOverLimit
                     ? wxString::Format(_("The backups of the store file take more than %s "
                                          "together. They are kept all the same."),
                                        limit)
                     : wxString::Format(_("The backups of the store file would take more than %s. "
                                          "Those that lay closest together have been deleted."),
                                        limit));
    }
}

void StoreBackups::TellOnce(const wxString& text) {
    bool isNew = false;
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        isNew = text != mTold;
        mTold = text;
    }
    if (mTell && isNew) {
        mTell(text);
    }
}
