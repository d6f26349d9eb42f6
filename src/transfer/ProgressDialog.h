#pragma once

#include <wx/dialog.h>
#include <wx/timer.h>

class ProgressSource;
class wxGauge;

// The face of a long job on a worker thread: a gauge that follows the job, and a Cancel button as
// the only way out before the end. Ends with wxID_OK when the job has ended and with wxID_CANCEL by
// the button; what came of the job is told by the job's own result.
class ProgressDialog : public wxDialog {
  public:
    ProgressDialog(wxWindow* parent, const wxString& caption, const wxSize& size);

    // Set before ShowModal; not owned. The job runs already.
    void SetSource(ProgressSource& source) { mpSource = &source; }

  private:
    void OnTick(wxTimerEvent& event);
    void OnCancel(wxCommandEvent& event);
    void OnClose(wxCloseEvent& event);
    void ShowPosition();
    void End(int code);

    ProgressSource* mpSource = nullptr;
    wxGauge* mpGauge = nullptr;
    wxTimer mTimer;
    // A question of the job is open, and the timer goes on behind it.
    bool mInTick = false;
};
