#include "reviews/LogFile.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <thread>
#include <utility>

#include "files/StoreFiles.h"

int LockFile(int descriptor) {
    // A score waits for the lock, so a program that never gives it back must not stop study.
    constexpr std::chrono::milliseconds kPatience{200};
    const auto start = std::chrono::steady_clock::now();
    while (::flock(descriptor, LOCK_EX | LOCK_NB) != 0) {
        if (errno != EWOULDBLOCK) {
            return errno;
        }
        if (std::chrono::steady_clock::now() - start > kPatience) {
            return EBUSY;
        }
        std::this_thread::sleep_for(std::chrono::microseconds(100));
    }
    return 0;
}

void UnlockFile(int descriptor) {
    ::flock(descriptor, LOCK_UN);
}

bool IsFileAt(const std::string& path, const struct stat& status) {
    struct stat named {};
    return ::stat(path.c_str(), &named) == 0 && status.st_dev == named.st_dev &&
           status.st_ino == named.st_ino;
}

std::string StoreOfLog(const std::string& logPath) {
    return logPath.substr(0,
                          logPath.size() - std::min(logPath.size(), std::strlen(kReviewLogSuffix)));
}

mode_t ModeOfStore(const std::string& storePath) {
    struct stat status {};
    return ::stat(storePath.c_str(), &status) == 0 ? status.st_mode & 0666 : 0600;
}

int OpenToAppend(const std::string& path, const std::string& storePath, FileDescriptor& file,
                 struct stat& status) {
    constexpr int kFlags = O_RDWR | O_APPEND | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
    // Another file may take the place of this one before it is locked.
    for (int i = 0; i < 10; ++i) {
        file = FileDescriptor(::open(path.c_str(), kFlags));
        if (!file.IsOpen() && errno == ENOENT) {
            file = FileDescriptor(::open(path.c_str(), kFlags | O_CREAT, ModeOfStore(storePath)));
        }
        if (!file.IsOpen()) {
            return errno;
        }
        const bool isLocked = LockFile(file.Get()) == 0;
        if (::fstat(file.Get(), &status) != 0) {
            return errno;
        }
        if (!S_ISREG(status.st_mode)) {
            return EINVAL;
        }
        if (!isLocked || IsFileAt(path, status)) {
            break;
        }
    }
    return 0;
}

int AppendLines(const std::string& path, const std::string& storePath, const char* heading,
                std::string lines) {
    FileDescriptor file;
    struct stat status {};
    if (const int error = OpenToAppend(path, storePath, file, status)) {
        return error;
    }
    char last = '\n';
    if (status.st_size == 0) {
        lines.insert(0, heading);
    } else if (::pread(file.Get(), &last, 1, status.st_size - 1) != 1) {
        return EIO;
    }
    if (last != '\n') {
        lines.insert(0, 1, '\n');
    }
    const ssize_t written = ::write(file.Get(), lines.data(), lines.size());
    if (written < 0) {
        return errno;
    }
    return written == static_cast<ssize_t>(lines.size()) ? 0 : ENOSPC;
}
