#pragma once

#include <wx/evtloopsrc.h>
#include <wx/string.h>

#include <functional>
#include <memory>

#include "base/FileDescriptor.h"

// The user's private directory for what lives no longer than a session: XDG_RUNTIME_DIR, or one of
// our own under /tmp. Empty when neither can be trusted to be the user's alone.
wxString FindRuntimeDirectory();

// Sees to it that the program runs once for each user. The first process holds a lock, which the
// system takes back however the process ends, and listens on a socket beside it; a later one finds
// the lock held and can call the first to the front. Without a directory every process is a first.
class SingleInstance : private wxEventLoopSourceHandler {
  public:
    enum class Greeting {
        // Ask the first process to come to the front.
        CallToFront,
        // Only see whether there is one.
        None
    };

    explicit SingleInstance(const wxString& directory) : mDirectory(directory) {}
    ~SingleInstance() override;

    // True if this process is the first, or has been already. False if another is, which then has
    // been greeted; the other need not answer, so a busy one keeps nobody waiting. One that is just
    // starting or ending is given two seconds.
    bool BecomeFirst(Greeting greeting);
    // Returns why BecomeFirst gave false although no other process answered: the lock is held by
    // somebody who does not listen, or is no file of ours. Empty when another process has answered.
    const wxString& GetProblem() const { return mProblem; }

    // The first process listens from here on; the function is called by the event loop of the main
    // thread for each call to the front.
    void Listen(std::function<void()> onCalled);
    void StopListening();

  private:
    void OnReadWaiting() override;
    void OnWriteWaiting() override {}
    void OnExceptionWaiting() override {}

    bool TakeLock();
    // Keeps the reason, a system's error number. Returns false.
    bool RefuseLock(int error);
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
