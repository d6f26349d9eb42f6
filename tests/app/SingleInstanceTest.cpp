#include "app/SingleInstance.h"

#include <sys/stat.h>
#include <unistd.h>

#include "support/GuiTest.h"

namespace {

using Greeting = SingleInstance::Greeting;

struct SingleInstanceTest : GuiTest {
    wxString Directory() const { return mRuntime.Path(wxString()); }

    TemporaryDirectory mRuntime;
    int mCalls = 0;
};

TEST_F(SingleInstanceTest, ASecondStartCallsTheFirstAndIsNotKeptWaiting) {
    // What a killed process leaves behind is not in the way.
    WriteBytes(Directory() + "/velomind.socket", "");
    SingleInstance first(Directory());
    ASSERT_TRUE(first.BecomeFirst(Greeting::CallToFront));
    first.Listen([this] { ++mCalls; });

    SingleInstance probing(Directory());
    EXPECT_FALSE(probing.BecomeFirst(Greeting::None));
    DrainEvents();
    EXPECT_EQ(mCalls, 0);

    // A busy first answers none of them.
    const wxStopWatch watch;
    for (int i = 0; i < 2000; ++i) {
        SingleInstance second(Directory());
        ASSERT_FALSE(second.BecomeFirst(Greeting::CallToFront));
    }
    EXPECT_LT(watch.Time(), 2000);
    EXPECT_TRUE(WaitFor([this] { return mCalls > 0; }));
}

TEST_F(SingleInstanceTest, ALockThatIsNoPlainFileOrThatNobodyAnswersForIsTold) {
    const std::string lock = (Directory() + "/velomind.lock").utf8_string();
    const auto isRefused = [this] {
        SingleInstance instance(Directory());
        return !instance.BecomeFirst(Greeting::CallToFront) && !instance.GetProblem().empty();
    };
    mkdir(lock.c_str(), 0700);
    EXPECT_TRUE(isRefused()) << "a directory";
    rmdir(lock.c_str());
    WriteBytes(Directory() + "/other", "");
    ASSERT_EQ(symlink((Directory() + "/other").utf8_str(), lock.c_str()), 0);
    EXPECT_TRUE(isRefused()) << "a link";
    unlink(lock.c_str());
    SingleInstance silent(Directory());
    ASSERT_TRUE(silent.BecomeFirst(Greeting::None));
    EXPECT_TRUE(isRefused()) << "held and silent";
}

TEST_F(SingleInstanceTest, ADirectoryThatOthersMayEnterIsNotTrusted) {
    wxSetEnv("XDG_RUNTIME_DIR", Directory());
    EXPECT_EQ(FindRuntimeDirectory(), Directory());
    chmod(Directory().utf8_str(), 0755);
    EXPECT_NE(FindRuntimeDirectory(), Directory());
}

}  // namespace
