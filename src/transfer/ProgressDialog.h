#pragma once

#include <wx/dialog.h>
#include <wx/timer.h>

class FatalErrorReport;
class ProgressSource;
class Worker;
class wxGauge;

// The face of a long job on a worker thread: a gauge that follows the job, and a Cancel button as
// the only way out before the end. Ends with wxID_OK when the job has ended and with wxID_CANCEL by
// the button; the job's own result says what came of it.
class ProgressDialog : public wxDialog {
  public:
    ProgressDialog(wxWindow* parent, const wxString& caption, const wxSize& size);

    // Takes the job, which runs already. Call it before ShowModal; the source is not owned.
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
    // True while the job has its turn: the timer goes on behind a question that it asks.
    bool mInTick = false;
};

// Runs a worker behind a progress window and waits for its end. When the store failed under the
// worker, this delivers the failure, which ends the program. Returns false when no thread could be
// started; the given text then went to the log.
bool RunWithProgress(wxWindow* parent, Worker& worker, FatalErrorReport& report,
                     const wxString& startFailure);
