#pragma once

#include <sqlite3.h>
#include <wx/thread.h>

// Brings the cards of a first-schema file to the present form. Joinable; while it lives it is the
// only thread that uses the handle. It writes the result word once, and the word is read after it
// was joined.
class DatabaseUpgradeThread : public wxThread {
  public:
    DatabaseUpgradeThread(sqlite3* handle, int& result)
        : wxThread(wxTHREAD_JOINABLE), mpHandle(handle), mResult(result) {}

  protected:
    ExitCode Entry() override;

  private:
    sqlite3* mpHandle;
    int& mResult;
};
