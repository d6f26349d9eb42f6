#pragma once

#include <sqlite3.h>
#include <wx/string.h>

#include <memory>

#include "base/Files.h"

// Opens a database file to look at it: nothing is written to the file, and nothing appears beside
// it. A journal or log that a program has left there is played back in a private copy, which the
// handle then reads, and which goes with the directory. Returns the engine's result; the handle is
// the caller's in any case. In a process that has the same file open, only a file with a log of
// the engine's other kind (WAL) must not be asked for.
int OpenReadOnly(const wxString& path, sqlite3*& handle,
                 std::unique_ptr<TemporaryDirectory>& privateCopy);
