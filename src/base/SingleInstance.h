#pragma once

#include <wx/evtloopsrc.h>
#include <wx/string.h>

#include <functional>
#include <memory>

#include "base/FileDescriptor.h"

// Returns the directory for files that live no longer than the user's session: XDG_RUNTIME_DIR, or
// /run/user/UID when a program is started from outside the session, or a directory of ours in /tmp.
// Returns an empty text when none of them belongs to the user alone.
wxString FindRuntimeDirectory();

// Lets the program run once for each user. The first process holds a file lock, which the system
// releases however the process ends, and listens on a socket beside it. A later process finds the
// lock held and can ask the first to come to the front. A process that cannot find out whether it
// is the first must not open the store. Main thread only.
class SingleInstance : private wxEventLoopSourceHandler {
  public:
    enum class Greeting {
        // Asks the first process to come to the front.
        CallToFront,
        // Only finds out whether there is a first process.
        None
    };

    enum class Standing {
        First,
        // Another process is the first, and has been greeted.
        Second,
        // The lock cannot be used, or its holder does not listen. GetProblem tells which.
        Unclear
    };

    explicit SingleInstance(const wxString& directory) : mDirectory(directory) {}
    ~SingleInstance() override;

    // Tries to take the lock, and greets the other process if that holds it. A greeting needs no
    // answer, so a busy first process keeps nobody waiting; one that is just starting or ending has
    // two seconds to listen or to go. A first process stays the first when it asks again.
    Standing BecomeFirst(Greeting greeting);
    // Returns why the standing is unclear, as a text for the user.
    const wxString& GetProblem() const { return mProblem; }

    // Starts to listen, in the first process. The event loop calls the function when another
    // process asks this one to the front.
    void Listen(std::function<void()> onCalled);
    void StopListening();

  private:
    void OnReadWaiting() override;
    void OnWriteWaiting() override {}
    void OnExceptionWaiting() override {}

    enum class Lock { Taken, Held, Impossible };

    Lock TakeLock();
    Lock Refuse(const wxString& reason);
    bool Greet(Greeting greeting) const;
    wxString LockPath() const;
    wxString SocketPath() const;

    wxString mDirectory;
    wxString mProblem;
    FileDescriptor mLock;
    FileDescriptor mSocket;
    std::unique_ptr<wxEventLoopSource> mpSource;
    std::function<void()> mOnCalled;
};
