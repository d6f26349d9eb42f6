#pragma once

#include <wx/dialog.h>
#include <wx/frame.h>
#include <wx/string.h>

#include <functional>

class AppServices;
class wxTextCtrl;

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

  private:
    void CreateControls();
};
