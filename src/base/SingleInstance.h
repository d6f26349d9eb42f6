#pragma once

#include <wx/evtloopsrc.h>
#include <wx/string.h>

#include <functional>
#include <memory>
#include <string>

#include "base/Files.h"

// Returns the directory for files that live no longer than the user's session: XDG_RUNTIME_DIR, or
// /run/user/UID when a program is started from outside the session, or a directory of ours in /tmp.
// Returns an empty text when none of them belongs to the user alone.
wxString FindRuntimeDirectory();

// Takes the activation token that the starter of this process, such as the desktop's menu, left in
// its environment. It entitles one window to come to the front. Returns an empty text without one.
// Call it before the windowing library starts, which takes it from the environment too.
std::string TakeActivationToken();

// Lets the program run once for each user. The first process holds a file lock, which the system
// releases however the process ends, and listens on a socket beside it. A later process finds the
// lock held and can ask the first to come to the front. A process that cannot find out whether it
// is the first must not open the store. Main thread only.
class SingleInstance : private wxEventLoopSourceHandler {
  public:
    enum class Greeting {
        // Asks the first process to come to the front, and hands it the activation token and the
        // file to open.
        CallToFront,
        // Only finds out whether there is a first process.
        None
    };

    enum class Standing {
        First,
        // Another process is the first and has been greeted.
        Second,
        // The lock cannot be used, or its holder does not listen; GetProblem tells which.
        Unclear
    };

    // The token is handed on with a call to the front.
    explicit SingleInstance(const wxString& directory, const std::string& token = std::string())
        : mDirectory(directory), mToken(token) {}
    ~SingleInstance() override;

    // Names the file that a call to the front asks the first process to open. The path is absolute.
    void SetFile(const wxString& path) { mFile = path; }
    // Returns whether the first process got the last call and its file.
    bool WasCallTaken() const { return mWasCallTaken; }

    // Tries to take the lock, and greets the other process if that holds it. A greeting needs no
    // answer, so a busy first process keeps nobody waiting; one that is just starting or ending has
    // two seconds to listen or to end. A first process stays the first when it asks again.
    Standing BecomeFirst(Greeting greeting);
    // Returns why the standing is unclear, as a text for the user.
    const wxString& GetProblem() const { return mProblem; }

    // Starts to listen, in the first process. The event loop calls the function when another
    // process asks this one to the front, with the other's activation token and the path of the
    // file to open. Either may be empty.
    using CallHandler = std::function<void(const wxString& token, const wxString& file)>;
    void Listen(CallHandler onCalled);
    void StopListening();

  private:
    void OnReadWaiting() override;
    void OnWriteWaiting() override {}
    void OnExceptionWaiting() override {}

    enum class Lock { Taken, Held, Impossible };

    Lock TakeLock();
    Lock Refuse(const wxString& reason);
    bool Greet(Greeting greeting);
    wxString LockPath() const;
    wxString SocketPath() const;

    wxString mDirectory;
    std::string mToken;
    wxString mFile;
    bool mWasCallTaken = false;
    wxString mProblem;
    FileDescriptor mLock;
    FileDescriptor mSocket;
    std::unique_ptr<wxEventLoopSource> mpSource;
    CallHandler mOnCalled;
};
