#include "shell/Speech.h"

#include <libspeechd.h>
#include <wx/filefn.h>
#include <wx/filename.h>
#include <wx/utils.h>

#include <chrono>
#include <condition_variable>
#include <csignal>
#include <cstdlib>
#include <mutex>
#include <optional>
#include <string>
#include <system_error>
#include <thread>
#include <utility>

namespace {

using SteadyClock = std::chrono::steady_clock;

// After this time without an answer the service counts as one that has none.
constexpr std::chrono::seconds kPatience(5);
// The end of the window waits this long for the service to be silent.
constexpr std::chrono::milliseconds kLastWait(200);

constexpr char kServiceName[] = "speech-dispatcher";

}  // namespace

struct Speech::Request {
    enum class Kind { kSay, kSilence, kVoices };

    Kind What = Kind::kSilence;
    // In UTF-8.
    std::string Text;
    std::string Language;
    std::string Voice;
};

// What both threads know, under its lock.
struct Speech::Shared {
    mutable std::mutex Mutex;
    // Told when there is a request, or the end; and when the worker has done one.
    std::condition_variable Wanted;
    std::condition_variable Done;
    // Written by the main thread. The worker takes the request away.
    std::optional<Request> Next;
    bool AreVoicesWanted = false;
    bool IsEnding = false;
    // Written by the worker.
    bool IsBusy = false;
    SteadyClock::time_point BusySince;
    bool HasFailed = false;
    bool HasVoices = false;
    std::vector<std::pair<std::string, std::string>> Voices;

    bool HasNext() const {
        const std::lock_guard<std::mutex> lock(Mutex);
        return Next.has_value();
    }
};

// The worker's connection. After a failure it is closed at once, as the library does not bear
// another call then.
class Speech::Connection {
  public:
    Connection() = default;
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;
    ~Connection() { Close(); }

    // Returns false when the service cannot be reached.
    bool Say(const Request& request, const Shared& shared);
    // Does nothing without a connection: then nothing is spoken.
    void Silence();
    bool ReadVoices(Shared& shared);

  private:
    // A connection keeps its voice, since the service cannot be told to take its own again.
    bool Open(const std::string& language, const std::string& voice);
    bool TrySay(const Request& request, const Shared& shared);
    void Close();

    SPDConnection* mpConnection = nullptr;
    std::string mLanguage;
    std::string mVoice;
};

bool Speech::Connection::Open(const std::string& language, const std::string& voice) {
    if (mpConnection != nullptr && language == mLanguage && voice == mVoice) {
        return true;
    }
    Close();
    char* error = nullptr;
    mpConnection = spd_open2("velomind", "study", nullptr, SPD_MODE_SINGLE, nullptr, 1, &error);
    std::free(error);
    if (mpConnection == nullptr) {
        return false;
    }
    mLanguage = language;
    mVoice = voice;
    // A language or voice that the service does not have leaves it with its own.
    if (!language.empty()) {
        spd_set_language(mpConnection, language.c_str());
    }
    if (!voice.empty() && mpConnection->stream != nullptr) {
        spd_set_synthesis_voice(mpConnection, voice.c_str());
    }
    if (mpConnection->stream == nullptr) {
        Close();
    }
    return mpConnection != nullptr;
}

void Speech::Connection::Close() {
    if (mpConnection != nullptr) {
        spd_close(mpConnection);
        mpConnection = nullptr;
    }
}

void Speech::Connection::Silence() {
    if (mpConnection != nullptr && spd_cancel(mpConnection) != 0) {
        Close();
    }
}

bool Speech::Connection::TrySay(const Request& request, const Shared& shared) {
    if (!Open(request.Language, request.Voice)) {
        return false;
    }
    // The start of a service takes a while, in which the next card may have come.
    if (!shared.HasNext() && spd_say(mpConnection, SPD_TEXT, request.Text.c_str()) < 0) {
        Close();
        return false;
    }
    return true;
}

bool Speech::Connection::Say(const Request& request, const Shared& shared) {
    Silence();
    // A service that has died meanwhile is noticed by the first call and started by the second.
    return TrySay(request, shared) || TrySay(request, shared);
}

bool Speech::Connection::ReadVoices(Shared& shared) {
    if (mpConnection == nullptr && !Open(std::string(), std::string())) {
        return false;
    }
    SPDVoice** const voices = spd_list_synthesis_voices(mpConnection);
    if (voices == nullptr) {
        Close();
        return false;
    }
    const auto text = [](const char* part) { return std::string(part == nullptr ? "" : part); };
    std::vector<std::pair<std::string, std::string>> found;
    for (SPDVoice** voice = voices; *voice != nullptr; ++voice) {
        found.emplace_back(text((*voice)->language), text((*voice)->name));
    }
    free_spd_voices(voices);
    const std::lock_guard<std::mutex> lock(shared.Mutex);
    shared.Voices = std::move(found);
    shared.HasVoices = true;
    return true;
}

void Speech::Work(const std::shared_ptr<Shared>& shared) {
    // A write to a service that has died must not end the program.
    sigset_t brokenPipe;
    sigemptyset(&brokenPipe);
    sigaddset(&brokenPipe, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &brokenPipe, nullptr);

    Connection connection;
    std::unique_lock<std::mutex> lock(shared->Mutex);
    while (true) {
        shared->Wanted.wait(lock, [&shared] {
            return shared->Next.has_value() || shared->AreVoicesWanted || shared->IsEnding;
        });
        if (!shared->Next.has_value() && !shared->AreVoicesWanted) {
            return;
        }
        Request request;
        if (shared->Next.has_value()) {
            request = std::move(*shared->Next);
            shared->Next.reset();
        } else {
            request.What = Request::Kind::kVoices;
            shared->AreVoicesWanted = false;
        }
        shared->IsBusy = true;
        shared->BusySince = SteadyClock::now();
        lock.unlock();
        bool isDone = true;
        switch (request.What) {
            case Request::Kind::kSay:
                isDone = connection.Say(request, *shared);
                break;
            case Request::Kind::kVoices:
                isDone = connection.ReadVoices(*shared);
                break;
            case Request::Kind::kSilence:
                connection.Silence();
                break;
        }
        lock.lock();
        shared->IsBusy = false;
        if (request.What != Request::Kind::kSilence) {
            shared->HasFailed = !isDone;
        }
        shared->Done.notify_all();
    }
}

Speech::Speech() = default;

Speech::~Speech() {
    if (mpShared == nullptr) {
        return;
    }
    Silence();
    std::unique_lock<std::mutex> lock(mpShared->Mutex);
    mpShared->IsEnding = true;
    mpShared->AreVoicesWanted = false;
    mpShared->Wanted.notify_all();
    mpShared->Done.wait_for(lock, kLastWait,
                            [this] { return !mpShared->IsBusy && !mpShared->Next.has_value(); });
}

bool Speech::IsInstalled() {
    wxString address;
    wxString runtime;
    if (wxGetEnv("SPEECHD_ADDRESS", &address) && !address.empty()) {
        return true;
    }
    wxPathList places;
    places.AddEnvList("PATH");
    return !places.FindAbsoluteValidPath(kServiceName).empty() ||
           (wxGetEnv("XDG_RUNTIME_DIR", &runtime) &&
            wxFileName::Exists(runtime + "/" + kServiceName + "/speechd.sock"));
}

void Speech::Ask(Request request) {
    if (mpShared == nullptr) {
        auto shared = std::make_shared<Shared>();
        try {
            std::thread([shared] { Work(shared); }).detach();
        } catch (const std::system_error&) {
            // Without a thread nothing is spoken. The next request tries again.
            return;
        }
        mpShared = std::move(shared);
    }
    const std::lock_guard<std::mutex> lock(mpShared->Mutex);
    if (request.What == Request::Kind::kVoices) {
        mpShared->AreVoicesWanted = true;
    } else {
        mpShared->Next = std::move(request);
    }
    mpShared->Wanted.notify_all();
}

void Speech::AskForVoices() {
    Request request;
    request.What = Request::Kind::kVoices;
    Ask(std::move(request));
}

void Speech::Say(const wxString& text, const SpeechVoice& voice) {
    Ask({Request::Kind::kSay, text.utf8_string(), voice.Language.utf8_string(),
         voice.Name.utf8_string()});
}

void Speech::Silence() {
    if (mpShared != nullptr) {
        Ask(Request());
    }
}

bool Speech::HasVoices() const {
    if (mpShared == nullptr) {
        return false;
    }
    const std::lock_guard<std::mutex> lock(mpShared->Mutex);
    return mpShared->HasVoices;
}

std::vector<SpeechVoice> Speech::GetVoices() const {
    std::vector<SpeechVoice> voices;
    if (mpShared != nullptr) {
        const std::lock_guard<std::mutex> lock(mpShared->Mutex);
        for (const auto& [language, name] : mpShared->Voices) {
            voices.push_back({wxString::FromUTF8(language), wxString::FromUTF8(name)});
        }
    }
    return voices;
}

bool Speech::IsWithoutAnswer() const {
    if (mpShared == nullptr) {
        return false;
    }
    const std::lock_guard<std::mutex> lock(mpShared->Mutex);
    return mpShared->IsBusy ? SteadyClock::now() - mpShared->BusySince > kPatience
                            : mpShared->HasFailed;
}
