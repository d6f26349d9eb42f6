#include "list/DropDown.h"

#include <wx/accel.h>
#include <wx/dcbuffer.h>
#include <wx/display.h>
#include <wx/menu.h>
#include <wx/renderer.h>
#include <wx/settings.h>
#include <wx/sizer.h>
#include <wx/time.h>

#include <algorithm>
#include <memory>
#include <vector>

#include "shell/Toolkit.h"

namespace {

constexpr int kPadding = 8;
constexpr int kArrow = 16;
constexpr int kWidestLabel = 220;

}  // namespace

wxDropDownButton::wxDropDownButton(wxWindow* parent, wxWindowID id, const wxString& label,
                                   const wxString& name) {
    SetBackgroundStyle(wxBG_STYLE_PAINT);
    Create(parent, id, wxDefaultPosition, wxDefaultSize, wxBORDER_NONE, wxDefaultValidator, name);
    SetLabel(label);
    SetAccessibleRole(*this, AccessibleRole::Button);
    const auto redraw = [this](wxEvent& event) {
        event.Skip();
        Refresh();
    };
    Bind(wxEVT_PAINT, &wxDropDownButton::OnPaint, this);
    Bind(wxEVT_LEFT_DOWN, &wxDropDownButton::OnLeftDown, this);
    Bind(wxEVT_LEFT_DCLICK, &wxDropDownButton::OnLeftDown, this);
    Bind(wxEVT_LEFT_UP, &wxDropDownButton::OnLeftUp, this);
    Bind(wxEVT_ENTER_WINDOW, &wxDropDownButton::OnHover, this);
    Bind(wxEVT_LEAVE_WINDOW, &wxDropDownButton::OnHover, this);
    Bind(wxEVT_KEY_DOWN, &wxDropDownButton::OnKeyDown, this);
    Bind(wxEVT_SET_FOCUS, redraw);
    Bind(wxEVT_KILL_FOCUS, redraw);
    Bind(wxEVT_SIZE, redraw);
    Bind(wxEVT_SYS_COLOUR_CHANGED, redraw);
}

void wxDropDownButton::SetLabel(const wxString& label) {
    wxControl::SetLabel(label);
    SetAccessibleName(*this, wxString::Format(_("Category: %s"), GetLabelText()));
    InvalidateBestSize();
    Refresh();
}

bool wxDropDownButton::SetFont(const wxFont& font) {
    const bool changed = wxControl::SetFont(font);
    InvalidateBestSize();
    Refresh();
    return changed;
}

wxSize wxDropDownButton::DoGetBestClientSize() const {
    const wxSize text = GetTextExtent(GetLabelText());
    return wxSize(std::min(text.x, FromDIP(kWidestLabel)), text.y) +
           FromDIP(wxSize(3 * kPadding + kArrow, 2 * kPadding));
}

void wxDropDownButton::Press() {
    wxCommandEvent pressed(wxEVT_BUTTON, GetId());
    pressed.SetEventObject(this);
    ProcessWindowEvent(pressed);
    if (mpPopup != nullptr) {
        mpPopup->Popup();
    }
}

void wxDropDownButton::OnPaint(wxPaintEvent&) {
    wxAutoBufferedPaintDC dc(this);
    dc.SetBackground(wxBrush(GetParent()->GetBackgroundColour()));
    dc.Clear();
    wxRendererNative& renderer = wxRendererNative::Get();
    const wxRect area = GetClientRect();
    const int flags = (mHovered ? int{wxCONTROL_CURRENT} : 0) |
                      (mPressed ? int{wxCONTROL_PRESSED} : 0) |
                      (HasFocus() ? int{wxCONTROL_FOCUSED} : 0);
    renderer.DrawPushButton(this, dc, area, flags);

    const int padding = FromDIP(kPadding);
    const int arrow = FromDIP(kArrow);
    wxRect text = wxRect(area).Deflate(padding, 0);
    text.width -= arrow + padding;
    renderer.DrawDropArrow(this, dc, wxRect(text.GetRight() + padding, area.y, arrow, area.height),
                           flags);
    dc.SetFont(GetFont());
    dc.SetTextForeground(wxSystemSettings::GetColour(wxSYS_COLOUR_BTNTEXT));
    const wxString shown = Ellipsize(GetLabelText(), dc, wxELLIPSIZE_END, text.width);
    dc.DrawLabel(shown, text, wxALIGN_LEFT | wxALIGN_CENTRE_VERTICAL);
    if (HasFocus()) {
        renderer.DrawFocusRect(this, dc, wxRect(area).Deflate(FromDIP(3)), flags);
    }
}

void wxDropDownButton::OnLeftDown(wxMouseEvent&) {
    SetFocus();
    mPressed = true;
    mPressCloses = mpPopup != nullptr && (mpPopup->IsShown() || mpPopup->WasJustClosed());
    Refresh();
}

void wxDropDownButton::OnLeftUp(wxMouseEvent& event) {
    const bool isClick = mPressed && GetClientRect().Contains(event.GetPosition());
    mPressed = false;
    Refresh();
    if (!isClick) {
        return;
    }
    if (mPressCloses) {
        mpPopup->Dismiss();
    } else {
        Press();
    }
}

void wxDropDownButton::OnHover(wxMouseEvent& event) {
    event.Skip();
    mHovered = event.Entering();
    mPressed = mPressed && mHovered;
    Refresh();
}

void wxDropDownButton::OnKeyDown(wxKeyEvent& event) {
    switch (event.GetKeyCode()) {
        case WXK_SPACE:
        case WXK_RETURN:
        case WXK_NUMPAD_ENTER:
        case WXK_DOWN:
        case WXK_NUMPAD_DOWN:
            Press();
            break;
        default:
            event.Skip();
    }
}

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
