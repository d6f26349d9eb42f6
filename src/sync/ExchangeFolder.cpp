#include "sync/ExchangeFolder.h"

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cinttypes>
#include <cstdio>
#include <iterator>
#include <memory>
#include <tuple>
#include <utility>

#include "media/ContentHash.h"

namespace {

struct CloseDirectory {
    void operator()(DIR* directory) const { ::closedir(directory); }
};

auto TupleOf(const ExchangeFileId& id) {
    return std::tie(id.Machine, id.Number, id.IsWhole, id.IsMedia);
}

bool IsSameFile(const struct stat& one, const struct stat& other) {
    const auto isSame = [](const timespec& first, const timespec& second) {
        return first.tv_sec == second.tv_sec && first.tv_nsec == second.tv_nsec;
    };
    return one.st_dev == other.st_dev && one.st_ino == other.st_ino &&
           one.st_size == other.st_size && isSame(one.st_mtim, other.st_mtim) &&
           isSame(one.st_ctim, other.st_ctim);
}

bool ComesBefore(const FoundFile& one, const FoundFile& other) {
    const auto rank = [](const FoundFile& file) {
        // Files without a header come first, the whole ones of each identity before the others.
        const bool isWhole = file.State == FileState::kWhole;
        return std::make_tuple(IdOf(file.Header), !isWhole, !file.IsChecked);
    };
    const auto first = rank(one);
    const auto second = rank(other);
    return first < second || (!(second < first) && one.Path < other.Path);
}

// Leaves one of each content, and nothing but that of what is there whole. The files are sorted.
void DropCopies(std::vector<FoundFile>& files) {
    std::vector<FoundFile> kept;
    size_t group = 0;
    for (FoundFile& file : files) {
        if (kept.empty() || !(IdOf(kept.back().Header) == IdOf(file.Header))) {
            group = kept.size();
        }
        const bool hasIdentity = file.Header.Machine != 0;
        const bool isRedundant =
            hasIdentity && std::any_of(kept.begin() + static_cast<std::ptrdiff_t>(group),
                                       kept.end(), [&file](FoundFile& other) {
                                           if (other.State != FileState::kWhole) {
                                               return false;
                                           }
                                           const bool isRival = file.State == FileState::kWhole &&
                                                                file.Checksum != other.Checksum;
                                           if (isRival && file.IsChecked && other.IsChecked) {
                                               file.IsDisputed = other.IsDisputed = true;
                                           }
                                           return !isRival;
                                       });
        if (!isRedundant) {
            kept.push_back(std::move(file));
        }
    }
    files = std::move(kept);
}

int Rename(const std::filesystem::path& from, const std::filesystem::path& to) {
    return ::rename(from.c_str(), to.c_str()) == 0 ? 0 : errno;
}

// Gives a file its name unless something has that name already: EEXIST.
int RenameWithoutReplacing(const std::filesystem::path& from, const std::filesystem::path& to) {
    if (::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) {
        return 0;
    }
    if (errno != EINVAL && errno != ENOSYS && errno != ENOTSUP) {
        return errno;
    }
    // Some file systems do not know it. Nobody else makes files of this name.
    struct stat status {};
    if (::lstat(to.c_str(), &status) == 0) {
        return EEXIST;
    }
    return errno == ENOENT ? Rename(from, to) : errno;
}

// Decides about a name that is taken. A file with the same bytes is the one that was to be put
// there; a spoiled one, a link or a device gives way.
int TakeName(int file, const std::filesystem::path& aside, const std::filesystem::path& place) {
    int refused = 0;
    const FileDescriptor present = OpenPlainFile(AT_FDCWD, place.c_str(), refused);
    if (!present.IsOpen()) {
        return refused == ENODEV ? Rename(aside, place) : EEXIST;
    }
    if (CompareBytes(file, present.Get()) == 0) {
        ::unlink(aside.c_str());
        return 0;
    }
    const FileState state = SurveyExchangeFile(present.Get(), true, {}, nullptr).State;
    const bool isSpoiled = state == FileState::kIncomplete || state == FileState::kDamaged;
    return isSpoiled ? Rename(aside, place) : EEXIST;
}

bool HasMediaName(const std::string& name) {
    return name.size() > kMediaFileSuffix.size() &&
           name.compare(name.size() - kMediaFileSuffix.size(), std::string::npos,
                        kMediaFileSuffix) == 0;
}

// The pictures and sounds are read when they are taken.
bool IsRead(const ExchangeHeader& header,
            const std::function<bool(const ExchangeHeader&)>& isWanted) {
    return !header.Media.has_value() && isWanted(header);
}

}  // namespace

bool operator<(const ExchangeFileId& one, const ExchangeFileId& other) {
    return TupleOf(one) < TupleOf(other);
}

bool operator==(const ExchangeFileId& one, const ExchangeFileId& other) {
    return TupleOf(one) == TupleOf(other);
}

ExchangeFileId IdOf(const ExchangeHeader& header) {
    return {header.Machine, header.Number, header.IsWhole, header.Media.has_value()};
}

std::string ExchangeFileName(const ExchangeFileId& id) {
    char number[24];
    std::snprintf(number, sizeof number, "%010" PRId64, id.Number);
    return "velomind-" + HexText(id.Machine) + '-' + number +
           (id.IsMedia   ? std::string(kMediaFileSuffix)
            : id.IsWhole ? ".whole"
                         : ".changes");
}

uint64_t StatusSum(const std::string& name, const struct stat& status) {
    const int64_t parts[] = {static_cast<int64_t>(status.st_ino), int64_t{status.st_size},
                             int64_t{status.st_mtim.tv_sec},      int64_t{status.st_mtim.tv_nsec},
                             int64_t{status.st_ctim.tv_sec},      int64_t{status.st_ctim.tv_nsec}};
    ExchangeChecksum sum;
    sum.Add(name);
    sum.Add({static_cast<const char*>(static_cast<const void*>(parts)), sizeof parts});
    return sum.Get();
}

void ExchangeFolder::RememberMedia(uint64_t sum, std::function<KnownFiles()> load) {
    mRememberedSum = sum;
    mLoad = std::move(load);
}

int ExchangeFolder::List(std::vector<FoundFile>& files,
                         const std::function<bool(const ExchangeHeader&)>& isWanted,
                         const std::atomic<bool>* cancelled) {
    mMedia.clear();
    int error = Scan(files, isWanted, cancelled);
    if (error == 0 && (mMediaSum != mRememberedSum || !isWanted)) {
        error = LookAtMedia(files, isWanted, cancelled);
    }
    if (error != 0) {
        files.clear();
        return error;
    }
    Sort(files);
    return 0;
}

const std::vector<FoundFile>& ExchangeFolder::GetMedia() {
    if (!mLeft.empty()) {
        std::vector<FoundFile> files = std::move(mMedia);
        mMedia.clear();
        LookAtMedia(
            files, [](const ExchangeHeader&) { return false; }, nullptr);
        Sort(files);
    }
    return mMedia;
}

// Puts the files in order, and the whole pictures and sounds apart.
void ExchangeFolder::Sort(std::vector<FoundFile>& files) {
    std::sort(files.begin(), files.end(), ComesBefore);
    DropCopies(files);
    const auto isOther = [](const FoundFile& file) {
        return file.State != FileState::kWhole || !file.Header.Media.has_value();
    };
    const auto media = std::stable_partition(files.begin(), files.end(), isOther);
    std::move(media, files.end(), std::back_inserter(mMedia));
    files.erase(media, files.end());
    const auto isSpoiled = [](const FoundFile& file) {
        return file.State != FileState::kWhole &&
               (file.Header.Media.has_value() || HasMediaName(file.Path.filename()));
    };
    mHasSpoiled = mHasSpoiled || std::any_of(files.begin(), files.end(), isSpoiled);
}

int ExchangeFolder::Scan(std::vector<FoundFile>& files,
                         const std::function<bool(const ExchangeHeader&)>& isWanted,
                         const std::atomic<bool>* cancelled) {
    files.clear();
    mLeft.clear();
    mMediaSum = 0;
    mHasSpoiled = false;
    const std::unique_ptr<DIR, CloseDirectory> directory(::opendir(mPath.c_str()));
    if (directory == nullptr) {
        return errno;
    }
    KnownFiles former = std::exchange(mKnown, {});
    for (;;) {
        errno = 0;
        const dirent* const entry = ::readdir(directory.get());
        if (entry == nullptr) {
            break;
        }
        const std::string name = entry->d_name;
        struct stat status {};
        if (name.front() == '.' ||
            ::fstatat(::dirfd(directory.get()), name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0 ||
            !S_ISREG(status.st_mode)) {
            continue;
        }
        if (const auto found = former.find(name); found != former.end()) {
            mKnown.insert(former.extract(found));
        }
        if (HasMediaName(name)) {
            mMediaSum += StatusSum(name, status);
            mLeft.emplace(name, status);
        } else if (const int error = TakeUp(name, status, files, isWanted, cancelled)) {
            return error;
        }
    }
    return errno;
}

int ExchangeFolder::LookAtMedia(std::vector<FoundFile>& files,
                                const std::function<bool(const ExchangeHeader&)>& isWanted,
                                const std::atomic<bool>* cancelled) {
    if (mLoad) {
        KnownFiles loaded = std::exchange(mLoad, nullptr)();
        for (const auto& [name, status] : mLeft) {
            if (const auto found = loaded.find(name); found != loaded.end()) {
                // What was found out here is newer.
                mKnown.insert(loaded.extract(found));
            }
        }
    }
    for (const auto& [name, status] : std::exchange(mLeft, {})) {
        if (const int error = TakeUp(name, status, files, isWanted, cancelled)) {
            return error;
        }
    }
    return 0;
}

// Takes a file into the list, unless it is foreign, by what is known of it or by a look.
int ExchangeFolder::TakeUp(const std::string& name, const struct stat& status,
                           std::vector<FoundFile>& files,
                           const std::function<bool(const ExchangeHeader&)>& isWanted,
                           const std::atomic<bool>* cancelled) {
    const auto isEnough = [&](const FoundFile& known) {
        return known.IsChecked || (isWanted && !IsRead(known.Header, isWanted));
    };
    const auto known = mKnown.find(name);
    const bool isKnown = known != mKnown.end() && IsSameFile(known->second.Status, status) &&
                         isEnough(known->second.File);
    FoundFile file = isKnown ? known->second.File : Look(name, status, isWanted, cancelled);
    file.Path = mPath / name;
    if (file.State == FileState::kUnreadable && file.Error == ECANCELED) {
        return ECANCELED;
    }
    // A file under way may be finished within one tick of the clock that files get their times
    // from, so only whole ones are remembered.
    if (!isKnown && file.State == FileState::kWhole) {
        mKnown[name] = KnownFile{status, file};
    } else if (!isKnown && known != mKnown.end()) {
        mKnown.erase(known);
    }
    if (file.State != FileState::kForeign) {
        files.push_back(std::move(file));
    }
    return 0;
}

// The ends of such a file are whole, which is all that a look at them can tell.
void ExchangeFolder::NoteDamaged(const FoundFile& file) {
    const auto known = mKnown.find(file.Path.filename());
    if (known != mKnown.end()) {
        known->second.File.State = FileState::kDamaged;
        known->second.File.IsChecked = true;
    }
}

FoundFile ExchangeFolder::Look(const std::string& name, const struct stat& status,
                               const std::function<bool(const ExchangeHeader&)>& isWanted,
                               const std::atomic<bool>* cancelled) const {
    FoundFile found;
    found.Bytes = status.st_size;
    int error = 0;
    const FileDescriptor file = OpenPlainFile(AT_FDCWD, (mPath / name).c_str(), error);
    if (!file.IsOpen()) {
        // It went, or something else took its place, since the folder was read.
        const bool isOther = error == ENODEV || error == ENOENT;
        found.State = isOther ? FileState::kForeign : FileState::kUnreadable;
        found.Error = error;
        return found;
    }
    // Only a file whose header is whole and not wanted is left unchecked.
    bool isWhole = true;
    const auto want = [&](const ExchangeHeader& header) {
        isWhole = !isWanted || IsRead(header, isWanted);
        return isWhole;
    };
    static_cast<ExchangeSurvey&>(found) =
        SurveyExchangeFile(file.Get(), LooksLikeExchangeName(name), want, cancelled);
    found.IsChecked = isWhole;
    return found;
}

int ExchangeFolder::Put(const ExchangeFileId& id, std::string_view bytes) {
    return PutBy(id, [bytes](int target) {
        if (const int error = SinkTo(target)(bytes)) {
            return error;
        }
        return ::fsync(target) == 0 ? 0 : errno;
    });
}

int ExchangeFolder::PutFrom(const ExchangeFileId& id, const std::filesystem::path& file) {
    int error = 0;
    const FileDescriptor source = OpenPlainFile(AT_FDCWD, file.c_str(), error);
    if (!source.IsOpen()) {
        return error;
    }
    return PutBy(id, [&source](int target) { return CopyWholeFile(source.Get(), target); });
}

int ExchangeFolder::PutMedia(const ExchangeHeader& header, int source,
                             const std::atomic<bool>& isCancelled) {
    return PutBy(IdOf(header), [&](int target) {
        ExchangeWriter writer(header, SinkTo(target));
        ContentHash hash;
        std::vector<char> block(size_t{1} << 16);
        for (off_t place = 0;;) {
            const ssize_t count = ::pread(source, block.data(), block.size(), place);
            if (count == 0) {
                break;
            }
            if (count < 0) {
                return errno;
            }
            if (isCancelled) {
                return ECANCELED;
            }
            const std::string_view bytes(block.data(), static_cast<size_t>(count));
            hash.Add(bytes);
            writer.AddBytes(bytes);
            place += count;
        }
        const bool isSame =
            writer.GetCount() == header.Media->Bytes && hash.Get() == header.Media->Content;
        if (const int error = writer.Finish(); error != 0 || !isSame) {
            return error == 0 ? ESTALE : error;
        }
        return ::fsync(target) == 0 ? 0 : errno;
    });
}

int ExchangeFolder::PutBy(const ExchangeFileId& id, const std::function<int(int)>& write) {
    // One name for all, so that no more than one is left by kills.
    const std::filesystem::path aside = mPath / (".velomind-" + HexText(id.Machine) + ".tmp");
    const std::filesystem::path place = mPath / ExchangeFileName(id);
    ::unlink(aside.c_str());
    const FileDescriptor file(
        ::open(aside.c_str(), O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0666));
    if (!file.IsOpen()) {
        // What cannot be unlinked is a folder.
        return errno == EEXIST ? EISDIR : errno;
    }
    int error = write(file.Get());
    if (error == 0) {
        error = RenameWithoutReplacing(aside, place);
    }
    if (error == EEXIST) {
        error = TakeName(file.Get(), aside, place);
    }
    if (error != 0) {
        ::unlink(aside.c_str());
        return error;
    }
    if (!id.IsMedia) {
        SyncDirectory(place);
    }
    return 0;
}

int ExchangeFolder::Remove(const std::vector<ExchangeFileId>& own) {
    if (own.empty()) {
        return 0;
    }
    int first = 0;
    const auto remove = [&first](const std::filesystem::path& path) {
        if (::unlink(path.c_str()) != 0 && errno != ENOENT && first == 0) {
            first = errno;
        }
    };
    const auto isOwn = [&own](const ExchangeHeader& header) {
        return std::find(own.begin(), own.end(), IdOf(header)) != own.end();
    };
    for (const ExchangeFileId& id : own) {
        remove(mPath / ExchangeFileName(id));
    }
    std::vector<FoundFile> files;
    int error = Scan(files, isOwn, nullptr);
    if (error == 0 &&
        std::any_of(own.begin(), own.end(), [](const ExchangeFileId& id) { return id.IsMedia; })) {
        error = LookAtMedia(files, isOwn, nullptr);
    }
    for (const FoundFile& file : files) {
        if (file.State == FileState::kWhole && isOwn(file.Header)) {
            remove(file.Path);
        }
    }
    SyncDirectory(mPath / "any");
    return first == 0 ? error : first;
}
