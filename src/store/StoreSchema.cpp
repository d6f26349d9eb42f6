// Whether this program can live with the schema of a store file.
//
// The engine has read the schema already, so it is asked what it made of it:
//
//     pragma_table_xinfo                     generated columns, names of columns, default values
//     pragma_index_list, pragma_index_xinfo  partial indexes and those on expressions
//     an authorizer                          whether a default value calls a function
//     EXPLAIN                                whether a write obeys a CHECK or an ON CONFLICT
//
// No pragma tells of CHECK and ON CONFLICT. They show in the engine's program for a write: it is
// another one when checks are ignored and the write brings a conflict rule of its own.

#include "store/StoreSchema.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

namespace {

// Written as calls, these functions of the engine cannot be replaced by tables of the file: the
// engine then refuses the call.
const std::string kOurs =
    "WITH Ours(name) AS (VALUES ('Cards'),('Categories'),('Globals')),"
    " Columns AS (SELECT c.* FROM Ours, pragma_table_xinfo(Ours.name) AS c),"
    " Indexes AS (SELECT i.* FROM Ours, pragma_index_list(Ours.name) AS i),"
    " Keys AS (SELECT k.* FROM Indexes, pragma_index_xinfo(Indexes.name) AS k WHERE k.key) ";

// What must not be. A column with a name of the engine's own for the row id would hide the row id.
// Each change of a card is written to each index, and each default value into each new row: the
// indexes of this program's own tables have 31 columns together, and there are no default values.
const std::string kSelectUnfit =
    kOurs +
    "SELECT name FROM Columns"
    " WHERE hidden OR name COLLATE NOCASE IN ('rowid','oid','_rowid_')"
    " UNION ALL SELECT name FROM Indexes WHERE partial"
    " UNION ALL SELECT 'an expression' FROM Keys WHERE cid = -2"
    " UNION ALL SELECT 'many indexes' WHERE (SELECT count(*) FROM Keys) > 100"
    " UNION ALL SELECT 'long values'"
    " WHERE (SELECT sum(length(dflt_value)) FROM Columns) > 16384;";
const std::string kSelectDefaults =
    kOurs + "SELECT dflt_value FROM Columns WHERE dflt_value NOT NULL;";
const std::string kSelectTables =
    kOurs + "SELECT name FROM Ours WHERE EXISTS (SELECT 1 FROM pragma_table_xinfo(Ours.name));";
// Only a text with one of these words, be it in a comment, can have a rule for writes. A plain
// store is thus never refused by an engine whose programs have another form.
constexpr char kSelectRuleWords[] =
    "SELECT 1 FROM sqlite_master WHERE CAST(sql AS TEXT) LIKE '%CHECK%'"
    " OR CAST(sql AS TEXT) LIKE '%CONFLICT%' LIMIT 1;";

using Rows = std::vector<std::string>;

struct FinalizeStatement {
    void operator()(sqlite3_stmt* statement) const {
        // The result repeats that of the last step.
        sqlite3_finalize(statement);
    }
};
using StatementPointer = std::unique_ptr<sqlite3_stmt, FinalizeStatement>;

// Null where the engine refuses.
StatementPointer Compile(sqlite3* handle, const std::string& sql) {
    sqlite3_stmt* statement = nullptr;
    const int result = sqlite3_prepare_v2(handle, sql.c_str(), -1, &statement, nullptr);
    return StatementPointer(result == SQLITE_OK ? statement : nullptr);
}

// Appends the rows of an answer; each text in a row ends with a line break.
bool Ask(sqlite3* handle, const std::string& sql, Rows& rows) {
    // The eighth column of a program is a remark.
    constexpr int kMostColumns = 7;
    const StatementPointer statement = Compile(handle, sql);
    int result = SQLITE_ERROR;
    while (statement != nullptr && (result = sqlite3_step(statement.get())) == SQLITE_ROW) {
        std::string& row = rows.emplace_back();
        for (int i = 0; i < std::min(sqlite3_column_count(statement.get()), kMostColumns); ++i) {
            const unsigned char* const text = sqlite3_column_text(statement.get(), i);
            row.append(text == nullptr ? "" : reinterpret_cast<const char*>(text)).append("\n");
        }
    }
    return result == SQLITE_DONE;
}

// What the engine asks while it compiles a SELECT. The time of a row is no function of its text.
int AllowLiteral(void*, int action, const char*, const char* function, const char*, const char*) {
    const bool isTime = action == SQLITE_FUNCTION &&
                        std::strncmp(function, "current_", std::strlen("current_")) == 0;
    return action == SQLITE_SELECT || isTime ? SQLITE_OK : SQLITE_DENY;
}

bool AreLiterals(sqlite3* handle, const Rows& values) {
    sqlite3_set_authorizer(handle, AllowLiteral, nullptr);
    const bool areLiterals =
        std::all_of(values.begin(), values.end(), [handle](const std::string& value) {
            return Compile(handle, "SELECT (" + value + ")") != nullptr;
        });
    sqlite3_set_authorizer(handle, nullptr, nullptr);
    return areLiterals;
}

// Appends the program that writes all columns of each table. There is none for a view or a virtual
// table, whose use is switched off.
bool ExplainWrites(sqlite3* handle, const std::string& insert, const Rows& tables, Rows& program) {
    return std::all_of(tables.begin(), tables.end(), [&](const std::string& table) {
        return Ask(handle, "EXPLAIN " + insert + " INTO " + table + "SELECT * FROM " + table,
                   program);
    });
}

}  // namespace

bool IsPlainSchema(sqlite3* handle) {
    Rows unfit;
    Rows defaults;
    Rows tables;
    Rows program;
    if (!Ask(handle, kSelectUnfit, unfit) || !unfit.empty() ||
        !Ask(handle, kSelectDefaults, defaults) || !AreLiterals(handle, defaults) ||
        !Ask(handle, kSelectTables, tables) || !ExplainWrites(handle, "INSERT", tables, program)) {
        return false;
    }
    Rows words;
    Rows without;
    return Ask(handle, kSelectRuleWords, words) &&
           (words.empty() ||
            (Ask(handle, "PRAGMA ignore_check_constraints = 1", without) &&
             ExplainWrites(handle, "INSERT OR ABORT", tables, without) && program == without));
}
