#include "study/QuickScore.h"

#include <wx/settings.h>
#include <wx/utils.h>

#include <algorithm>
#include <cstdlib>
#include <iterator>

// What keys and the mouse do to the control, and what it tells its parent.
//
// A held key repeats: the toolkit reports it as going down again and again, and does not mark the
// repeats on every platform. So the control remembers which keys are down, and only a key that was
// up starts a press. Example: Space is held down and shows the back; its repeats must not score.
// Keys with Ctrl, Alt or Meta belong to the menus. Keys with Ctrl, Alt or Meta belong to the menus.
//
// When the keys come back from a menu, a dialog or another program, the control has not seen which
// ones went down meanwhile, and asks the platform (ResumeKeys).

namespace {

// The keys that may start a press.
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

// What counts as one double click where the desktop does not say: milliseconds and pixels.
constexpr int kClickTime = 400;
constexpr int kClickDistance = 5;

// Milliseconds after which a press without a release counts as lost.
constexpr long kLatestRelease = 1000;

// Returns the score that a key stands for, or -1.
int32_t DigitOf(const wxKeyEvent& event) {
    const int key = event.GetKeyCode();
    if (key >= '0' && key <= '5') {
        return key - '0';
    }
    if (key >= WXK_NUMPAD0 && key <= WXK_NUMPAD5) {
        return key - WXK_NUMPAD0;
    }
#ifdef __WXGTK__
    // A French keyboard types digits with Shift. The key code is then that of the other character
    // on the key; the raw code is the digit.
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
    // Other display servers tell only about modifier keys.
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
    // Where the platform does not tell, repeats do not cross from one window to another anyway.
    for (const int key : kPressingKeys) {
        if (IsKeyDown(key).value_or(false)) {
            mDownKeys.insert(key);
        }
    }
}

void QuickScore::TakeFocusWithKey(int key) {
    SetFocus();
    mDownKeys.insert(key);
}

void QuickScore::ForgetLostKeys(int present) {
    const auto isLost = [this, present](int key) {
        return key != present && !IsKeyDown(key).value_or(true);
    };
    for (auto key = mDownKeys.begin(); key != mDownKeys.end();) {
        key = isLost(*key) ? mDownKeys.erase(key) : std::next(key);
    }
    // On a busy machine a release may just be late, and still counts.
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
    // Left on the number pad counts as forward; only the main Left key goes backward.
    const int direction = mHeldKey == WXK_LEFT ? wxID_BACKWARD : wxID_FORWARD;
    mHeldKey = -1;
    ClearPressed();
    // The cursor may have moved since the press.
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

// Keys that the control has no use for are passed on, above all those of the menus.
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

// Repeats of a held key move the cursor and walk through the history, but never start a press.
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
    ShowTipOf(-1);
    event.Skip();
}

bool QuickScore::HoldByMouse(int32_t button) {
    SetFocus();
    if (mHeldButton == button) {
        // The release of the last press went elsewhere.
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

bool QuickScore::IsRepeatedClick(const wxMouseEvent& event) {
    const auto metric = [this](wxSystemMetric index, int otherwise) {
        const int value = wxSystemSettings::GetMetric(index, this);
        return value > 0 ? value : otherwise;
    };
    const wxPoint way = event.GetPosition() - mClickPlace;
    const bool isNear = std::abs(way.x) <= metric(wxSYS_DCLICK_X, kClickDistance) &&
                        std::abs(way.y) <= metric(wxSYS_DCLICK_Y, kClickDistance);
    const long since = event.GetTimestamp() - mClickTime;
    // The time is that of the event, so that a busy machine neither joins nor parts two clicks.
    const bool isSoon =
        mClickTime != 0 && since >= 0 && since < metric(wxSYS_DCLICK_MSEC, kClickTime);
    mClickPlace = event.GetPosition();
    mClickTime = event.GetTimestamp();
    mClickChose = mClickChose && (event.LeftDClick() || (isNear && isSoon));
    return mClickChose;
}

void QuickScore::OnLeftDown(wxMouseEvent& event) {
    // A double click on "Show Back" shows the back and must not score what the user has not seen.
    if (!IsRepeatedClick(event) && HoldByMouse(wxMOUSE_BTN_LEFT)) {
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
        mClickChose = true;
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
    // The wheel chooses the item while the button is held, so the cursor counts and not the item
    // below the pointer.
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

void QuickScore::SetItemTips(const std::vector<wxString>& tips) {
    mItemTips = tips;
    ShowTipOf(mTipItem);
}

void QuickScore::ShowTipOf(int32_t item) {
    if (item != mTipItem) {
        RefreshItem(mTipItem);
        RefreshItem(item);
        mTipItem = item;
    }
    const auto index = static_cast<size_t>(item);
    if (item >= 0 && index < mItemTips.size() && GetToolTipText() != mItemTips[index]) {
        SetToolTip(mItemTips[index]);
    }
}

void QuickScore::OnDrag(wxMouseEvent& event) {
    ShowTipOf(ItemAt(event.GetPosition()));
    if (mHeldButton != 0 && !event.ButtonIsDown(static_cast<wxMouseButton>(mHeldButton))) {
        // The button was released where we did not see it.
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
