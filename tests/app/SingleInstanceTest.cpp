#include "app/SingleInstance.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <wx/filename.h>
#include <wx/stopwatch.h>
#include <wx/utils.h>

#include <csignal>

#include "support/GuiTest.h"

namespace {

using Greeting = SingleInstance::Greeting;

class SingleInstanceTest : public GuiTest {
  protected:
    wxString Directory() const { return mRuntime.Path(wxString()); }

    TemporaryDirectory mRuntime;
    int mCalls = 0;
};

TEST_F(SingleInstanceTest, ASecondStartCallsTheFirst) {
    SingleInstance first(Directory());
    ASSERT_TRUE(first.BecomeFirst(Greeting::CallToFront));
    first.Listen([this] { ++mCalls; });

    SingleInstance probing(Directory());
    EXPECT_FALSE(probing.BecomeFirst(Greeting::None));
    DrainEvents();
    EXPECT_EQ(mCalls, 0);

    SingleInstance second(Directory());
    EXPECT_FALSE(second.BecomeFirst(Greeting::CallToFront));
    EXPECT_TRUE(WaitFor([this] { return mCalls == 1; }));
}

TEST_F(SingleInstanceTest, ABusyFirstKeepsNobodyWaiting) {
    SingleInstance first(Directory());
    ASSERT_TRUE(first.BecomeFirst(Greeting::CallToFront));
    first.Listen([this] { ++mCalls; });
    const wxStopWatch watch;
    for (int i = 0; i < 2000; ++i) {
        SingleInstance second(Directory());
        ASSERT_FALSE(second.BecomeFirst(Greeting::CallToFront));
    }
    EXPECT_LT(watch.Time(), 2000);
    EXPECT_TRUE(WaitFor([this] { return mCalls > 0; }));
}

TEST_F(SingleInstanceTest, AProcessThatDiedLeavesThePlaceFree) {
    const pid_t child = fork();
    if (child == 0) {
        SingleInstance crashing(Directory());
        if (crashing.BecomeFirst(Greeting::CallToFront)) {
            crashing.Listen([] {});
        }
        raise(SIGKILL);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    ASSERT_TRUE(wxFileName::Exists(Directory() + "/velomind.socket"));

    SingleInstance next(Directory());
    EXPECT_TRUE(next.BecomeFirst(Greeting::CallToFront));
    next.Listen([this] { ++mCalls; });
    SingleInstance second(Directory());
    EXPECT_FALSE(second.BecomeFirst(Greeting::CallToFront));
    EXPECT_TRUE(WaitFor([this] { return mCalls == 1; }));
}

TEST_F(SingleInstanceTest, ADirectoryThatOthersMayEnterIsNotTrusted) {
    wxSetEnv("XDG_RUNTIME_DIR", Directory());
    EXPECT_EQ(FindRuntimeDirectory(), Directory());
    chmod(Directory().utf8_str(), 0755);
    EXPECT_NE(FindRuntimeDirectory(), Directory());
}

}  // namespace
