#pragma once

#include <wx/frame.h>

#include <functional>

class AppServices;
class wxTextCtrl;

// A small window beside the others that tells what the application's top window is for, and follows
// it. No menu opens it; a build that wants it makes one and leaves it alone: it shows and hides
// itself, and owns itself as any frame.
class QuickHelp : public wxFrame {
  public:
    // The services are not owned and must outlive the window. The function gives the text that the
    // study window shares.
    QuickHelp(AppServices& services, std::function<wxString()> studyMessage);

  private:
    void FollowTopWindow();
    void ShowOrHide();

    void OnIdle(wxIdleEvent& event);
    void OnClose(wxCloseEvent& event);

    AppServices& mServices;
    std::function<wxString()> mStudyMessage;
    wxTextCtrl* mpText = nullptr;
};
