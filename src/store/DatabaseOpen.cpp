// Opening a store file: recognising it, creating it, and bringing it to the present schema.

#include <wx/filefn.h>
#include <wx/intl.h>
#include <wx/log.h>

#include <array>
#include <filesystem>
#include <string>

#include "base/Numbers.h"
#include "base/Utf8.h"
#include "store/Database.h"
#include "store/DatabaseUpgradeThread.h"
#include "store/SearchFunctions.h"
#include "store/StoreSchema.h"

namespace {

// The absolute form of a path, or the empty text for one that names no store: nothing at all, an
// address of the engine's own kind, or a text that no file name can hold as it stands.
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

// False for what the engine would treat as an empty file or wait on: a device, a pipe, a directory,
// and a file of a single byte, which it takes for its own mark on an empty one.
bool CanBeStore(const wxString& path) {
    const std::filesystem::path file = std::filesystem::u8path(ToUtf8(path));
    std::error_code error;
    switch (std::filesystem::status(file, error).type()) {
        case std::filesystem::file_type::not_found:
            return true;
        case std::filesystem::file_type::regular:
            return std::filesystem::file_size(file, error) != 1;
        default:
            return false;
    }
}

// True when the file does not end with a whole page. The engine looks only at the number of pages,
// counts a cut one as whole, and would then read zeros in the place of cards. It is read through
// the connection, as another handle of ours on the file would drop the engine's locks when it is
// closed.
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
    mOpening = true;
    const int result = OpenSteps(path, wait);
    if (result < 0) {
        CloseHandle();
    }
    mOpening = false;
    return result;
}

int Database::OpenSteps(const wxString& path, UpgradeWait& wait) {
    if (OpenHandle(path) < 0) {
        return -1;
    }
    bool hasCards = false;
    if (FindTable(kFindCardsTable, hasCards) < 0) {
        return -1;
    }
    if ((hasCards ? CheckCardTables() : CreateCardTables()) < 0) {
        return -1;
    }
    const int globals = EnsureGlobals();
    if (globals < 0) {
        return globals;
    }
    Prepare(GlobalTexts());
    if (BringToVersion(wait) < 0) {
        return -1;
    }
    Prepare(CardTexts());
    return mpHandle != nullptr ? MendNextReviews() : -1;
}

int Database::OpenHandle(const wxString& path) {
    const wxString file = StorePath(path);
    if (file.empty() || !CanBeStore(file)) {
        return -1;
    }
    const int result = sqlite3_open16(ToUtf16(file).c_str(), &mpHandle);
    if (result != SQLITE_OK || RegisterSearchFunctions(mpHandle) != SQLITE_OK) {
        KeepError();
        return -1;
    }
    sqlite3_extended_result_codes(mpHandle, 1);
    return 0;
}

int Database::FindTable(const char* sql, bool& found) {
    StatementRun run(*this, GetStatement(sql));
    const int result = run.Step("FindTable");
    found = !run.IsDone();
    return result;
}

int Database::CheckCardTables() {
    if (IsCutOff(mpHandle)) {
        return -1;
    }
    // Not through the cache: the schema may still change under these.
    for (const PreparedText& text : CardTexts()) {
        sqlite3_stmt* statement = nullptr;
        const std::string sql = std::string(text.Head) + text.Tail;
        const int result = sqlite3_prepare(mpHandle, sql.c_str(), -1, &statement, nullptr);
        sqlite3_finalize(statement);
        if (result != SQLITE_OK) {
            KeepError();
            return -1;
        }
    }
    return 0;
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

int Database::EnsureGlobals() {
    bool found = false;
    const int result = FindTable(kFindGlobalsTable, found);
    if (result < 0) {
        return result;
    }
    return found ? 0 : ExecuteText(kCreateGlobals);
}

int Database::BringToVersion(UpgradeWait& wait) {
    std::list<int32_t> versions;
    if (GetGlobalInt(kVersionKey, versions) < 0) {
        return -1;
    }
    if (!versions.empty() && versions.front() > kSchemaVersion) {
        return -1;
    }
    if (versions.empty() && UpgradeFirstSchema(wait) < 0) {
        return -1;
    }
    if (SetGlobalInt(kVersionKey, kSchemaVersion) < 0) {
        wxLogError("%s",
                   _("The selected flash card store file has been modified by a newer version "
                     "of Velomind and cannot be opened by this version"));
        return -1;
    }
    return 0;
}

int Database::UpgradeFirstSchema(UpgradeWait& wait) {
    int result = SQLITE_ERROR;
    DatabaseUpgradeThread worker(mpHandle, result);
    if (worker.Run() != wxTHREAD_NO_ERROR) {
        return -1;
    }
    // The windows behind the waiting one go on asking meanwhile. They find no statement, and the
    // mutex is free: joining takes the window library's own lock, which comes before ours.
    ForgetStatements(GlobalTexts());
    mMutex.unlock();
    wait.WaitFor(worker);
    worker.Wait();
    mMutex.lock();
    Prepare(GlobalTexts());
    if (result != SQLITE_OK) {
        KeepError();
        return -1;
    }
    return 0;
}
