#include "media/MediaFolder.h"

#include <dirent.h>
#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>
#include <wx/intl.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <memory>
#include <system_error>

#include "base/Text.h"
#include "base/Unicode.h"
#include "media/MediaLines.h"
#include "store/Database.h"
#include "store/StoreCompanions.h"

namespace {

namespace fs = std::filesystem;

constexpr char kUnused[] = "unused";
// What a file is called while it is written. No safe name begins with a dot.
constexpr char kTemporaryStart[] = ".new-";
constexpr int64_t kDay = 86400;
// More files of one name than anybody has.
constexpr int kMostNumbers = 10000;

FileDescriptor OpenDirectory(int parent, const char* name) {
    return FileDescriptor(::openat(parent, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
}

// Opens a plain file and nothing else. What is no plain file gives ENODEV.
FileDescriptor OpenPlain(int folder, const std::string& name) {
    FileDescriptor file(
        ::openat(folder, name.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    struct stat status {};
    if (file.IsOpen() && (::fstat(file.Get(), &status) != 0 || !S_ISREG(status.st_mode))) {
        file.Close();
        errno = ENODEV;
    }
    return file;
}

struct DirectoryCloser {
    void operator()(DIR* directory) const { ::closedir(directory); }
};

// Calls the function for every plain file in an open folder.
template <class Function>
void VisitFiles(const FileDescriptor& folder, Function visit) {
    const int copy = ::openat(folder.Get(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    const std::unique_ptr<DIR, DirectoryCloser> directory(copy < 0 ? nullptr : ::fdopendir(copy));
    std::vector<std::string> names;
    while (directory != nullptr) {
        const dirent* const entry = ::readdir(directory.get());
        if (entry == nullptr) {
            break;
        }
        names.emplace_back(entry->d_name);
    }
    for (const std::string& name : names) {
        struct stat status {};
        if (::fstatat(folder.Get(), name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0 &&
            S_ISREG(status.st_mode)) {
            visit(name, status);
        }
    }
}

int Rename(const FileDescriptor& from, const std::string& name, const FileDescriptor& to,
           const std::string& newName) {
    return ::renameat(from.Get(), name.c_str(), to.Get(), newName.c_str()) == 0 ? 0 : errno;
}

bool Has(const FileDescriptor& folder, const std::string& name) {
    struct stat status {};
    return ::fstatat(folder.Get(), name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0;
}

FileDescriptor OpenUnused(const FileDescriptor& folder) {
    ::mkdirat(folder.Get(), kUnused, 0777);
    return OpenDirectory(folder.Get(), kUnused);
}

bool HaveSameBytes(const FileDescriptor& one, const FileDescriptor& other) {
    struct stat status {};
    struct stat otherStatus {};
    if (!one.IsOpen() || !other.IsOpen() || ::fstat(one.Get(), &status) != 0 ||
        ::fstat(other.Get(), &otherStatus) != 0 || status.st_size != otherStatus.st_size) {
        return false;
    }
    std::vector<char> block(size_t{1} << 16);
    std::vector<char> otherBlock(block.size());
    for (off_t at = 0; at < status.st_size;) {
        const ssize_t count = ::pread(one.Get(), block.data(), block.size(), at);
        if (count <= 0 ||
            ::pread(other.Get(), otherBlock.data(), static_cast<size_t>(count), at) != count ||
            !std::equal(block.begin(), block.begin() + count, otherBlock.begin())) {
            return false;
        }
        at += count;
    }
    return true;
}

// Moves all files of one folder to "unused" in another, but for those that the other has itself. A
// file there of the same name stays, and then the one that cannot move stays too.
void MergeIntoUnused(const fs::path& from, const fs::path& to) {
    const FileDescriptor source = OpenDirectory(AT_FDCWD, from.c_str());
    const FileDescriptor target = OpenDirectory(AT_FDCWD, to.c_str());
    if (!source.IsOpen() || !target.IsOpen()) {
        return;
    }
    const FileDescriptor unused = OpenUnused(target);
    const auto move = [&](const FileDescriptor& folder) {
        VisitFiles(folder, [&](const std::string& name, const struct stat&) {
            if (HaveSameBytes(OpenPlain(folder.Get(), name), OpenPlain(target.Get(), name))) {
                ::unlinkat(folder.Get(), name.c_str(), 0);
            } else if (!Has(unused, name) && Rename(folder, name, unused, name) == 0) {
                ::utimensat(unused.Get(), name.c_str(), nullptr, AT_SYMLINK_NOFOLLOW);
            }
        });
    };
    move(source);
    const FileDescriptor older = OpenDirectory(source.Get(), kUnused);
    if (older.IsOpen()) {
        move(older);
        ::unlinkat(source.Get(), kUnused, AT_REMOVEDIR);
    }
    ::rmdir(from.c_str());
    // It goes when nothing had to wait.
    ::unlinkat(target.Get(), kUnused, AT_REMOVEDIR);
}

// Makes a folder with the files of another one. They never change, so that one file can have two
// places where the disk can do that. Nothing is left after an error.
int CopyFiles(const FileDescriptor& source, const fs::path& to) {
    if (::mkdir(to.c_str(), 0777) != 0) {
        return errno;
    }
    int result = 0;
    VisitFiles(source, [&](const std::string& name, const struct stat& status) {
        const fs::path place = to / name;
        if (result != 0 || ::linkat(source.Get(), name.c_str(), AT_FDCWD, place.c_str(), 0) == 0) {
            return;
        }
        const FileDescriptor from = OpenPlain(source.Get(), name);
        const FileDescriptor file(
            ::open(place.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
        result = from.IsOpen() && file.IsOpen() ? CopyWholeFile(from.Get(), file.Get()) : errno;
        const std::array<timespec, 2> times = {status.st_atim, status.st_mtim};
        ::futimens(file.Get(), times.data());
    });
    const FileDescriptor unused = OpenDirectory(source.Get(), kUnused);
    if (result == 0 && unused.IsOpen()) {
        result = CopyFiles(unused, to / kUnused);
    }
    if (result != 0) {
        std::error_code error;
        fs::remove_all(to, error);
    }
    return result;
}

constexpr char kCopy[] = "-copy-";

// Returns a name beside a folder that no other process uses.
fs::path NameAside(const fs::path& folder, const char* what) {
    return folder.string() + what + std::to_string(::getpid());
}

// Removes copies that a process has left which was killed.
void RemoveLeftCopies(const fs::path& folder) {
    const std::string start = folder.filename().string() + kCopy;
    std::error_code ignored;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder.parent_path(), ignored)) {
        const std::string name = entry.path().filename().string();
        const std::string number = name.substr(std::min(start.size(), name.size()));
        const bool isCopy = name.compare(0, start.size(), start) == 0 && !number.empty() &&
                            number.find_first_not_of("0123456789") == std::string::npos;
        const int process = isCopy ? std::atoi(number.c_str()) : 0;
        if (process > 0 && ::kill(process, 0) != 0 && errno == ESRCH) {
            fs::remove_all(entry.path(), ignored);
        }
    }
}

// Exchanges two folders. Where the file system cannot do that, one of them steps aside meanwhile.
int Exchange(const fs::path& from, const fs::path& to) {
    if (::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_EXCHANGE) == 0) {
        return 0;
    }
    if (errno != EINVAL && errno != ENOSYS) {
        return errno;
    }
    const fs::path aside = NameAside(to, "-old-");
    if (std::rename(to.c_str(), aside.c_str()) != 0) {
        return errno;
    }
    const int result = std::rename(from.c_str(), to.c_str()) == 0 ? 0 : errno;
    std::error_code error;
    fs::rename(aside, result == 0 ? from : to, error);
    return result;
}

// Renames a folder. What is at its new place goes to "unused" in it.
int TakePlace(const fs::path& from, const fs::path& to) {
    std::error_code error;
    const bool isTaken = fs::symlink_status(to, error).type() != fs::file_type::not_found;
    const int result = isTaken                                      ? Exchange(from, to)
                       : std::rename(from.c_str(), to.c_str()) == 0 ? 0
                                                                    : errno;
    if (result == 0) {
        SyncDirectory(from);
        SyncDirectory(to);
        if (isTaken) {
            MergeIntoUnused(from, to);
        }
    }
    return result;
}

}  // namespace

MediaFolder::MediaFolder(const wxString& storePath)
    : mPath(storePath.empty() ? fs::path() : Beside(ToPath(storePath), kMediaSuffix)) {}

FileDescriptor MediaFolder::OpenFolder() const {
    return OpenDirectory(AT_FDCWD, mPath.c_str());
}

int MediaFolder::Make() const {
    if (::mkdir(mPath.c_str(), 0777) == 0) {
        SyncDirectory(mPath);
        return 0;
    }
    return errno == EEXIST ? 0 : errno;
}

FileDescriptor MediaFolder::Open(const wxString& name) const {
    errno = ENOENT;
    const FileDescriptor folder = IsSafeMediaName(name) ? OpenFolder() : FileDescriptor();
    if (!folder.IsOpen()) {
        return FileDescriptor();
    }
    const std::string bytes = ToUtf8(name);
    FileDescriptor file = OpenPlain(folder.Get(), bytes);
    if (!file.IsOpen() && errno == ENOENT) {
        const FileDescriptor unused = OpenDirectory(folder.Get(), kUnused);
        FileDescriptor kept = unused.IsOpen() ? OpenPlain(unused.Get(), bytes) : FileDescriptor();
        if (kept.IsOpen()) {
            // It is read from there where it cannot come back.
            Rename(unused, bytes, folder, bytes);
            return kept;
        }
        errno = ENOENT;
    }
    return file;
}

int MediaFolder::Visit(
    const std::function<void(const std::string& name, const struct stat& status)>& visit) const {
    const FileDescriptor folder = OpenFolder();
    if (!folder.IsOpen()) {
        return errno;
    }
    VisitFiles(folder, visit);
    return 0;
}

int MediaFolder::Remove(const wxString& name) const {
    const FileDescriptor folder = IsSafeMediaName(name) ? OpenFolder() : FileDescriptor();
    return folder.IsOpen() && ::unlinkat(folder.Get(), ToUtf8(name).c_str(), 0) == 0 ? 0 : errno;
}

int MediaFolder::Add(const fs::path& file, const wxString& wantedName, wxString& name) const {
    const FileDescriptor source(::open(file.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    struct stat status {};
    if (!source.IsOpen() || ::fstat(source.Get(), &status) != 0) {
        return errno;
    }
    if (!S_ISREG(status.st_mode)) {
        return ENODEV;
    }
    NewMediaFile copy(*this);
    std::vector<char> block(size_t{1} << 16);
    for (;;) {
        const ssize_t count = ::read(source.Get(), block.data(), block.size());
        if (count < 0 && errno != EINTR) {
            return errno;
        }
        if (count == 0) {
            return copy.Keep(wantedName, NewMediaFile::Durability::kNow, name);
        }
        if (count > 0) {
            if (const int error = copy.Write(block.data(), static_cast<size_t>(count))) {
                return error;
            }
        }
    }
}

int MediaFolder::AddBytes(const std::string& bytes, const wxString& wantedName,
                          wxString& name) const {
    NewMediaFile file(*this);
    const int error = file.Write(bytes.data(), bytes.size());
    return error == 0 ? file.Keep(wantedName, NewMediaFile::Durability::kNow, name) : error;
}

int MediaFolder::List(const std::set<wxString>& used, MediaListing& listing) const {
    const FileDescriptor folder = OpenFolder();
    if (!folder.IsOpen() && errno != ENOENT) {
        return errno;
    }
    std::set<wxString> missing = used;
    VisitFiles(folder, [&](const std::string& bytes, const struct stat& status) {
        const wxString name = FromUtf8(bytes);
        if (IsSafeMediaName(name)) {
            const bool isUsed = used.count(name) != 0;
            (isUsed ? listing.Used : listing.Unused).push_back({name, status.st_size});
            missing.erase(name);
        }
    });
    listing.Missing.assign(missing.begin(), missing.end());
    const auto byName = [](const MediaFile& one, const MediaFile& other) {
        return one.Name < other.Name;
    };
    std::sort(listing.Used.begin(), listing.Used.end(), byName);
    std::sort(listing.Unused.begin(), listing.Unused.end(), byName);
    return 0;
}

int MediaFolder::SetAside(const std::vector<MediaFile>& files, int64_t now) const {
    const FileDescriptor folder = OpenFolder();
    const FileDescriptor unused = folder.IsOpen() ? OpenUnused(folder) : FileDescriptor();
    if (!unused.IsOpen()) {
        return errno;
    }
    int first = 0;
    for (const MediaFile& file : files) {
        const std::string name = ToUtf8(file.Name);
        // The days are counted from here.
        const timespec moment{static_cast<time_t>(now), 0};
        const std::array<timespec, 2> times = {moment, moment};
        const int error = Rename(folder, name, unused, name);
        ::utimensat(unused.Get(), name.c_str(), times.data(), AT_SYMLINK_NOFOLLOW);
        first = first == 0 ? error : first;
    }
    return first;
}

void MediaFolder::BringBack(const std::set<wxString>& used, int64_t now) const {
    const FileDescriptor folder = OpenFolder();
    const FileDescriptor unused =
        folder.IsOpen() ? OpenDirectory(folder.Get(), kUnused) : FileDescriptor();
    if (!unused.IsOpen()) {
        return;
    }
    VisitFiles(unused, [&](const std::string& name, const struct stat& status) {
        if (used.count(FromUtf8(name)) != 0) {
            if (!Has(folder, name)) {
                Rename(unused, name, folder, name);
            }
        } else if (status.st_mtim.tv_sec + kUnusedDays * kDay < now) {
            ::unlinkat(unused.Get(), name.c_str(), 0);
        }
    });
}

NewMediaFile::NewMediaFile(const MediaFolder& folder) : mFolder(folder) {
    mError = folder.mPath.empty() ? ENOENT : folder.Make();
    if (mError == 0) {
        mDirectory = folder.OpenFolder();
        mError = mDirectory.IsOpen() ? 0 : errno;
    }
    for (int number = 0; mError == 0 && !mFile.IsOpen(); ++number) {
        mTemporaryName =
            kTemporaryStart + std::to_string(::getpid()) + "-" + std::to_string(number);
        mFile = FileDescriptor(::openat(mDirectory.Get(), mTemporaryName.c_str(),
                                        O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
        if (!mFile.IsOpen() && (errno != EEXIST || number == kMostNumbers)) {
            mError = errno;
        }
    }
}

NewMediaFile::~NewMediaFile() {
    if (mFile.IsOpen() && !mIsNamed) {
        ::unlinkat(mDirectory.Get(), mTemporaryName.c_str(), 0);
    }
}

int NewMediaFile::Write(const char* bytes, size_t count) {
    while (mError == 0 && count > 0) {
        const ssize_t written = ::write(mFile.Get(), bytes, count);
        if (written < 0 && errno != EINTR) {
            mError = errno;
        } else if (written > 0) {
            bytes += written;
            count -= static_cast<size_t>(written);
        }
    }
    return mError;
}

bool NewMediaFile::IsSameAs(int folder, const std::string& name) const {
    return HaveSameBytes(mFile, OpenPlain(folder, name));
}

int NewMediaFile::Keep(const wxString& wantedName, Durability durability, wxString& name) {
    if (mError == 0 && durability == Durability::kNow && ::fsync(mFile.Get()) != 0) {
        mError = errno;
    }
    const wxString safe = MakeSafeMediaName(wantedName);
    for (int number = 1; mError == 0 && number <= kMostNumbers; ++number) {
        name = NumberedMediaName(safe, number);
        const std::string bytes = ToUtf8(name);
        // This fails where something is, so that a file of another program is never replaced.
        if (::renameat2(mDirectory.Get(), mTemporaryName.c_str(), mDirectory.Get(), bytes.c_str(),
                        RENAME_NOREPLACE) == 0) {
            mIsNamed = true;
            break;
        }
        if (errno == EEXIST) {
            if (IsSameAs(mDirectory.Get(), bytes)) {
                return 0;
            }
        } else if (errno == EINVAL || errno == ENOSYS) {
            // A file system that cannot tell.
            if (!Has(mDirectory, bytes)) {
                mError = Rename(mDirectory, mTemporaryName, mDirectory, bytes);
                mIsNamed = mError == 0;
                break;
            }
            if (IsSameAs(mDirectory.Get(), bytes)) {
                return 0;
            }
        } else {
            mError = errno;
        }
    }
    if (mError == 0 && durability == Durability::kNow) {
        ::fsync(mDirectory.Get());
    }
    return mError;
}

int NewMediaFile::KeepAs(const wxString& name, const struct stat* former, struct stat& status) {
    const std::string bytes = ToUtf8(name);
    if (mError != 0 || !IsSafeMediaName(name)) {
        return mError != 0 ? mError : EINVAL;
    }
    if (::fsync(mFile.Get()) != 0) {
        return mError = errno;
    }
    struct stat present {};
    const bool isThere =
        ::fstatat(mDirectory.Get(), bytes.c_str(), &present, AT_SYMLINK_NOFOLLOW) == 0;
    const bool isFormer = isThere && former != nullptr && S_ISREG(present.st_mode) &&
                          present.st_ino == former->st_ino && present.st_size == former->st_size &&
                          present.st_mtim.tv_sec == former->st_mtim.tv_sec &&
                          present.st_mtim.tv_nsec == former->st_mtim.tv_nsec;
    if (isFormer) {
        mError = Rename(mDirectory, mTemporaryName, mDirectory, bytes);
    } else if (::renameat2(mDirectory.Get(), mTemporaryName.c_str(), mDirectory.Get(),
                           bytes.c_str(), RENAME_NOREPLACE) != 0) {
        mError = errno;
        if ((mError == EINVAL || mError == ENOSYS) && !isThere) {
            // A file system that cannot tell.
            mError = Rename(mDirectory, mTemporaryName, mDirectory, bytes);
        }
    }
    mIsNamed = mError == 0;
    if (mIsNamed) {
        ::fstat(mFile.Get(), &status);
    }
    return mError;
}

void SyncMedia(const MediaFolder& folder) {
    const FileDescriptor directory(
        ::open(folder.GetPath().c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (directory.IsOpen()) {
        ::syncfs(directory.Get());
    }
}

int FindUsedMedia(Database& database, std::set<wxString>& names) {
    const auto take = [&names](int64_t, std::u16string_view text) {
        if (MayHaveMediaLine(text)) {
            for (const MediaLine& line : FindMediaLines(FromUtf16(text))) {
                names.insert(line.Name);
            }
        }
    };
    int result = 0;
    for (const CardColumn column : {CardColumn::kFront, CardColumn::kBack, CardColumn::kNotes}) {
        result = std::min(result, database.VisitTexts(column, std::numeric_limits<int64_t>::min(),
                                                      std::numeric_limits<int64_t>::max(), take));
    }
    return result;
}

wxString HintOfMedia(Database& database) {
    std::set<wxString> media;
    if (FindUsedMedia(database, media) < 0 || media.empty()) {
        return wxString();
    }
    return wxString::Format(_("The pictures and sounds are not in it.  They are files in "
                              "\"%s\": copy that folder too."),
                            FromPath(MediaFolder(database.GetPath()).GetPath()));
}

int MoveMediaFolder(const fs::path& fromStore, const fs::path& toStore) {
    const fs::path from = Beside(fromStore, kMediaSuffix);
    const fs::path to = Beside(toStore, kMediaSuffix);
    const FileDescriptor source = OpenDirectory(AT_FDCWD, from.c_str());
    if (!source.IsOpen()) {
        return 0;
    }
    const int moved = TakePlace(from, to);
    if (moved != EXDEV) {
        return moved;
    }
    RemoveLeftCopies(to);
    const fs::path copy = NameAside(to, kCopy);
    if (const int error = CopyFiles(source, copy)) {
        return error;
    }
    std::error_code ignored;
    const int result = TakePlace(copy, to);
    fs::remove_all(result == 0 ? from : copy, ignored);
    return result;
}

MediaFolderCopy::MediaFolderCopy(fs::path fromStore, fs::path toStore)
    : mTarget(Beside(std::move(toStore), kMediaSuffix)) {
    const fs::path from = Beside(std::move(fromStore), kMediaSuffix);
    const FileDescriptor source = OpenDirectory(AT_FDCWD, from.c_str());
    std::error_code error;
    if (source.IsOpen() && !fs::equivalent(from, mTarget, error)) {
        RemoveLeftCopies(mTarget);
        const fs::path copy = NameAside(mTarget, kCopy);
        mError = CopyFiles(source, copy);
        mCopy = mError == 0 ? copy : fs::path();
    }
}

MediaFolderCopy::~MediaFolderCopy() {
    if (!mCopy.empty()) {
        std::error_code error;
        fs::remove_all(mCopy, error);
    }
}

int MediaFolderCopy::Keep() {
    if (mError == 0 && !mCopy.empty()) {
        mError = TakePlace(mCopy, mTarget);
    }
    if (mError == 0) {
        mCopy.clear();
    }
    return mError;
}
