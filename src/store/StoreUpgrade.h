#pragma once

#include <sqlite3.h>
#include <wx/thread.h>

class wxThread;

// What the store asks of the program while a worker upgrades the store file: keep the person
// informed and come back when the worker has ended. The thread is joinable and already runs; the
// caller joins it afterwards.
class UpgradeWait {
  public:
    virtual ~UpgradeWait() = default;
    virtual void WaitFor(wxThread& worker) = 0;
};

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
