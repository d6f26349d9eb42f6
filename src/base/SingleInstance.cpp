#include "base/SingleInstance.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>
#include <wx/evtloop.h>
#include <wx/intl.h>
#include <wx/log.h>
#include <wx/stopwatch.h>
#include <wx/utils.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

// The lock decides who is first, and the socket only carries the call. Two files, because each
// alone has a hole: a socket file outlives a process that was killed, and a lock cannot be spoken
// to. Both lie in a directory that nobody else may enter, so no other user can hold the lock or
// pose as the first process.
//
// The windowing library has classes for both jobs. They were tried and are not used: its lock
// counts as free when it cannot be taken, so that two processes would open the store, and its
// client waits for an answer, which a busy first process does not give.

namespace {

constexpr long kPatienceMilliseconds = 2000;
constexpr unsigned long kRetryMilliseconds = 20;
// A call to the front is this letter and the caller's activation token, which may be empty. A file
// to open follows after a zero byte.
constexpr char kCallToFront = 'f';
// The longest token accepted, in bytes. Those of desktops stay below half of it.
constexpr size_t kLongestToken = 255;
// The longest path that the system takes.
constexpr size_t kLongestPath = 4096;

bool IsPrivateDirectory(const std::string& path) {
    struct stat info {};
    return lstat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode) && info.st_uid == geteuid() &&
           (info.st_mode & (S_IRWXG | S_IRWXO)) == 0;
}

// Returns false when the path is too long for the address of a socket.
bool FillAddress(const wxString& path, sockaddr_un& address) {
    const std::string bytes = path.utf8_string();
    address = sockaddr_un();
    address.sun_family = AF_UNIX;
    if (bytes.size() >= sizeof(address.sun_path)) {
        return false;
    }
    std::copy(bytes.begin(), bytes.end(), address.sun_path);
    return true;
}

// A datagram arrives whole or not at all, and needs nobody to accept a connection. So no process
// can keep the other waiting, whatever it sends or fails to send.
FileDescriptor OpenSocket() {
    return FileDescriptor(socket(AF_UNIX, SOCK_DGRAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
}

// Returns the token of a call, or an empty text unless it is one line of UTF-8.
wxString ReadToken(const char* bytes, size_t length) {
    if (length > kLongestToken ||
        std::any_of(bytes, bytes + length, [](char byte) { return byte >= 0 && byte < ' '; })) {
        return wxString();
    }
    return wxString::FromUTF8(bytes, length);
}

// Splits the path of a file off a call. Returns an empty text, with the length unchanged, unless a
// path from the root follows the token.
wxString TakeFile(const char* bytes, size_t& length) {
    const char* const zero = std::find(bytes, bytes + length, '\0');
    if (bytes + length - zero < 2 || zero[1] != '/') {
        return wxString();
    }
    const std::string path(zero + 1, bytes + length);
    length = static_cast<size_t>(zero - bytes);
    return wxString::FromUTF8(path);
}

const sockaddr* Generic(const sockaddr_un& address) {
    return reinterpret_cast<const sockaddr*>(&address);
}

}  // namespace

wxString FindRuntimeDirectory() {
    wxString session;
    if (wxGetEnv("XDG_RUNTIME_DIR", &session) && IsPrivateDirectory(session.utf8_string())) {
        return session;
    }
    const std::string user = std::to_string(geteuid());
    const std::string own = "/tmp/velomind-" + user;
    // The directory may be there already, made by anybody; the check below looks at its owner and
    // its rights in any case.
    mkdir(own.c_str(), S_IRWXU);
    for (const std::string& directory : {"/run/user/" + user, own}) {
        if (IsPrivateDirectory(directory)) {
            return wxString::FromUTF8(directory);
        }
    }
    return wxString();
}

std::string TakeActivationToken() {
    std::string token;
    // The later name counts, on which today's desktops agree. GTK removes the other itself;
    // programs started from here must not see either.
    for (const char* const name : {"DESKTOP_STARTUP_ID", "XDG_ACTIVATION_TOKEN"}) {
        const char* const value = std::getenv(name);
        if (value != nullptr && *value != '\0') {
            token = value;
        }
    }
    unsetenv("XDG_ACTIVATION_TOKEN");
    return token;
}

SingleInstance::~SingleInstance() {
    StopListening();
}

SingleInstance::Standing SingleInstance::BecomeFirst(Greeting greeting) {
    if (mLock.IsOpen()) {
        return Standing::First;
    }
    const wxStopWatch watch;
    Lock lock = TakeLock();
    while (lock == Lock::Held) {
        if (Greet(greeting)) {
            return Standing::Second;
        }
        if (watch.Time() > kPatienceMilliseconds) {
            mProblem = wxString::Format(
                _("Velomind seems to run already, but does not answer: \"%s\" is locked."),
                LockPath());
            return Standing::Unclear;
        }
        wxMilliSleep(kRetryMilliseconds);
        lock = TakeLock();
    }
    if (lock == Lock::Impossible) {
        return Standing::Unclear;
    }
    if (Greet(Greeting::None)) {
        // Somebody listens although the lock was free: a process that is just ending, or one whose
        // lock file a cleaner of old files has removed. The second greeting tells which.
        wxMilliSleep(kRetryMilliseconds);
        if (Greet(greeting)) {
            mLock.Close();
            return Standing::Second;
        }
    }
    return Standing::First;
}

SingleInstance::Lock SingleInstance::TakeLock() {
    if (mDirectory.empty()) {
        mProblem =
            _("It cannot be told whether Velomind runs already, as there is no directory that is "
              "yours alone. Set XDG_RUNTIME_DIR to one.");
        return Lock::Impossible;
    }
    const std::string path = LockPath().utf8_string();
    // The file is never removed. A process that opened it just before would lock a file that no
    // later process finds.
    FileDescriptor file(open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK,
                             S_IRUSR | S_IWUSR));
    struct stat opened {};
    if (!file.IsOpen() || fstat(file.Get(), &opened) != 0) {
        // What the system says of a link speaks of many, and what it says of a socket of a device.
        const bool isPlain = errno != ELOOP && errno != ENXIO;
        return Refuse(isPlain ? SystemErrorText(errno) : _("it is no plain file of yours"));
    }
    if (!S_ISREG(opened.st_mode) || opened.st_uid != geteuid()) {
        return Refuse(_("it is no plain file of yours"));
    }
    if (flock(file.Get(), LOCK_EX | LOCK_NB) != 0) {
        // A file system without locks cannot tell of another process.
        return errno == EWOULDBLOCK ? Lock::Held : Refuse(SystemErrorText(errno));
    }
    struct stat named {};
    if (lstat(path.c_str(), &named) != 0 || named.st_ino != opened.st_ino ||
        named.st_dev != opened.st_dev) {
        // The file was removed after it was opened, so the lock is on a file without a name.
        return Lock::Held;
    }
    mLock = std::move(file);
    return Lock::Taken;
}

SingleInstance::Lock SingleInstance::Refuse(const wxString& reason) {
    mProblem = wxString::Format(
        _("It cannot be told whether Velomind runs already, as \"%s\" cannot be locked: %s."),
        LockPath(), reason);
    return Lock::Impossible;
}

bool SingleInstance::Greet(Greeting greeting) {
    sockaddr_un address;
    const FileDescriptor caller = OpenSocket();
    if (!caller.IsOpen() || !FillAddress(SocketPath(), address) ||
        connect(caller.Get(), Generic(address), sizeof(address)) != 0) {
        return false;
    }
    if (greeting == Greeting::CallToFront) {
        std::string message = kCallToFront + mToken;
        if (!mFile.empty()) {
            message += '\0' + mFile.utf8_string();
        }
        // A full queue refuses the message, and holds enough calls already.
        mWasCallTaken = send(caller.Get(), message.data(), message.size(), MSG_NOSIGNAL) >= 0;
    }
    return true;
}

wxString SingleInstance::LockPath() const {
    return mDirectory + "/velomind.lock";
}

wxString SingleInstance::SocketPath() const {
    return mDirectory + "/velomind.socket";
}

void SingleInstance::Listen(CallHandler onCalled) {
    sockaddr_un address;
    if (!mLock.IsOpen() || mSocket.IsOpen() || !FillAddress(SocketPath(), address)) {
        return;
    }
    FileDescriptor listener = OpenSocket();
    // Any socket there was left by a crashed process, since the lock is ours.
    unlink(address.sun_path);
    const mode_t before = umask(S_IXUSR | S_IRWXG | S_IRWXO);
    const bool isBound = bind(listener.Get(), Generic(address), sizeof(address)) == 0;
    umask(before);
    if (!isBound) {
        return;
    }
    mSocket = std::move(listener);
    mOnCalled = std::move(onCalled);
    mpSource.reset(wxEventLoopBase::AddSourceForFD(mSocket.Get(), this, wxEVENT_SOURCE_INPUT));
}

void SingleInstance::StopListening() {
    if (!mSocket.IsOpen()) {
        return;
    }
    mpSource.reset();
    mSocket.Close();
    unlink(SocketPath().utf8_str());
}

void SingleInstance::OnReadWaiting() {
    bool isCalled = false;
    wxString token;
    std::vector<wxString> files;
    char message[1 + kLongestToken + 1 + kLongestPath];
    ssize_t length = 0;
    // A longer message is cut, but its whole length is returned.
    while ((length = recv(mSocket.Get(), message, sizeof(message), MSG_TRUNC)) > 0) {
        if (message[0] == kCallToFront) {
            isCalled = true;
            size_t rest = std::min(static_cast<size_t>(length), sizeof(message)) - 1;
            const bool isWhole = rest + 1 == static_cast<size_t>(length);
            const wxString file = isWhole ? TakeFile(message + 1, rest) : wxString();
            token = ReadToken(message + 1, rest);
            if (!file.empty()) {
                files.push_back(file);
            }
        }
    }
    if (isCalled && files.empty()) {
        mOnCalled(token, wxString());
    }
    for (const wxString& file : files) {
        mOnCalled(token, file);
    }
}
