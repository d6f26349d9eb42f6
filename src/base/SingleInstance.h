#pragma once

#include <wx/evtloopsrc.h>
#include <wx/string.h>

#include <functional>
#include <memory>

#include "base/FileDescriptor.h"

// The user's private directory for what lives no longer than a session: XDG_RUNTIME_DIR, or what
// that is by custom for a program that was started outside of the session, or one of our own under
// /tmp. Empty when none can be trusted to be the user's alone.
wxString FindRuntimeDirectory();

// Sees to it that the program runs once for each user. The first process holds a lock, which the
// system takes back however the process ends, and listens on a socket beside it; a later one finds
// the lock held and can call the first to the front. A process that cannot find out whether there
// is another must not work on the store.
class SingleInstance : private wxEventLoopSourceHandler {
  public:
    enum class Greeting {
        // Ask the first process to come to the front.
        CallToFront,
        // Only see whether there is one.
        None
    };

    enum class Standing {
        First,
        // There is another process, which has been greeted.
        Second,
        // It cannot be told whether there is another, or one that does not answer; see GetProblem.
        Unclear
    };

    explicit SingleInstance(const wxString& directory) : mDirectory(directory) {}
    ~SingleInstance() override;

    // A first process stays the first when it asks again. The other process need not answer a
    // greeting, so a busy one keeps nobody waiting. One that is just starting or ending is given
    // two seconds.
    Standing BecomeFirst(Greeting greeting);
    // What keeps the standing unclear, as a text for the user.
    const wxString& GetProblem() const { return mProblem; }

    // The first process listens from here on; the function is called by the event loop of the main
    // thread for each call to the front.
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
