#include "list/DropDownButton.h"

#include <wx/dcbuffer.h>
#include <wx/renderer.h>
#include <wx/settings.h>

#include <algorithm>

#include "list/DropDownWindow.h"
#include "shell/AccessibleName.h"

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
