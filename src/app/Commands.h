#pragma once

#include <wx/dialog.h>
#include <wx/frame.h>
#include <wx/string.h>

#include <functional>

class AppServices;
class wxEvtHandler;
class wxTextCtrl;

// The commands that need no window of their own: they work on whatever has the focus or start
// another program. The application binds them, so every window has them unless its own table takes
// them first.

// Binds Undo, Redo, Cut, Copy, Paste, Delete and Select All to the text field that has the keyboard
// focus, with the rules that enable them. Without such a field they are disabled and pass on.
void BindTextCommands(wxEvtHandler& handler);

// Binds the commands of the Help menu and the test command, and F1 in windows without a menu bar.
void BindHelpCommands(wxEvtHandler& handler);

// Return the mails that a user can send to the maker, as addresses for the mail program. Subject
// and body are percent-encoded, so that the address is one word without blanks and line breaks.
wxString GetSupportMailAddress();
wxString GetFeedbackMailAddress();

// A small window beside the others that tells what the application's top window is for, and changes
// its text when another window comes to the top. No menu opens it; a build that offers it creates
// one and leaves it alone: it shows and hides itself, and deletes itself as any frame does.
class QuickHelp : public wxFrame {
  public:
    // The services are not owned and must outlive the window. The function returns the text that
    // the study window shares.
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

// Returns the id of the section of the user guide that tells of a window, or of the window that it
// belongs to. Empty when no section does, and for null.
wxString FindGuideSection(const wxWindow* window);

// The dialog with the version, the maker and the legal notice of the program.
class AboutDialog : public wxDialog {
  public:
    explicit AboutDialog(wxWindow* parent);
};
