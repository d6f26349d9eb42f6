#pragma once

#include <wx/string.h>

#include <functional>
#include <mutex>
#include <utility>

#include "base/Process.h"
#include "scheduler/Scheduler.h"

// Ends the program when the store fails: with a message box, a line on standard error and the exit
// code 3. A worker may report too; its first text is kept until the main thread delivers it, since
// only that thread may open a box.
class AppFatalErrorReport : public FatalErrorReport {
  public:
    void Report(const wxString& text) override;
    void DeliverPending() override;
    // From now on a failure is only printed before it ends the program.
    void ShowNoWindow() { mShowsWindow = false; }

  protected:
    // Main thread only. Does not return, except in a test that overrides it.
    virtual void ShowAndEnd(const wxString& text);

  private:
    void ReportOnMainThread(const wxString& text);

    // True while the box is on the screen. The windows behind it go on updating, and may fail
    // again.
    bool mShowing = false;
    bool mShowsWindow = true;
    std::mutex mMutex;
    // Workers write these two and the main thread takes them, both under the mutex.
    bool mHasPending = false;
    wxString mPending;
};

// Announces the scheduler's rare maintenance in message boxes.
class AppMaintenancePrompt : public MaintenancePrompt {
  public:
    // Runs the given step, if any, before the maintenance starts.
    explicit AppMaintenancePrompt(std::function<void()> beforeStart = nullptr)
        : mBeforeStart(std::move(beforeStart)) {}
    void ConfirmStart() override;
    void TellComplete() override;

  private:
    const std::function<void()> mBeforeStart;
};
