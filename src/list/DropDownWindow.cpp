#include "list/DropDownWindow.h"

#include <wx/accel.h>
#include <wx/display.h>
#include <wx/menu.h>
#include <wx/settings.h>
#include <wx/sizer.h>
#include <wx/time.h>

#include <algorithm>
#include <memory>
#include <vector>

namespace {

constexpr long kStyle = wxBORDER_NONE | wxFRAME_NO_TASKBAR | wxFRAME_FLOAT_ON_PARENT;
// Kept free at the foot of the screen.
constexpr int kFoot = 26;
constexpr int kBorder = 1;
constexpr int kSmallestWidth = 160;
constexpr int kJustClosedMilliseconds = 250;

void CollectAccelerators(const wxMenu& menu, std::vector<wxAcceleratorEntry>& entries) {
    for (const wxMenuItem* const item : menu.GetMenuItems()) {
        if (item->IsSubMenu()) {
            CollectAccelerators(*item->GetSubMenu(), entries);
        } else if (const std::unique_ptr<wxAcceleratorEntry> entry{item->GetAccel()}) {
            entries.emplace_back(entry->GetFlags(), entry->GetKeyCode(), item->GetId());
        }
    }
}

}  // namespace

wxDropDownWindow::wxDropDownWindow(wxWindow* button, const wxString& name)
    : wxFrame(button, wxID_ANY, wxString(), wxDefaultPosition, wxDefaultSize, kStyle, name) {
    // Shows as a line around the child.
    SetBackgroundColour(wxSystemSettings::GetColour(wxSYS_COLOUR_BTNSHADOW));
    Bind(wxEVT_ACTIVATE, &wxDropDownWindow::OnActivate, this);
    wxGetTopLevelParent(button)->Bind(wxEVT_ACTIVATE, &wxDropDownWindow::OnOwnerActivate, this);
    Bind(wxEVT_CHAR_HOOK, &wxDropDownWindow::OnCharHook, this);
    Bind(wxEVT_CLOSE_WINDOW, &wxDropDownWindow::OnClose, this);
    Bind(wxEVT_MENU, &wxDropDownWindow::OnCommand, this);
}

void wxDropDownWindow::SetContent(wxWindow* content) {
    auto* const column = new wxBoxSizer(wxVERTICAL);
    column->Add(content, wxSizerFlags(1).Expand().Border(wxALL, FromDIP(kBorder)));
    SetSizer(column);
    mpContent = content;
}

void wxDropDownWindow::Popup() {
    const wxRect button = GetParent()->GetScreenRect();
    const wxRect screen = wxDisplay(GetParent()).GetGeometry();
    const wxSize room(screen.GetRight() + 1 - button.x, screen.GetBottom() + 1 - button.y - kFoot);
    wxSize wanted = mpContent->GetBestSize() + 2 * FromDIP(wxSize(kBorder, kBorder));
    wanted.IncTo(wxSize(std::max(button.width, FromDIP(kSmallestWidth)), 0));
    wanted.DecTo(room);
    SetSize(wxRect(button.GetBottomLeft() + wxPoint(0, 1), wanted));
    Layout();
    Show();
    Raise();
    mpContent->SetFocus();
}

void wxDropDownWindow::Dismiss() {
    if (IsShown()) {
        HideNow();
        GetParent()->SetFocus();
    }
}

bool wxDropDownWindow::WasJustClosed() const {
    return wxGetUTCTimeMillis() - mClosedAt < kJustClosedMilliseconds;
}

void wxDropDownWindow::TakeAccelerators(const wxMenuBar& bar) {
    std::vector<wxAcceleratorEntry> entries;
    for (size_t i = 0; i < bar.GetMenuCount(); ++i) {
        CollectAccelerators(*bar.GetMenu(i), entries);
    }
    SetAcceleratorTable(wxAcceleratorTable(static_cast<int>(entries.size()), entries.data()));
}

void wxDropDownWindow::HideNow() {
    mClosedAt = wxGetUTCTimeMillis();
    Hide();
}

void wxDropDownWindow::OnActivate(wxActivateEvent& event) {
    event.Skip();
    if (event.GetActive()) {
        mComesBack = false;
        mpContent->SetFocus();
    } else if (mIsHeld()) {
        mComesBack = true;
    } else if (IsShown()) {
        HideNow();
    }
}

// The window manager may give the activation of a dialog that ended to the frame.
void wxDropDownWindow::OnOwnerActivate(wxActivateEvent& event) {
    event.Skip();
    if (!event.GetActive() || !IsShown() || mIsHeld()) {
        return;
    }
    if (mComesBack) {
        mComesBack = false;
        Raise();
        mpContent->SetFocus();
    } else {
        HideNow();
    }
}

void wxDropDownWindow::OnCharHook(wxKeyEvent& event) {
    if (event.GetKeyCode() == WXK_ESCAPE) {
        Dismiss();
    } else {
        event.Skip();
    }
}

// Only the button ends it.
void wxDropDownWindow::OnClose(wxCloseEvent& event) {
    event.Veto();
    Dismiss();
}

void wxDropDownWindow::OnCommand(wxCommandEvent& event) {
    wxUpdateUIEvent rule(event.GetId());
    rule.SetEventObject(this);
    GetParent()->ProcessWindowEvent(rule);
    const bool isEnabled = !rule.GetSetEnabled() || rule.GetEnabled();
    event.Skip(isEnabled);
}
