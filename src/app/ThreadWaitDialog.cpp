#include "app/ThreadWaitDialog.h"

#include <wx/gauge.h>
#include <wx/intl.h>
#include <wx/sizer.h>
#include <wx/stattext.h>
#include <wx/thread.h>

namespace {

constexpr int kTimerId = 1138;
constexpr int kTickMilliseconds = 16;
constexpr int kFullGaugeMilliseconds = 120000;

}  // namespace

ThreadWaitDialog::ThreadWaitDialog(wxWindow* parent, wxWindowID id, const wxString& title,
                                   const wxPoint& position, const wxSize& size, long style)
    : wxDialog(parent, id, title, position, size, style),
      mTimer(this, kTimerId),
      mCreated(wxGetUTCTimeMillis()) {
    SetExtraStyle(GetExtraStyle() | wxWS_EX_BLOCK_EVENTS);

    auto* const rows = new wxBoxSizer(wxVERTICAL);
    rows->Add(new wxStaticText(this, wxID_ANY, _("This may take a few minutes.")),
              wxSizerFlags().Centre().Border(wxALL, 5));
    mpGauge = new wxGauge(this, wxID_ANY, 100, wxDefaultPosition, wxSize(220, -1),
                          wxGA_HORIZONTAL | wxGA_SMOOTH);
    rows->Add(mpGauge, wxSizerFlags().Centre().Border(wxALL, 5));
    SetSizerAndFit(rows);
    Centre();

    Bind(wxEVT_TIMER, &ThreadWaitDialog::OnTimer, this, kTimerId);
    Bind(wxEVT_CLOSE_WINDOW, &ThreadWaitDialog::OnClose, this);
    mTimer.Start(kTickMilliseconds);
}

void ThreadWaitDialog::OnTimer(wxTimerEvent&) {
    const wxLongLong elapsed = wxGetUTCTimeMillis() - mCreated;
    mpGauge->SetRange(kFullGaugeMilliseconds);
    mpGauge->SetValue(static_cast<int>((elapsed % kFullGaugeMilliseconds).ToLong()));
    if (mpThread != nullptr && mpThread->IsAlive()) {
        return;
    }
    mTimer.Stop();
    EndModal(wxID_OK);
}

// Nothing but the end of the thread ends the wait.
void ThreadWaitDialog::OnClose(wxCloseEvent& event) {
    if (event.CanVeto()) {
        event.Veto();
    }
}
