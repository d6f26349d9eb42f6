#include "app/Commands.h"

#include <wx/app.h>
#include <wx/event.h>
#include <wx/frame.h>
#include <wx/intl.h>
#include <wx/textentry.h>
#include <wx/utils.h>
#include <wx/window.h>

#include <cstring>

#include "app/Help.h"
#include "base/Unicode.h"
#include "shell/CommandIds.h"
#include "shell/MessageBox.h"
#include "shell/ProgramInfo.h"
#include "shell/TextUndo.h"

namespace {

// Returns the text field, search field or combo box that has the focus, or null.
wxTextEntry* FocusedText() {
    return dynamic_cast<wxTextEntry*>(wxWindow::FindFocus());
}

void DeleteSelection(wxTextEntry& text) {
    long from = 0;
    long to = 0;
    text.GetSelection(&from, &to);
    if (from == to) {
        // Without a selection the key deletes the character to the right.
        to = from + 1;
    }
    if (text.IsEditable() && from < text.GetLastPosition()) {
        text.Remove(from, to);
    }
}

void SelectAll(wxTextEntry& text) {
    text.SetSelection(-1, -1);
}

bool HasText(const wxTextEntry& text) {
    return text.GetLastPosition() > 0;
}

bool CanDelete(const wxTextEntry& text) {
    return text.IsEditable();
}

struct TextCommand {
    int Id;
    void (*Run)(wxTextEntry&);
    bool (*IsEnabled)(const wxTextEntry&);
};

constexpr TextCommand kTextCommands[] = {{wxID_CUT, [](wxTextEntry& text) { text.Cut(); },
                                          [](const wxTextEntry& text) { return text.CanCut(); }},
                                         {wxID_COPY, [](wxTextEntry& text) { text.Copy(); },
                                          [](const wxTextEntry& text) { return text.CanCopy(); }},
                                         {wxID_PASTE, [](wxTextEntry& text) { text.Paste(); },
                                          [](const wxTextEntry& text) { return text.CanPaste(); }},
                                         {wxID_DELETE, DeleteSelection, CanDelete},
                                         {wxID_SELECTALL, SelectAll, HasText}};

struct UndoCommand {
    int Id;
    void (TextUndo::*Run)();
    bool (TextUndo::*IsEnabled)() const;
};

constexpr UndoCommand kUndoCommands[] = {{wxID_UNDO, &TextUndo::Undo, &TextUndo::CanUndo},
                                         {wxID_REDO, &TextUndo::Redo, &TextUndo::CanRedo}};

void BindUndoCommand(wxEvtHandler& handler, const UndoCommand& command) {
    handler.Bind(
        wxEVT_MENU,
        [&command](wxCommandEvent& event) {
            if (TextUndo* const history = TextUndo::Find(wxWindow::FindFocus())) {
                (history->*command.Run)();
            } else {
                event.Skip();
            }
        },
        command.Id);
    handler.Bind(
        wxEVT_UPDATE_UI,
        [&command](wxUpdateUIEvent& event) {
            const TextUndo* const history = TextUndo::Find(wxWindow::FindFocus());
            event.Enable(history != nullptr && (history->*command.IsEnabled)());
        },
        command.Id);
}

}  // namespace

void BindTextCommands(wxEvtHandler& handler) {
    for (const UndoCommand& command : kUndoCommands) {
        BindUndoCommand(handler, command);
    }
    for (const TextCommand& command : kTextCommands) {
        handler.Bind(
            wxEVT_MENU,
            [&command](wxCommandEvent& event) {
                if (wxTextEntry* const text = FocusedText()) {
                    command.Run(*text);
                } else {
                    event.Skip();
                }
            },
            command.Id);
        handler.Bind(
            wxEVT_UPDATE_UI,
            [&command](wxUpdateUIEvent& event) {
                const wxTextEntry* const text = FocusedText();
                event.Enable(text != nullptr && command.IsEnabled(*text));
            },
            command.Id);
    }
}

namespace {

// Percent-encodes everything but letters, digits and the four marks that need no encoding anywhere
// in an address.
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

// Builds the address that opens a new mail to the maker. Line ends become CR LF, which the format
// of these addresses demands.
wxString MailAddress(const wxString& subject, wxString body) {
    body.Replace("\n", "\r\n");
    return wxString("mailto:") + kSupportMailbox + "?subject=" + EncodeForAddress(subject) +
           "&body=" + EncodeForAddress(body);
}

void OpenAddress(const wxString& address) {
    wxLaunchDefaultBrowser(address, wxBROWSER_NEW_WINDOW);
}

// A window may name the section that it means; a menu does not.
void OnUserGuide(wxCommandEvent& event) {
    const wxWindow* const focused = wxWindow::FindFocus();
    const wxWindow* const window = focused != nullptr ? focused : wxTheApp->GetTopWindow();
    OpenUserGuide(event.GetString().empty() ? FindGuideSection(window) : event.GetString());
}

// The menu bar has F1 as a key of its own, and dialogs have no menu bar.
void OnKey(wxKeyEvent& event) {
    event.Skip();
    if (event.GetKeyCode() != WXK_F1 || event.HasAnyModifiers()) {
        return;
    }
    auto* const window = dynamic_cast<wxWindow*>(event.GetEventObject());
    const auto* const frame = dynamic_cast<wxFrame*>(wxGetTopLevelParent(window));
    if (frame == nullptr || frame->GetMenuBar() == nullptr) {
        event.Skip(false);
        OpenUserGuide(FindGuideSection(window));
    }
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

// Shows the box and ignores the answer.
void OnCrashTest(wxCommandEvent&) {
    ShowMessageBox(_("Do you want to crash the application?"), _("Test Error Handler"),
                   wxOK | wxCANCEL | wxICON_ERROR);
}

void OnQuickHelp(wxCommandEvent&) {}

struct HelpCommand {
    int Id;
    void (*Run)(wxCommandEvent&);
};

constexpr HelpCommand kHelpCommands[] = {{wxID_HELP, OnUserGuide},    {ID_SUPPORT, OnSupport},
                                         {ID_FEEDBACK, OnFeedback},   {ID_FORUMS, OnForums},
                                         {wxID_ABOUT, OnAbout},       {ID_CRASH_TEST, OnCrashTest},
                                         {ID_QUICK_HELP, OnQuickHelp}};

}  // namespace

void BindHelpCommands(wxEvtHandler& handler) {
    for (const HelpCommand& command : kHelpCommands) {
        handler.Bind(wxEVT_MENU, command.Run, command.Id);
    }
    handler.Bind(wxEVT_CHAR_HOOK, OnKey);
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
