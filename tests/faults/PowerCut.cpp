#include "faults/PowerCut.h"

#include <fcntl.h>
#include <linux/fs.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <mutex>
#include <random>
#include <sstream>

namespace {

namespace fs = std::filesystem;

DiskRecording* gRecording = nullptr;
std::recursive_mutex gMutex;

struct {
    int Position = 0;
    bool Lasting = false;
    int Calls = 0;
} gFault;

bool Fails() {
    const int call = ++gFault.Calls;
    const bool fails = gFault.Position != 0 &&
                       (gFault.Lasting ? call >= gFault.Position : call == gFault.Position);
    errno = fails ? ENOSPC : errno;
    return fails;
}

// Makes a call of the system, unless it is to fail, and notes it.
template <typename Note, typename... Arguments>
long Call(const Note& note, long number, Arguments... arguments) {
    const long result = Fails() ? -1 : ::syscall(number, arguments...);
    if (gRecording != nullptr && result >= 0) {
        const std::lock_guard<std::recursive_mutex> lock(gMutex);
        note(*gRecording, result);
    }
    return result;
}

}  // namespace

int DiskRecording::FailCall(int position, bool lasting) {
    const int calls = gFault.Calls;
    gFault = {position, lasting, 0};
    return calls;
}

DiskRecording::DiskRecording(const fs::path& directory) : mDirectory(directory) {
    for (const auto& entry : fs::recursive_directory_iterator(directory)) {
        if (entry.is_regular_file()) {
            std::ostringstream bytes;
            bytes << std::ifstream(entry.path(), std::ios::binary).rdbuf();
            mFirstNames[NameOf(entry.path())] = mFileCount++;
            mFirstContents.push_back(bytes.str());
        } else if (entry.is_directory()) {
            mFirstDirectories.insert(NameOf(entry.path()));
        }
    }
    mNames = mFirstNames;
    // What is open already, as OnOpen would have seen it.
    for (const auto& entry : fs::directory_iterator("/proc/self/fd")) {
        std::error_code error;
        const fs::path file = fs::read_symlink(entry.path(), error);
        if (!error) {
            OnOpen(std::stoi(entry.path().filename()), file, false);
        }
    }
    gRecording = this;
}

DiskRecording::~DiskRecording() {
    Stop();
}

void DiskRecording::Stop() {
    gRecording = nullptr;
}

void DiskRecording::Mark() {
    mCalls.push_back({Kind::kMark});
}

bool DiskRecording::IsInside(const std::string& path) const {
    return path.rfind(mDirectory.string() + "/", 0) == 0;
}

std::string DiskRecording::NameOf(const std::string& path) const {
    return path.substr(mDirectory.string().length() + 1);
}

std::string DiskRecording::Call::Directory() const {
    return fs::path(NewName.empty() ? Name : NewName).parent_path();
}

void DiskRecording::OnOpen(int descriptor, const std::string& path, bool truncate) {
    mDescriptors.erase(descriptor);
    mDirectories.erase(descriptor);
    if (path == mDirectory || (IsInside(path) && fs::is_directory(path))) {
        mDirectories[descriptor] = path == mDirectory ? "" : NameOf(path);
        return;
    }
    if (!IsInside(path)) {
        return;
    }
    const auto [entry, isNew] = mNames.emplace(NameOf(path), mFileCount);
    if (isNew) {
        mCalls.push_back({Kind::kName, mFileCount++, entry->first});
    } else if (truncate) {
        mCalls.push_back({Kind::kTruncate, entry->second});
    }
    mDescriptors[descriptor] = entry->second;
}

void DiskRecording::OnWrite(int descriptor, const void* bytes, size_t count, int64_t offset) {
    const auto known = mDescriptors.find(descriptor);
    if (known != mDescriptors.end()) {
        mCalls.push_back({Kind::kWrite, known->second, "", "",
                          std::string(static_cast<const char*>(bytes), count), offset});
    }
}

void DiskRecording::OnTruncate(int descriptor, int64_t size) {
    const auto known = mDescriptors.find(descriptor);
    if (known != mDescriptors.end()) {
        mCalls.push_back({Kind::kTruncate, known->second, "", "", "", size});
    }
}

void DiskRecording::OnSync(int descriptor) {
    const auto file = mDescriptors.find(descriptor);
    const auto directory = mDirectories.find(descriptor);
    if (file != mDescriptors.end()) {
        mCalls.push_back({Kind::kSync, file->second});
    } else if (directory != mDirectories.end()) {
        mCalls.push_back({Kind::kSyncDirectory, -1, (fs::path(directory->second) / ".").string()});
    }
}

void DiskRecording::OnUnlink(const std::string& path) {
    if (IsInside(path) && mNames.erase(NameOf(path)) > 0) {
        mCalls.push_back({Kind::kUnlink, -1, NameOf(path)});
    }
}

void DiskRecording::OnRename(const std::string& from, const std::string& to) {
    if (IsInside(from) && IsInside(to)) {
        mCalls.push_back({Kind::kRename, -1, NameOf(from), NameOf(to)});
        Rename(mNames, mCalls.back());
    }
}

void DiskRecording::OnMakeDirectory(const std::string& path) {
    if (IsInside(path)) {
        mCalls.push_back({Kind::kMakeDirectory, -1, NameOf(path)});
    }
}

void DiskRecording::Rename(Names& names, const Call& call) {
    const auto file = names.find(call.Name);
    if (file != names.end()) {
        names[call.NewName] = file->second;
        names.erase(call.Name);
    }
}

std::vector<DiskRecording::Outcome> DiskRecording::Outcomes(size_t calls, unsigned fate) const {
    std::minstd_rand random(fate);
    const auto draw = [&] {
        const auto number = fate > 1 ? random() % 5 : 0;
        return fate == 1 || number > 2 ? Outcome::kWhole
               : number == 2           ? Outcome::kTorn
                                       : Outcome::kLost;
    };
    std::vector<Outcome> outcomes(calls, Outcome::kWhole);
    std::map<int, bool> isSynced;
    std::map<std::string, bool> isDirectorySynced;
    // Backwards, as a sync counts for what was before it.
    for (size_t i = calls; i-- > 0;) {
        const Call& call = mCalls[i];
        if (call.What == Kind::kSync) {
            isSynced[call.File] = true;
        } else if (call.What == Kind::kSyncDirectory) {
            isDirectorySynced[call.Directory()] = true;
        } else if (call.ChangesNames()) {
            // Names keep their order: where one is there, all before it are.
            bool& synced = isDirectorySynced[call.Directory()];
            synced = synced || draw() == Outcome::kWhole;
            outcomes[i] = synced ? Outcome::kWhole : Outcome::kLost;
        } else if (!isSynced[call.File]) {
            outcomes[i] = draw();
        }
    }
    return outcomes;
}

size_t DiskRecording::Replay(size_t calls, unsigned fate, const fs::path& target) const {
    const std::vector<Outcome> outcomes = Outcomes(calls, fate);
    std::vector<std::string> contents = mFirstContents;
    contents.resize(static_cast<size_t>(mFileCount));
    Names names = mFirstNames;
    std::set<std::string> directories = mFirstDirectories;
    size_t marks = 0;
    for (size_t i = 0; i < calls; ++i) {
        const Call& call = mCalls[i];
        marks += call.What == Kind::kMark ? 1 : 0;
        if (outcomes[i] == Outcome::kLost) {
            continue;
        }
        const auto offset = static_cast<size_t>(call.Offset);
        if (call.What == Kind::kName) {
            names[call.Name] = call.File;
        } else if (call.What == Kind::kUnlink) {
            names.erase(call.Name);
        } else if (call.What == Kind::kRename) {
            Rename(names, call);
        } else if (call.What == Kind::kMakeDirectory) {
            directories.insert(call.Name);
        } else if (call.What == Kind::kTruncate) {
            contents[static_cast<size_t>(call.File)].resize(offset);
        } else if (call.What == Kind::kWrite) {
            std::string& bytes = contents[static_cast<size_t>(call.File)];
            const bool isTorn = outcomes[i] == Outcome::kTorn;
            const size_t count = isTorn ? call.Bytes.length() / 2 : call.Bytes.length();
            bytes.resize(std::max(bytes.length(), offset + count));
            bytes.replace(offset, count, call.Bytes, 0, count);
        }
    }
    const auto isThere = [&](fs::path directory) {
        while (!directory.empty() && directories.count(directory.string()) != 0) {
            directory = directory.parent_path();
        }
        return directory.empty();
    };
    for (const auto& [name, file] : names) {
        // What lies in a directory that is lost is lost with it.
        if (!isThere(fs::path(name).parent_path())) {
            continue;
        }
        fs::create_directories((target / name).parent_path());
        std::ofstream(target / name, std::ios::binary) << contents[static_cast<size_t>(file)];
    }
    return marks;
}

namespace {

void MakeUnique(char* pattern) {
    static int count = 0;
    const std::string number = std::to_string(100000 + ++count);
    std::copy(number.begin(), number.end(), std::string_view(pattern).length() - 6 + pattern);
}

// Returns how many bytes were copied, as the system's calls do.
// Returns the path of a name in an open folder.
std::string WholePath(int folder, const std::string& name) {
    if (folder == AT_FDCWD || name.front() == '/') {
        return name;
    }
    std::array<char, 4096> path{};
    const ssize_t length =
        ::readlink(("/proc/self/fd/" + std::to_string(folder)).c_str(), path.data(), path.size());
    return std::string(path.data(), static_cast<size_t>(std::max<ssize_t>(length, 0))) + "/" + name;
}

ssize_t CopyRange(int from, off_t fromAt, int to, off_t toAt, size_t count) {
    std::string bytes(count, '\0');
    const ssize_t length = ::syscall(SYS_pread64, from, bytes.data(), count, fromAt);
    return length <= 0 ? length : ::pwrite(to, bytes.data(), static_cast<size_t>(length), toAt);
}

bool IsCopiedBy(DiskRecording::Copies copies) {
    return gRecording != nullptr && gRecording->GetCopies() == copies;
}

}  // namespace

// The calls of the system under their own names: what the program and its libraries link to. A call
// without O_CREAT brings no mode, and the system does not look at it either.
extern "C" {
int RecordOpen(const char* path, int flags, unsigned mode) __asm__("open");
int RecordOpen64(const char* path, int flags, unsigned mode) __asm__("open64");
int RecordOpenAt(int folder, const char* path, int flags, unsigned mode) __asm__("openat");
int RecordOpenAt64(int folder, const char* path, int flags, unsigned mode) __asm__("openat64");
int RecordMkostemp(char* pattern, int flags) __asm__("mkostemp");
int RecordMkostemp64(char* pattern, int flags) __asm__("mkostemp64");
ssize_t RecordWrite(int descriptor, const void* bytes, size_t count) __asm__("write");
ssize_t RecordPwrite(int descriptor, const void* bytes, size_t count, off_t at) __asm__("pwrite");
ssize_t RecordPwrite64(int descriptor, const void* bytes, size_t count,
                       off_t at) __asm__("pwrite64");
int RecordTruncate(int descriptor, off_t size) __asm__("ftruncate");
int RecordTruncate64(int descriptor, off_t size) __asm__("ftruncate64");
int RecordSync(int descriptor) __asm__("fsync");
int RecordDataSync(int descriptor) __asm__("fdatasync");
int RecordUnlink(const char* path) __asm__("unlink");
int RecordUnlinkAt(int folder, const char* path, int flags) __asm__("unlinkat");
int RecordRemove(const char* path) __asm__("remove");
int RecordRename(const char* from, const char* to) __asm__("rename");
int RecordRenameAt(int fromAt, const char* from, int toAt, const char* to) __asm__("renameat");
int RecordRename2(int fromAt, const char* from, int toAt, const char* to,
                  unsigned flags) __asm__("renameat2");
int RecordMakeDirectory(const char* path, mode_t mode) __asm__("mkdir");
char* RecordMakeTemporaryDirectory(char* pattern) __asm__("mkdtemp");
int RecordControl(int descriptor, unsigned long request, void* argument) __asm__("ioctl");
ssize_t RecordCopyRange(int from, off_t* fromAt, int to, off_t* toAt, size_t count,
                        unsigned flags) __asm__("copy_file_range");

int RecordOpenAt(int folder, const char* path, int flags, unsigned mode) {
    if ((flags & O_CREAT) == 0 && gRecording == nullptr) {
        return static_cast<int>(::syscall(SYS_openat, folder, path, flags, mode));
    }
    const auto note = [&](DiskRecording& recording, long descriptor) {
        recording.OnOpen(static_cast<int>(descriptor), WholePath(folder, path),
                         (flags & O_TRUNC) != 0);
    };
    return static_cast<int>(Call(note, SYS_openat, folder, path, flags, mode));
}
int RecordOpenAt64(int folder, const char* path, int flags, unsigned mode) {
    return RecordOpenAt(folder, path, flags, mode);
}
int RecordOpen(const char* path, int flags, unsigned mode) {
    return RecordOpenAt(AT_FDCWD, path, flags, mode);
}
int RecordOpen64(const char* path, int flags, unsigned mode) {
    return RecordOpen(path, flags, mode);
}
int RecordMkostemp(char* pattern, int flags) {
    MakeUnique(pattern);
    return RecordOpen(pattern, flags | O_RDWR | O_CREAT | O_EXCL, 0600);
}
int RecordMkostemp64(char* pattern, int flags) {
    return RecordMkostemp(pattern, flags);
}
ssize_t RecordPwrite(int descriptor, const void* bytes, size_t count, off_t at) {
    const auto note = [&](DiskRecording& recording, long written) {
        recording.OnWrite(descriptor, bytes, static_cast<size_t>(written), at);
    };
    return Call(note, SYS_pwrite64, descriptor, bytes, count, at);
}
ssize_t RecordPwrite64(int descriptor, const void* bytes, size_t count, off_t at) {
    return RecordPwrite(descriptor, bytes, count, at);
}
ssize_t RecordWrite(int descriptor, const void* bytes, size_t count) {
    const off_t at = gRecording == nullptr ? 0 : ::lseek(descriptor, 0, SEEK_CUR);
    const auto note = [&](DiskRecording& recording, long written) {
        recording.OnWrite(descriptor, bytes, static_cast<size_t>(written), at);
    };
    return Call(note, SYS_write, descriptor, bytes, count);
}
int RecordTruncate(int descriptor, off_t size) {
    const auto note = [&](DiskRecording& recording, long) {
        recording.OnTruncate(descriptor, size);
    };
    return static_cast<int>(Call(note, SYS_ftruncate, descriptor, size));
}
int RecordTruncate64(int descriptor, off_t size) {
    return RecordTruncate(descriptor, size);
}
int RecordSync(int descriptor) {
    const auto note = [&](DiskRecording& recording, long) { recording.OnSync(descriptor); };
    return static_cast<int>(Call(note, SYS_fsync, descriptor));
}
int RecordDataSync(int descriptor) {
    return RecordSync(descriptor);
}
int RecordUnlink(const char* path) {
    const auto note = [&](DiskRecording& recording, long) { recording.OnUnlink(path); };
    return static_cast<int>(Call(note, SYS_unlink, path));
}
int RecordUnlinkAt(int folder, const char* path, int flags) {
    const auto note = [&](DiskRecording& recording, long) {
        recording.OnUnlink(WholePath(folder, path));
    };
    return static_cast<int>(Call(note, SYS_unlinkat, folder, path, flags));
}
int RecordRemove(const char* path) {
    const int result = RecordUnlink(path);
    return result == 0 ? 0 : static_cast<int>(::syscall(SYS_rmdir, path));
}
int RecordRename(const char* from, const char* to) {
    const auto note = [&](DiskRecording& recording, long) { recording.OnRename(from, to); };
    return static_cast<int>(Call(note, SYS_rename, from, to));
}
int RecordRenameAt(int fromAt, const char* from, int toAt, const char* to) {
    return RecordRename2(fromAt, from, toAt, to, 0);
}
int RecordRename2(int fromAt, const char* from, int toAt, const char* to, unsigned flags) {
    const auto note = [&](DiskRecording& recording, long) {
        recording.OnRename(WholePath(fromAt, from), WholePath(toAt, to));
    };
    return static_cast<int>(Call(note, SYS_renameat2, fromAt, from, toAt, to, flags));
}
int RecordMakeDirectory(const char* path, mode_t mode) {
    const auto note = [&](DiskRecording& recording, long) { recording.OnMakeDirectory(path); };
    return static_cast<int>(Call(note, SYS_mkdir, path, mode));
}
char* RecordMakeTemporaryDirectory(char* pattern) {
    // Another run of these tests may have the name.
    int result = 0;
    do {
        MakeUnique(pattern);
        result = RecordMakeDirectory(pattern, 0700);
    } while (result != 0 && errno == EEXIST);
    return result == 0 ? pattern : nullptr;
}
// Shared blocks are made here, as few disks can: the bytes are the same, and as unsafe until a
// sync.
int RecordControl(int descriptor, unsigned long request, void* argument) {
    if (request != FICLONE || gRecording == nullptr) {
        return static_cast<int>(::syscall(SYS_ioctl, descriptor, request, argument));
    }
    struct stat status {};
    const auto source = static_cast<int>(reinterpret_cast<intptr_t>(argument));
    if (!IsCopiedBy(DiskRecording::Copies::kShared) || ::fstat(source, &status) != 0) {
        errno = EOPNOTSUPP;
        return -1;
    }
    const auto size = static_cast<size_t>(status.st_size);
    return CopyRange(source, 0, descriptor, 0, size) == status.st_size ? 0 : -1;
}
ssize_t RecordCopyRange(int from, off_t* fromAt, int to, off_t* toAt, size_t count,
                        unsigned flags) {
    if (gRecording == nullptr) {
        return ::syscall(SYS_copy_file_range, from, fromAt, to, toAt, count, flags);
    }
    if (!IsCopiedBy(DiskRecording::Copies::kByTheSystem)) {
        errno = EXDEV;
        return -1;
    }
    // In pieces, as the system may.
    const off_t at = ::lseek(to, 0, SEEK_CUR);
    const ssize_t copied = CopyRange(from, *fromAt, to, at, std::min<size_t>(count, 1 << 14));
    if (copied > 0) {
        *fromAt += copied;
        ::lseek(to, copied, SEEK_CUR);
    }
    return copied;
}
}
