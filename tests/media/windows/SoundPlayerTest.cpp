#include "media/windows/SoundPlayer.h"

#include <fcntl.h>

#include "support/GuiTest.h"

namespace {

struct SoundPlayerTest : GuiTest {
    void Play(std::initializer_list<const char*> names) {
        std::vector<FileDescriptor> files;
        for (const char* const name : names) {
            const std::string path = std::string(VELOMIND_CORPUS) + "/" + name;
            files.emplace_back(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
        }
        mPlayer.Play(std::move(files));
    }
    bool WaitForEnd() {
        return WaitFor([this] { return !mPlayer.IsPlaying(); });
    }

    int mFailures = 0;
    SoundPlayer mPlayer{[this] { ++mFailures; }, "fakesink"};
};

TEST_F(SoundPlayerTest, SoundsPlayOneAfterAnotherAndStopAtOnce) {
    Play({"good.ogg", "good.wav"});
    EXPECT_TRUE(mPlayer.IsPlaying());
    EXPECT_TRUE(WaitForEnd());
    EXPECT_EQ(mFailures, 0);
    Play({"good.ogg", "good.ogg"});
    mPlayer.Stop();
    EXPECT_FALSE(mPlayer.IsPlaying());
    DrainEvents();
    EXPECT_FALSE(mPlayer.IsPlaying());
}

TEST_F(SoundPlayerTest, WhatIsNoSoundIsToldAndNeverReachesADecoder) {
    for (const char* const name : {"list.ogg", "good.png", "text.png", "none.ogg", "cut.ogg"}) {
        mFailures = 0;
        Play({name, "good.wav"});
        EXPECT_TRUE(WaitForEnd()) << name;
        EXPECT_GE(mFailures, 1) << name;
    }
    SoundPlayer without([this] { ++mFailures; }, "no-such-sink");
    mFailures = 0;
    std::vector<FileDescriptor> files;
    files.emplace_back(
        ::open((std::string(VELOMIND_CORPUS) + "/good.wav").c_str(), O_RDONLY | O_CLOEXEC));
    without.Play(std::move(files));
    EXPECT_EQ(mFailures, 1);
    EXPECT_FALSE(without.IsPlaying());
}

}  // namespace
