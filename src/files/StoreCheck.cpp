#include "files/StoreCheck.h"

#include <sqlite3.h>
#include <wx/intl.h>

#include <filesystem>
#include <memory>
#include <string>
#include <system_error>

#include "base/Files.h"
#include "base/Unicode.h"
#include "store/ReadOnlyFile.h"
#include "store/StoreSchema.h"

namespace {

using Handle = std::unique_ptr<sqlite3, int (*)(sqlite3*)>;
using StatementHandle = std::unique_ptr<sqlite3_stmt, int (*)(sqlite3_stmt*)>;

// The engine stops at this many faults, more than anybody reads.
constexpr char kCheckPages[] = "PRAGMA integrity_check(10000)";

// Each asks for all columns that the program reads from one table.
constexpr const char* kColumns[] = {
    "SELECT CardId,Front,Back,CategoryId,Author,Chapter,IntroductionOrder,ForwardX,ReverseX,Notes,"
    "Introduced,LastReview,LastScore,ReviewInterval,Difficulty,NextReview,ERC,RIntroduced,"
    "RLastReview,RLastScore,RReviewInterval,RDifficulty,RNextReview,RERC FROM Cards LIMIT 0",
    "SELECT Id,Name FROM Categories LIMIT 0", "SELECT Key,Value FROM Globals LIMIT 0"};

// Counts rows that mean nothing, and reports their number.
struct RowCheck {
    const char* Sql;
    const char* Text;
};

constexpr RowCheck kRowChecks[] = {
    {"SELECT COUNT(*) FROM Cards WHERE CategoryId<>-1 AND CategoryId NOT IN (SELECT Id FROM "
     "Categories)",
     wxTRANSLATE("Cards in a category that does not exist: %i")},
    {"SELECT COUNT(*) FROM Cards WHERE CardId IS NULL OR LENGTH(CardId)<>36",
     wxTRANSLATE("Cards without an identity: %i")},
    {"SELECT COUNT(*) FROM Cards WHERE Front IS NULL OR Back IS NULL",
     wxTRANSLATE("Cards without a front or a back: %i")}};

// What is wrong with the file itself shows at the first question.
Handle OpenHandle(const wxString& path, std::unique_ptr<TemporaryDirectory>& privateCopy) {
    sqlite3* handle = nullptr;
    OpenReadOnly(path, handle, privateCopy);
    return {handle, &sqlite3_close};
}

// Asks one file the questions.
class Check {
  public:
    explicit Check(const wxString& path);
    void Run();
    std::vector<wxString> Faults;

  private:
    bool AskPages();
    bool AskColumns();
    void AskOpening();
    void AskRows();
    StatementHandle Prepare(const char* sql);
    void AddEngineFault();

    const wxString mPath;
    // Goes after the handle.
    std::unique_ptr<TemporaryDirectory> mpPrivateCopy;
    const Handle mHandle;
};

Check::Check(const wxString& path) : mPath(path), mHandle(OpenHandle(path, mpPrivateCopy)) {
    // The schema of a file from anywhere is data.
    if (mHandle == nullptr) {
        return;
    }
    sqlite3_db_config(mHandle.get(), SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
    sqlite3_db_config(mHandle.get(), SQLITE_DBCONFIG_ENABLE_VIEW, 0, nullptr);
    sqlite3_db_config(mHandle.get(), SQLITE_DBCONFIG_ENABLE_TRIGGER, 0, nullptr);
    sqlite3_drop_modules(mHandle.get(), nullptr);
}

void Check::Run() {
    if (mHandle == nullptr) {
        Faults.push_back(FromUtf8(sqlite3_errstr(SQLITE_CANTOPEN)));
    } else if (AskPages() && AskColumns()) {
        AskRows();
    }
    if (Faults.empty()) {
        AskOpening();
    }
}

// Finds what the engine has nothing against and the program refuses when it opens a store.
void Check::AskOpening() {
    const auto ask = [this](const std::string& sql) {
        const StatementHandle statement = Prepare(sql.c_str());
        const bool isRow = statement != nullptr && sqlite3_step(statement.get()) == SQLITE_ROW;
        return isRow ? sqlite3_column_int64(statement.get(), 0) : 0;
    };
    std::error_code error;
    const auto size = static_cast<int64_t>(std::filesystem::file_size(ToPath(mPath), error));
    const int64_t pageSize = ask("PRAGMA page_size");
    if (!error && pageSize > 0 && size % pageSize != 0) {
        Faults.push_back(wxGetTranslation(kCutOffStore));
    }
    if (ask(std::string("SELECT CAST(Value AS INTEGER) FROM Globals WHERE Key='") + kVersionKey +
            "'") > kSchemaVersion) {
        Faults.push_back(wxGetTranslation(kNewerStore));
    }
    if (!IsPlainSchema(mHandle.get())) {
        Faults.push_back(wxGetTranslation(kUnfitSchema));
    }
}

// Returns false when no further questions to the file make sense.
bool Check::AskPages() {
    const StatementHandle statement = Prepare(kCheckPages);
    int result = SQLITE_ERROR;
    while (statement != nullptr && (result = sqlite3_step(statement.get())) == SQLITE_ROW) {
        const auto* const bytes =
            reinterpret_cast<const char*>(sqlite3_column_text(statement.get(), 0));
        const wxString text = FromUtf8(bytes == nullptr ? "" : bytes);
        if (text != "ok") {
            Faults.push_back(text);
        }
    }
    if (result != SQLITE_DONE) {
        AddEngineFault();
    }
    return result == SQLITE_DONE;
}

bool Check::AskColumns() {
    const size_t before = Faults.size();
    for (const char* const sql : kColumns) {
        if (Prepare(sql) == nullptr) {
            AddEngineFault();
        }
    }
    return Faults.size() == before;
}

void Check::AskRows() {
    for (const RowCheck& check : kRowChecks) {
        const StatementHandle statement = Prepare(check.Sql);
        if (statement == nullptr || sqlite3_step(statement.get()) != SQLITE_ROW) {
            AddEngineFault();
        } else if (const int count = sqlite3_column_int(statement.get(), 0)) {
            Faults.push_back(wxString::Format(wxGetTranslation(check.Text), count));
        }
    }
}

StatementHandle Check::Prepare(const char* sql) {
    sqlite3_stmt* statement = nullptr;
    sqlite3_prepare_v2(mHandle.get(), sql, -1, &statement, nullptr);
    return {statement, &sqlite3_finalize};
}

void Check::AddEngineFault() {
    Faults.push_back(FromUtf8(sqlite3_errmsg(mHandle.get())));
}

}  // namespace

std::vector<wxString> CheckStoreFile(const wxString& path) {
    Check check(path);
    check.Run();
    return check.Faults;
}
