#pragma once

#include <wx/dialog.h>
#include <wx/timer.h>

class FatalErrorReport;
class ProgressSource;
class Worker;
class wxGauge;

// Shows a long job on a worker thread: a gauge that follows it, and a Cancel button, the only way
// out before its end. ShowModal returns wxID_OK when the job has ended and wxID_CANCEL after the
// button; the job's own result says what came of it. Main thread only.
class ProgressDialog : public wxDialog {
  public:
    enum ControlId : int { kDialogId = 10030, kGaugeId = 10031, kCancelId = 10032 };

    // The source is a job that runs already. It is not owned.
    ProgressDialog(wxWindow* parent, ProgressSource& source);

  private:
    void OnTick(wxTimerEvent& event);
    void OnClose(wxCloseEvent& event);
    void Cancel();
    void ShowPosition();
    void End(int code);

    ProgressSource& mSource;
    wxGauge* mpGauge = nullptr;
    wxTimer mTimer;
    // True while the job has its turn. The timer goes on while the job shows a question, and such a
    // tick must not give the job another turn.
    bool mInTick = false;
};

// Runs a worker behind a progress window and returns when it has ended. Then delivers a failure of
// the store that the worker met, which ends the program. Returns false, with the given text in the
// log, when the system has no thread to give. A job that ends within the patience, in milliseconds,
// shows no window.
bool RunWithProgress(wxWindow* parent, Worker& worker, FatalErrorReport& report,
                     const wxString& startFailure, long patience = 0);
