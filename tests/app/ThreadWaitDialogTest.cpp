#include "storefile/StoreFile.h"

#include <wx/thread.h>

#include "app/AppReports.h"
#include "support/GuiTest.h"

namespace {

// Works until it is told to end.
struct PatientThread : wxThread {
    PatientThread() : wxThread(wxTHREAD_JOINABLE) {}
    wxSemaphore End;
    ExitCode Entry() override { return End.Wait() == wxSEMA_NO_ERROR ? this : nullptr; }
};

TEST_F(GuiTest, TheMaintenanceTellsWhatComesAndThatItIsDone) {
    ModalAnswers answers;
    answers.Expect({wxID_OK, wxID_OK});
    AppMaintenancePrompt prompt;
    prompt.ConfirmStart();
    EXPECT_EQ(answers.Dialogs.at(0).Message,
              "Velomind must do some database maintenance before continuing.\n"
              "Depending on your database size and computer speed, this may take several minutes "
              "to an hour.\nDuring this time, Velomind will appear unresponsive.\n"
              "Please do not interrupt the operation.");
    prompt.TellComplete();
    EXPECT_EQ(answers.Dialogs.at(1).Message, "Maintenance complete.");
    for (const ModalAnswers::Seen& dialog : answers.Dialogs) {
        EXPECT_EQ(dialog.Title, "Periodic Maintenence");
    }
}

}  // namespace
