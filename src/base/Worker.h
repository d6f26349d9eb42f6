#pragma once

#include <wx/thread.h>

#include <atomic>
#include <cstdint>

class wxWindow;

// A long job as the window that shows its progress sees it. Called on the main thread only.
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

// A job on a thread of its own. The object belongs to the main thread, which keeps it until the
// worker has ended. A derived class does its job in Work. It keeps what both threads share in
// atomic fields, or hands it over by a semaphore. Its destructor cancels or joins, because only
// there its own members are still alive for the worker.
class Worker : public ProgressSource, private wxThread {
  public:
    // Returns false when the system has no thread to give; the job then counts as finished.
    bool Start();
    // Waits for the end of the thread. Returns at once when it does not run.
    void Join();
    bool IsFinished() const override { return mFinished; }

  protected:
    Worker() : wxThread(wxTHREAD_JOINABLE) {}

    // Does the job. Called once, on the worker's thread.
    virtual void Work() = 0;

  private:
    ExitCode Entry() final;

    // Written by the worker, as the last thing it does.
    std::atomic<bool> mFinished{false};
    // True from a successful start until the thread was waited for. Main thread only.
    bool mStarted = false;
};
