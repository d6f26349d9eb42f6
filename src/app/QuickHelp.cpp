#include "app/QuickHelp.h"

#include <wx/app.h>
#include <wx/intl.h>
#include <wx/sizer.h>
#include <wx/textctrl.h>

#include <algorithm>
#include <utility>

#include "shell/AppServices.h"
#include "shell/CommandIds.h"
#include "shell/Settings.h"

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
        // Only a change is set, so that a selection in the text lives.
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
    WriteBooleanSetting("QuickHelp", false);
    mServices.FrameClosed(*this);
    event.Skip();
}
