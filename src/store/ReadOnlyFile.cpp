// What a reader does about changes that wait beside a database:
//
//     a journal whose program lives   nothing: the engine's locks keep the two apart
//     a journal that was left         the engine would write the file to play it back, and refuses
//     a write-ahead log               the engine would make a file beside it even to read
//
// The last two are played back in a copy. To call the file immutable instead would read half a
// commit.

#include "store/ReadOnlyFile.h"

#include <sys/stat.h>

#include <array>
#include <cerrno>
#include <filesystem>

#include "base/Unicode.h"
#include "store/StoreCompanions.h"

namespace {

namespace fs = std::filesystem;

// As long as a person waits without wondering; a write of another program takes far less.
constexpr int kBusyMilliseconds = 5000;
constexpr int kMostTries = 5;
constexpr char kFirstRead[] = "SELECT count(*) FROM sqlite_master;";

// Tells whether the file says of itself that it has a write-ahead log. It is read through the
// connection, as another handle on the file would drop the engine's locks when it is closed.
bool HasWriteAheadLog(sqlite3* handle) {
    constexpr int kVersionOffset = 18;
    constexpr char kWriteAheadLog = 2;
    sqlite3_file* file = nullptr;
    char version = 0;
    return sqlite3_file_control(handle, "main", SQLITE_FCNTL_FILE_POINTER, &file) == SQLITE_OK &&
           file != nullptr && file->pMethods != nullptr &&
           file->pMethods->xRead(file, &version, 1, kVersionOffset) == SQLITE_OK &&
           version == kWriteAheadLog;
}

// What changes when a program writes the database or plays something back.
using Traits = std::array<int64_t, 9>;
Traits TraitsOf(const fs::path& database) {
    Traits traits{};
    size_t i = 0;
    for (const char* const suffix : {"", "-journal", "-wal"}) {
        struct stat status {};
        if (::stat(Beside(database, suffix).c_str(), &status) == 0) {
            traits[i] = status.st_size;
            traits[i + 1] = status.st_mtim.tv_sec;
            traits[i + 2] = status.st_mtim.tv_nsec;
        }
        i += 3;
    }
    return traits;
}

int CopyWithCompanions(const fs::path& from, const fs::path& to) {
    for (const char* const suffix : {"", "-journal", "-wal"}) {
        const int error = CopyToNewFile(Beside(from, suffix), Beside(to, suffix));
        if (error != 0 && (error != ENOENT || *suffix == '\0')) {
            return error;
        }
    }
    return 0;
}

// Returns the path of a copy that nobody has written to while it was made; an empty path when there
// is none.
fs::path MakeCopy(const fs::path& database, std::unique_ptr<TemporaryDirectory>& directory) {
    for (int i = 0; i < kMostTries; ++i) {
        directory = std::make_unique<TemporaryDirectory>();
        const fs::path copy = ToPath(directory->Path("copy.vlm"));
        const Traits before = TraitsOf(database);
        if (directory->GetError() != 0 || CopyWithCompanions(database, copy) != 0) {
            return {};
        }
        if (TraitsOf(database) == before) {
            return copy;
        }
    }
    return {};
}

}  // namespace

int OpenReadOnly(const wxString& path, sqlite3*& handle,
                 std::unique_ptr<TemporaryDirectory>& privateCopy) {
    const fs::path file = ToPath(path);
    int result = sqlite3_open_v2(file.c_str(), &handle, SQLITE_OPEN_READONLY, nullptr);
    if (result != SQLITE_OK) {
        return result;
    }
    sqlite3_busy_timeout(handle, kBusyMilliseconds);
    if (!HasWriteAheadLog(handle)) {
        result = sqlite3_exec(handle, kFirstRead, nullptr, nullptr, nullptr);
        if (sqlite3_extended_errcode(handle) != SQLITE_READONLY_ROLLBACK) {
            // The questions that follow tell of a damage in full.
            return (result & 0xFF) == SQLITE_CORRUPT ? SQLITE_OK : result;
        }
    }
    const fs::path copy = MakeCopy(file, privateCopy);
    if (copy.empty()) {
        return SQLITE_CANTOPEN;
    }
    sqlite3_close(handle);
    result = sqlite3_open_v2(copy.c_str(), &handle, SQLITE_OPEN_READWRITE, nullptr);
    // The first read plays a journal back, and the change of the mode takes a log in.
    for (const char* const sql : {kFirstRead, "PRAGMA journal_mode=DELETE;"}) {
        result =
            result == SQLITE_OK ? sqlite3_exec(handle, sql, nullptr, nullptr, nullptr) : result;
    }
    return result;
}
