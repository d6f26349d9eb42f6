#include "study/QuickScore.h"

#include <wx/dcclient.h>

#include <algorithm>
#include <cmath>

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
    // GetBestSize would never be below the minimum size that is being replaced.
    SetMinSize(ClientToWindowSize(DoGetBestClientSize()));
    mMinItemHeight = mItemHeight;
}

void QuickScore::SetStrings(const wxString* labels) {
    // Measured once for all of them.
    const bool isSame = std::equal(mStrings.begin(), mStrings.end(), labels);
    if (!isSame) {
        std::copy(labels, labels + GetCount(), mStrings.begin());
        UpdateMetrics();
        Refresh();
    }
}

void QuickScore::SetAllStrings(const wxString& label) {
    SetStrings(std::vector<wxString>(GetCount(), label).data());
}

void QuickScore::SetMargin(int32_t units) {
    mMargin = units;
    UpdateMetrics();
    UpdateNoteWidth();
}

bool QuickScore::SetFont(const wxFont& font) {
    const bool changed = wxControlWithItems::SetFont(font);
    mBoldFont = wxNullFont;
    UpdateMetrics();
    UpdateNoteWidth();
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
    const wxRect first = GetItemRect(0);
    if (point.x < first.x || point.x >= GetClientSize().x || point.y < 0 ||
        point.y >= mItemHeight * count) {
        return -1;
    }
    return point.y / mItemHeight;
}

wxRect QuickScore::GetItemRect(int32_t n) const {
    const int32_t client = GetClientSize().x;
    int32_t width = std::max(mItemWidth, client);
    if (mNoteWidth > 0) {
        // The labels of SetItems may be wider than the present ones, for which the width stays.
        width = std::min(width, std::max(mItemWidth, GetMinWidth()) + mNoteWidth);
    }
    return wxRect(std::max(client - width, 0), n * mItemHeight, width, mItemHeight);
}

void QuickScore::SetNotes(const std::vector<wxString>& notes) {
    if (notes != mNotes) {
        mNotes = notes;
        Refresh();
    }
}

void QuickScore::ReserveNotes(const std::vector<wxString>& widest) {
    mWidestNotes = widest;
    UpdateNoteWidth();
    Refresh();
}

wxSize QuickScore::DoGetBestClientSize() const {
    return wxSize(mItemWidth, mItemHeight * static_cast<int32_t>(GetCount()));
}

int QuickScore::DoInsertItems(const wxArrayStringsAdapter& items, unsigned int pos,
                              void** clientData, wxClientDataType type) {
    for (unsigned int i = 0; i < items.GetCount(); ++i) {
        mStrings.Insert(items[i], pos + i);
        mClientData.insert(mClientData.begin() + pos + i, nullptr);
        AssignNewItemClientData(pos + i, clientData, i, type);
    }
    UpdateMetrics();
    Refresh();
    return static_cast<int>(pos + items.GetCount()) - 1;
}

void QuickScore::DoClear() {
    mStrings.clear();
    mClientData.clear();
    ForgetPositions();
}

void QuickScore::DoDeleteOneItem(unsigned int pos) {
    mStrings.RemoveAt(pos);
    mClientData.erase(mClientData.begin() + pos);
    ForgetPositions();
}

// After a removal the positions no longer mean the same items.
void QuickScore::ForgetPositions() {
    mCursor = -1;
    mMark = -1;
    DropPress();
    UpdateMetrics();
    Refresh();
}

void QuickScore::UpdateMetrics() {
    wxClientDC dc(this);
    dc.SetFont(GetFont());
    // The context gives an inch in pixels of the screen, but everything else in logical pixels.
    const double ppi = dc.GetPPI().y / GetContentScaleFactor();
    int32_t textHeight = 0;
    const auto measure = [&dc, &textHeight](const wxString& text) {
        wxCoord width = 0;
        wxCoord height = 0;
        wxCoord externalLeading = 0;
        dc.GetTextExtent(text, &width, &height, nullptr, &externalLeading);
        textHeight = std::max(textHeight, height + externalLeading);
        return width;
    };
    const bool hasWords = std::any_of(mStrings.begin(), mStrings.end(),
                                      [](const wxString& label) { return label.length() > 1; });
    if (!mBoldFont.IsOk()) {
        mBoldFont = GetFont().Bold();
    }
    dc.SetFont(mBoldFont);
    mFigureWidth = hasWords ? measure("0") * 5 / 2 : 0;
    dc.SetFont(GetFont());
    int32_t textWidth = 0;
    for (int32_t n = 0; n < static_cast<int32_t>(GetCount()); ++n) {
        const LabelParts parts = SplitLabel(n);
        const int32_t figure = parts.Figure.empty() ? 0 : mFigureWidth;
        textWidth = std::max(textWidth, figure + measure(parts.Words));
    }
    const auto pad = static_cast<int32_t>(std::ceil(mMargin / 96.0 * ppi));
    const int32_t total = textHeight + 2 * pad;
    const int32_t quarter = total / 4;
    mSignWidth = hasWords ? total / 2 : 0;
    mItemHeight = total + 1;
    mItemWidth = std::max(mItemHeight, mSignWidth + textWidth + (hasWords ? 3 : 2) * quarter + 1);
    mPadY = pad;
    mPadX = quarter;
    InvalidateBestSize();
}

void QuickScore::UpdateNoteWidth() {
    mNoteWidth = 0;
    for (const wxString& note : mWidestNotes) {
        mNoteWidth = std::max(mNoteWidth, GetTextExtent(note).x + 4 * mPadX);
    }
}

void QuickScore::RefreshItem(int32_t n) {
    if (n >= 0) {
        RefreshRect(GetItemRect(n));
    }
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
