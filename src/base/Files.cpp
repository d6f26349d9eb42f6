#include "base/Files.h"

#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <wx/filename.h>
#include <wx/intl.h>
#include <wx/log.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <system_error>

#include "base/Unicode.h"

namespace {

using Block = std::array<char, 1 << 16>;

// Returns the number of bytes read, fewer than a block only at the end of the file; negative on an
// error.
ssize_t ReadBlock(int file, Block& block) {
    size_t filled = 0;
    while (filled < block.size()) {
        const ssize_t count = ::read(file, block.data() + filled, block.size() - filled);
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count < 0) {
            return -1;
        }
        if (count == 0) {
            break;
        }
        filled += static_cast<size_t>(count);
    }
    return static_cast<ssize_t>(filled);
}

int WriteBlock(int file, const Block& block, size_t size) {
    return WriteAll(file, {block.data(), size});
}

}  // namespace

std::filesystem::path ToPath(const wxString& path) {
    return std::filesystem::u8path(ToUtf8(path));
}

wxString FromPath(const std::filesystem::path& path) {
    return FromUtf8(path.u8string());
}

wxString SystemErrorText(int error) {
    switch (error) {
        case 0:
            return _("no reason was given");
        case EILSEQ:
            return _("it is no whole store of flash cards");
        case EBUSY:
        case ENOTSUP:
            return _("another program is using the file");
        case EINVAL:
            return _("no file can have this name");
        case ENODEV:
            return _("it is no plain file");
        case EIO:
            return _("the file could not be read or written");
        case ECANCELED:
            return _("it was broken off");
        default:
            return wxSysErrorMsgStr(static_cast<unsigned long>(error));
    }
}

void SyncDirectory(const std::filesystem::path& file) {
    const FileDescriptor directory(
        ::open(file.parent_path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (directory.IsOpen()) {
        ::fsync(directory.Get());
    }
}

int CopyBytes(int source, int target) {
    Block block;
    for (;;) {
        const ssize_t count = ReadBlock(source, block);
        if (count < 0) {
            return errno;
        }
        if (count == 0) {
            return ::fsync(target) == 0 ? 0 : errno;
        }
        if (const int error = WriteBlock(target, block, static_cast<size_t>(count))) {
            return error;
        }
    }
}

int CopyWholeFile(int source, int target) {
    struct stat status {};
    if (::fstat(source, &status) != 0) {
        return errno;
    }
    off_t copied = 0;
    if (::ioctl(target, FICLONE, source) == 0) {
        copied = status.st_size;
    }
    while (copied < status.st_size) {
        const auto rest = static_cast<size_t>(status.st_size - copied);
        if (::copy_file_range(source, &copied, target, nullptr, rest, 0) <= 0) {
            break;
        }
    }
    // Copies plainly where neither is offered, and what was added meanwhile.
    if (::lseek(source, copied, SEEK_SET) < 0 || ::lseek(target, copied, SEEK_SET) < 0) {
        return errno;
    }
    return CopyBytes(source, target);
}

int CopyFirstBytes(int source, int target, int64_t bytes) {
    if (::lseek(source, 0, SEEK_SET) < 0) {
        return errno;
    }
    Block block;
    while (bytes > 0) {
        const ssize_t count = ReadBlock(source, block);
        if (count <= 0) {
            return count < 0 ? errno : EIO;
        }
        const auto part = static_cast<size_t>(std::min<int64_t>(count, bytes));
        if (const int error = WriteBlock(target, block, part)) {
            return error;
        }
        bytes -= static_cast<int64_t>(part);
    }
    return ::fsync(target) == 0 ? 0 : errno;
}

int CopyPart(int source, int64_t begin, int64_t end, int target) {
    while (begin < end) {
        const auto rest = static_cast<size_t>(end - begin);
        off_t from = begin;
        if (::copy_file_range(source, &from, target, nullptr, rest, 0) <= 0) {
            break;
        }
        begin = from;
    }
    Block block;
    while (begin < end) {
        const auto wanted = std::min(block.size(), static_cast<size_t>(end - begin));
        const ssize_t count = ::pread(source, block.data(), wanted, begin);
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count <= 0) {
            return count < 0 ? errno : EIO;
        }
        if (const int error = WriteBlock(target, block, static_cast<size_t>(count))) {
            return error;
        }
        begin += count;
    }
    return 0;
}

int WriteAll(int target, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t count = ::write(target, bytes.data(), bytes.size());
        if (count < 0 && errno != EINTR) {
            return errno;
        }
        bytes.remove_prefix(static_cast<size_t>(std::max<ssize_t>(count, 0)));
    }
    return 0;
}

int CompareBytes(int source, int target) {
    // Drops the cached pages, so that what is read back comes from the disk.
    ::posix_fadvise(target, 0, 0, POSIX_FADV_DONTNEED);
    if (::lseek(source, 0, SEEK_SET) < 0 || ::lseek(target, 0, SEEK_SET) < 0) {
        return errno;
    }
    Block expected;
    Block found;
    for (;;) {
        const ssize_t count = ReadBlock(source, expected);
        const ssize_t other = ReadBlock(target, found);
        if (count < 0 || other < 0) {
            return errno;
        }
        if (count != other ||
            !std::equal(expected.begin(), expected.begin() + count, found.begin())) {
            return EIO;
        }
        if (count == 0) {
            return 0;
        }
    }
}

bool FileBeginsWith(const std::filesystem::path& file, std::string_view mark) {
    std::string bytes(mark.size(), ' ');
    std::ifstream stream(file, std::ios::binary);
    return stream.read(bytes.data(), static_cast<std::streamsize>(bytes.size())) && bytes == mark;
}

int CopyToNewFile(const std::filesystem::path& from, const std::filesystem::path& to) {
    const FileDescriptor source(::open(from.c_str(), O_RDONLY | O_CLOEXEC));
    if (!source.IsOpen()) {
        return errno;
    }
    const FileDescriptor target(::open(to.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
    return target.IsOpen() ? CopyWholeFile(source.Get(), target.Get()) : errno;
}

std::filesystem::path TemporaryPlace() {
    return ToPath(wxFileName::GetTempDir());
}

TemporaryDirectory::TemporaryDirectory(const std::filesystem::path& stem)
    : mPath(stem.string() + "-XXXXXX") {
    mError = ::mkdtemp(mPath.data()) == nullptr ? errno : 0;
}

TemporaryDirectory::~TemporaryDirectory() {
    std::error_code ignored;
    if (mError == 0) {
        std::filesystem::remove_all(mPath, ignored);
    }
}

wxString TemporaryDirectory::Path(const wxString& name) const {
    return FromUtf8(mPath) + "/" + name;
}
