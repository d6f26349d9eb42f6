#pragma once

#include <deque>
#include <functional>
#include <string>
#include <vector>

#include "base/Files.h"

// The library's own names.
struct _GstElement;  // NOLINT(bugprone-reserved-identifier)
struct _GstMessage;  // NOLINT(bugprone-reserved-identifier)

// Something that plays the sounds of a card. A test of what is played replaces it.
class SoundOutput {
  public:
    virtual ~SoundOutput() = default;
    // Plays files one after another, in place of what is played now.
    virtual void Play(std::vector<FileDescriptor> files) = 0;
    virtual void Stop() = 0;
};

// Plays sounds by GStreamer, whose threads do the work. Only decoders for the sounds that cards may
// have are ever used, so that a file which pretends to be a sound can neither fetch anything nor
// reach a decoder that nobody expects. Nothing of GStreamer is loaded before the first sound. Main
// thread only, in a program that runs its event loop.
class SoundPlayer : public SoundOutput {
  public:
    // The function is called when a sound cannot be played, or cannot be heard. The sink is an
    // element of GStreamer.
    explicit SoundPlayer(std::function<void()> failed, std::string sink = "autoaudiosink");
    ~SoundPlayer() override;

    void Play(std::vector<FileDescriptor> files) override;
    void Stop() override;
    bool IsPlaying() const { return mpPipeline != nullptr; }

  private:
    static int OnMessage(void* bus, _GstMessage* message, void* player);
    static int OnNoSound(void* player);

    void PlayNext();
    bool Start();
    void End();

    const std::function<void()> mFailed;
    const std::string mSink;
    std::deque<FileDescriptor> mWaiting;
    FileDescriptor mFile;
    // Null while nothing is played.
    _GstElement* mpPipeline = nullptr;
    unsigned mWatch = 0;
    // The timer that ends a sound which never begins; 0 once it has begun.
    unsigned mPatience = 0;
};
