#pragma once

#include <wx/string.h>

#include <memory>
#include <vector>

// A voice of the speech service. Where a part is empty, the service takes its own.
struct SpeechVoice {
    wxString Language;
    wxString Name;
};

inline bool operator==(const SpeechVoice& one, const SpeechVoice& other) {
    return one.Language == other.Language && one.Name == other.Name;
}

// Something that speaks. A test of what is spoken replaces it.
class SpeechOutput {
  public:
    virtual ~SpeechOutput() = default;
    // Says a text, in place of the one that is spoken now.
    virtual void Say(const wxString& text, const SpeechVoice& voice) = 0;
    virtual void Silence() = 0;
};

// The desktop's speech service. Nothing here waits for it: a worker that starts with the first
// request talks to it, starts it where it does not run, and connects anew after it has died. Only
// the newest request counts, so that a service that hangs does not speak of cards long gone later.
//
// The library of the service has no limit of time, so the worker may be held for ever. Therefore it
// is a thread that nobody waits for at the end, unlike each Job, and shares one record with the
// main thread. Main thread only.
class Speech : public SpeechOutput {
  public:
    Speech();
    ~Speech() override;

    // Returns whether a service runs or can be started, by what lies on the disk.
    static bool IsInstalled();

    // Asks the service for its voices. They are there once HasVoices is true.
    void AskForVoices();
    bool HasVoices() const;
    std::vector<SpeechVoice> GetVoices() const;

    void Say(const wxString& text, const SpeechVoice& voice) override;
    void Silence() override;

    // True when the last request failed, or for as long as one is not answered for some seconds.
    bool IsWithoutAnswer() const;

  private:
    struct Request;
    struct Shared;
    class Connection;

    void Ask(Request request);
    static void Work(const std::shared_ptr<Shared>& shared);

    // Null before the first request.
    std::shared_ptr<Shared> mpShared;
};
