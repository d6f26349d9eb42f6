#include "categories/DropDown.h"

#include <wx/dcbuffer.h>
#include <wx/dcclient.h>
#include <wx/renderer.h>
#include <wx/settings.h>
#include <wx/sizer.h>

#include <algorithm>

#include "shell/Toolkit.h"

namespace {

constexpr int kPadding = 8;
constexpr int kArrow = 16;
constexpr int kWidestLabel = 220;
constexpr int kBorder = 1;
constexpr int kSmallestWidth = 160;

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
    SetAccessibleName(*this, GetLabelText());
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
    const int paddings = text.x == 0 ? 1 : 3;
    return wxSize(std::min(text.x, FromDIP(kWidestLabel)), GetCharHeight()) +
           FromDIP(wxSize(paddings * kPadding + kArrow, 2 * kPadding));
}

void wxDropDownButton::Press() {
    SendPress(*this);
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
    if (GetLabelText().empty()) {
        renderer.DrawDropArrow(this, dc, area, flags);
        return;
    }
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
    // The focus closes the drop-down; the released button must not open it again.
    mPressCloses = mpPopup != nullptr && mpPopup->IsShown();
    mPressed = true;
    SetFocus();
    Refresh();
}

void wxDropDownButton::OnLeftUp(wxMouseEvent& event) {
    const bool isClick = mPressed && GetClientRect().Contains(event.GetPosition());
    mPressed = false;
    Refresh();
    if (isClick && !mPressCloses) {
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

wxDropDownWindow::wxDropDownWindow(wxWindow* frame, wxWindow* anchor, const wxString& name)
    : mpAnchor(anchor) {
    Hide();
    Create(frame, wxID_ANY, wxDefaultPosition, wxDefaultSize, wxBORDER_NONE | wxTAB_TRAVERSAL,
           name);
    frame->Bind(wxEVT_ACTIVATE, &wxDropDownWindow::OnFrameActivate, this);
    frame->Bind(wxEVT_SIZE, &wxDropDownWindow::OnFrameSize, this);
    Bind(wxEVT_CHAR_HOOK, &wxDropDownWindow::OnCharHook, this);
    Bind(wxEVT_PAINT, &wxDropDownWindow::OnPaint, this);
    wxEvtHandler::AddFilter(this);
}

wxDropDownWindow::~wxDropDownWindow() {
    wxEvtHandler::RemoveFilter(this);
}

void wxDropDownWindow::SetContent(wxWindow* content) {
    auto* const column = new wxBoxSizer(wxVERTICAL);
    column->Add(content, wxSizerFlags(1).Expand().Border(wxALL, FromDIP(kBorder)));
    SetSizer(column);
    mpContent = content;
}

void wxDropDownWindow::Popup() {
    mFormerFocus = FindFocus();
    Show();
    Place();
    // Lies over the contents of the frame that were created later.
    Raise();
    mpContent->SetFocus();
    // A list does not tell the surrounding windows of its focus.
    wxChildFocusEvent notice(mpContent);
    ProcessWindowEvent(notice);
}

void wxDropDownWindow::Dismiss() {
    if (!IsShown()) {
        return;
    }
    Hide();
    if (mFormerFocus != nullptr) {
        mFormerFocus->SetFocus();
    }
}

void wxDropDownWindow::Place() {
    const wxRect anchor = mpAnchor == nullptr ? wxRect() : mpAnchor->GetRect();
    const wxPoint place(anchor.x, anchor.y + anchor.height);
    const wxSize frame = GetParent()->GetClientSize();
    wxSize wanted = mpContent->GetBestSize() + 2 * FromDIP(wxSize(kBorder, kBorder));
    wanted.IncTo(wxSize(std::max(anchor.width, FromDIP(kSmallestWidth)), 0));
    wanted.DecTo(frame - wxSize(place.x, place.y));
    SetSize(wxRect(place, wanted));
    Layout();
}

bool wxDropDownWindow::IsOutside(const wxWindow& window) const {
    const wxWindow* other = &window;
    while (other != nullptr && other != this && !other->IsTopLevel()) {
        other = other->GetParent();
    }
    return other == GetParent();
}

// Sees every event of the program before its window does.
int wxDropDownWindow::FilterEvent(wxEvent& event) {
    const wxEventType type = event.GetEventType();
    const bool isPress =
        type == wxEVT_LEFT_DOWN || type == wxEVT_MIDDLE_DOWN || type == wxEVT_RIGHT_DOWN;
    if (!IsShown() || (!isPress && type != wxEVT_SET_FOCUS)) {
        return Event_Skip;
    }
    const auto* const window = dynamic_cast<const wxWindow*>(event.GetEventObject());
    if (window == nullptr || !IsOutside(*window)) {
        return Event_Skip;
    }
    if (!isPress) {
        Hide();
    } else if (window != mpAnchor) {
        // The place that was pressed may take no focus.
        Dismiss();
    }
    return Event_Skip;
}

void wxDropDownWindow::OnFrameActivate(wxActivateEvent& event) {
    event.Skip();
    if (!event.GetActive() && !mIsHeld()) {
        Dismiss();
    }
}

void wxDropDownWindow::OnFrameSize(wxSizeEvent& event) {
    event.Skip();
    if (IsShown()) {
        // The frame has given the anchor its new place by then.
        CallAfter([this] { Place(); });
    }
}

void wxDropDownWindow::OnCharHook(wxKeyEvent& event) {
    if (event.GetKeyCode() == WXK_ESCAPE) {
        Dismiss();
    } else {
        event.Skip();
    }
}

// Draws the line around the child.
void wxDropDownWindow::OnPaint(wxPaintEvent&) {
    wxPaintDC dc(this);
    dc.SetBackground(wxBrush(wxSystemSettings::GetColour(wxSYS_COLOUR_BTNSHADOW)));
    dc.Clear();
}
