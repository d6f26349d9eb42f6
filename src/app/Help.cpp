#include "app/Help.h"

#include <wx/event.h>
#include <wx/filename.h>
#include <wx/filesys.h>
#include <wx/intl.h>
#include <wx/msgdlg.h>
#include <wx/stdpaths.h>
#include <wx/utils.h>

#include <cstring>
#include <string>

#include "app/AboutDialog.h"
#include "base/Utf8.h"
#include "shell/CommandIds.h"
#include "shell/Makers.h"
#include "shell/MessageBox.h"
#include "shell/Version.h"

namespace {

// Everything but letters, digits and the few marks that stand for themselves in any address.
wxString EncodeForAddress(const wxString& text) {
    wxString encoded;
    for (const char byte : ToUtf8(text)) {
        const bool plain = (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') ||
                           (byte >= '0' && byte <= '9') || std::strchr("-._~", byte) != nullptr;
        if (plain && byte != '\0') {
            encoded += byte;
        } else {
            encoded += wxString::Format("%%%02X", static_cast<unsigned char>(byte));
        }
    }
    return encoded;
}

// Lines of a mail end as its own rules want it, whatever those of the text are.
wxString MailAddress(const wxString& subject, wxString body) {
    body.Replace("\n", "\r\n");
    return wxString("mailto:") + kSupportMailbox + "?subject=" + EncodeForAddress(subject) +
           "&body=" + EncodeForAddress(body);
}

void OpenAddress(const wxString& address) {
    wxLaunchDefaultBrowser(address, wxBROWSER_NEW_WINDOW);
}

void OnUserGuide(wxCommandEvent&) {
    wxLaunchDefaultBrowser(wxFileSystem::FileNameToURL(wxFileName(GetHelpFilePath())));
}

void OnSupport(wxCommandEvent&) {
    OpenAddress(GetSupportMailAddress());
}

void OnFeedback(wxCommandEvent&) {
    OpenAddress(GetFeedbackMailAddress());
}

void OnForums(wxCommandEvent&) {
    OpenAddress(wxString(kWebSite) + "/?q=forum");
}

void OnAbout(wxCommandEvent&) {
    AboutDialog(wxGetActiveWindow()).ShowModal();
}

// Shows what a box of the program looks like; nothing follows.
void OnCrashTest(wxCommandEvent&) {
    ShowMessageBox(_("Do you want to crash the application?"), _("Test Error Handler"),
                   wxOK | wxCANCEL | wxICON_ERROR);
}

void OnQuickHelp(wxCommandEvent&) {}

struct HelpCommand {
    int Id;
    void (*Run)(wxCommandEvent&);
};

constexpr HelpCommand kCommands[] = {{wxID_HELP, OnUserGuide},    {ID_SUPPORT, OnSupport},
                                     {ID_FEEDBACK, OnFeedback},   {ID_FORUMS, OnForums},
                                     {wxID_ABOUT, OnAbout},       {ID_CRASH_TEST, OnCrashTest},
                                     {ID_QUICK_HELP, OnQuickHelp}};

}  // namespace

void BindHelpCommands(wxEvtHandler& handler) {
    for (const HelpCommand& command : kCommands) {
        handler.Bind(wxEVT_MENU, command.Run, command.Id);
    }
}

wxString GetHelpFilePath() {
    wxFileName path(wxStandardPaths::Get().GetExecutablePath());
    path.SetFullName("Help.htm");
    return path.GetFullPath();
}

wxString GetSupportMailAddress() {
    return MailAddress(_("Support"), wxString::Format(_("Version: %s\n"), GetVersionText()));
}

wxString GetFeedbackMailAddress() {
    return MailAddress(
        _("Feedback"),
        wxString::Format(
            _("Version: %s\n\nOverall, how likely would you be to recommend Velomind to a "
              "friend or colleague?\nDefinitely would recommend\nProbably would "
              "recommend\nMight or might not recommend\nProbably would not "
              "recommend\nDefinitely would not recommend\n\nPlease write any other comments "
              "or suggestions here:\n\n"),
            GetVersionText()));
}
