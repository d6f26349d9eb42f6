#include "study/QuickScore.h"

#include <algorithm>

// What keys and the mouse do to the control, and what it tells its parent.

namespace {

// The score that a key stands for, or -1.
int32_t DigitOf(const wxKeyEvent& event) {
    const int key = event.GetKeyCode();
    if (key >= '0' && key <= '5') {
        return key - '0';
    }
    if (key >= WXK_NUMPAD0 && key <= WXK_NUMPAD5) {
        return key - WXK_NUMPAD0;
    }
#ifdef __WXGTK__
    // A French keyboard types digits with Shift. The key code names such a key by its other
    // character; the raw code is the digit.
    const auto raw = static_cast<int>(event.GetRawKeyCode());
    if (raw >= '0' && raw <= '5') {
        return raw - '0';
    }
#endif
    return -1;
}

}  // namespace

bool QuickScore::IsHeld() const {
    return mHeldKey != -1 || mHeldButton != 0 || HasCapture();
}

// Whatever is held down is let go and chooses nothing.
void QuickScore::EndHold() {
    mHeldButton = 0;
    mHeldKey = -1;
    ClearPressed();
}

void QuickScore::Press(int32_t key) {
    if (!IsHeld()) {
        mHeldKey = key;
        SetPressed(mCursor);
    }
}

void QuickScore::PressDigit(int32_t key, int32_t digit) {
    constexpr int32_t kHighestScore = 5;
    if (!IsHeld()) {
        const int32_t item = kHighestScore - digit;
        mHeldKey = key;
        MoveCursor(item, true);
        SetPressed(item);
    }
}

void QuickScore::SendCommand(wxEventType type, int id, int item, long extra) {
    wxCommandEvent event(type, id);
    event.SetEventObject(this);
    event.SetInt(item);
    event.SetExtraLong(extra);
    GetParent()->GetEventHandler()->ProcessEvent(event);
}

void QuickScore::Navigate(bool forward) {
    wxNavigationKeyEvent event;
    event.SetDirection(forward);
    event.SetFromTab(true);
    event.SetCurrentFocus(this);
    event.SetEventObject(this);
    GetParent()->GetEventHandler()->ProcessEvent(event);
}

// Keys of others go on to them, above all those of the menus.
void QuickScore::OnKeyDown(wxKeyEvent& event) {
    const bool isOfMenus = event.HasModifiers() || event.MetaDown();
    const int32_t digit = DigitOf(event);
    if (!isOfMenus && digit != -1) {
        PressDigit(event.GetKeyCode(), digit);
    } else if (isOfMenus || !HandleKey(event.GetKeyCode(), event.ShiftDown())) {
        event.Skip();
    }
}

bool QuickScore::HandleKey(int key, bool shift) {
    const auto last = static_cast<int32_t>(GetCount()) - 1;
    switch (key) {
        case WXK_TAB:
            Navigate(!shift);
            return true;
        case WXK_RETURN:
        case WXK_SPACE:
            Press(key);
            return true;
        case WXK_UP:
        case WXK_NUMPAD_UP:
            MoveCursor(std::max(mCursor - 1, 0), true);
            return true;
        case WXK_DOWN:
        case WXK_NUMPAD_DOWN:
            MoveCursor(std::min(mCursor + 1, last), true);
            return true;
        case WXK_LEFT:
        case WXK_NUMPAD_LEFT:
            if (mMark != -1 && mMark != mCursor) {
                Press(key);
            } else {
                SendCommand(wxEVT_MENU, wxID_BACKWARD);
            }
            return true;
        case WXK_RIGHT:
        case WXK_NUMPAD_RIGHT:
            if (mMark == mCursor) {
                SendCommand(wxEVT_MENU, wxID_FORWARD);
            } else {
                Press(key);
            }
            return true;
        case WXK_PAGEUP:
            SendCommand(EVT_QUICKSCORE_PAGE_UP, GetId());
            return true;
        case WXK_PAGEDOWN:
            SendCommand(EVT_QUICKSCORE_PAGE_DOWN, GetId());
            return true;
        default:
            return false;
    }
}

void QuickScore::OnKeyUp(wxKeyEvent& event) {
    if (mHeldKey == -1 || event.GetKeyCode() != mHeldKey) {
        event.Skip();
        return;
    }
    // The Left of the number pad goes forward.
    const int direction = mHeldKey == WXK_LEFT ? wxID_BACKWARD : wxID_FORWARD;
    mHeldKey = -1;
    ClearPressed();
    Activate(mCursor, direction);
}

void QuickScore::OnSetFocus(wxFocusEvent& event) {
    RefreshItem(mCursor);
    event.Skip();
}

void QuickScore::OnKillFocus(wxFocusEvent& event) {
    RefreshItem(mCursor);
    if (mHeldButton != 0) {
        mHeldButton = 0;
        ClearPressed();
    } else if (mHeldKey != -1) {
        mHeldKey = -1;
        ClearPressed();
    }
    event.Skip();
}

void QuickScore::OnLeaveWindow(wxMouseEvent& event) {
    ClearPressed();
    event.Skip();
}

void QuickScore::OnLeftDown(wxMouseEvent& event) {
    SetFocus();
    if (!IsHeld()) {
        mHeldButton = wxMOUSE_BTN_LEFT;
        CaptureMouse();
        OnDrag(event);
    }
}

void QuickScore::OnLeftUp(wxMouseEvent& event) {
    if (HasCapture()) {
        ReleaseMouse();
    }
    if (mHeldButton != wxMOUSE_BTN_LEFT) {
        return;
    }
    mHeldButton = 0;
    ClearPressed();
    const int32_t item = ItemAt(event.GetPosition());
    if (item != -1) {
        MoveCursor(item, true);
        Activate(item, wxID_FORWARD);
    }
}

void QuickScore::OnMiddleDown(wxMouseEvent& /*event*/) {
    SetFocus();
    if (!IsHeld()) {
        mHeldButton = wxMOUSE_BTN_MIDDLE;
        CaptureMouse();
        SetPressed(mCursor);
    }
}

void QuickScore::OnMiddleUp(wxMouseEvent& event) {
    if (HasCapture()) {
        ReleaseMouse();
    }
    if (mHeldButton != wxMOUSE_BTN_MIDDLE) {
        return;
    }
    mHeldButton = 0;
    ClearPressed();
    // The wheel has moved the cursor: it counts, and the pointer only says yes.
    if (ItemAt(event.GetPosition()) != -1) {
        Activate(mCursor, wxID_FORWARD);
    }
}

void QuickScore::OnDrag(wxMouseEvent& event) {
    const int32_t item = ItemAt(event.GetPosition());
    if (item != -1 && HasCapture() && mHeldButton == wxMOUSE_BTN_LEFT) {
        MoveCursor(item, true);
        SetPressed(item);
    }
}

void QuickScore::OnWheel(wxMouseEvent& event) {
    const int32_t delta = event.GetWheelDelta();
    if (delta <= 0 || event.GetWheelAxis() != wxMOUSE_WHEEL_VERTICAL) {
        event.Skip();
        return;
    }
    mWheelRest += event.GetWheelRotation();
    const int32_t lines = mWheelRest / delta;
    mWheelRest -= lines * delta;
    const auto last = static_cast<int32_t>(GetCount()) - 1;
    const int32_t cursor = std::max(std::min(mCursor - lines, last), 0);
    MoveCursor(cursor, true);
    if (mHeldButton == wxMOUSE_BTN_MIDDLE && HasCapture()) {
        SetPressed(cursor);
    }
}

void QuickScore::OnCaptureLost(wxMouseCaptureLostEvent& /*event*/) {
    mHeldButton = 0;
    ClearPressed();
}
