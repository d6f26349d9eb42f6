#include "study/QuickScore.h"

#include <wx/dcbuffer.h>
#include <wx/dcclient.h>
#include <wx/dcmemory.h>
#include <wx/renderer.h>
#include <wx/settings.h>

#include <algorithm>
#include <cmath>

#include "study/ButtonBitmap.h"

wxDEFINE_EVENT(EVT_QUICKSCORE_PAGE_UP, wxCommandEvent);
wxDEFINE_EVENT(EVT_QUICKSCORE_PAGE_DOWN, wxCommandEvent);

wxIMPLEMENT_DYNAMIC_CLASS(QuickScore, wxControlWithItems);

QuickScore::QuickScore(wxWindow* parent, wxWindowID id, const wxPoint& position, const wxSize& size,
                       long style, const wxString& name) {
    Create(parent, id, position, size, style, name);
}

bool QuickScore::Create(wxWindow* parent, wxWindowID id, const wxPoint& position,
                        const wxSize& size, long style, const wxString& name) {
    SetBackgroundStyle(wxBG_STYLE_PAINT);
    if (!wxControlWithItems::Create(parent, id, position, size, style, wxDefaultValidator, name)) {
        return false;
    }
    Bind(wxEVT_KEY_DOWN, &QuickScore::OnKeyDown, this);
    Bind(wxEVT_KEY_UP, &QuickScore::OnKeyUp, this);
    Bind(wxEVT_KILL_FOCUS, &QuickScore::OnKillFocus, this);
    Bind(wxEVT_LEAVE_WINDOW, &QuickScore::OnLeaveWindow, this);
    Bind(wxEVT_LEFT_DOWN, &QuickScore::OnLeftDown, this);
    Bind(wxEVT_LEFT_DCLICK, &QuickScore::OnLeftDown, this);
    Bind(wxEVT_LEFT_UP, &QuickScore::OnLeftUp, this);
    Bind(wxEVT_MIDDLE_DOWN, &QuickScore::OnMiddleDown, this);
    Bind(wxEVT_MIDDLE_DCLICK, &QuickScore::OnMiddleDown, this);
    Bind(wxEVT_MIDDLE_UP, &QuickScore::OnMiddleUp, this);
    Bind(wxEVT_MOTION, &QuickScore::OnDrag, this);
    Bind(wxEVT_MOUSEWHEEL, &QuickScore::OnWheel, this);
    Bind(wxEVT_MOUSE_CAPTURE_LOST, &QuickScore::OnCaptureLost, this);
    Bind(wxEVT_PAINT, &QuickScore::OnPaint, this);
    Bind(wxEVT_SET_FOCUS, &QuickScore::OnSetFocus, this);
    Bind(wxEVT_SYS_COLOUR_CHANGED, &QuickScore::OnSystemColourChanged, this);
    return true;
}

unsigned int QuickScore::GetCount() const {
    return static_cast<unsigned int>(mStrings.size());
}

wxString QuickScore::GetString(unsigned int n) const {
    wxCHECK_MSG(IsValid(n), wxString(), "no such item");
    return mStrings[n];
}

void QuickScore::SetString(unsigned int n, const wxString& label) {
    wxCHECK_RET(IsValid(n), "no such item");
    mStrings[n] = label;
    UpdateMetrics();
    RefreshItem(static_cast<int32_t>(n));
}

void QuickScore::SetItems(const wxString* labels, size_t count) {
    const int32_t cursor = mCursor;
    const int32_t mark = mMark;
    Clear();
    Append(static_cast<unsigned int>(count), labels);
    SetSelection(cursor);
    SetMark(mark);
    // The best size is never below the minimum size, and shorter labels are to shrink both.
    SetMinSize(wxDefaultSize);
    SetMinSize(GetBestSize());
}

void QuickScore::SetAllStrings(const wxString& label) {
    for (unsigned int n = 0; n < GetCount(); ++n) {
        SetString(n, label);
    }
}

void QuickScore::SetSelection(int n) {
    MoveCursor(n, false);
}

void QuickScore::SetMark(int32_t n) {
    Activate(n, 0);
}

void QuickScore::SetMargin(int32_t units) {
    mMargin = units;
    UpdateMetrics();
}

bool QuickScore::SetFont(const wxFont& font) {
    const bool changed = wxControlWithItems::SetFont(font);
    UpdateMetrics();
    Refresh();
    return changed;
}

bool QuickScore::Enable(bool enable) {
    const bool changed = wxControlWithItems::Enable(enable);
    if (changed) {
        Refresh();
    }
    return changed;
}

int32_t QuickScore::ItemAt(const wxPoint& point) const {
    const auto count = static_cast<int32_t>(GetCount());
    if (point.x < 0 || point.x >= GetClientSize().x || point.y < 0 ||
        point.y >= mItemHeight * count) {
        return -1;
    }
    return point.y / mItemHeight;
}

wxRect QuickScore::GetItemRect(int32_t n) const {
    return wxRect(0, n * mItemHeight, std::max(mItemWidth, GetClientSize().x), mItemHeight);
}

wxSize QuickScore::DoGetBestClientSize() const {
    return wxSize(mItemWidth, mItemHeight * static_cast<int32_t>(GetCount()));
}

int QuickScore::DoInsertItems(const wxArrayStringsAdapter& items, unsigned int pos,
                              void** clientData, wxClientDataType type) {
    for (unsigned int i = 0; i < items.GetCount(); ++i) {
        mStrings.Insert(items[i], pos + i);
        mClientData.insert(mClientData.begin() + static_cast<std::ptrdiff_t>(pos + i), nullptr);
        AssignNewItemClientData(pos + i, clientData, i, type);
    }
    UpdateMetrics();
    Refresh();
    return static_cast<int>(pos + items.GetCount()) - 1;
}

void QuickScore::DoSetItemClientData(unsigned int n, void* clientData) {
    mClientData[n] = clientData;
}

void* QuickScore::DoGetItemClientData(unsigned int n) const {
    return mClientData[n];
}

void QuickScore::DoClear() {
    mStrings.clear();
    mClientData.clear();
    ForgetPositions();
}

void QuickScore::DoDeleteOneItem(unsigned int pos) {
    mStrings.RemoveAt(pos);
    mClientData.erase(mClientData.begin() + static_cast<std::ptrdiff_t>(pos));
    ForgetPositions();
}

// After a removal no position means the item that it meant before.
void QuickScore::ForgetPositions() {
    mCursor = -1;
    mMark = -1;
    EndHold();
    UpdateMetrics();
    Refresh();
}

void QuickScore::UpdateMetrics() {
    wxClientDC dc(this);
    dc.SetFont(GetFont());
    // The context counts an inch in pixels of the screen, and everything else in logical ones.
    const double ppi = dc.GetPPI().y / GetContentScaleFactor();
    int32_t textWidth = 0;
    int32_t textHeight = 0;
    for (const wxString& label : mStrings) {
        wxCoord width = 0;
        wxCoord height = 0;
        wxCoord externalLeading = 0;
        dc.GetTextExtent(label, &width, &height, nullptr, &externalLeading);
        textWidth = std::max(textWidth, width);
        textHeight = std::max(textHeight, height + externalLeading);
    }
    const auto pad = static_cast<int32_t>(std::ceil(mMargin / 96.0 * ppi));
    const int32_t total = textHeight + 2 * pad;
    const int32_t quarter = total / 4;
    if (mItemHeight != total + 1) {
        mItemHeight = total + 1;
        mDefaultBitmap = wxNullBitmap;
    }
    mItemWidth = std::max(mItemHeight, textWidth + 2 * quarter + 1);
    mPadY = pad;
    mPadX = quarter;
    mTextHeight = textHeight;
    InvalidateBestSize();
}

// Builds the pictures of the states when size, background, screen or theme have changed since.
void QuickScore::EnsureBitmaps() {
    const wxColour background = GetBackgroundColour();
    const double scale = GetContentScaleFactor();
    if (mDefaultBitmap.IsOk() && mDefaultBitmap.GetScaleFactor() == scale &&
        mBitmapBackground == background) {
        return;
    }
    const wxColour grey(197, 197, 197);
    const wxColour blue(97, 127, 220);
    const wxColour face = wxSystemSettings::GetColour(wxSYS_COLOUR_BTNFACE);
    const int32_t size = mItemHeight;
    mDefaultBitmap = MakeButtonBitmap(size, background, *wxWHITE, grey, false, scale);
    mSelectedBitmap = MakeButtonBitmap(size, background, *wxWHITE, blue, false, scale);
    mPressedBitmap = MakeButtonBitmap(size, background, *wxWHITE, blue, true, scale);
    mDisabledBitmap = MakeButtonBitmap(size, background, face, face, true, scale);
    mBitmapBackground = background;
}

void QuickScore::RefreshItem(int32_t n) {
    if (n >= 0) {
        RefreshRect(GetItemRect(n));
    }
}

const wxBitmap& QuickScore::ItemBitmap(int32_t n) const {
    if (!IsEnabled()) {
        return mDisabledBitmap;
    }
    if (n == mPressed) {
        return mPressedBitmap;
    }
    return n == mMark ? mSelectedBitmap : mDefaultBitmap;
}

void QuickScore::PaintItem(wxDC& dc, int32_t n) {
    const wxRect item = GetItemRect(n);
    const int32_t shift = IsEnabled() && n == mPressed ? 1 : 0;
    PaintBitmap(dc, ItemBitmap(n), item);
    if (IsEnabled() && n == mCursor && HasFocus()) {
        wxRect focus(item.x, item.y, item.width - 1, item.height);
        focus.Deflate(2);
        focus.x += shift;
        focus.y += shift;
        PaintFocus(dc, focus);
    }
    const wxString& label = mStrings[static_cast<size_t>(n)];
    int32_t x = item.x + mPadX;
    if (HasFlag(wxALIGN_CENTRE)) {
        x = item.x + (item.width - dc.GetTextExtent(label).x) / 2;
    }
    dc.DrawText(label, x + shift, item.y + mPadY + shift);
}

// Both ends of the button as they are, and its middle column stretched between them.
void QuickScore::PaintBitmap(wxDC& dc, const wxBitmap& bitmap, const wxRect& item) const {
    const int32_t size = mItemHeight;
    const int32_t left = size / 2;
    const int32_t right = size - left;
    wxMemoryDC button;
    button.SelectObjectAsSource(bitmap);
    dc.Blit(item.x, item.y, left, size, &button, 0, 0);
    dc.Blit(item.x + item.width - right, item.y, right, size, &button, left, 0);
    const int32_t gap = item.width - size;
    if (gap > 0) {
        dc.StretchBlit(item.x + left, item.y, gap, size, &button, left, 0, 1, size);
    }
}

void QuickScore::PaintFocus(wxDC& dc, const wxRect& rect) {
    wxRendererNative::Get().DrawFocusRect(this, dc, rect, wxCONTROL_SELECTED);
}

void QuickScore::MoveCursor(int32_t n, bool notify) {
    if (n == mCursor || n >= static_cast<int32_t>(GetCount())) {
        return;
    }
    RefreshItem(mCursor);
    RefreshItem(n);
    mCursor = n;
    if (notify) {
        SendCommand(wxEVT_LISTBOX, GetId(), n);
    }
}

void QuickScore::Activate(int32_t n, int direction) {
    if (n == mMark || n >= static_cast<int32_t>(GetCount())) {
        return;
    }
    RefreshItem(mMark);
    RefreshItem(n);
    mMark = n;
    if (direction != 0) {
        SendCommand(wxEVT_LISTBOX_DCLICK, GetId(), n, direction);
    }
}

void QuickScore::SetPressed(int32_t n) {
    if (n == mPressed) {
        return;
    }
    RefreshItem(mPressed);
    RefreshItem(n);
    mPressed = n;
}

void QuickScore::ClearPressed() {
    SetPressed(-1);
}

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
    const int key = event.GetKeyCode();
    if (event.HasModifiers() || !HandleKey(key, event.ShiftDown())) {
        event.Skip();
    }
}

bool QuickScore::HandleKey(int key, bool shift) {
    if (key >= '0' && key <= '5') {
        PressDigit(key, key - '0');
        return true;
    }
    if (key >= WXK_NUMPAD0 && key <= WXK_NUMPAD5) {
        PressDigit(key, key - WXK_NUMPAD0);
        return true;
    }
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

void QuickScore::OnPaint(wxPaintEvent& /*event*/) {
    EnsureBitmaps();
    wxAutoBufferedPaintDC dc(this);
    dc.SetBackground(wxBrush(GetBackgroundColour()));
    dc.Clear();
    dc.SetFont(GetFont());
    // The buttons are light in every theme.
    dc.SetTextForeground(IsEnabled() ? *wxBLACK
                                     : wxSystemSettings::GetColour(wxSYS_COLOUR_GRAYTEXT));
    for (int32_t n = 0; n < static_cast<int32_t>(GetCount()); ++n) {
        if (GetUpdateRegion().Contains(GetItemRect(n)) != wxOutRegion) {
            PaintItem(dc, n);
        }
    }
}

void QuickScore::OnSystemColourChanged(wxSysColourChangedEvent& event) {
    mDefaultBitmap = wxNullBitmap;
    UpdateMetrics();
    Refresh();
    event.Skip();
}
