#pragma once

#include <sqlite3.h>
#include <wx/string.h>

#include <cstdint>
#include <map>
#include <string>
#include <string_view>

// A connection to the store on which an exchange works. Its first failure stays: all later
// operations then do nothing, and whoever commits looks at it once.
class SqlFile {
  public:
    SqlFile() = default;
    ~SqlFile() { Close(); }
    SqlFile(const SqlFile&) = delete;
    SqlFile& operator=(const SqlFile&) = delete;

    // Opens an existing file. Waits for other programs like the open store does.
    bool Open(const std::string& path);
    // Closes it and takes back what is not committed.
    void Close();
    bool IsOpen() const { return mpHandle != nullptr; }
    sqlite3* Handle() const { return mpHandle; }

    bool Execute(const char* sql);

    bool HasFailed() const { return mCode != SQLITE_OK; }
    int GetCode() const { return mCode; }
    // Returns the engine's words for the first failure.
    const wxString& GetError() const { return mError; }
    // Notes a failure, as the engine tells it now.
    void Fail(int code);

  private:
    friend class Query;
    // Returns the prepared statement of a text, which lives as long as the program; null after a
    // failure.
    sqlite3_stmt* Prepare(const char* sql);

    sqlite3* mpHandle = nullptr;
    std::map<const char*, sqlite3_stmt*> mStatements;
    int mCode = SQLITE_OK;
    wxString mError;
};

// One run of a statement, whose text must be a constant. Two runs of one statement may not overlap.
class Query {
  public:
    template <typename... Values>
    Query(SqlFile& file, const char* sql, const Values&... values)
        : mFile(file), mpStatement(file.Prepare(sql)) {
        (Bind(values), ...);
    }
    ~Query() {
        if (mpStatement != nullptr) {
            sqlite3_reset(mpStatement);
            sqlite3_clear_bindings(mpStatement);
        }
    }
    Query(const Query&) = delete;
    Query& operator=(const Query&) = delete;

    // Binds the next value. Texts are UTF-8; they and blobs must live until the run ends.
    void Bind(int64_t value);
    void Bind(int value) { Bind(int64_t{value}); }
    void Bind(double value);
    void Bind(std::string_view text);
    void Bind(const std::string& text) { Bind(std::string_view(text)); }
    void BindBlob(std::string_view bytes);
    void BindNull() { ++mBound; }

    // Returns true at a row, false at the end and after a failure.
    bool Step();

    bool IsNull(int column) const {
        return sqlite3_column_type(mpStatement, column) == SQLITE_NULL;
    }
    int64_t Int(int column) const { return sqlite3_column_int64(mpStatement, column); }
    double Real(int column) const { return sqlite3_column_double(mpStatement, column); }
    std::string Text(int column) const;
    // A text in UTF-8 that may have been bound as a blob.
    std::string Bytes(int column) const;
    std::string Blob(int column) const { return std::string(BlobView(column)); }
    // The same without a copy. It lives until the next step.
    std::string_view BlobView(int column) const;

  private:
    SqlFile& mFile;
    sqlite3_stmt* mpStatement;
    int mBound = 0;
};
