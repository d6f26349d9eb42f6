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

// One execution of a prepared statement. It marks the statement as in use while it lives and resets
// it at its end, so a statement stepped for one row only is ready again at once. A second run on a
// statement in use gets an empty handle, and each of its operations fails harmlessly.
//
// When another program has changed the schema of the file (VACUUM, CREATE INDEX), the engine
// refuses the first step of every statement prepared before. The run then has the statement
// prepared anew, once, binds the same values and steps again.
class StatementRun {
  public:
    StatementRun(Database& database, sqlite3_stmt* statement);
    ~StatementRun();
    StatementRun(const StatementRun&) = delete;
    StatementRun& operator=(const StatementRun&) = delete;

    // Parameters count from 1. Each gives 0 or -1.
    int BindInt(int index, int32_t value);
    int BindInt64(int index, int64_t value);
    int BindDouble(int index, double value);
    int BindText(int index, const wxString& text);
    // Whole seconds since 1970, or -1 for a time before it or after the year 9999.
    int BindTime(int index, const wxDateTime& time);
    int BindUuid(int index, const CardUuid& uuid);

    // Runs to the next row or to the end: 0 in both cases, and IsDone tells which. The label names
    // the operation in messages. An engine failure goes to the FatalErrorReport of the Database;
    // if that returns, the result is negative.
    int Step(const wxString& label);
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
    // A value as it was bound; the empty one was not.
    using BoundValue = std::variant<std::monostate, int32_t, int64_t, double, std::string>;

    int Bind(int index, BoundValue value);
    // After a failed step: true when the statement was outdated and is ready to be stepped again.
    bool PrepareAnew();

    Database& mDatabase;
    sqlite3_stmt* mpStatement;
    bool mDone = false;
    bool mHasStepped = false;
    // One for each parameter of the statement once any is bound.
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
