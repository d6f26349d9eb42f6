#pragma once

#include <cstdint>

class wxWindow;

// A long job on a worker thread, as the window that shows its progress sees it. Called on the main
// thread only.
class ProgressSource {
  public:
    virtual ~ProgressSource() = default;

    virtual int32_t GetMinimum() const = 0;
    virtual int32_t GetMaximum() const = 0;
    virtual int32_t GetPosition() const = 0;
    // The worker has ended.
    virtual bool IsFinished() const = 0;
    // Asks the worker to stop and waits until it has.
    virtual void Cancel() = 0;
    // Called at each tick of the progress window, which is the parent for the worker's questions.
    virtual void OnTimer(wxWindow* dialog) = 0;
};
