// Opening a store file: recognising it, creating it, and bringing it to the present schema.
//
// Open goes through these steps and stops at the first that fails, with the file as it was:
//
//     StorePath          a path that can name a store, made absolute
//     KindOf             nothing, an empty file, or a filled one
//     CreateStoreFile    only where nothing is: makes the store beside its place, then renames it
//     CheckSchema        nothing in the file's schema would run
//     CheckCardTables    each statement can be prepared
//     BringToVersion     upgrades the first schema, refuses a later one than ours
//     ReadEachTree       each table and index can be read
//
// OpenToRead leaves out the steps that write.

#include <fcntl.h>
#include <unistd.h>
#include <wx/filefn.h>
#include <wx/intl.h>
#include <wx/log.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <filesystem>
#include <string>
#include <system_error>
#include <utility>

#include "base/Files.h"
#include "base/Job.h"
#include "base/Process.h"
#include "base/Text.h"
#include "base/Unicode.h"
#include "store/CardUuid.h"
#include "store/Database.h"
#include "store/ReadOnlyFile.h"
#include "store/StoreCompanions.h"
#include "store/StoreSchema.h"

namespace {

namespace fs = std::filesystem;

// Returns the absolute form of a path, or the empty text for one that names no store: the empty
// path and an address of the engine's, which would open a store in memory, or a text that no file
// name can hold.
wxString StorePath(const wxString& path) {
    const bool named =
        !path.empty() && !path.StartsWith("file:") && path.find(L'\0') == wxString::npos;
    if (!named || FromUtf8(ToUtf8(path)) != path) {
        return wxString();
    }
    if (wxIsAbsolutePath(path)) {
        return path;
    }
    const wxString directory = wxGetCwd();
    return directory.empty() ? wxString() : directory + wxFILE_SEP_PATH + path;
}

enum class FileKind { kNone, kEmpty, kFilled, kUnfit };

// A file is unfit if the engine would treat it as empty or wait on it: a device, a pipe, a
// directory, and a file of one byte, which it takes for its own mark on an empty one. So is an
// empty file that must not be written.
FileKind KindOf(const fs::path& file) {
    std::error_code error;
    switch (fs::status(file, error).type()) {
        case fs::file_type::not_found:
            return FileKind::kNone;
        case fs::file_type::regular:
            break;
        default:
            return FileKind::kUnfit;
    }
    const std::uintmax_t size = fs::file_size(file, error);
    if (error || size == 1) {
        return FileKind::kUnfit;
    }
    if (size != 0) {
        return FileKind::kFilled;
    }
    return ::access(file.c_str(), W_OK) == 0 ? FileKind::kEmpty : FileKind::kUnfit;
}

bool IsNew(FileKind kind) {
    return kind == FileKind::kNone || kind == FileKind::kEmpty;
}

// Returns the file that a link stands for, whether it exists or not.
fs::path FollowLinks(fs::path file) {
    constexpr int kMostLinks = 40;
    std::error_code error;
    for (int i = 0; i < kMostLinks && fs::is_symlink(file, error); ++i) {
        file = file.parent_path() / fs::read_symlink(file, error);
    }
    return file;
}

// Gives a finished store the name of a file that does not exist or is empty.
bool PutInPlace(const fs::path& made, const fs::path& target) {
    const FileKind kind = KindOf(target);
    if (!IsNew(kind)) {
        return false;
    }
    std::error_code error;
    if (kind == FileKind::kEmpty) {
        fs::permissions(made, fs::status(target, error).permissions(), error);
    }
    // Companions of an earlier store would be played back into this one.
    RemoveCompanions(target);
    fs::rename(made, target, error);
    SyncDirectory(target);
    return !error;
}

// Returns true when the file does not end with a whole page. The engine looks only at the number of
// pages, counts a cut one as whole, and would read zeros in place of cards. Reads through the
// connection, as closing another handle of ours on the file would drop the engine's locks.
bool IsCutOff(sqlite3* handle) {
    sqlite3_file* file = nullptr;
    sqlite3_int64 size = 0;
    std::array<unsigned char, 18> header{};
    if (sqlite3_file_control(handle, "main", SQLITE_FCNTL_FILE_POINTER, &file) != SQLITE_OK ||
        file == nullptr || file->pMethods == nullptr ||
        file->pMethods->xFileSize(file, &size) != SQLITE_OK ||
        file->pMethods->xRead(file, header.data(), static_cast<int>(header.size()), 0) !=
            SQLITE_OK) {
        return true;
    }
    const int stored = header[16] << 8 | header[17];
    // 65536 does not fit into the two bytes and is written as 1.
    const int pageSize = stored == 1 ? 65536 : stored;
    return pageSize == 0 || size % pageSize != 0;
}

// Switches off all that would run when it stands in a schema, and foreign keys, whose actions
// change other rows.
// Another program, such as velomind-cards beside this one, locks the store for moments only. Who
// waits so long for it in vain has a store that is in use.
constexpr int kMostBusyMilliseconds = 5000;

constexpr std::pair<int, int> kSwitches[] = {
    {SQLITE_DBCONFIG_DEFENSIVE, 1},   {SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0},
    {SQLITE_DBCONFIG_ENABLE_VIEW, 0}, {SQLITE_DBCONFIG_ENABLE_TRIGGER, 0},
    {SQLITE_DBCONFIG_ENABLE_FKEY, 0},
};

// The most work of the engine while a schema is read and reviewed: enough for about two thousand
// objects.
constexpr int kStepsPerCall = 1000;
constexpr int kMostSchemaCalls = 40;

int CountCall(void* calls) {
    return ++*static_cast<int*>(calls) > kMostSchemaCalls ? 1 : 0;
}

wxString IndexName(wxString columns) {
    columns.Replace(" ", "");
    columns.Replace(",", "_");
    return "Cards_" + columns;
}

}  // namespace

int Database::Open(const wxString& path, UpgradeWait& wait) {
    const Lock lock(mMutex);
    if (mOpening) {
        return -1;
    }
    CloseHandle();
    mLastErrorCode = SQLITE_OK;
    mOpening = true;
    const int result = OpenSteps(path, wait);
    if (result < 0) {
        CloseHandle();
    }
    mOpening = false;
    return result;
}

int Database::OpenToRead(const wxString& path) {
    const Lock lock(mMutex);
    if (mOpening) {
        return -1;
    }
    CloseHandle();
    mLastErrorCode = SQLITE_OK;
    mOpening = true;
    const int result = ReadSteps(path);
    if (result < 0) {
        CloseHandle();
        if (mLastErrorCode == SQLITE_OK) {
            mLastErrorText = SystemErrorText(EILSEQ);
        }
    }
    mOpening = false;
    return result;
}

// The steps of Open without those that write.
int Database::ReadSteps(const wxString& path) {
    const wxString file = StorePath(path);
    if (file.empty() || KindOf(ToPath(file)) != FileKind::kFilled) {
        return -1;
    }
    mPathRead = file;
    bool hasCards = false;
    bool hasGlobals = false;
    std::list<int32_t> versions;
    if (PrepareHandle(OpenReadOnly(file, mpHandle, mpPrivateCopy)) < 0 || CheckSchema() < 0 ||
        FindTable(kFindCardsTable, hasCards) < 0 || !hasCards || CheckCardTables() < 0 ||
        FindTable(kFindGlobalsTable, hasGlobals) < 0 || ReadVersion(hasGlobals, versions) < 0) {
        return -1;
    }
    Prepare(StatementId::kInsertFlashCard, StatementId::kDeleteCategory);
    return mpHandle == nullptr ? -1 : ReadEachTree();
}

int QuietDatabase::OpenQuietly(const wxString& path) {
    const wxLogNull silence;
    return Open(path, *this);
}

int Database::Refuse(const wxString& reason, int code) {
    mLastErrorCode = code;
    mLastErrorText = reason;
    return -1;
}

int Database::OpenSteps(const wxString& path, UpgradeWait& wait) {
    const wxString file = StorePath(path);
    const FileKind kind = file.empty() ? FileKind::kUnfit : KindOf(ToPath(file));
    if (kind == FileKind::kUnfit) {
        return Refuse(file.empty() ? _("Its name cannot be that of a store.")
                                   : _("It is no file that can hold a store."));
    }
    if (IsNew(kind) && CreateStoreFile(file, wait) < 0) {
        return -1;
    }
    return OpenFile(file, wait);
}

int Database::CreateStoreFile(const wxString& file, UpgradeWait& wait) {
    CardUuid unique;
    if (GenerateUuid(unique) != 0) {
        return -1;
    }
    const fs::path target = FollowLinks(ToPath(file));
    const fs::path made =
        target.parent_path() / ("velomind-" + ToUtf8(FormatUuid(unique).Left(8)) + ".new");
    const int result = OpenFile(FromPath(made), wait);
    CloseHandle();
    if (result < 0 || !PutInPlace(made, target)) {
        std::error_code error;
        fs::remove(made, error);
        RemoveCompanions(made);
        return -1;
    }
    return 0;
}

int Database::OpenFile(const wxString& file, UpgradeWait& wait) {
    bool hasCards = false;
    if (OpenHandle(file) < 0 || CheckSchema() < 0 || FindTable(kFindCardsTable, hasCards) < 0 ||
        (hasCards ? CheckCardTables() : CreateCardTables()) < 0 || BringToVersion(wait) < 0) {
        return -1;
    }
    Prepare(StatementId::kInsertFlashCard, StatementId::kDeleteCategory);
    if (mpHandle == nullptr) {
        return -1;
    }
    MendNextReviews();
    return ReadEachTree();
}

void Database::SetPatience(int milliseconds) {
    const Lock lock(mMutex);
    if (mpHandle != nullptr) {
        sqlite3_busy_timeout(mpHandle, milliseconds > 0 ? milliseconds : kMostBusyMilliseconds);
    }
}

// Without its directory the store is still used, as safe from power cuts as the engine alone makes
// it.
void Database::OpenDirectory() {
    const fs::path file = fs::u8path(sqlite3_db_filename(mpHandle, "main"));
    mDirectory =
        FileDescriptor(::open(file.parent_path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!mDirectory.IsOpen()) {
        VELOMIND_TRACE("cannot sync the directory of \"%s\"", FromPath(file));
    }
}

int Database::OpenHandle(const wxString& file) {
    if (PrepareHandle(sqlite3_open16(ToUtf16(file).c_str(), &mpHandle)) < 0) {
        return -1;
    }
    OpenDirectory();
    return 0;
}

int Database::PrepareHandle(int result) {
    if (result != SQLITE_OK || RegisterSearchFunction(mpHandle) != SQLITE_OK) {
        KeepError();
        if (mLastErrorCode == SQLITE_OK) {
            mLastErrorCode = result;
            mLastErrorText = FromUtf8(sqlite3_errstr(result));
        }
        return -1;
    }
    sqlite3_extended_result_codes(mpHandle, 1);
    sqlite3_busy_timeout(mpHandle, kMostBusyMilliseconds);
    for (const auto& [option, value] : kSwitches) {
        sqlite3_db_config(mpHandle, option, value, nullptr);
    }
    // The code of virtual tables, which a schema names. Nothing here has one.
    sqlite3_drop_modules(mpHandle, nullptr);
    return 0;
}

int Database::CheckSchema() {
    int calls = 0;
    sqlite3_progress_handler(mpHandle, kStepsPerCall, CountCall, &calls);
    const bool isPlain = IsPlainSchema(mpHandle);
    if (!isPlain) {
        KeepError();
    }
    sqlite3_progress_handler(mpHandle, 0, nullptr, nullptr);
    // What the engine says of these is no reason.
    if (!isPlain && (mLastErrorCode == SQLITE_OK || mLastErrorCode == SQLITE_AUTH ||
                     mLastErrorCode == SQLITE_INTERRUPT)) {
        return Refuse(wxGetTranslation(kUnfitSchema));
    }
    return isPlain ? 0 : -1;
}

int Database::FindTable(const char* sql, bool& found) {
    StatementRun run(*this, GetStatement(sql));
    const int result = run.Step("FindTable");
    found = !run.IsDone();
    return result;
}

int Database::CheckCardTables() {
    if (IsCutOff(mpHandle)) {
        return Refuse(wxGetTranslation(kCutOffStore), SQLITE_CORRUPT);
    }
    Prepare(StatementId::kInsertFlashCard, StatementId::kDeleteCategory);
    // They come again after those on the store-wide values, which come after an upgrade.
    FinaliseStatements();
    return mpHandle == nullptr ? -1 : 0;
}

int Database::CreateCardTables() {
    if (ExecuteText(kCreateCards) < 0 || ExecuteText(kCreateCategories) < 0) {
        return -1;
    }
    for (const char* const columns : kCardIndexes) {
        if (ExecuteText("CREATE INDEX " + IndexName(columns) + " ON Cards (" + columns + ")") < 0) {
            return -1;
        }
    }
    return 0;
}

// Upgrades a file of the first schema before anything else is written to it: one that cannot be
// upgraded stays as it is.
int Database::BringToVersion(UpgradeWait& wait) {
    bool hasGlobals = false;
    if (FindTable(kFindGlobalsTable, hasGlobals) < 0) {
        return -1;
    }
    std::list<int32_t> versions;
    if (ReadVersion(hasGlobals, versions) < 0) {
        return -1;
    }
    if (versions.empty() && UpgradeFirstSchema(wait) < 0) {
        return -1;
    }
    if (!hasGlobals && ExecuteText(kCreateGlobals) < 0) {
        return -1;
    }
    Prepare(StatementId::kGetGlobal, StatementId::kUpdateGlobal);
    if (SetGlobalInt(kVersionKey, kSchemaVersion) < 0) {
        wxLogError("%s",
                   _("The selected flash card store file has been modified by a newer version "
                     "of Velomind and cannot be opened by this version"));
        return -1;
    }
    return 0;
}

// No version is that of the first schema; one that is later than ours is refused.
int Database::ReadVersion(bool hasGlobals, std::list<int32_t>& versions) {
    if (hasGlobals) {
        Prepare(StatementId::kGetGlobal, StatementId::kUpdateGlobal);
        if (GetGlobalInt(kVersionKey, versions) < 0) {
            return -1;
        }
    }
    return !versions.empty() && versions.front() > kSchemaVersion
               ? Refuse(wxGetTranslation(kNewerStore))
               : 0;
}

int Database::UpgradeFirstSchema(UpgradeWait& wait) {
    int result = SQLITE_ERROR;
    // While it runs it alone uses the handle.
    Job worker([&result, handle = mpHandle](const std::atomic<bool>&) {
        result = sqlite3_exec(handle, kUpgradeFirstSchema, nullptr, nullptr, nullptr);
    });
    if (!worker.Start()) {
        return -1;
    }
    // The windows behind the waiting one keep asking meanwhile. They find no statement, and the
    // mutex is free: joining takes the window library's own lock, which comes before ours.
    mPrepared = {};
    mMutex.unlock();
    wait.WaitFor(worker);
    worker.Join();
    mMutex.lock();
    if (result != SQLITE_OK) {
        KeepError();
        return -1;
    }
    return 0;
}

// Steps each table and index to its first row, which finds a damaged root for a few page reads
// each.
int Database::ReadEachTree() {
    std::list<wxString> reads;
    StatementRun run(*this, GetStatement(kSelectTreeReads));
    while (run.Step("ReadEachTree") == 0 && !run.IsDone()) {
        reads.push_back(run.ColumnText(0));
    }
    for (const wxString& read : reads) {
        // An engine that does not know such a text says nothing about the file.
        if (ExecuteText(read) < 0 && (mLastErrorCode & 0xFF) != SQLITE_ERROR) {
            return -1;
        }
    }
    return run.IsDone() ? 0 : -1;
}
