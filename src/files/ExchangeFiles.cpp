#include "files/ExchangeFiles.h"

#include <fcntl.h>
#include <sys/file.h>

#include <cerrno>
#include <system_error>
#include <vector>

#include "files/StoreFiles.h"
#include "store/StoreCompanions.h"

namespace {

namespace fs = std::filesystem;

bool HasFile(const fs::path& store, const char* suffix) {
    std::error_code error;
    return fs::exists(Beside(store, suffix), error);
}

void MoveFile(const fs::path& from, const fs::path& to) {
    std::error_code error;
    fs::remove(to, error);
    fs::rename(from, to, error);
    if (error == std::errc::cross_device_link) {
        if (CopyToNewFile(from, to) == 0) {
            fs::remove(from, error);
        } else {
            fs::remove(to, error);
        }
    }
}

}  // namespace

int ExchangeLock::Take(const fs::path& store) {
    // A first exchange has its lock before all else.
    if (!HasFile(store, kExchangeSuffix) && !HasFile(store, kExchangeLockSuffix)) {
        return 0;
    }
    mFile = FileDescriptor(::open(Beside(store, kExchangeLockSuffix).c_str(),
                                  O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600));
    if (!mFile.IsOpen()) {
        return errno;
    }
    return ::flock(mFile.Get(), LOCK_EX | LOCK_NB) == 0 ? 0 : EBUSY;
}

ReplacedStoreMark::ReplacedStoreMark(const fs::path& store)
    : mMark(Beside(store, kRestoredSuffix)) {
    if (!HasFile(store, kExchangeSuffix) || HasFile(store, kRestoredSuffix)) {
        return;
    }
    const FileDescriptor file(
        ::open(mMark.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600));
    mError = file.IsOpen() ? 0 : errno;
    mIsKept = !file.IsOpen();
    SyncDirectory(mMark);
}

ReplacedStoreMark::~ReplacedStoreMark() {
    if (!mIsKept) {
        std::error_code error;
        fs::remove(mMark, error);
    }
}

void MoveExchangeFiles(const fs::path& source, const fs::path& target) {
    if (!HasFile(source, kExchangeSuffix)) {
        return;
    }
    // What a kill has left half done would be lost on the way.
    PlayBackJournal(Beside(source, kExchangeSuffix));
    // Without its mark an earlier store would pass for the present one at any moment.
    const bool isMarked = HasFile(source, kRestoredSuffix);
    std::vector<const char*> suffixes = {kExchangeSuffix, kEditNotesSuffix, kTakenEditNotesSuffix};
    suffixes.insert(isMarked ? suffixes.begin() : suffixes.end(), kRestoredSuffix);
    for (const char* const suffix : suffixes) {
        MoveFile(Beside(source, suffix), Beside(target, suffix));
    }
    std::error_code error;
    fs::remove(Beside(source, kExchangeLockSuffix), error);
    SyncDirectory(target);
}
