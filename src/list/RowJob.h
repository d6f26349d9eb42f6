#pragma once

#include <wx/event.h>

#include <functional>
#include <memory>

#include "base/Job.h"

// Work for a list on another thread, such as sorting its rows, whose result the list takes from the
// event loop. The object belongs to the main thread; its destructor ends the work.
class RowJob : private wxEvtHandler {
  public:
    RowJob() = default;
    ~RowJob() override { Cancel(); }

    // Starts the task, and calls the second function once it has ended, however it has, unless
    // another start or a cancel comes before. What the task uses must stay until then.
    void Start(Job::Task task, std::function<void()> atEnd);
    // Asks the task to stop and waits until it has. The second function is not called then.
    void Cancel();
    bool IsRunning() const { return mpJob != nullptr; }

  private:
    void Finish(int number);

    std::function<void()> mAtEnd;
    // Counts the starts, so that the late call of a task that was cancelled is known.
    int mNumber = 0;
    std::unique_ptr<Job> mpJob;
};
