#include "sync/ExchangeFolder.h"

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cinttypes>
#include <cstdio>
#include <memory>
#include <tuple>

namespace {

struct CloseDirectory {
    void operator()(DIR* directory) const { ::closedir(directory); }
};

auto TupleOf(const ExchangeFileId& id) {
    return std::tie(id.Machine, id.Number, id.IsWhole);
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

}  // namespace

bool operator<(const ExchangeFileId& one, const ExchangeFileId& other) {
    return TupleOf(one) < TupleOf(other);
}

bool operator==(const ExchangeFileId& one, const ExchangeFileId& other) {
    return TupleOf(one) == TupleOf(other);
}

ExchangeFileId IdOf(const ExchangeHeader& header) {
    return {header.Machine, header.Number, header.IsWhole};
}

std::string ExchangeFileName(const ExchangeFileId& id) {
    char number[24];
    std::snprintf(number, sizeof number, "%010" PRId64, id.Number);
    return "velomind-" + HexText(id.Machine) + '-' + number + (id.IsWhole ? ".whole" : ".changes");
}

int ExchangeFolder::List(std::vector<FoundFile>& files,
                         const std::function<bool(const ExchangeHeader&)>& isWanted,
                         const std::atomic<bool>* cancelled) {
    if (const int error = Scan(files, isWanted, cancelled)) {
        return error;
    }
    std::sort(files.begin(), files.end(), ComesBefore);
    DropCopies(files);
    return 0;
}

int ExchangeFolder::Scan(std::vector<FoundFile>& files,
                         const std::function<bool(const ExchangeHeader&)>& isWanted,
                         const std::atomic<bool>* cancelled) {
    files.clear();
    const std::unique_ptr<DIR, CloseDirectory> directory(::opendir(mPath.c_str()));
    if (directory == nullptr) {
        return errno;
    }
    const int folder = ::dirfd(directory.get());
    std::map<std::string, Known> known;
    for (;;) {
        errno = 0;
        const dirent* const entry = ::readdir(directory.get());
        if (entry == nullptr) {
            break;
        }
        const std::string name = entry->d_name;
        struct stat status {};
        if (name.front() == '.' ||
            ::fstatat(folder, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0 ||
            !S_ISREG(status.st_mode)) {
            continue;
        }
        const auto found = mKnown.find(name);
        const bool isKnown =
            found != mKnown.end() && IsSameFile(found->second.Status, status) &&
            (found->second.File.IsChecked || (isWanted && !isWanted(found->second.File.Header)));
        FoundFile file =
            isKnown ? found->second.File : Look(folder, name, status, isWanted, cancelled);
        if (file.State == FileState::kUnreadable && file.Error == ECANCELED) {
            files.clear();
            return ECANCELED;
        }
        // A file under way may be finished within one tick of the clock that files get their times
        // from, so only whole ones are remembered.
        if (file.State == FileState::kWhole) {
            known.emplace(name, Known{status, file});
        }
        if (file.State != FileState::kForeign) {
            files.push_back(std::move(file));
        }
    }
    if (errno != 0) {
        const int error = errno;
        files.clear();
        return error;
    }
    mKnown = std::move(known);
    return 0;
}

FoundFile ExchangeFolder::Look(int folder, const std::string& name, const struct stat& status,
                               const std::function<bool(const ExchangeHeader&)>& isWanted,
                               const std::atomic<bool>* cancelled) const {
    FoundFile found;
    found.Path = mPath / name;
    found.Bytes = status.st_size;
    int error = 0;
    const FileDescriptor file = OpenPlainFile(folder, name.c_str(), error);
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
        isWhole = !isWanted || isWanted(header);
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
    SyncDirectory(place);
    return 0;
}

int ExchangeFolder::Remove(const std::vector<ExchangeFileId>& own) {
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
    const int error = Scan(files, isOwn, nullptr);
    for (const FoundFile& file : files) {
        if (file.State == FileState::kWhole && isOwn(file.Header)) {
            remove(file.Path);
        }
    }
    SyncDirectory(mPath / "any");
    return first == 0 ? error : first;
}
