#pragma once

#include <sqlite3.h>
#include <wx/datetime.h>
#include <wx/string.h>

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

class CardUuid;
class Database;

// A value of any type as the store has it.
using StoredValue = std::shared_ptr<sqlite3_value>;

// One execution of a prepared statement with its arguments:
//
//     StatementRun run(database, statement, categoryId, name);
//     while (run.Step("Example") == 0 && !run.IsDone()) { ... run.ColumnInt(0) ... }
//
// The run marks the statement as in use while it lives and resets it at its end, so a statement
// stepped for one row only is ready again at once. A run on a statement that is in use, or with an
// argument that cannot be bound, has no handle; its operations fail harmlessly.
class StatementRun {
  public:
    // The arguments are those of Bind.
    template <typename... Values>
    StatementRun(Database& database, sqlite3_stmt* statement, const Values&... values)
        : mDatabase(database), mpStatement(Mark(statement)) {
        Bind(values...);
    }
    ~StatementRun();
    StatementRun(const StatementRun&) = delete;
    StatementRun& operator=(const StatementRun&) = delete;

    // Binds values to the next parameters, from the first one on: numbers, texts, identities, and
    // times as whole seconds since 1970, or -1 for a time before 1970 or after the year 9999.
    // Returns 0 or -1.
    template <typename... Values>
    int Bind(const Values&... values) {
        return (BindNext(values) && ...) ? 0 : -1;
    }

    // Runs to the next row or to the end. Returns 0 in both cases, and IsDone tells which. The
    // label names the operation in messages. An engine failure goes to the FatalErrorReport of the
    // Database; if that returns, the result is negative.
    int Step(const char* label);
    bool IsDone() const { return mDone; }

    // Only for the Database, whose closing takes the handle away from a run that still lives.
    void Forget() { mpStatement = nullptr; }

    // Columns count from 0.
    int32_t ColumnInt(int index) const;
    int64_t ColumnInt64(int index) const;
    double ColumnDouble(int index) const;
    wxString ColumnText(int index) const;
    // Returns the engine's own text, valid until the next step, the end of the run, or another read
    // of the column.
    std::u16string_view ColumnUtf16(int index) const;
    // A copy of the value, whatever its type.
    StoredValue ColumnValue(int index) const;
    wxDateTime ColumnTime(int index) const;
    // Returns the same as seconds since 1970, within the range of a time.
    int64_t ColumnSeconds(int index) const;
    // Returns Returns 0, or -1 when the column's text is no identity.
    int ColumnUuid(int index, CardUuid& uuid) const;

  private:
    // Returns the statement, or null where it is in use already.
    sqlite3_stmt* Mark(sqlite3_stmt* statement);
    void Release();

    bool BindNext(int32_t value);
    bool BindNext(int64_t value);
    bool BindNext(double value);
    bool BindNext(const wxString& text);
    bool BindNext(const std::u16string& text);
    bool BindNext(const wxDateTime& time);
    bool BindNext(const CardUuid& uuid);
    bool BindNext(const StoredValue& value);
    bool BindUtf8(std::string_view text);
    // False, with the statement given up, when the engine's result of a bind is an error.
    bool IsBound(int result);

    Database& mDatabase;
    sqlite3_stmt* mpStatement;
    bool mDone = false;
    bool mHasStepped = false;
    // How many arguments were bound so far.
    int mBound = 0;
};

// Returns the text repeated, with commas between.
std::string Repeat(const std::string& text, size_t count);

// Keeps the store's file locked for reading while it lives. Operations in a row then need not lock
// the file one by one, which costs more than a small read. Each write still commits by itself;
// other programs can read meanwhile but not write. Has no effect where the store cannot be read.
class StoreReadLock {
  public:
    explicit StoreReadLock(Database& database);

  private:
    // Stands on its only row, and so keeps reading until it is reset.
    StatementRun mRun;
};
