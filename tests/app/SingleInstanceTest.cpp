#include "base/SingleInstance.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>

#include "support/GuiTest.h"

namespace {

using Greeting = SingleInstance::Greeting;
using Standing = SingleInstance::Standing;

struct SingleInstanceTest : GuiTest {
    wxString Directory() const { return mRuntime.Path(wxString()); }

    TestDirectory mRuntime;
    int mCalls = 0;
};

TEST_F(SingleInstanceTest, ASecondStartCallsTheFirstAndIsNotKeptWaiting) {
    // What a killed process leaves behind is not in the way.
    WriteBytes(Directory() + "/velomind.socket", "");
    SingleInstance first(Directory());
    ASSERT_EQ(first.BecomeFirst(Greeting::CallToFront), Standing::First);
    first.Listen([this](const wxString&, const wxString&) { ++mCalls; });

    SingleInstance probing(Directory());
    EXPECT_EQ(probing.BecomeFirst(Greeting::None), Standing::Second);
    DrainEvents();
    EXPECT_EQ(mCalls, 0);

    // A busy first answers none of them.
    const wxStopWatch watch;
    for (int i = 0; i < 2000; ++i) {
        SingleInstance second(Directory());
        ASSERT_EQ(second.BecomeFirst(Greeting::CallToFront), Standing::Second);
    }
    EXPECT_LT(watch.Time(), 2000);
    EXPECT_TRUE(WaitFor([this] { return mCalls > 0; }));

    // A cleaner of old files does not make a second start a first one.
    wxRemoveFile(Directory() + "/velomind.lock");
    EXPECT_EQ(probing.BecomeFirst(Greeting::None), Standing::Second);
}

TEST_F(SingleInstanceTest, TheCallCarriesTheTokenOfTheCallerUnlessItIsNone) {
    SingleInstance first(Directory());
    ASSERT_EQ(first.BecomeFirst(Greeting::None), Standing::First);
    std::vector<wxString> tokens;
    wxString opened;
    first.Listen([&](const wxString& token, const wxString& file) {
        tokens.push_back(token);
        opened = file;
    });
    const std::pair<std::string, wxString> cases[] = {
        {"shell/Text Editor/17-0-host_TIME12", "shell/Text Editor/17-0-host_TIME12"},
        {std::string(255, 'x'), wxString('x', 255)},
        {std::string(256, 'x'), ""},
        {"two\nlines", ""},
        {"no UTF-8: \xff", ""},
        {std::string("zero\0", 5), ""},
        {"", ""}};
    for (const auto& [sent, received] : cases) {
        tokens.clear();
        SingleInstance second(Directory(), sent);
        ASSERT_EQ(second.BecomeFirst(Greeting::CallToFront), Standing::Second);
        ASSERT_TRUE(WaitFor([&tokens] { return !tokens.empty(); }));
        EXPECT_EQ(tokens.back(), received) << sent;
    }
}

TEST_F(SingleInstanceTest, TheNewerVariableNamesTheTokenAndIsNotHandedOn) {
    wxSetEnv("DESKTOP_STARTUP_ID", "old");
    EXPECT_EQ(TakeActivationToken(), "old");
    wxSetEnv("XDG_ACTIVATION_TOKEN", "new");
    EXPECT_EQ(TakeActivationToken(), "new");
    EXPECT_FALSE(wxGetEnv("XDG_ACTIVATION_TOKEN", nullptr));
    wxUnsetEnv("DESKTOP_STARTUP_ID");
    EXPECT_EQ(TakeActivationToken(), "");
}

TEST_F(SingleInstanceTest, WithoutALockOfItsOwnAProcessIsNotTheFirst) {
    const wxString lock = Directory() + "/velomind.lock";
    const wxString other = Directory() + "/other";
    WriteBytes(other, "");
    const char* const plain = "it is no plain file of yours";
    const std::tuple<const char*, const char*, std::function<int()>> cases[] = {
        {"a directory", "Is a directory", [&] { return mkdir(lock.utf8_str(), 0700); }},
        {"a link", plain, [&] { return symlink(other.utf8_str(), lock.utf8_str()); }},
        {"a pipe", plain, [&] { return mkfifo(lock.utf8_str(), 0600); }},
        {"a socket", plain, [&] { return mknod(lock.utf8_str(), S_IFSOCK | 0600, 0); }},
        {"somebody else's", geteuid() == 0 ? plain : "Permission denied",
         [&] {
             WriteBytes(lock, "");
             return geteuid() == 0 ? chown(lock.utf8_str(), 1, 1) : chmod(lock.utf8_str(), 0);
         }},
    };
    for (const auto& [what, reason, make] : cases) {
        ASSERT_EQ(make(), 0) << what;
        SingleInstance process(Directory());
        EXPECT_EQ(process.BecomeFirst(Greeting::None), Standing::Unclear) << what;
        EXPECT_TRUE(process.GetProblem().Contains(lock + "\" cannot be locked: " + reason))
            << process.GetProblem();
        ASSERT_EQ(std::remove(lock.utf8_str()), 0);
    }
    EXPECT_EQ(SingleInstance(wxString()).BecomeFirst(Greeting::None), Standing::Unclear);
}

TEST_F(SingleInstanceTest, ADirectoryThatOthersMayEnterIsNotTrusted) {
    wxSetEnv("XDG_RUNTIME_DIR", Directory());
    EXPECT_EQ(FindRuntimeDirectory(), Directory());
    chmod(Directory().utf8_str(), 0755);
    EXPECT_NE(FindRuntimeDirectory(), Directory());
}

}  // namespace
