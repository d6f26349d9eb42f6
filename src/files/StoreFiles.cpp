#include "files/StoreFiles.h"

#include <fcntl.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>
#include <wx/confbase.h>
#include <wx/filename.h>
#include <wx/log.h>
#include <wx/stdpaths.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>

#include "base/Files.h"
#include "base/SettingsFile.h"
#include "base/Text.h"
#include "base/Unicode.h"
#include "files/ExchangeFiles.h"
#include "files/ForeignDatabase.h"
#include "media/MediaFolder.h"
#include "store/CardUuid.h"
#include "store/Database.h"
#include "store/StoreCompanions.h"

namespace {

namespace fs = std::filesystem;

using namespace std::string_view_literals;

// The first bytes of a database, of its journal, and of its write-ahead log in either byte order.
constexpr std::string_view kDatabaseMark = "SQLite format 3\0"sv;
constexpr std::string_view kMarks[] = {kDatabaseMark, "\xD9\xD5\x05\xF9\x20\xA1\x63\xD7"sv,
                                       "\x37\x7F\x06\x82"sv, "\x37\x7F\x06\x83"sv};

// Returns false for a text that no file name can hold as it stands, and for an address.
bool NamesAFile(const wxString& path) {
    return !path.empty() && !path.StartsWith("file:") && path.find(L'\0') == wxString::npos &&
           FromUtf8(ToUtf8(path)) == path;
}

// Returns true when changes wait in this file of the engine.
bool IsPending(const fs::path& companion) {
    std::error_code error;
    return fs::exists(companion, error) && fs::file_size(companion, error) != 0 &&
           std::ifstream(companion, std::ios::binary).get() != 0;
}

// Returns true when changes wait in one of the engine's files, which a move would lose. A properly
// closed store has no such file, or an empty one, or one whose zeros say "finished".
bool HasPendingChanges(const fs::path& store) {
    return std::any_of(std::begin(kCompanions), std::end(kCompanions),
                       [&](const char* suffix) { return IsPending(Beside(store, suffix)); });
}

// Returns a pattern for mkstemp and mkdtemp: a name beside the file for the time of a move.
std::string TemporaryName(const fs::path& file) {
    return (file.parent_path() / "velomind-XXXXXX").string();
}

// Sets aside the file that must make room for a store, and the engine's files beside it, until the
// store is in place: a journal that stayed would be played back into the store, and one deleted too
// early would be missing if the move fails. They wait in a directory of their own under their own
// names, where the user can find them after a crash.
class ReplacedFile {
  public:
    explicit ReplacedFile(const fs::path& file) : mFile(file) {}
    // Puts back what is still set aside.
    ~ReplacedFile();
    ReplacedFile(const ReplacedFile&) = delete;
    ReplacedFile& operator=(const ReplacedFile&) = delete;

    // Sets aside whatever is there. Returns 0, or the error's number.
    int SetAside() { return SetAsideFrom(0); }
    // Sets aside only the engine's files, for a store that replaces the file in one step.
    int SetAsideCompanions() { return SetAsideFrom(1); }
    void Delete();

  private:
    int SetAsideFrom(size_t first);
    fs::path AsideOf(const char* suffix) const {
        return fs::path(mDirectory) / Beside(mFile, suffix).filename();
    }

    const fs::path mFile;
    // Empty while nothing is set aside.
    std::string mDirectory;
};

// The file goes first and comes back last, so that nobody can open it without its journal.
constexpr std::array<const char*, 4> kReplaced = {"", kCompanions[0], kCompanions[1],
                                                  kCompanions[2]};

int ReplacedFile::SetAsideFrom(size_t first) {
    for (; first < kReplaced.size(); ++first) {
        const char* const suffix = kReplaced[first];
        std::error_code error;
        const fs::path file = Beside(mFile, suffix);
        const fs::file_type type = fs::symlink_status(file, error).type();
        if (type == fs::file_type::not_found) {
            continue;
        }
        if (type == fs::file_type::directory) {
            return EISDIR;
        }
        if (mDirectory.empty()) {
            std::string directory = TemporaryName(mFile);
            if (::mkdtemp(directory.data()) == nullptr) {
                return errno;
            }
            mDirectory = directory;
        }
        fs::rename(file, AsideOf(suffix), error);
        if (error) {
            return error.value();
        }
    }
    if (!mDirectory.empty()) {
        SyncDirectory(mFile);
    }
    return 0;
}

ReplacedFile::~ReplacedFile() {
    if (mDirectory.empty()) {
        return;
    }
    std::error_code error;
    for (auto suffix = kReplaced.rbegin(); suffix != kReplaced.rend(); ++suffix) {
        // A failure means that the file was never there.
        fs::rename(AsideOf(*suffix), Beside(mFile, *suffix), error);
    }
    fs::remove(mDirectory, error);
}

void ReplacedFile::Delete() {
    if (mDirectory.empty()) {
        return;
    }
    std::error_code error;
    for (const char* const suffix : kReplaced) {
        fs::remove(AsideOf(suffix), error);
    }
    fs::remove(mDirectory, error);
    mDirectory.clear();
}

// Returns 0 where a store may be put: where nothing is, or a plain file.
int CheckTarget(const fs::path& target) {
    std::error_code error;
    switch (fs::status(target, error).type()) {
        case fs::file_type::not_found:
        case fs::file_type::regular:
            return 0;
        case fs::file_type::directory:
            return EISDIR;
        default:
            return error ? error.value() : ENODEV;
    }
}

// A whole copy of a plain file under a name of its own beside a target, so that a file there is not
// touched before the copy is known to be good. It goes with the object unless it was renamed.
class FileCopy {
  public:
    explicit FileCopy(const fs::path& target) : mName(TemporaryName(target)) {}
    ~FileCopy() {
        if (mIsMade) {
            ::unlink(mName.c_str());
        }
    }
    FileCopy(const FileCopy&) = delete;
    FileCopy& operator=(const FileCopy&) = delete;

    // Makes the copy with the function, which takes two open files. Returns 0 or the error's
    // number.
    int Make(const fs::path& source, int (*copyBytes)(int source, int target));
    const std::string& GetName() const { return mName; }

  private:
    std::string mName;
    bool mIsMade = false;
};

int FileCopy::Make(const fs::path& source, int (*copyBytes)(int source, int target)) {
    const FileDescriptor original(::open(source.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    struct stat status {};
    if (!original.IsOpen() || ::fstat(original.Get(), &status) != 0) {
        return errno;
    }
    if (!S_ISREG(status.st_mode)) {
        return ENODEV;
    }
    const FileDescriptor copy(::mkostemp(mName.data(), O_CLOEXEC));
    mIsMade = copy.IsOpen();
    if (!mIsMade) {
        return errno;
    }
    const int error = copyBytes(original.Get(), copy.Get());
    return error == 0 && ::fchmod(copy.Get(), status.st_mode & 0777) != 0 ? errno : error;
}

int CopyAndCompare(int source, int target) {
    const int error = CopyBytes(source, target);
    return error == 0 ? CompareBytes(source, target) : error;
}

// On success the file that was at the target is set aside, to be deleted or put back.
int PutCopy(const fs::path& source, const fs::path& target, ReplacedFile& replaced) {
    FileCopy copy(target);
    int error = copy.Make(source, CopyAndCompare);
    error = error == 0 ? replaced.SetAside() : error;
    if (error != 0) {
        return error;
    }
    if (std::rename(copy.GetName().c_str(), target.c_str()) != 0) {
        return errno;
    }
    SyncDirectory(target);
    return 0;
}

int CopyAndDelete(const fs::path& source, const fs::path& target) {
    // Without this right the original could not be deleted, so ask before anything is replaced.
    if (::access(source.parent_path().c_str(), W_OK | X_OK) != 0) {
        return errno;
    }
    ReplacedFile replaced(target);
    int error = PutCopy(source, target, replaced);
    if (error != 0) {
        return error;
    }
    if (::unlink(source.c_str()) != 0) {
        error = errno;
        ::unlink(target.c_str());
        return error;
    }
    SyncDirectory(source);
    replaced.Delete();
    return 0;
}

// A file at the target stays until the store is there, whatever happens in between.
int Rename(const fs::path& source, const fs::path& target) {
    ReplacedFile replaced(target);
    if (const int error = replaced.SetAsideCompanions()) {
        return error;
    }
    if (std::rename(source.c_str(), target.c_str()) != 0) {
        return errno;
    }
    SyncDirectory(target);
    replaced.Delete();
    return 0;
}

void CopyLog(const fs::path& source, const fs::path& target) {
    FileCopy copy(target);
    if (copy.Make(Beside(source, kReviewLogSuffix), CopyWholeFile) == 0) {
        std::rename(copy.GetName().c_str(), Beside(target, kReviewLogSuffix).c_str());
    }
}

// A log at the target belongs to the store that is gone from there.
void MoveLog(const fs::path& source, const fs::path& target) {
    const fs::path log = Beside(source, kReviewLogSuffix);
    std::error_code error;
    fs::remove(Beside(target, kReviewLogSuffix), error);
    fs::rename(log, Beside(target, kReviewLogSuffix), error);
    if (error == std::errc::cross_device_link) {
        CopyLog(source, target);
        if (fs::exists(Beside(target, kReviewLogSuffix), error)) {
            fs::remove(log, error);
        }
    }
}

// The engine's files beside a database may be empty or begin with anything, so the name decides.
bool IsBesideDatabase(const std::string& path) {
    for (const std::string_view companion : kCompanions) {
        const size_t length = path.size() - std::min(path.size(), companion.size());
        if (std::string_view(path).substr(length) == companion &&
            FileBeginsWith(fs::u8path(path.substr(0, length)), kDatabaseMark)) {
            return true;
        }
    }
    return false;
}

}  // namespace

wxString ReviewLogPath(const wxString& storePath) {
    return storePath.empty() ? wxString() : storePath + kReviewLogSuffix;
}

void CopyReviewLog(const wxString& fromStore, const wxString& toStore) {
    CopyLog(ToPath(fromStore), ToPath(toStore));
}

wxString GetDefaultStorePath() {
    const wxString directory = wxStandardPaths::Get().GetDocumentsDir();
    {
        // What fails here shows itself when the store is opened.
        const wxLogNull silence;
        wxFileName::Mkdir(directory, wxS_DIR_DEFAULT, wxPATH_MKDIR_FULL);
    }
    return wxFileName(directory, kDefaultStoreName).GetFullPath();
}

wxString GetChosenStorePath(bool& isStored) {
    const wxString path =
        OpenSettingsFile(kApplicationName)->Read(kSettingDatabasePath, wxString());
    isStored = !path.empty();
    if (!isStored) {
        return GetDefaultStorePath();
    }
    return wxFileName::DirExists(path) ? wxFileName(path, kDefaultStoreName).GetFullPath() : path;
}

wxString MakeStorePathFull(const wxString& path) {
    if (!NamesAFile(path)) {
        return path;
    }
    return FullPath(path);
}

bool IsDatabaseFile(const wxString& path) {
    // A link to such a file counts as one.
    std::error_code error;
    const fs::path file = fs::canonical(ToPath(path), error);
    // A pipe or a device may never end, or block before its first byte.
    if (error || !fs::is_regular_file(file, error)) {
        return false;
    }
    return IsBesideDatabase(file.u8string()) ||
           std::any_of(std::begin(kMarks), std::end(kMarks),
                       [&file](std::string_view mark) { return FileBeginsWith(file, mark); });
}

bool IsSameFile(const wxString& path, const wxString& other) {
    std::error_code error;
    return MakeStorePathFull(path) == MakeStorePathFull(other) ||
           fs::equivalent(ToPath(path), ToPath(other), error);
}

bool IsStoreOfCards(const wxString& path) {
    ForeignDatabase database;
    return database.Open(path) == 0 && database.HasTable("Cards") &&
           database.HasTable("Categories") && database.HasTable("Globals");
}

int MoveStoreFile(const wxString& from, const wxString& to) {
    if (!NamesAFile(to)) {
        return to.empty() ? ENOENT : EINVAL;
    }
    // A link to the store is removed; its target moves.
    const fs::path link = ToPath(from);
    std::error_code error;
    const fs::path source = fs::canonical(link, error);
    if (error) {
        return error.value();
    }
    const fs::path target = ToPath(MakeStorePathFull(to));
    if (fs::equivalent(source, target, error)) {
        return EEXIST;
    }
    if (HasPendingChanges(source)) {
        return EBUSY;
    }
    ExchangeLock lock;
    ExchangeLock targetLock;
    int result = CheckTarget(target);
    result = result == 0 ? lock.Take(link) : result;
    result = result == 0 ? targetLock.Take(target) : result;
    if (result != 0) {
        return result;
    }
    ReplacedStoreMark mark(target);
    result = mark.GetError() == 0 ? Rename(source, target) : mark.GetError();
    if (result == EXDEV) {
        result = CopyAndDelete(source, target);
    }
    if (result != 0) {
        return result;
    }
    mark.Keep();
    RemoveCompanions(source);
    MoveLog(source, target);
    MoveExchangeFiles(link, target);
    // Cards without their pictures are still cards: the folder stays where it cannot move, and the
    // window that lists them says which are missing.
    MoveMediaFolder(source, target);
    if (fs::is_symlink(link, error)) {
        fs::remove(link, error);
    }
    return 0;
}

int CopyAndDeleteStoreFile(const wxString& from, const wxString& to) {
    return CopyAndDelete(ToPath(from), ToPath(to));
}

int CopyStoreFile(const wxString& from, const wxString& to) {
    // The name may be a link to the store.
    std::error_code error;
    const fs::path name = ToPath(MakeStorePathFull(to));
    const bool isLink = fs::is_symlink(name, error);
    // A missing file is no failure.
    error.clear();
    const fs::path target = isLink ? fs::weakly_canonical(name, error) : name;
    int result = error ? error.value() : CheckTarget(target);
    FileCopy copy(target);
    result = result == 0 ? copy.Make(ToPath(from), CopyAndCompare) : result;
    if (result != 0) {
        return result;
    }
    // The new file gets the permissions of the old one.
    const fs::perms permissions = fs::status(target, error).permissions();
    if (fs::exists(target, error)) {
        fs::permissions(copy.GetName(), permissions, error);
    }
    result = Rename(copy.GetName(), target);
    if (result == 0) {
        CopyLog(ToPath(from), target);
    }
    return result;
}

int KeepStoreFile(const wxString& from, const wxString& to) {
    int result = CopyStoreFile(from, to);
    for (const char* const suffix : kCompanions) {
        const fs::path companion = Beside(ToPath(from), suffix);
        if (result == 0 && IsPending(companion)) {
            FileCopy copy(ToPath(to));
            result = copy.Make(companion, CopyAndCompare);
            result = result == 0 ? Rename(copy.GetName(), Beside(ToPath(to), suffix)) : result;
        }
    }
    return result;
}

void PlayBackJournal(const std::filesystem::path& store) {
    sqlite3* handle = nullptr;
    if (sqlite3_open_v2(store.c_str(), &handle, SQLITE_OPEN_READWRITE, nullptr) == SQLITE_OK) {
        // Any first read plays it back. Its result for a damaged file does not count.
        sqlite3_exec(handle, "SELECT count(*) FROM sqlite_master;", nullptr, nullptr, nullptr);
    }
    sqlite3_close(handle);
}

int ReplaceByNewStore(const wxString& path) {
    CardUuid unique;
    if (GenerateUuid(unique) != 0) {
        return EIO;
    }
    const wxString name =
        wxPathOnly(MakeStorePathFull(path)) + "/velomind-" + FormatUuid(unique).Left(8) + ".vlm";
    QuietDatabase database;
    const bool isMade = database.OpenQuietly(name) >= 0;
    const int code = database.GetLastErrorCode() & 0xFF;
    database.Close();
    if (!isMade) {
        return code == SQLITE_FULL ? ENOSPC : code == SQLITE_BUSY ? EBUSY : EIO;
    }
    const int error = MoveStoreFile(name, path);
    if (error != 0) {
        ::unlink(ToPath(name).c_str());
    }
    return error;
}
