#include "store/Statement.h"

#include <algorithm>
#include <array>
#include <limits>

#include "base/Time.h"
#include "base/Unicode.h"
#include "store/CardUuid.h"
#include "store/Database.h"

sqlite3_stmt* StatementRun::Mark(sqlite3_stmt* statement) {
    return mDatabase.MarkStatement(statement, this) == 0 ? statement : nullptr;
}

std::string Repeat(const std::string& text, size_t count) {
    std::string all = text;
    all.reserve(count * (text.length() + 1));
    for (size_t i = 1; i < count; ++i) {
        all += ',';
        all += text;
    }
    return all;
}

StatementRun::~StatementRun() {
    Release();
}

void StatementRun::Release() {
    if (mpStatement != nullptr) {
        // The result repeats that of the last step, which was checked there.
        sqlite3_reset(mpStatement);
        // Else the texts of a large group would stay until the next one.
        sqlite3_clear_bindings(mpStatement);
        mDatabase.MarkStatement(mpStatement, nullptr);
        mpStatement = nullptr;
    }
}

bool StatementRun::IsBound(int result) {
    if (result != SQLITE_OK) {
        Release();
    }
    return result == SQLITE_OK;
}

bool StatementRun::BindNext(int32_t value) {
    return IsBound(sqlite3_bind_int(mpStatement, ++mBound, value));
}

bool StatementRun::BindNext(int64_t value) {
    return IsBound(sqlite3_bind_int64(mpStatement, ++mBound, value));
}

bool StatementRun::BindNext(double value) {
    return IsBound(sqlite3_bind_double(mpStatement, ++mBound, value));
}

// The length is given, so that a text with a NUL in it is stored whole.
bool StatementRun::BindUtf8(std::string_view text) {
    return IsBound(sqlite3_bind_text64(mpStatement, ++mBound, text.data(), text.length(),
                                       SQLITE_TRANSIENT, SQLITE_UTF8));
}

bool StatementRun::BindNext(const wxString& text) {
    return BindUtf8(ToUtf8(text));
}

// In the engine's own form nothing is converted, so a broken text stays the same.
bool StatementRun::BindNext(const std::u16string& text) {
    return IsBound(
        sqlite3_bind_text64(mpStatement, ++mBound, reinterpret_cast<const char*>(text.data()),
                            text.length() * sizeof(char16_t), SQLITE_TRANSIENT, SQLITE_UTF16));
}

bool StatementRun::BindNext(const wxDateTime& time) {
    constexpr int64_t kNoTime = -1;
    if (!time.IsValid()) {
        return BindNext(kNoTime);
    }
    const int64_t milliseconds = time.GetValue().GetValue();
    const int64_t seconds = milliseconds / 1000;
    return BindNext(milliseconds >= 0 && seconds <= kLastTimeStamp ? seconds : kNoTime);
}

bool StatementRun::BindNext(const CardUuid& uuid) {
    const std::array<char, 36> text = UuidText(uuid);
    return BindUtf8({text.data(), text.size()});
}

bool StatementRun::BindNext(const StoredValue& value) {
    return IsBound(sqlite3_bind_value(mpStatement, ++mBound, value.get()));
}

int StatementRun::Step(const char* label) {
    if (mpStatement == nullptr) {
        return -1;
    }
    if (!mHasStepped && sqlite3_stmt_readonly(mpStatement) == 0) {
        mDatabase.AnnounceChange();
        if (mpStatement == nullptr) {
            return -1;
        }
    }
    const int result = sqlite3_step(mpStatement);
    mHasStepped = true;
    switch (result & 0xFF) {
        case SQLITE_DONE:
            mDone = true;
            mDatabase.ConfirmChanges();
            return 0;
        case SQLITE_ROW:
            mDone = false;
            return 0;
        default:
            return mDatabase.ReportStepFailure(mpStatement, label, result);
    }
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

StoredValue StatementRun::ColumnValue(int index) const {
    return {sqlite3_value_dup(sqlite3_column_value(mpStatement, index)), sqlite3_value_free};
}

wxDateTime StatementRun::ColumnTime(int index) const {
    return wxDateTime(wxLongLong(ColumnSeconds(index) * 1000));
}

int64_t StatementRun::ColumnSeconds(int index) const {
    // A number in a damaged row must neither overflow nor become the one that stands for "no time".
    constexpr int64_t kGreatest = std::numeric_limits<int64_t>::max() / 1000;
    return std::clamp(ColumnInt64(index), -kGreatest, kGreatest);
}

int StatementRun::ColumnUuid(int index, CardUuid& uuid) const {
    return ParseUuid(ColumnUtf16(index), uuid) == 0 ? 0 : -1;
}

StoreReadLock::StoreReadLock(Database& database)
    : mRun(database, database.GetStatement("SELECT count(*) FROM Categories;")) {
    // Without its row there is no lock, and each read takes its own as usual.
    mRun.Step("StoreReadLock");
}
