#include "app/AppReports.h"

#include <wx/intl.h>
#include <wx/log.h>
#include <wx/msgdlg.h>
#include <wx/thread.h>
#include <wx/utils.h>

#include "shell/MessageBox.h"

void AppFatalErrorReport::Report(const wxString& text) {
    if (wxThread::IsMain()) {
        ReportOnMainThread(text);
        return;
    }
    const std::lock_guard<std::mutex> lock(mMutex);
    if (!mHasPending) {
        mHasPending = true;
        mPending = text;
    }
}

void AppFatalErrorReport::DeliverPending() {
    wxString text;
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        if (!mHasPending) {
            return;
        }
        mHasPending = false;
        text.swap(mPending);
    }
    ReportOnMainThread(text);
}

void AppFatalErrorReport::ReportOnMainThread(const wxString& text) {
    if (mShowing) {
        // The box already shows the first failure. The caller of this one gets a failed result.
        return;
    }
    mShowing = true;
    ShowAndEnd(text);
    mShowing = false;
}

void AppFatalErrorReport::ShowAndEnd(const wxString& text) {
    PrintError(text);
    if (!mShowsWindow) {
        EndProcess(kExitFatal);
    }
    const wxBusyCursorSuspender ready;
    // A warning that waits for an idle moment, such as that of a failed backup, would take the
    // keys.
    wxLog::Suspend();
    wxMessageBox(text, _("Fatal Error"), wxOK | wxICON_STOP);
    EndProcess(kExitFatal);
}

namespace {

void Tell(const wxString& text) {
    ShowMessageBox(text, _("Periodic Maintenence"), wxOK | wxCENTRE);
}

}  // namespace

void AppMaintenancePrompt::ConfirmStart() {
    Tell(
        _("Velomind must do some database maintenance before continuing.\n"
          "Depending on your database size and computer speed, this may take several minutes to "
          "an hour.\n"
          "During this time, Velomind will appear unresponsive.\n"
          "Please do not interrupt the operation."));
    if (mBeforeStart) {
        mBeforeStart();
    }
}

void AppMaintenancePrompt::TellComplete() {
    Tell(_("Maintenance complete."));
}
