#pragma once

#include <wx/string.h>

#include <atomic>
#include <cstdint>

#include "base/Job.h"

class wxWindow;

// A long job as its progress window sees it. Main thread only.
class ProgressSource {
  public:
    virtual ~ProgressSource() = default;

    virtual int32_t GetMinimum() const { return 0; }
    virtual int32_t GetMaximum() const = 0;
    virtual int32_t GetPosition() const = 0;
    // Returns true once the job has ended.
    virtual bool IsFinished() const = 0;
    // Asks the job to stop and returns when it has.
    virtual void Cancel() = 0;
    // Called at each tick of the progress window, which is the parent of the job's questions.
    virtual void OnTimer(wxWindow* /*dialog*/) {}
};

// A job whose progress a window shows. A derived class does it in Work and keeps what both threads
// share in atomic fields, or hands it over by a semaphore. Its destructor must cancel or join, as
// later its own members are gone while the worker runs.
class Worker : public ProgressSource {
  public:
    // Returns false when the system has no thread; the job then counts as finished.
    bool Start() { return mJob.Start(); }
    // Waits for the end of the thread. Returns at once when it does not run.
    void Join();
    void Cancel() override;
    bool IsFinished() const override { return mJob.IsFinished(); }
    bool IsCancelled() const { return mJob.IsCancelled(); }

  protected:
    // Does the job. Called once, on the worker's thread.
    virtual void Work() = 0;
    // Called by Join when Work broke off, with the reason for the user. The log tells it, unless
    // the job has a better place.
    virtual void OnFailure(const wxString& message);

  private:
    Job mJob{[this](const std::atomic<bool>&) { Work(); }};
};
