#pragma once

#include <wx/dialog.h>
#include <wx/timer.h>

class wxGauge;
class wxThread;

// Asks for patience while a worker thread lives and ends by itself with wxID_OK when the worker has
// ended. The gauge only shows that the program lives: it fills once in two minutes and starts over.
class ThreadWaitDialog : public wxDialog {
  public:
    ThreadWaitDialog(wxWindow* parent, wxWindowID id, const wxString& title,
                     const wxPoint& position, const wxSize& size, long style);

    // The thread to wait for, a joinable one that already runs; call it before ShowModal.
    void Watch(const wxThread& thread) { mpThread = &thread; }

  private:
    void OnTimer(wxTimerEvent& event);
    void OnClose(wxCloseEvent& event);

    const wxThread* mpThread = nullptr;
    wxGauge* mpGauge = nullptr;
    wxTimer mTimer;
    wxLongLong mCreated;
};
