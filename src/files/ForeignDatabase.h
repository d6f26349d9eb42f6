#pragma once

#include <sqlite3.h>
#include <wx/string.h>

#include <atomic>
#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

// Reads rows from a database file of another program. The file is data, never code: it is opened
// only for reading, only plain tables are read, and nothing that its schema would compute is run.
// The file must not change meanwhile, so a file in use by its program has to be copied first.
//
// Such columns may hold anything: a value read as a number or a text is converted as the engine
// does, and one that cannot be converted is 0 or empty.
class ForeignDatabase {
  public:
    // The present row while a visitor looks at it. Columns count from 0.
    class Row {
      public:
        explicit Row(sqlite3_stmt* statement) : mpStatement(statement) {}
        int64_t Int64(int column) const;
        double Double(int column) const;
        // Returns the text, with U+FFFD for invalid UTF-8.
        wxString Text(int column) const;
        // Returns the bytes of a text or blob.
        std::string Bytes(int column) const;

      private:
        sqlite3_stmt* mpStatement;
    };
    // Returns false to end the reading.
    using Visitor = std::function<bool(const Row& row)>;

    ForeignDatabase() = default;
    ~ForeignDatabase();
    ForeignDatabase(const ForeignDatabase&) = delete;
    ForeignDatabase& operator=(const ForeignDatabase&) = delete;

    // Returns 0, or -1 when the file is no database of the engine. Reading fails early once the
    // flag is true, which is not owned and may be null.
    int Open(const wxString& path, const std::atomic<bool>* isCancelled = nullptr);

    // Plays the write-ahead log beside a database back into it. The file is a copy that nobody else
    // has open. Returns 0, or -1 when one of them is damaged.
    static int PlayBackLog(const wxString& path);

    // Returns true for a plain table of that name whose columns are all stored.
    bool HasTable(const char* table);

    // Shows the columns of each row of a table, in the order of the rows' numbers. The names must
    // be literals of the program. "rowid" is a column too. Returns 0, or -1 when the table or a
    // column is missing or a page cannot be read.
    int ReadAll(const char* table, const std::vector<const char*>& columns, const Visitor& visit);
    // The same for the one row of that number. A missing row is success. Pass the same columns of a
    // table each time. Like the whole object, for one thread at a time.
    int ReadRow(const char* table, const std::vector<const char*>& columns, int64_t rowId,
                const Visitor& visit);

    // Returns the engine's text of the last failure.
    wxString GetError() const;

  private:
    // What the engine asks between its instructions.
    struct Watch {
        // Not owned; may be null.
        const std::atomic<bool>* IsCancelled = nullptr;
        // While the file is opened, how often the engine may still ask.
        bool IsOpening = true;
        int LooksLeft = 0;
    };
    static int LookForEnd(void* watch);

    sqlite3_stmt* Prepare(const std::string& sql);
    int Visit(sqlite3_stmt* statement, const Visitor& visit);
    void Close();

    sqlite3* mpHandle = nullptr;
    Watch mWatch;
    // The statements of ReadRow by their tables, whose names are literals of the program.
    std::map<const char*, sqlite3_stmt*> mRowStatements;
};
