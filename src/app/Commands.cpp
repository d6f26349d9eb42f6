#include "app/Commands.h"

#include <wx/app.h>
#include <wx/button.h>
#include <wx/event.h>
#include <wx/intl.h>
#include <wx/settings.h>
#include <wx/sizer.h>
#include <wx/stattext.h>
#include <wx/textctrl.h>
#include <wx/textentry.h>
#include <wx/utils.h>
#include <wx/window.h>

#include <algorithm>
#include <cstring>
#include <utility>

#include "base/Unicode.h"
#include "edit/EditFrame.h"
#include "files/windows/RestoreDialog.h"
#include "files/windows/StoreOpening.h"
#include "list/BrowseFrame.h"
#include "preferences/PreferencesDialog.h"
#include "revise/ChangedOnBothDialog.h"
#include "shell/AppServices.h"
#include "shell/CommandIds.h"
#include "shell/Forms.h"
#include "shell/MessageBox.h"
#include "shell/ProgramInfo.h"
#include "shell/Settings.h"
#include "shell/TextUndo.h"
#include "statistics/StatisticsFrame.h"
#include "study/LearningProgress.h"
#include "study/StudyFrame.h"
#include "study/StudyTexts.h"
#include "transfer/ExportOptionsDialog.h"
#include "transfer/ImportDialog.h"
#include "transfer/MergeDialog.h"

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

struct TextCommand {
    int Id;
    void (*Run)(wxTextEntry&);
    bool (*IsEnabled)(const wxTextEntry&);
};

constexpr TextCommand kTextCommands[] = {
    {wxID_CUT, [](wxTextEntry& text) { text.Cut(); },
     [](const wxTextEntry& text) { return text.CanCut(); }},
    {wxID_COPY, [](wxTextEntry& text) { text.Copy(); },
     [](const wxTextEntry& text) { return text.CanCopy(); }},
    {wxID_PASTE, [](wxTextEntry& text) { text.Paste(); },
     [](const wxTextEntry& text) { return text.CanPaste(); }},
    {wxID_DELETE, DeleteSelection, [](const wxTextEntry& text) { return text.IsEditable(); }},
    {wxID_SELECTALL, [](wxTextEntry& text) { text.SetSelection(-1, -1); },
     [](const wxTextEntry& text) { return text.GetLastPosition() > 0; }}};

struct UndoCommand {
    int Id;
    void (TextUndo::*Run)();
    bool (TextUndo::*IsEnabled)() const;
};

constexpr UndoCommand kUndoCommands[] = {{wxID_UNDO, &TextUndo::Undo, &TextUndo::CanUndo},
                                         {wxID_REDO, &TextUndo::Redo, &TextUndo::CanRedo}};

TextUndo* FocusedHistory() {
    return TextUndo::Find(wxWindow::FindFocus());
}

// Binds a command to what has the keyboard focus. Without it the command is disabled and passes on.
template <class Target, class Command>
void BindFocusCommand(wxEvtHandler& handler, Target* (*findTarget)(), const Command& command) {
    handler.Bind(
        wxEVT_MENU,
        [findTarget, &command](wxCommandEvent& event) {
            if (Target* const target = findTarget()) {
                std::invoke(command.Run, *target);
            } else {
                event.Skip();
            }
        },
        command.Id);
    handler.Bind(
        wxEVT_UPDATE_UI,
        [findTarget, &command](wxUpdateUIEvent& event) {
            const Target* const target = findTarget();
            event.Enable(target != nullptr && std::invoke(command.IsEnabled, *target));
        },
        command.Id);
}

}  // namespace

void BindTextCommands(wxEvtHandler& handler) {
    for (const UndoCommand& command : kUndoCommands) {
        BindFocusCommand(handler, FocusedHistory, command);
    }
    for (const TextCommand& command : kTextCommands) {
        BindFocusCommand(handler, FocusedText, command);
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

// Shows the box and ignores the answer.
void OnCrashTest(wxCommandEvent&) {
    ShowMessageBox(_("Do you want to crash the application?"), _("Test Error Handler"),
                   wxOK | wxCANCEL | wxICON_ERROR);
}

struct HelpCommand {
    int Id;
    void (*Run)(wxCommandEvent&);
};

constexpr HelpCommand kHelpCommands[] = {
    {wxID_HELP, OnUserGuide},
    {ID_SUPPORT, [](wxCommandEvent&) { OpenAddress(GetSupportMailAddress()); }},
    {ID_FEEDBACK, [](wxCommandEvent&) { OpenAddress(GetFeedbackMailAddress()); }},
    {ID_FORUMS, [](wxCommandEvent&) { OpenAddress(wxString(kWebSite) + "/?q=forum"); }},
    {wxID_ABOUT, [](wxCommandEvent&) { AboutDialog(wxGetActiveWindow()).ShowModal(); }},
    {ID_CRASH_TEST, OnCrashTest},
    {ID_QUICK_HELP, [](wxCommandEvent&) {}}};

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

namespace {

struct WindowText {
    int WindowId;
    const char* Text;
};

constexpr WindowText kTexts[] = {
    {ID_WINDOW_LIST,
     wxTRANSLATE("List View\n\nThis is the flash card list view.\nYou can create, edit and delete "
                 "flash cards.\nYou can create, rename and delete flash card categories.\nWhen you "
                 "are ready to study, select a category and click on the \"Study\" button.")},
    {ID_WINDOW_STUDY,
     wxTRANSLATE("Study Window\n\nUse this window to study your flash cards.\n\n")},
    {ID_WINDOW_EDIT,
     wxTRANSLATE("Edit Window\n\nUse this window to edit existing flash cards or create new "
                 "ones.\n\nJust type the front and back text in the spaces provided and click the "
                 "save icon.")}};

bool IsOnDesktop(const wxWindow* window) {
    const auto* const frame = dynamic_cast<const wxTopLevelWindow*>(window);
    return frame != nullptr && !frame->IsIconized();
}

}  // namespace

QuickHelp::QuickHelp(AppServices& services, std::function<wxString()> studyMessage)
    : wxFrame(nullptr, wxID_ANY, _("Quick Help"), wxDefaultPosition, wxDefaultSize,
              wxDEFAULT_FRAME_STYLE | wxFRAME_NO_TASKBAR),
      mServices(services),
      mStudyMessage(std::move(studyMessage)) {
    mpText = new wxTextCtrl(this, wxID_ANY, wxString(), wxDefaultPosition,
                            FromDIP(wxSize(280, 180)), wxTE_MULTILINE | wxTE_READONLY);
    auto* const whole = new wxBoxSizer(wxVERTICAL);
    whole->Add(mpText, wxSizerFlags(1).Expand());
    SetSizerAndFit(whole);
    Bind(wxEVT_IDLE, &QuickHelp::OnIdle, this);
    Bind(wxEVT_CLOSE_WINDOW, &QuickHelp::OnClose, this);
}

void QuickHelp::OnIdle(wxIdleEvent& event) {
    event.Skip();
    FollowTopWindow();
    if (wxTopLevelWindows.GetCount() == 1) {
        wxTheApp->ExitMainLoop();
    } else {
        ShowOrHide();
    }
}

void QuickHelp::FollowTopWindow() {
    const wxWindow* const top = wxTheApp->GetTopWindow();
    for (const WindowText& row : kTexts) {
        if (top == nullptr || top->GetId() != row.WindowId) {
            continue;
        }
        wxString text = wxGetTranslation(row.Text);
        if (row.WindowId == ID_WINDOW_STUDY) {
            text += mStudyMessage();
        }
        // Setting the same text again would drop the user's selection.
        if (mpText->GetValue() != text) {
            mpText->ChangeValue(text);
        }
    }
}

void QuickHelp::ShowOrHide() {
    const bool isWanted =
        wxTheApp->IsActive() && std::any_of(wxTopLevelWindows.begin(), wxTopLevelWindows.end(),
                                            [this](const wxWindow* window) {
                                                return window != this && IsOnDesktop(window);
                                            });
    if (isWanted && !IsShown()) {
        ShowWithoutActivating();
    } else if (!isWanted && IsShown()) {
        Hide();
    }
}

void QuickHelp::OnClose(wxCloseEvent& event) {
    WriteBooleanSetting(kSettingQuickHelp, false);
    mServices.FrameClosed(*this);
    event.Skip();
}

namespace {

template <typename Window>
bool Is(const wxWindow& window) {
    return dynamic_cast<const Window*>(&window) != nullptr;
}

struct GuideSection {
    bool (*IsAbout)(const wxWindow&);
    const char* Id;
};

constexpr GuideSection kGuideSections[] = {
    {Is<BrowseFrame>, "list"},
    {Is<StudyFrame>, "study"},
    {Is<RescoreMessageBox>, "study"},
    {Is<EditFrame>, "editor"},
    {Is<LearningProgress>, "progress"},
    {Is<ImportDialog>, "import"},
    {Is<MergeDialog>, "merge"},
    {Is<ExportOptionsDialog>, "export"},
    {Is<RestoreDialog>, "backup"},
    {Is<PreferencesDialog>, "options"},
    {Is<ChangedOnBothDialog>, "computers"},
    {Is<DatabaseOpenFailed>, "trouble"},
    {Is<StatisticsFrame>, "statistics"},
};

}  // namespace

wxString FindGuideSection(const wxWindow* window) {
    for (; window != nullptr; window = window->GetParent()) {
        for (const GuideSection& section : kGuideSections) {
            if (section.IsAbout(*window)) {
                return section.Id;
            }
        }
    }
    return wxString();
}

namespace {

constexpr int kDialogId = 10056;
constexpr int kVersionId = 10058;
constexpr int kTextWidth = 230;

}  // namespace

AboutDialog::AboutDialog(wxWindow* parent) {
    SetExtraStyle(wxFRAME_EX_METAL | wxWS_EX_BLOCK_EVENTS);
    wxDialog::Create(parent, kDialogId, _("About Velomind"), wxDefaultPosition,
                     FromDIP(wxSize(400, 300)));
    SetFont(wxSystemSettings::GetFont(wxSYS_DEFAULT_GUI_FONT));
    wxBoxSizer* const column = MakeFormColumn(*this);
    const auto addText = [&](int id, const wxString& content) {
        auto* const text = new wxStaticText(this, id, content);
        text->Wrap(FromDIP(kTextWidth));
        column->Add(text, wxSizerFlags().Border(wxBOTTOM, FromDIP(kFormEdge)));
    };
    addText(kVersionId, GetVersionText());
    addText(wxID_STATIC, wxString::Format(wxGetTranslation(kLegalLines), kLegalLastYear));
    addText(wxID_STATIC, wxGetTranslation(kLegalNotice));

    auto* const ok = new wxButton(this, wxID_OK, _("&OK"));
    column->Add(ok, wxSizerFlags().Right());
    ok->SetDefault();
    ok->SetFocus();
    // The button has no size; it makes Esc close the dialog.
    auto* const cancel =
        new wxButton(this, wxID_CANCEL, _("&Cancel"), wxDefaultPosition, wxSize(0, 0));
    cancel->SetCanFocus(false);
    GetSizer()->SetSizeHints(this);
    CentreOnScreen();
}
