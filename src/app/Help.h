#pragma once

#include <wx/dialog.h>
#include <wx/frame.h>
#include <wx/string.h>

#include <functional>

class AppServices;
class wxEvtHandler;
class wxTextCtrl;

// The commands of the Help menu and the test command: user guide, mails to the maker, web site and
// About dialog. They need no window and keep nothing.
void BindHelpCommands(wxEvtHandler& handler);

// The user guide, in the directory of the program's own file; a link to the program is followed.
wxString GetHelpFilePath();

// The mails that a person can send to the maker, as addresses for the mail program. Subject and
// body are percent-encoded, so whatever starts it gets one word without blanks and line breaks.
wxString GetSupportMailAddress();
wxString GetFeedbackMailAddress();

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

// Version, maker and legal notice of the program.
class AboutDialog : public wxDialog {
  public:
    explicit AboutDialog(wxWindow* parent);

  private:
    void CreateControls();
};
