#include "sync/SqlFile.h"

#include "base/Unicode.h"

namespace {

// The same as that of the open store.
constexpr int kMostBusyMilliseconds = 5000;

}  // namespace

bool SqlFile::Open(const std::string& path) {
    Close();
    const int result = sqlite3_open_v2(path.c_str(), &mpHandle,
                                       SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX, nullptr);
    if (result != SQLITE_OK) {
        Fail(result);
        return false;
    }
    sqlite3_extended_result_codes(mpHandle, 1);
    sqlite3_busy_timeout(mpHandle, kMostBusyMilliseconds);
    for (const int option : {SQLITE_DBCONFIG_TRUSTED_SCHEMA, SQLITE_DBCONFIG_ENABLE_VIEW,
                             SQLITE_DBCONFIG_ENABLE_TRIGGER, SQLITE_DBCONFIG_ENABLE_FKEY}) {
        sqlite3_db_config(mpHandle, option, 0, nullptr);
    }
    sqlite3_db_config(mpHandle, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
    sqlite3_drop_modules(mpHandle, nullptr);
    return true;
}

void SqlFile::Close() {
    for (const auto& [text, statement] : mStatements) {
        sqlite3_finalize(statement);
    }
    mStatements.clear();
    sqlite3_close(mpHandle);
    mpHandle = nullptr;
}

bool SqlFile::Execute(const char* sql) {
    if (HasFailed() || mpHandle == nullptr) {
        return false;
    }
    const int result = sqlite3_exec(mpHandle, sql, nullptr, nullptr, nullptr);
    if (result != SQLITE_OK) {
        Fail(result);
    }
    return result == SQLITE_OK;
}

void SqlFile::Fail(int code) {
    if (HasFailed()) {
        return;
    }
    mCode = code;
    mError = FromUtf8(mpHandle == nullptr ? sqlite3_errstr(code) : sqlite3_errmsg(mpHandle));
}

sqlite3_stmt* SqlFile::Prepare(const char* sql) {
    if (HasFailed() || mpHandle == nullptr) {
        return nullptr;
    }
    sqlite3_stmt*& statement = mStatements[sql];
    if (statement == nullptr) {
        const int result = sqlite3_prepare_v2(mpHandle, sql, -1, &statement, nullptr);
        if (result != SQLITE_OK) {
            Fail(result);
        }
    }
    return statement;
}

void Query::Bind(int64_t value) {
    sqlite3_bind_int64(mpStatement, ++mBound, value);
}

void Query::Bind(double value) {
    sqlite3_bind_double(mpStatement, ++mBound, value);
}

void Query::Bind(std::string_view text) {
    // A null pointer would bind no text at all.
    sqlite3_bind_text(mpStatement, ++mBound, text.data() == nullptr ? "" : text.data(),
                      static_cast<int>(text.size()), SQLITE_STATIC);
}

void Query::BindBlob(std::string_view bytes) {
    sqlite3_bind_blob(mpStatement, ++mBound, bytes.data(), static_cast<int>(bytes.size()),
                      SQLITE_STATIC);
}

bool Query::Step() {
    if (mpStatement == nullptr || mFile.HasFailed()) {
        return false;
    }
    const int result = sqlite3_step(mpStatement);
    if (result != SQLITE_ROW && result != SQLITE_DONE) {
        mFile.Fail(result);
    }
    return result == SQLITE_ROW;
}

std::string Query::Text(int column) const {
    const auto* const text =
        reinterpret_cast<const char*>(sqlite3_column_text(mpStatement, column));
    return text == nullptr
               ? std::string()
               : std::string(text, static_cast<size_t>(sqlite3_column_bytes(mpStatement, column)));
}

std::string Query::Bytes(int column) const {
    return sqlite3_column_type(mpStatement, column) == SQLITE_BLOB ? Blob(column) : Text(column);
}

std::string_view Query::BlobView(int column) const {
    const auto* const bytes = static_cast<const char*>(sqlite3_column_blob(mpStatement, column));
    return bytes == nullptr
               ? std::string_view()
               : std::string_view(bytes,
                                  static_cast<size_t>(sqlite3_column_bytes(mpStatement, column)));
}
