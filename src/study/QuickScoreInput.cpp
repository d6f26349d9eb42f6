#include "study/QuickScore.h"

#include <wx/utils.h>

#include <algorithm>
#include <iterator>

// What keys and the mouse do to the control, and what it tells its parent.
//
// A held key repeats: it goes down again and again, and the toolkit's own mark of a repeat is not
// set on every platform. So the control keeps the keys that are down. When the keys come back from
// a menu, a question or another program it asks the platform which ones are down, since nobody here
// has seen those.

namespace {

// All that may start a press.
constexpr int kPressingKeys[] = {WXK_RETURN,
                                 WXK_SPACE,
                                 WXK_LEFT,
                                 WXK_RIGHT,
                                 WXK_NUMPAD_LEFT,
                                 WXK_NUMPAD_RIGHT,
                                 '0',
                                 '1',
                                 '2',
                                 '3',
                                 '4',
                                 '5',
                                 WXK_NUMPAD0,
                                 WXK_NUMPAD1,
                                 WXK_NUMPAD2,
                                 WXK_NUMPAD3,
                                 WXK_NUMPAD4,
                                 WXK_NUMPAD5};

// Milliseconds that a release may be late before its press counts as lost.
constexpr long kLatestRelease = 1000;

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

std::optional<bool> QuickScore::IsKeyDown(int key) const {
#ifdef __WXGTK__
    // Other display servers tell of the modifiers only.
    if (wxGetDisplayInfo().type != wxDisplayX11) {
        return std::nullopt;
    }
#endif
    return wxGetKeyState(static_cast<wxKeyCode>(key));
}

bool QuickScore::IsHeld() const {
    return mHeldKey != -1 || mHeldButton != 0 || HasCapture();
}

void QuickScore::DropPress() {
    mHeldButton = 0;
    mHeldKey = -1;
    if (HasCapture()) {
        ReleaseMouse();
    }
    ClearPressed();
}

void QuickScore::ResumeKeys() {
    if (mHeldKey != -1) {
        DropPress();
    }
    mDownKeys.clear();
    // Where the platform does not tell, the repeats of a key end with the window that had it.
    for (const int key : kPressingKeys) {
        if (IsKeyDown(key).value_or(false)) {
            mDownKeys.insert(key);
        }
    }
}

void QuickScore::ForgetLostKeys(int present) {
    const auto isLost = [this, present](int key) {
        return key != present && !IsKeyDown(key).value_or(true);
    };
    for (auto key = mDownKeys.begin(); key != mDownKeys.end();) {
        key = isLost(*key) ? mDownKeys.erase(key) : std::next(key);
    }
    // A release that is only late, as on a busy machine, still counts.
    if (mHeldKey != -1 && mHeldSince.Time() > kLatestRelease && isLost(mHeldKey)) {
        DropPress();
    }
}

bool QuickScore::NoteKeyDown(const wxKeyEvent& event) {
    const int key = event.GetKeyCode();
    ForgetLostKeys(key);
    return mDownKeys.insert(key).second;
}

void QuickScore::Press(int32_t key) {
    if (!IsHeld()) {
        mHeldKey = key;
        mHeldSince.Start();
        mHeldItem = mCursor;
        SetPressed(mCursor);
    }
}

void QuickScore::PressDigit(int32_t key, int32_t digit) {
    constexpr int32_t kHighestScore = 5;
    if (!IsHeld()) {
        MoveCursor(kHighestScore - digit, true);
        Press(key);
    }
}

void QuickScore::ChooseHeldItem() {
    // The Left of the number pad goes forward.
    const int direction = mHeldKey == WXK_LEFT ? wxID_BACKWARD : wxID_FORWARD;
    mHeldKey = -1;
    ClearPressed();
    // The cursor may have moved on since.
    MoveCursor(mHeldItem, true);
    Activate(mHeldItem, direction);
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
    const bool mayPress = NoteKeyDown(event);
    if (!isOfMenus && digit != -1) {
        if (mayPress) {
            PressDigit(event.GetKeyCode(), digit);
        }
    } else if (isOfMenus || !HandleKey(event.GetKeyCode(), event.ShiftDown(), mayPress)) {
        event.Skip();
    }
}

// The cursor and the history are moved by repeats too.
bool QuickScore::HandleKey(int key, bool shift, bool mayPress) {
    const auto last = static_cast<int32_t>(GetCount()) - 1;
    switch (key) {
        case WXK_TAB:
            Navigate(!shift);
            return true;
        case WXK_RETURN:
        case WXK_SPACE:
            if (mayPress) {
                Press(key);
            }
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
            if (mMark == -1 || mMark == mCursor) {
                SendCommand(wxEVT_MENU, wxID_BACKWARD);
            } else if (mayPress) {
                Press(key);
            }
            return true;
        case WXK_RIGHT:
        case WXK_NUMPAD_RIGHT:
            if (mMark == mCursor) {
                SendCommand(wxEVT_MENU, wxID_FORWARD);
            } else if (mayPress) {
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
    mDownKeys.erase(event.GetKeyCode());
    if (mHeldKey == -1 || event.GetKeyCode() != mHeldKey) {
        event.Skip();
    } else {
        ChooseHeldItem();
    }
}

void QuickScore::OnSetFocus(wxFocusEvent& event) {
    ResumeKeys();
    RefreshItem(mCursor);
    event.Skip();
}

void QuickScore::OnKillFocus(wxFocusEvent& event) {
    DropPress();
    RefreshItem(mCursor);
    event.Skip();
}

void QuickScore::OnLeaveWindow(wxMouseEvent& event) {
    ClearPressed();
    event.Skip();
}

bool QuickScore::HoldByMouse(int32_t button) {
    SetFocus();
    if (mHeldButton == button) {
        // Its release went to someone else.
        DropPress();
    }
    ForgetLostKeys(-1);
    if (IsHeld()) {
        return false;
    }
    mHeldButton = button;
    CaptureMouse();
    return true;
}

void QuickScore::OnLeftDown(wxMouseEvent& event) {
    if (HoldByMouse(wxMOUSE_BTN_LEFT)) {
        PressUnder(event.GetPosition());
    }
}

void QuickScore::OnLeftUp(wxMouseEvent& event) {
    if (mHeldButton != wxMOUSE_BTN_LEFT) {
        return;
    }
    DropPress();
    const int32_t item = ItemAt(event.GetPosition());
    if (item != -1) {
        MoveCursor(item, true);
        Activate(item, wxID_FORWARD);
    }
}

void QuickScore::OnMiddleDown(wxMouseEvent& /*event*/) {
    if (HoldByMouse(wxMOUSE_BTN_MIDDLE)) {
        SetPressed(mCursor);
    }
}

void QuickScore::OnMiddleUp(wxMouseEvent& event) {
    if (mHeldButton != wxMOUSE_BTN_MIDDLE) {
        return;
    }
    DropPress();
    // The wheel has moved the cursor: it counts, and the pointer only says yes.
    if (ItemAt(event.GetPosition()) != -1) {
        Activate(mCursor, wxID_FORWARD);
    }
}

void QuickScore::PressUnder(const wxPoint& point) {
    const int32_t item = ItemAt(point);
    if (item != -1) {
        MoveCursor(item, true);
        SetPressed(item);
    }
}

void QuickScore::OnDrag(wxMouseEvent& event) {
    if (mHeldButton != 0 && !event.ButtonIsDown(static_cast<wxMouseButton>(mHeldButton))) {
        // It went up unseen.
        DropPress();
    } else if (mHeldButton == wxMOUSE_BTN_LEFT && HasCapture()) {
        PressUnder(event.GetPosition());
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
