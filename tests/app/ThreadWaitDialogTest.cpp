#include "app/ThreadWaitDialog.h"

#include <wx/thread.h>

#include "app/AppUpgradeWait.h"
#include "support/GuiTest.h"

namespace {

// Works until it is told to end.
struct PatientThread : wxThread {
    PatientThread() : wxThread(wxTHREAD_JOINABLE) {}
    wxSemaphore End;
    ExitCode Entry() override { return End.Wait() == wxSEMA_NO_ERROR ? this : nullptr; }
};

TEST_F(GuiTest, TheWaitEndsWithItsThreadAndWithNothingElse) {
    PatientThread worker;
    ASSERT_EQ(worker.Run(), wxTHREAD_NO_ERROR);
    ModalAnswers answers;
    answers.Then([&](wxDialog& dialog) {
        auto* const gauge = dynamic_cast<wxGauge*>(dialog.GetChildren().back());
        EXPECT_FALSE(dialog.Close());
        EXPECT_TRUE(WaitFor([gauge] { return gauge->GetValue() > 50; }));
        EXPECT_EQ(gauge->GetRange(), 120000);
        EXPECT_TRUE(worker.IsAlive());
        worker.End.Post();
    });
    AppUpgradeWait(nullptr).WaitFor(worker);
    EXPECT_FALSE(worker.IsAlive());
    EXPECT_EQ(answers.Dialogs[0].Title, "Upgrading Database");
    worker.Wait();
}

}  // namespace
