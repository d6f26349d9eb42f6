#include "transfer/ProgressDialog.h"

#include <wx/button.h>
#include <wx/gauge.h>
#include <wx/intl.h>
#include <wx/log.h>
#include <wx/sizer.h>

#include <algorithm>

#include "base/FatalErrorReport.h"
#include "exchange/Worker.h"

namespace {

constexpr int kDialogId = 10030;
constexpr int kGaugeId = 10031;
constexpr int kCancelId = 10032;
constexpr int kTimerId = 1138;
constexpr int kTickMilliseconds = 16;
constexpr int kGaugeWidth = 300;

}  // namespace

ProgressDialog::ProgressDialog(wxWindow* parent, const wxString& caption, const wxSize& size)
    : wxDialog(parent, kDialogId, caption, wxDefaultPosition, size), mTimer(this, kTimerId) {
    mpGauge = new wxGauge(this, kGaugeId, 100, wxDefaultPosition, FromDIP(wxSize(kGaugeWidth, -1)),
                          wxGA_HORIZONTAL);
    mpGauge->SetValue(1);
    auto* const cancel = new wxButton(this, kCancelId, _("Cancel"));

    auto* const rows = new wxBoxSizer(wxVERTICAL);
    rows->Add(mpGauge, wxSizerFlags().Expand().Border(wxALL, 10));
    rows->Add(cancel, wxSizerFlags().Centre().Border(wxLEFT | wxRIGHT | wxBOTTOM, 10));
    SetSizerAndFit(rows);
    Centre();

    SetEscapeId(kCancelId);
    cancel->SetFocus();
    cancel->Bind(wxEVT_BUTTON, &ProgressDialog::OnCancel, this);
    Bind(wxEVT_TIMER, &ProgressDialog::OnTick, this, kTimerId);
    Bind(wxEVT_CLOSE_WINDOW, &ProgressDialog::OnClose, this);
    mTimer.Start(kTickMilliseconds);
}

void ProgressDialog::OnTick(wxTimerEvent&) {
    if (mInTick || mpSource == nullptr) {
        return;
    }
    mInTick = true;
    mpSource->OnTimer(this);
    mInTick = false;
    if (!mTimer.IsRunning()) {
        // Cancelled while the job had its turn; the end is under way.
        return;
    }
    ShowPosition();
    if (mpSource->IsFinished()) {
        End(wxID_OK);
    }
}

void ProgressDialog::ShowPosition() {
    const int32_t minimum = mpSource->GetMinimum();
    const int32_t range = std::max(0, mpSource->GetMaximum() - minimum);
    const int32_t position = mpSource->GetPosition() - minimum;
    mpGauge->SetRange(range);
    mpGauge->SetValue(std::clamp(position, 0, range));
}

void ProgressDialog::OnCancel(wxCommandEvent&) {
    mTimer.Stop();
    if (mpSource != nullptr) {
        mpSource->Cancel();
    }
    End(wxID_CANCEL);
}

// Only the button stops a job; the title bar does not.
void ProgressDialog::OnClose(wxCloseEvent& event) {
    if (event.CanVeto()) {
        event.Veto();
        return;
    }
    wxCommandEvent none;
    OnCancel(none);
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
                     const wxString& startFailure) {
    if (!worker.Start()) {
        wxLogError("%s", startFailure);
        return false;
    }
    {
        ProgressDialog dialog(parent, _("Progress"), wxSize(400, 300));
        dialog.SetSource(worker);
        dialog.ShowModal();
    }
    worker.Join();
    report.DeliverPending();
    return true;
}
