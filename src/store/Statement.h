#pragma once

#include <sqlite3.h>
#include <wx/datetime.h>
#include <wx/string.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

class CardUuid;
class Database;

// One execution of a prepared statement with its arguments:
//
//     StatementRun run(database, statement, categoryId, name);
//     while (run.Step("Example") == 0 && !run.IsDone()) { ... run.ColumnInt(0) ... }
//
// The run marks the statement as in use while it lives and resets it at its end, so a statement
// stepped for one row only is ready again at once. A run on a statement that is in use already, or
// with an argument that cannot be bound, has no handle, and each of its operations fails
// harmlessly.
//
// When another program has changed the schema of the file (VACUUM, CREATE INDEX), the engine
// refuses the first step of every statement prepared before. The run then has the statement
// prepared anew, once, binds the same arguments and steps again.
class StatementRun {
  public:
    // The arguments are those of Bind.
    template <typename... Values>
    StatementRun(Database& database, sqlite3_stmt* statement, const Values&... values)
        : StatementRun(database, statement, NoArguments()) {
        Bind(values...);
    }
    ~StatementRun();
    StatementRun(const StatementRun&) = delete;
    StatementRun& operator=(const StatementRun&) = delete;

    // Gives values to the next parameters, from the first one on: numbers, texts, identities, and
    // times as whole seconds since 1970, or -1 for a time before it or after the year 9999. Returns
    // 0 or -1.
    template <typename... Values>
    int Bind(const Values&... values) {
        return (Append(ValueOf(values)) && ...) ? 0 : -1;
    }

    // Runs to the next row or to the end: 0 in both cases, and IsDone tells which. The label names
    // the operation in messages. An engine failure goes to the FatalErrorReport of the Database;
    // if that returns, the result is negative.
    int Step(const char* label);
    bool IsDone() const { return mDone; }

    // For the Database alone: its closing takes the handle away from a run that still lives.
    void Forget() { mpStatement = nullptr; }

    // Columns count from 0.
    int32_t ColumnInt(int index) const;
    int64_t ColumnInt64(int index) const;
    double ColumnDouble(int index) const;
    wxString ColumnText(int index) const;
    // The engine's own text, which ends with the next step, the run, or another kind of look at the
    // column.
    std::u16string_view ColumnUtf16(int index) const;
    wxDateTime ColumnTime(int index) const;
    // The same as seconds since 1970, within the range of a time.
    int64_t ColumnSeconds(int index) const;
    // 0, or -1 when the column's text is no identity.
    int ColumnUuid(int index, CardUuid& uuid) const;

  private:
    using BoundValue = std::variant<int32_t, int64_t, double, std::string>;
    struct NoArguments {};

    StatementRun(Database& database, sqlite3_stmt* statement, NoArguments);

    static BoundValue ValueOf(int32_t value) { return value; }
    static BoundValue ValueOf(int64_t value) { return value; }
    static BoundValue ValueOf(double value) { return value; }
    static BoundValue ValueOf(const wxString& text);
    static BoundValue ValueOf(const wxDateTime& time);
    static BoundValue ValueOf(const CardUuid& uuid);

    // Binds the next parameter. False, with the handle given up, when the engine refuses.
    bool Append(BoundValue value);
    void Release();
    // After a failed step: true when the statement was outdated and is ready to be stepped again.
    bool PrepareAnew();

    Database& mDatabase;
    sqlite3_stmt* mpStatement;
    bool mDone = false;
    bool mHasStepped = false;
    // What is bound so far. The engine reads the texts from here, so the room for all of them is
    // made before the first.
    std::vector<BoundValue> mBound;
};

// Keeps the store's file locked for reading while it lives. Operations in a row then need not lock
// and unlock the file one by one, which costs more than a small read itself. Each write commits by
// itself as ever; other programs can read meanwhile but not write. It is of no effect where the
// store cannot be read.
class StoreReadLock {
  public:
    explicit StoreReadLock(Database& database);

  private:
    // Has stepped to its only row, and so reads until it is reset.
    StatementRun mRun;
};
