#include "files/ForeignDatabase.h"

#include <algorithm>
#include <cctype>
#include <cstring>
#include <memory>

#include "base/Unicode.h"

namespace {

constexpr int kGreatestValue = 64 << 20;
// The engine checks for a cancel after this many of its instructions, about a millisecond.
constexpr int kStepsBetweenLooks = 10000;
// A schema is read with some eight instructions for each table, in time that grows with the square
// of their number. So many looks are enough for thousands of tables; real decks have twenty.
constexpr int kLooksForSchema = 8;

struct Finalizer {
    void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};
using StatementPointer = std::unique_ptr<sqlite3_stmt, Finalizer>;

// Lets a statement only read stored columns. One for which the schema would compute something with
// a function is refused when it is prepared.
int AllowReading(void*, int action, const char*, const char*, const char*, const char*) {
    switch (action) {
        case SQLITE_SELECT:
        case SQLITE_READ:
        case SQLITE_PRAGMA:
            return SQLITE_OK;
        default:
            return SQLITE_DENY;
    }
}

// Some programs have a collation of their own for names. Nothing here depends on its order.
int CompareIgnoringCase(void*, int oneSize, const void* one, int otherSize, const void* other) {
    const auto* const left = static_cast<const unsigned char*>(one);
    const auto* const right = static_cast<const unsigned char*>(other);
    for (int i = 0; i < std::min(oneSize, otherSize); ++i) {
        const int difference = std::tolower(left[i]) - std::tolower(right[i]);
        if (difference != 0) {
            return difference;
        }
    }
    return oneSize - otherSize;
}

std::string JoinColumns(const std::vector<const char*>& columns) {
    std::string joined;
    for (const char* const column : columns) {
        joined += joined.empty() ? "\"" : ",\"";
        joined += column;
        joined += '"';
    }
    return joined;
}

// Returns the path as an address, which can say that nobody writes the file meanwhile.
std::string ImmutableAddress(const wxString& path) {
    std::string address = "file:";
    for (const char byte : ToUtf8(path)) {
        if (byte == '%' || byte == '?' || byte == '#') {
            char code[4];
            sqlite3_snprintf(sizeof code, code, "%%%02X", static_cast<unsigned char>(byte));
            address += code;
        } else {
            address += byte;
        }
    }
    return address + "?immutable=1";
}

}  // namespace

int64_t ForeignDatabase::Row::Int64(int column) const {
    return sqlite3_column_int64(mpStatement, column);
}

double ForeignDatabase::Row::Double(int column) const {
    return sqlite3_column_double(mpStatement, column);
}

wxString ForeignDatabase::Row::Text(int column) const {
    const std::string bytes = Bytes(column);
    return FromUtf8(bytes);
}

std::string ForeignDatabase::Row::Bytes(int column) const {
    // Reads the text first: that may convert the value, and the size is the converted one's.
    const void* const bytes =
        sqlite3_column_type(mpStatement, column) == SQLITE_BLOB
            ? sqlite3_column_blob(mpStatement, column)
            : static_cast<const void*>(sqlite3_column_text(mpStatement, column));
    const int size = sqlite3_column_bytes(mpStatement, column);
    return bytes == nullptr
               ? std::string()
               : std::string(static_cast<const char*>(bytes), static_cast<size_t>(size));
}

ForeignDatabase::~ForeignDatabase() {
    Close();
}

int ForeignDatabase::Open(const wxString& path, const std::atomic<bool>* isCancelled) {
    Close();
    constexpr int kFlags =
        SQLITE_OPEN_READONLY | SQLITE_OPEN_URI | SQLITE_OPEN_PRIVATECACHE | SQLITE_OPEN_NOMUTEX;
    if (sqlite3_open_v2(ImmutableAddress(path).c_str(), &mpHandle, kFlags, nullptr) != SQLITE_OK) {
        return -1;
    }
    sqlite3_limit(mpHandle, SQLITE_LIMIT_LENGTH, kGreatestValue);
    sqlite3_limit(mpHandle, SQLITE_LIMIT_ATTACHED, 0);
    sqlite3_db_config(mpHandle, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
    sqlite3_db_config(mpHandle, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
    sqlite3_db_config(mpHandle, SQLITE_DBCONFIG_ENABLE_VIEW, 0, nullptr);
    sqlite3_db_config(mpHandle, SQLITE_DBCONFIG_ENABLE_TRIGGER, 0, nullptr);
    // Makes a missing column a failure instead of a text.
    sqlite3_db_config(mpHandle, SQLITE_DBCONFIG_DQS_DML, 0, nullptr);
    sqlite3_create_collation(mpHandle, "unicase", SQLITE_UTF8, nullptr, CompareIgnoringCase);
    sqlite3_exec(mpHandle, "PRAGMA cell_size_check=ON;", nullptr, nullptr, nullptr);
    mWatch = {isCancelled, true, kLooksForSchema};
    sqlite3_progress_handler(mpHandle, kStepsBetweenLooks, LookForEnd, &mWatch);
    sqlite3_set_authorizer(mpHandle, AllowReading, nullptr);
    // The engine reads the file only now.
    const StatementPointer probe(Prepare("SELECT name FROM sqlite_master"));
    const int result = probe == nullptr ? SQLITE_ERROR : sqlite3_step(probe.get());
    mWatch.IsOpening = false;
    return result == SQLITE_ROW || result == SQLITE_DONE ? 0 : -1;
}

int ForeignDatabase::LookForEnd(void* watch) {
    auto& self = *static_cast<Watch*>(watch);
    const bool isCancelled = self.IsCancelled != nullptr && *self.IsCancelled;
    return isCancelled || (self.IsOpening && --self.LooksLeft < 0) ? 1 : 0;
}

int ForeignDatabase::PlayBackLog(const wxString& path) {
    sqlite3* handle = nullptr;
    constexpr int kFlags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_PRIVATECACHE | SQLITE_OPEN_NOMUTEX;
    int result = sqlite3_open_v2(ToUtf8(path).c_str(), &handle, kFlags, nullptr);
    if (result == SQLITE_OK) {
        sqlite3_db_config(handle, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
        sqlite3_db_config(handle, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
        // Reads the header alone, with which the engine finds the log.
        result = sqlite3_exec(handle, "PRAGMA schema_version", nullptr, nullptr, nullptr);
    }
    if (result == SQLITE_OK) {
        result = sqlite3_wal_checkpoint_v2(handle, nullptr, SQLITE_CHECKPOINT_TRUNCATE, nullptr,
                                           nullptr);
    }
    sqlite3_close(handle);
    return result == SQLITE_OK ? 0 : -1;
}

bool ForeignDatabase::HasTable(const char* table) {
    const StatementPointer find(Prepare("SELECT type, sql FROM sqlite_master WHERE name=?"));
    if (find == nullptr) {
        return false;
    }
    sqlite3_bind_text(find.get(), 1, table, -1, SQLITE_STATIC);
    if (sqlite3_step(find.get()) != SQLITE_ROW) {
        return false;
    }
    const Row row(find.get());
    std::string sql = row.Bytes(1);
    std::transform(sql.begin(), sql.end(), sql.begin(),
                   [](unsigned char byte) { return static_cast<char>(std::toupper(byte)); });
    if (row.Bytes(0) != "table" || sql.rfind("CREATE TABLE", 0) != 0) {
        return false;
    }
    // A hidden column is computed, or belongs to a virtual table.
    const StatementPointer columns(Prepare(std::string("PRAGMA table_xinfo(\"") + table + "\")"));
    bool isPlain = columns != nullptr;
    while (isPlain && sqlite3_step(columns.get()) == SQLITE_ROW) {
        isPlain = Row(columns.get()).Int64(6) == 0;
    }
    return isPlain;
}

int ForeignDatabase::ReadAll(const char* table, const std::vector<const char*>& columns,
                             const Visitor& visit) {
    const StatementPointer rows(
        Prepare("SELECT " + JoinColumns(columns) + " FROM \"" + table + "\" NOT INDEXED"));
    return Visit(rows.get(), visit);
}

int ForeignDatabase::ReadRow(const char* table, const std::vector<const char*>& columns,
                             int64_t rowId, const Visitor& visit) {
    auto& statement = mRowStatements[table];
    if (statement == nullptr) {
        statement =
            Prepare("SELECT " + JoinColumns(columns) + " FROM \"" + table + "\" WHERE rowid=?");
    }
    sqlite3_bind_int64(statement, 1, rowId);
    const int result = Visit(statement, visit);
    sqlite3_reset(statement);
    return result;
}

wxString ForeignDatabase::GetError() const {
    return mpHandle == nullptr ? wxString() : FromUtf8(sqlite3_errmsg(mpHandle));
}

sqlite3_stmt* ForeignDatabase::Prepare(const std::string& sql) {
    sqlite3_stmt* statement = nullptr;
    sqlite3_prepare_v2(mpHandle, sql.c_str(), -1, &statement, nullptr);
    return statement;
}

int ForeignDatabase::Visit(sqlite3_stmt* statement, const Visitor& visit) {
    if (statement == nullptr) {
        return -1;
    }
    for (;;) {
        const int result = sqlite3_step(statement);
        if (result == SQLITE_DONE) {
            return 0;
        }
        if (result != SQLITE_ROW) {
            return -1;
        }
        if (!visit(Row(statement))) {
            return 0;
        }
    }
}

void ForeignDatabase::Close() {
    for (const auto& [table, statement] : mRowStatements) {
        sqlite3_finalize(statement);
    }
    mRowStatements.clear();
    sqlite3_close(mpHandle);
    mpHandle = nullptr;
}
