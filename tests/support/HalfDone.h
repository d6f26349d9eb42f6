#pragma once

#include <gtest/gtest.h>
#include <sqlite3.h>

#include "support/StoreFixture.h"

// What another program leaves of a database that it changes, when it ends in the middle: copied to
// another name while the change runs, with the journal or the log beside it. Tests of stores and of
// decks read on from there.
inline void LeaveHalfDone(const wxString& database, const wxString& target,
                          const std::string& change) {
    sqlite3* handle = nullptr;
    ASSERT_EQ(sqlite3_open(database.utf8_str(), &handle), SQLITE_OK);
    ASSERT_EQ(sqlite3_exec(handle, change.c_str(), nullptr, nullptr, nullptr), SQLITE_OK);
    for (const char* const suffix : {"", "-journal", "-wal"}) {
        if (std::filesystem::exists((database + suffix).utf8_string())) {
            WriteBytes(target + suffix, ReadBytes(database + suffix));
        }
    }
    sqlite3_close(handle);
}
