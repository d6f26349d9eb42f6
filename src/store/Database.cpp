// The statement layer: prepared texts, marks of use, and failures.

#include "store/Database.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <wx/intl.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <system_error>
#include <utility>

#include "base/Files.h"
#include "base/Process.h"
#include "base/Unicode.h"
#include "store/StoreSchema.h"

Database::Database(FatalErrorReport& report)
    : mReport(report), mLastErrorText(FromUtf8(sqlite3_errstr(SQLITE_OK))) {}

Database::~Database() {
    Close();
}

bool Database::IsOpen() const {
    const Lock lock(mMutex);
    return mpHandle != nullptr && !mOpening;
}

void Database::Close() {
    const Lock lock(mMutex);
    if (!mOpening) {
        CloseHandle();
    }
}

void Database::CloseHandle() {
    for (const auto& [statement, run] : mStatementsInUse) {
        run->Forget();
    }
    mStatementsInUse.clear();
    // A connection with an open statement would refuse to close.
    FinaliseStatements();
    sqlite3_close(mpHandle);
    mpHandle = nullptr;
    mpPrivateCopy.reset();
    mPathRead.clear();
    mDirectory.Close();
    mSource.Close();
    mConfirmedChanges = 0;
}

void Database::FinaliseStatements() {
    for (const auto& [sql, statement] : mStatements) {
        sqlite3_finalize(statement);
    }
    mStatements.clear();
    mPrepared = {};
}

sqlite3_stmt* Database::GetStatement(std::string_view sql) {
    const Lock lock(mMutex);
    if (mpHandle == nullptr) {
        return nullptr;
    }
    const auto known = mStatements.find(sql);
    if (known != mStatements.end()) {
        return known->second;
    }
    std::string text(sql);
    sqlite3_stmt* statement = nullptr;
    // The engine keeps the text, and prepares it anew when another program has changed the schema.
    if (sqlite3_prepare_v2(mpHandle, text.c_str(), -1, &statement, nullptr) != SQLITE_OK) {
        KeepError();
        VELOMIND_TRACE("cannot prepare \"%s\" (%s)", FromUtf8(text), mLastErrorText);
        CloseHandle();
        return nullptr;
    }
    mStatements.emplace(std::move(text), statement);
    return statement;
}

int Database::MarkStatement(sqlite3_stmt* statement, StatementRun* run) {
    const Lock lock(mMutex);
    if (statement == nullptr) {
        return -1;
    }
    if (run != nullptr) {
        return mStatementsInUse.emplace(statement, run).second ? 0 : -1;
    }
    return mStatementsInUse.erase(statement) == 1 ? 0 : -1;
}

void Database::SetBeforeChange(std::function<void()> hook) {
    const Lock lock(mMutex);
    mBeforeChange = std::move(hook);
}

void Database::AnnounceChange() {
    const Lock lock(mMutex);
    if (mBeforeChange && !mAnnouncing && IsOpen()) {
        mAnnouncing = true;
        mBeforeChange();
        mAnnouncing = false;
    }
}

int64_t Database::CountBytes() {
    const Lock lock(mMutex);
    int64_t bytes = 0;
    const bool isCounted = TryLocked([&] {
        StatementRun run(*this, GetStatement(kSelectBytes));
        bytes = run.Step("CountBytes") >= 0 ? run.ColumnInt64(0) : 0;
    });
    return isCounted ? bytes : 0;
}

int Database::OpenSource() {
    constexpr off_t kVersionOffset = 18;
    constexpr char kJournal = 1;
    if (!mSource.IsOpen()) {
        mSource = FileDescriptor(::open(ToUtf8(GetFileRead()).c_str(), O_RDONLY | O_CLOEXEC));
    }
    int hasMoved = 1;
    char version = 0;
    sqlite3_file_control(mpHandle, "main", SQLITE_FCNTL_HAS_MOVED, &hasMoved);
    if (!mSource.IsOpen() || hasMoved != 0) {
        return mSource.IsOpen() ? EIO : errno;
    }
    // The file is not the whole store if another program has given it a write-ahead log.
    return ::pread(mSource.Get(), &version, 1, kVersionOffset) == 1 && version == kJournal
               ? 0
               : ENOTSUP;
}

int Database::CopyFile(const wxString& target, int32_t& cards) {
    const Lock lock(mMutex);
    // The file stays locked for reading until the run ends. A StoreReadLock may be held already.
    StatementRun reading(*this, GetStatement("SELECT count(*) FROM sqlite_master;"));
    const bool isLocked = TryLocked([&] { reading.Step("CopyFile"); });
    if (!isLocked) {
        return (mLastErrorCode & 0xFF) == SQLITE_BUSY ? EBUSY : EIO;
    }
    if (const int error = OpenSource()) {
        return error;
    }
    cards = TryLocked([&] { CountAllCards(cards); }) ? cards : -1;
    const int64_t bytes = CountBytes();
    struct stat status {};
    if (::fstat(mSource.Get(), &status) != 0 || bytes == 0 || status.st_size < bytes) {
        return EIO;
    }
    const FileDescriptor copy(
        ::open(ToUtf8(target).c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
    if (!copy.IsOpen()) {
        return errno;
    }
    // Nothing follows the last page but perhaps a hole of terabytes.
    return status.st_size == bytes ? CopyWholeFile(mSource.Get(), copy.Get())
                                   : CopyFirstBytes(mSource.Get(), copy.Get(), bytes);
}

bool Database::IsCopy(const wxString& path) {
    const Lock lock(mMutex);
    const FileDescriptor other(::open(ToUtf8(path).c_str(), O_RDONLY | O_CLOEXEC));
    StatementRun reading(*this, GetStatement("SELECT count(*) FROM sqlite_master;"));
    if (!other.IsOpen() || !TryLocked([&] { reading.Step("IsCopy"); }) || OpenSource() != 0) {
        return false;
    }
    // Each change of the store changes a count in the header, so most files are told apart by it.
    std::array<char, 100> header{};
    std::array<char, 100> otherHeader{};
    const auto size = static_cast<ssize_t>(header.size());
    return ::pread(mSource.Get(), header.data(), header.size(), 0) == size &&
           ::pread(other.Get(), otherHeader.data(), otherHeader.size(), 0) == size &&
           header == otherHeader && CompareBytes(mSource.Get(), other.Get()) == 0;
}

// The engine ends a commit by removing its journal and does not sync the directory after it. A
// power cut could then bring the journal back, and the next start would play it back into the
// store: the last answer would be lost although the program had gone on.
void Database::ConfirmChanges() {
    const Lock lock(mMutex);
    if (!mDirectory.IsOpen() || mChangeGroups > 0) {
        return;
    }
    const int changes = sqlite3_total_changes(mpHandle);
    if (changes != mConfirmedChanges) {
        mConfirmedChanges = changes;
        // A file system that cannot do this is no reason to fail.
        ::fsync(mDirectory.Get());
    }
}

StoreChangeGroup::StoreChangeGroup(Database& database) : mDatabase(database) {
    const Database::Lock lock(mDatabase.mMutex);
    ++mDatabase.mChangeGroups;
}

StoreChangeGroup::~StoreChangeGroup() {
    const Database::Lock lock(mDatabase.mMutex);
    --mDatabase.mChangeGroups;
    mDatabase.ConfirmChanges();
}

int Database::ReportStepFailure(sqlite3_stmt* statement, const char* label, int code) {
    const Lock lock(mMutex);
    // Lets go of the file first, as the report may stand for as long as the user likes.
    sqlite3_reset(statement);
    KeepError();
    // A failure is told in the engine's words; a lock, which the last line explains, and a misuse
    // of the engine are told by their number. GetLastErrorCode has the detailed code.
    const bool hasWords = (code & 0xFF) != SQLITE_BUSY && (code & 0xFF) != SQLITE_MISUSE;
    const int result = hasWords ? SQLITE_ERROR : code;
    wxString text;
    if (hasWords) {
        VELOMIND_TRACE("%s: unexpected result from sqlite3_step SQLITE_ERROR (%s)", label,
                       mLastErrorText);
        text = wxString::Format(_("Problem accessing flash cards (%s/%s)"), mLastErrorText, label);
    } else {
        VELOMIND_TRACE("%s: unexpected result from sqlite3_step %i", label, result);
        text = wxString::Format(_("Problem accessing flash cards (%i/%s)"), result, label);
    }
    text += "\n" + GetPath();
    if ((result & 0xFF) == SQLITE_BUSY) {
        text += "\n" + _("Another program is using this store. What was to be done is not done.");
    }
    if (mTrying) {
        mTryFailed = true;
    } else if (!mOpening) {
        mReport.Report(text);
    }
    return -result;
}

void Database::KeepError() {
    mLastErrorCode = sqlite3_extended_errcode(mpHandle);
    mLastErrorText = FromUtf8(sqlite3_errmsg(mpHandle));
}

bool Database::Try(const std::function<void()>& ask) {
    const auto setTrying = [this](bool trying) {
        const Lock lock(mMutex);
        mTrying = trying;
        mTryFailed = mTryFailed && !trying;
        return IsOpen() && !mTryFailed;
    };
    setTrying(true);
    ask();
    return setTrying(false);
}

bool Database::TryLocked(const std::function<void()>& ask) {
    const Lock lock(mMutex);
    const bool wasTrying = std::exchange(mTrying, true);
    const bool hadFailed = std::exchange(mTryFailed, false);
    ask();
    mTrying = wasTrying;
    return !std::exchange(mTryFailed, hadFailed) && IsOpen();
}

bool Database::TryUntil(const std::function<bool()>& isStopped, const std::function<void()>& ask) {
    // About a millisecond of the engine's work.
    constexpr int kSteps = 10000;
    const Lock lock(mMutex);
    const auto callBack = [](void* stop) -> int {
        return (*static_cast<const std::function<bool()>*>(stop))() ? 1 : 0;
    };
    auto stop = isStopped;
    if (mpHandle == nullptr) {
        return false;
    }
    sqlite3_progress_handler(mpHandle, kSteps, callBack, &stop);
    const bool isDone = TryLocked(ask);
    if (mpHandle != nullptr) {
        sqlite3_progress_handler(mpHandle, 0, nullptr, nullptr);
    }
    return isDone;
}

int Database::Execute(const wxString& sql) {
    const Lock lock(mMutex);
    AnnounceChange();
    return IsOpen() ? ExecuteText(sql) : -1;
}

int Database::ExecuteText(const wxString& sql) {
    if (sqlite3_exec(mpHandle, ToUtf8(sql).c_str(), nullptr, nullptr, nullptr) != SQLITE_OK) {
        KeepError();
        return -1;
    }
    ConfirmChanges();
    return 0;
}

bool Database::IsStoreFile(const wxString& path) {
    const Lock lock(mMutex);
    std::error_code error;
    return IsOpen() && std::filesystem::equivalent(ToPath(GetPath()), ToPath(path), error);
}

wxString Database::GetPath() const {
    const Lock lock(mMutex);
    return mPathRead.empty() || !IsOpen() ? GetFileRead() : mPathRead;
}

wxString Database::GetFileRead() const {
    const Lock lock(mMutex);
    const char* const name = IsOpen() ? sqlite3_db_filename(mpHandle, "main") : nullptr;
    return name == nullptr ? wxString() : FromUtf8(name);
}

wxString Database::GetLastError() {
    const Lock lock(mMutex);
    return mLastErrorText;
}

int Database::GetLastErrorCode() {
    const Lock lock(mMutex);
    return mLastErrorCode;
}
