#include "transfer/ProgressDialog.h"

#include <wx/button.h>
#include <wx/gauge.h>
#include <wx/intl.h>
#include <wx/log.h>
#include <wx/sizer.h>
#include <wx/stopwatch.h>
#include <wx/utils.h>

#include <algorithm>

#include "base/Process.h"
#include "base/Worker.h"
#include "shell/Forms.h"

namespace {

constexpr int kTimerId = 1138;
constexpr int kTickMilliseconds = 16;
constexpr int kGaugeWidth = 300;

}  // namespace

ProgressDialog::ProgressDialog(wxWindow* parent, ProgressSource& source)
    : wxDialog(parent, kDialogId, _("Progress")), mSource(source), mTimer(this, kTimerId) {
    mpGauge = new wxGauge(this, kGaugeId, 100, wxDefaultPosition, FromDIP(wxSize(kGaugeWidth, -1)),
                          wxGA_HORIZONTAL);
    mpGauge->SetValue(1);
    auto* const cancel = new wxButton(this, kCancelId, _("Cancel"));

    wxBoxSizer* const rows = MakeFormColumn(*this);
    rows->Add(mpGauge, wxSizerFlags().Expand());
    rows->Add(cancel, wxSizerFlags().Right().Border(wxTOP, FromDIP(kFormEdge)));
    GetSizer()->SetSizeHints(this);
    Centre();

    SetEscapeId(kCancelId);
    cancel->SetFocus();
    cancel->Bind(wxEVT_BUTTON, [this](wxCommandEvent&) { Cancel(); });
    Bind(wxEVT_TIMER, &ProgressDialog::OnTick, this, kTimerId);
    Bind(wxEVT_CLOSE_WINDOW, &ProgressDialog::OnClose, this);
    mTimer.Start(kTickMilliseconds);
}

void ProgressDialog::OnTick(wxTimerEvent&) {
    if (mInTick) {
        return;
    }
    mInTick = true;
    mSource.OnTimer(this);
    mInTick = false;
    if (!mTimer.IsRunning()) {
        // The user cancelled while the job had its turn, and the dialog is about to end.
        return;
    }
    ShowPosition();
    if (mSource.IsFinished()) {
        End(wxID_OK);
    }
}

void ProgressDialog::ShowPosition() {
    // The numbers need not agree: the worker may move on between these calls, and a job may have no
    // length. The gauge complains about a value outside its range.
    const int32_t minimum = mSource.GetMinimum();
    const int32_t range = std::max(0, mSource.GetMaximum() - minimum);
    const int32_t position = mSource.GetPosition() - minimum;
    mpGauge->SetRange(range);
    mpGauge->SetValue(std::clamp(position, 0, range));
}

void ProgressDialog::OnClose(wxCloseEvent& event) {
    // The title bar must not stop a job. A forced close cannot be refused, so the job has to stop.
    if (event.CanVeto()) {
        event.Veto();
    } else {
        Cancel();
    }
}

void ProgressDialog::Cancel() {
    mTimer.Stop();
    mSource.Cancel();
    End(wxID_CANCEL);
}

void ProgressDialog::End(int code) {
    mTimer.Stop();
    if (IsModal()) {
        EndModal(code);
    } else {
        SetReturnCode(code);
    }
}

bool RunWithProgress(wxWindow* parent, Worker& worker, FatalErrorReport& report,
                     const wxString& startFailure, long patience) {
    if (!worker.Start()) {
        wxLogError("%s", startFailure);
        return false;
    }
    const wxStopWatch watch;
    while (!worker.IsFinished() && watch.Time() < patience) {
        wxMilliSleep(1);
    }
    if (!worker.IsFinished() || patience == 0) {
        // The dialog is gone by the time a failure is told, and the user sees the failure alone.
        ProgressDialog dialog(parent, worker);
        dialog.ShowModal();
    }
    worker.Join();
    report.DeliverPending();
    return true;
}
