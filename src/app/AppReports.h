#pragma once

#include <wx/string.h>

#include <mutex>

#include "base/Process.h"
#include "scheduler/ReviewArithmetic.h"

// The program's own end when the store fails: a box, a line on standard error, and the process is
// gone with code 3. On a worker thread it keeps the first text until the main thread asks for it.
class AppFatalErrorReport : public FatalErrorReport {
  public:
    void Report(const wxString& text) override;
    void DeliverPending() override;

  protected:
    // Main thread. Does not return; a test's own version may.
    virtual void ShowAndEnd(const wxString& text);

  private:
    void ReportOnMainThread(const wxString& text);

    // While the box is on the screen the windows behind it go on updating, and may fail again.
    bool mShowing = false;
    std::mutex mMutex;
    // Written by a worker, taken by the main thread; both under the mutex.
    bool mHasPending = false;
    wxString mPending;
};

// Tells of the scheduler's rare maintenance in message boxes.
class AppMaintenancePrompt : public MaintenancePrompt {
  public:
    void ConfirmStart() override;
    void TellComplete() override;
};
