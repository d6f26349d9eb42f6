#include "app/Help.h"

#include <wx/app.h>
#include <wx/button.h>
#include <wx/frame.h>
#include <wx/intl.h>
#include <wx/settings.h>
#include <wx/sizer.h>
#include <wx/stattext.h>
#include <wx/textctrl.h>

#include <algorithm>
#include <utility>

#include "edit/EditFrame.h"
#include "files/windows/RestoreDialog.h"
#include "files/windows/StoreOpening.h"
#include "list/BrowseFrame.h"
#include "preferences/PreferencesDialog.h"
#include "shell/AppServices.h"
#include "shell/CommandIds.h"
#include "shell/Forms.h"
#include "shell/ProgramInfo.h"
#include "shell/Settings.h"
#include "statistics/StatisticsFrame.h"
#include "study/LearningProgress.h"
#include "study/StudyFrame.h"
#include "study/StudyTexts.h"
#include "transfer/ExportOptionsDialog.h"
#include "transfer/ImportDialog.h"
#include "transfer/MergeDialog.h"

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
    {Is<BrowseFrame>, "list"},           {Is<StudyFrame>, "study"},
    {Is<RescoreMessageBox>, "study"},    {Is<EditFrame>, "editor"},
    {Is<LearningProgress>, "progress"},  {Is<ImportDialog>, "import"},
    {Is<MergeDialog>, "merge"},          {Is<ExportOptionsDialog>, "export"},
    {Is<RestoreDialog>, "backup"},       {Is<PreferencesDialog>, "options"},
    {Is<DatabaseOpenFailed>, "trouble"}, {Is<StatisticsFrame>, "statistics"},
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
    CreateControls();
    GetSizer()->SetSizeHints(this);
    CentreOnScreen();
}

void AboutDialog::CreateControls() {
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
}
