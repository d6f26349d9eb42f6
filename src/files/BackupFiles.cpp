#include "files/BackupFiles.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <wx/confbase.h>
#include <wx/filename.h>
#include <wx/intl.h>
#include <wx/utils.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <limits>
#include <optional>
#include <set>
#include <string>
#include <system_error>
#include <tuple>
#include <utility>

#include "base/Files.h"
#include "base/SettingsFile.h"
#include "base/Time.h"
#include "base/Unicode.h"
#include "files/StoreFiles.h"

namespace {

namespace fs = std::filesystem;

constexpr char kExtension[] = ".vlm";

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
    {BackupCause::kExchange, "exchange", wxTRANSLATE("Before an exchange with other computers")},
    {BackupCause::kDamaged, "damaged", wxTRANSLATE("Damaged, before the store file was replaced")},
    {BackupCause::kUser, "user", wxTRANSLATE("On request")},
};

const CauseRow& RowOf(BackupCause cause) {
    return *std::find_if(std::begin(kCauses), std::end(kCauses),
                         [&](const CauseRow& row) { return row.Cause == cause; });
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

// Returns eight digits that stand for the whole path, whichever link leads to it (FNV-1a).
wxString SumOfPath(const wxString& storePath) {
    std::error_code error;
    const fs::path path = fs::weakly_canonical(ToPath(MakeStorePathFull(storePath)), error);
    uint32_t sum = 2166136261U;
    for (const char byte : error ? ToUtf8(storePath) : path.string()) {
        sum = (sum ^ static_cast<unsigned char>(byte)) * 16777619U;
    }
    return wxString::Format("%08x", sum);
}

// Reads the part of a name after the stem and the sum, ".20261125T093000Z.import.vlm". Returns
// false for other files.
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

// Takes the sum off the beginning of what stands after a stem, ".5c1f09ab". Returns an empty text,
// and takes nothing, where there is none.
wxString TakeSum(wxString& rest) {
    constexpr size_t kDigits = 8;
    const wxString sum = rest.Mid(1, kDigits);
    // The digits of a time are followed by a letter.
    if (rest.length() <= kDigits + 1 || rest[0] != '.' || rest[kDigits + 1] != '.' ||
        sum.find_first_not_of("0123456789abcdef") != wxString::npos) {
        return wxString();
    }
    rest = rest.Mid(kDigits + 1);
    return sum;
}

fs::path NotePath(const wxString& directory, const wxString& stem, const wxString& sum) {
    return ToPath(directory) / ToPath(stem + "." + sum + ".txt");
}

wxString ReadNote(const fs::path& note) {
    std::ifstream stream(note, std::ios::binary);
    std::string line;
    std::getline(stream, line);
    return FromUtf8(line);
}

// File systems may keep a time in steps of two seconds.
bool WasChanged(const fs::path& backup, const wxDateTime& made) {
    struct stat status {};
    return ::stat(backup.c_str(), &status) != 0 ||
           std::abs(static_cast<int64_t>(status.st_mtim.tv_sec) -
                    static_cast<int64_t>(made.GetTicks())) > 2;
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
    settings.ChosenStore = file->Read(kSettingDatabasePath, wxString());
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

wxString GetBackupDirectory(const BackupSettings& settings) {
    return settings.Directory.empty() ? GetBackupDirectory() : settings.Directory;
}

wxString BackupPath(const wxString& directory, const wxString& storePath, const wxDateTime& time,
                    BackupCause cause) {
    const wxString name = StemOf(storePath) + "." + SumOfPath(storePath) + "." +
                          FormatBackupTime(time) + "." + RowOf(cause).Word + kExtension;
    return FromPath(ToPath(directory) / ToPath(name));
}

void SealBackup(const wxString& backupPath, const wxString& storePath, const wxDateTime& time) {
    timespec changed{};
    changed.tv_sec = time.GetTicks();
    const timespec times[2] = {changed, changed};
    ::utimensat(AT_FDCWD, ToPath(backupPath).c_str(), times, 0);
    const fs::path note = NotePath(wxPathOnly(backupPath), StemOf(storePath), SumOfPath(storePath));
    std::error_code error;
    if (!fs::exists(note, error)) {
        std::ofstream(note, std::ios::binary) << ToUtf8(MakeStorePathFull(storePath)) << '\n';
    }
}

std::vector<StoreBackup> ListBackups(const wxString& directory, const wxString& storePath) {
    std::vector<StoreBackup> backups;
    const wxString stem = StemOf(storePath);
    const wxString ownSum = SumOfPath(storePath);
    std::error_code error;
    for (fs::directory_iterator entry(ToPath(directory), error), end; !error && entry != end;
         entry.increment(error)) {
        const wxString name = FromPath(entry->path().filename());
        StoreBackup backup;
        wxString rest;
        if (!name.StartsWith(stem, &rest)) {
            continue;
        }
        const wxString sum = TakeSum(rest);
        std::error_code unreadable;
        backup.Bytes = entry->file_size(unreadable);
        if (unreadable || !ParseBackupName(rest, backup)) {
            continue;
        }
        backup.Path = FromPath(entry->path());
        backup.Of = sum.empty()     ? StoreBackup::Owner::kUnknown
                    : sum == ownSum ? StoreBackup::Owner::kThisStore
                                    : StoreBackup::Owner::kOtherStore;
        if (backup.Of == StoreBackup::Owner::kOtherStore) {
            backup.OtherPath = ReadNote(NotePath(directory, stem, sum));
        }
        backup.IsChanged = WasChanged(entry->path(), backup.Time);
        const uintmax_t log = fs::file_size(ToPath(ReviewLogPath(backup.Path)), unreadable);
        backup.Bytes += unreadable ? 0 : log;
        backups.push_back(backup);
    }
    const auto place = [](const StoreBackup& backup) {
        const bool isOther = backup.Of == StoreBackup::Owner::kOtherStore;
        return std::make_tuple(isOther, isOther ? backup.OtherPath : wxString(),
                               -backup.Time.GetValue(), backup.Path);
    };
    std::sort(backups.begin(), backups.end(),
              [&](const StoreBackup& left, const StoreBackup& right) {
                  return place(left) < place(right);
              });
    return backups;
}

bool IsBackup(const wxString& directory, const wxString& path) {
    // The stem may have points of its own; ".TIME.CAUSE.vlm" has three.
    constexpr int kLastParts = 3;
    const wxString name = wxFileName(path).GetFullName();
    size_t begin = name.length();
    for (int i = 0; i < kLastParts; ++i) {
        begin = begin == 0 ? wxString::npos : name.rfind('.', begin - 1);
        if (begin == wxString::npos) {
            return false;
        }
    }
    std::error_code error;
    StoreBackup backup;
    return ParseBackupName(name.Mid(begin), backup) &&
           fs::equivalent(ToPath(path).parent_path(), ToPath(directory), error);
}

std::vector<StoreBackup> OwnBackups(std::vector<StoreBackup> backups) {
    backups.erase(std::remove_if(backups.begin(), backups.end(),
                                 [](const StoreBackup& backup) {
                                     return backup.Of != StoreBackup::Owner::kThisStore;
                                 }),
                  backups.end());
    return backups;
}

void RemoveUnfinishedBackups(const wxString& directory, const wxString& storePath) {
    const auto limit = fs::file_time_type::clock::now() - std::chrono::hours(1);
    const wxString stem = StemOf(storePath) + ".";
    std::error_code error;
    for (fs::directory_iterator entry(ToPath(directory), error), end; !error && entry != end;
         entry.increment(error)) {
        const wxString name = FromPath(entry->path().filename());
        std::error_code ignored;
        if (name.StartsWith(stem) && name.EndsWith(kUnfinishedBackup) &&
            entry->last_write_time(ignored) < limit) {
            fs::remove(entry->path(), ignored);
        }
    }
}

namespace {

constexpr size_t kWholeDays = 2;
constexpr size_t kDays = 31;
// The number of backups before an exchange that stay like those of whole days.
constexpr size_t kWholeExchanges = 4;

wxString DayOf(const StoreBackup& backup) {
    return backup.Time.FormatISODate();
}

wxString MonthOf(const StoreBackup& backup) {
    return DayOf(backup).Left(7);
}

// A backup that a person works in, or has worked in, is more than a backup. The one just made is
// not the newest after a clock that was ahead.
bool IsInUse(const StoreBackup& backup, const BackupSettings& settings) {
    return backup.IsChanged || backup.Path == settings.JustMade ||
           (!settings.ChosenStore.empty() && IsSameFile(backup.Path, settings.ChosenStore));
}

// Says which backup goes next when all together take too much.
class Spread {
  public:
    // The newest is the first.
    Spread(const std::vector<StoreBackup>& kept, const BackupSettings& settings)
        : mKept(kept), mSettings(settings) {}
    // Returns the place of the one that goes, or nothing when none may.
    std::optional<size_t> FindNext() const;

  private:
    bool IsOldest(size_t i) const { return i + 1 == mKept.size(); }
    // 0 for a further one of a day, 1 for a further one of a month, 2 for the only one of both.
    int RankOf(size_t i) const {
        if (DayOf(mKept[i - 1]) == DayOf(mKept[i])) {
            return 0;
        }
        return IsOldest(i) || MonthOf(mKept[i + 1]) != MonthOf(mKept[i]) ? 2 : 1;
    }
    // The milliseconds without a backup that it would leave.
    wxLongLong GapAt(size_t i) const {
        return IsOldest(i) ? wxLongLong(std::numeric_limits<wxLongLong_t>::max())
                           : (mKept[i - 1].Time - mKept[i + 1].Time).GetValue();
    }

    const std::vector<StoreBackup>& mKept;
    const BackupSettings& mSettings;
};

std::optional<size_t> Spread::FindNext() const {
    std::optional<size_t> found;
    for (size_t i = 1; i < mKept.size(); ++i) {
        const bool isNext = !found || std::make_pair(RankOf(i), GapAt(i)) <=
                                          std::make_pair(RankOf(*found), GapAt(*found));
        if (isNext && !IsInUse(mKept[i], mSettings)) {
            found = i;
        }
    }
    return found;
}

}  // namespace

BackupThinning ThinBackups(const std::vector<StoreBackup>& backups,
                           const BackupSettings& settings) {
    BackupThinning thinning;
    std::vector<StoreBackup> kept;
    std::set<wxString> days;
    std::set<wxString> months;
    size_t exchanges = 0;
    uint64_t bytes = 0;
    for (const StoreBackup& backup : backups) {
        const bool isFirstOfDay = days.insert(DayOf(backup)).second;
        const bool isFirstOfMonth = months.insert(MonthOf(backup)).second;
        exchanges += backup.Cause == BackupCause::kExchange ? 1 : 0;
        const bool isRecent =
            days.size() <= kWholeDays &&
            (backup.Cause != BackupCause::kExchange || exchanges <= kWholeExchanges);
        const bool stays = isRecent || (days.size() <= kDays && isFirstOfDay) || isFirstOfMonth ||
                           kept.size() < settings.Least || IsInUse(backup, settings);
        (stays ? kept : thinning.Gone).push_back(backup);
        bytes += stays ? backup.Bytes : 0;
    }
    while (bytes > settings.MostBytes && kept.size() > settings.Least) {
        const std::optional<size_t> next = Spread(kept, settings).FindNext();
        if (!next) {
            break;
        }
        bytes -= kept[*next].Bytes;
        thinning.Gone.push_back(kept[*next]);
        ++thinning.GoneBySize;
        kept.erase(kept.begin() + static_cast<std::ptrdiff_t>(*next));
    }
    thinning.IsOverLimit = bytes > settings.MostBytes;
    return thinning;
}
