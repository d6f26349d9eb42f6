#pragma once

#include <wx/string.h>
#include <wx/thread.h>

#include <atomic>
#include <exception>
#include <functional>
#include <utility>

// A task on a thread of its own. The object belongs to the main thread; its destructor asks the
// task to stop and waits until it has, so it is declared after what the task uses. What the task
// writes is read once it has ended. A task that throws, as one does for which the memory does not
// suffice, has ended too, and the program goes on.
class Job : private wxThread {
  public:
    // The flag becomes true when the task is to stop.
    using Task = std::function<void(const std::atomic<bool>& isCancelled)>;

    // The second function, which may be empty, is called on the worker once the task has ended,
    // whatever came of it.
    explicit Job(Task task, std::function<void()> atEnd = nullptr)
        : wxThread(wxTHREAD_JOINABLE), mTask(std::move(task)), mAtEnd(std::move(atEnd)) {}
    ~Job() override { Cancel(); }

    // Returns false when the system has no thread to give; the task then counts as ended.
    bool Start();
    // Does the task on the calling thread, where there is no other.
    void RunHere();
    void AskToStop() { mIsCancelled = true; }
    // Waits for the end of the thread. Returns at once when it does not run.
    void Join();
    // Asks the task to stop and returns when it has.
    void Cancel();

    bool IsCancelled() const { return mIsCancelled; }
    bool IsFinished() const { return mIsFinished; }
    // Returns what the task threw, as a sentence for the user, and forgets it; an empty text when
    // it came to its end. Call it after Join.
    wxString TakeFailure();
    // Throws it, for a task that waits for another.
    void RethrowFailure();

  private:
    ExitCode Entry() final;

    const Task mTask;
    const std::function<void()> mAtEnd;
    // Written by the main thread.
    std::atomic<bool> mIsCancelled{false};
    // Written by the worker once the task has ended.
    std::atomic<bool> mIsFinished{false};
    // Written by the worker before that.
    std::exception_ptr mpThrown;
    // True from a successful start until the thread was waited for. Main thread only.
    bool mIsStarted = false;
};
