#include "store/Statement.h"

#include <algorithm>
#include <array>
#include <limits>
#include <utility>

#include "base/Time.h"
#include "base/Unicode.h"
#include "store/CardUuid.h"
#include "store/Database.h"

namespace {

// Gives a bound value to the engine; the result is the engine's.
struct Binder {
    sqlite3_stmt* Statement;
    int Index;

    int operator()(int32_t value) const { return sqlite3_bind_int(Statement, Index, value); }
    int operator()(int64_t value) const { return sqlite3_bind_int64(Statement, Index, value); }
    int operator()(double value) const { return sqlite3_bind_double(Statement, Index, value); }
    int operator()(const std::string& text) const {
        if (text.length() > static_cast<size_t>(std::numeric_limits<int>::max())) {
            return SQLITE_TOOBIG;
        }
        // The length is given, so that a text with a NUL in it is stored whole.
        return sqlite3_bind_text(Statement, Index, text.data(), static_cast<int>(text.length()),
                                 SQLITE_STATIC);
    }
};

}  // namespace

StatementRun::StatementRun(Database& database, sqlite3_stmt* statement, NoArguments)
    : mDatabase(database), mpStatement(statement) {
    if (mDatabase.MarkStatement(mpStatement, this) != 0) {
        mpStatement = nullptr;
        return;
    }
    mBound.reserve(static_cast<size_t>(sqlite3_bind_parameter_count(mpStatement)));
}

StatementRun::~StatementRun() {
    Release();
}

void StatementRun::Release() {
    if (mpStatement != nullptr) {
        // The result repeats that of the last step, which was looked at there.
        sqlite3_reset(mpStatement);
        // The texts are about to go.
        sqlite3_clear_bindings(mpStatement);
        mDatabase.MarkStatement(mpStatement, nullptr);
        mpStatement = nullptr;
    }
}

bool StatementRun::Append(BoundValue value) {
    if (mBound.size() == mBound.capacity()) {
        // No parameter is left, or there is no statement.
        Release();
        return false;
    }
    mBound.push_back(std::move(value));
    if (std::visit(Binder{mpStatement, static_cast<int>(mBound.size())}, mBound.back()) !=
        SQLITE_OK) {
        Release();
        return false;
    }
    return true;
}

StatementRun::BoundValue StatementRun::ValueOf(const wxString& text) {
    return ToUtf8(text);
}

StatementRun::BoundValue StatementRun::ValueOf(const wxDateTime& time) {
    constexpr int64_t kNoTime = -1;
    if (!time.IsValid()) {
        return kNoTime;
    }
    const int64_t milliseconds = time.GetValue().GetValue();
    const int64_t seconds = milliseconds / 1000;
    return milliseconds >= 0 && seconds <= kLastTimeStamp ? seconds : kNoTime;
}

StatementRun::BoundValue StatementRun::ValueOf(const CardUuid& uuid) {
    const std::array<char, 36> text = UuidText(uuid);
    return std::string(text.data(), text.size());
}

int StatementRun::Step(const char* label) {
    if (mpStatement == nullptr) {
        return -1;
    }
    int result = sqlite3_step(mpStatement);
    if ((result & 0xFF) == SQLITE_ERROR && PrepareAnew()) {
        result = sqlite3_step(mpStatement);
    }
    mHasStepped = true;
    switch (result & 0xFF) {
        case SQLITE_DONE:
            mDone = true;
            return 0;
        case SQLITE_ROW:
            mDone = false;
            return 0;
        default:
            return mDatabase.ReportStepFailure(mpStatement, label, result);
    }
}

bool StatementRun::PrepareAnew() {
    // Rows that were handed out already must not come again. The engine does not ask for it either:
    // while a statement reads, nobody else changes the file.
    if (mHasStepped || (sqlite3_reset(mpStatement) & 0xFF) != SQLITE_SCHEMA ||
        mDatabase.PrepareAnew(mpStatement) != 0) {
        return false;
    }
    int index = 0;
    return std::all_of(mBound.begin(), mBound.end(), [&](const BoundValue& value) {
        return std::visit(Binder{mpStatement, ++index}, value) == SQLITE_OK;
    });
}

int32_t StatementRun::ColumnInt(int index) const {
    return sqlite3_column_int(mpStatement, index);
}

int64_t StatementRun::ColumnInt64(int index) const {
    return sqlite3_column_int64(mpStatement, index);
}

double StatementRun::ColumnDouble(int index) const {
    return sqlite3_column_double(mpStatement, index);
}

wxString StatementRun::ColumnText(int index) const {
    const unsigned char* const text = sqlite3_column_text(mpStatement, index);
    if (text == nullptr) {
        return wxString();
    }
    const int length = sqlite3_column_bytes(mpStatement, index);
    return FromUtf8(reinterpret_cast<const char*>(text), static_cast<size_t>(length));
}

std::u16string_view StatementRun::ColumnUtf16(int index) const {
    const void* const text = sqlite3_column_text16(mpStatement, index);
    if (text == nullptr) {
        return {};
    }
    const int length = sqlite3_column_bytes16(mpStatement, index);
    return {static_cast<const char16_t*>(text), static_cast<size_t>(length) / sizeof(char16_t)};
}

wxDateTime StatementRun::ColumnTime(int index) const {
    return wxDateTime(wxLongLong(ColumnSeconds(index) * 1000));
}

int64_t StatementRun::ColumnSeconds(int index) const {
    // A number in a damaged row must not overflow, nor become the one that stands for "no time".
    constexpr int64_t kGreatest = std::numeric_limits<int64_t>::max() / 1000;
    return std::clamp(ColumnInt64(index), -kGreatest, kGreatest);
}

int StatementRun::ColumnUuid(int index, CardUuid& uuid) const {
    return ParseUuid(ColumnUtf16(index), uuid) == 0 ? 0 : -1;
}

StoreReadLock::StoreReadLock(Database& database)
    : mRun(database, database.GetStatement("SELECT count(*) FROM Categories;")) {
    // Without its row there is no lock, and every read takes its own as usual.
    mRun.Step("StoreReadLock");
}
