#include "study/QuickScore.h"

#include <wx/dcbuffer.h>
#include <wx/dcmemory.h>
#include <wx/settings.h>

#include "study/ButtonBitmap.h"

// How the control looks.

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

// Not the theme's own rectangle: that of a dark theme does not show on a light button.
void QuickScore::PaintFocus(wxDC& dc, const wxRect& rect) const {
    dc.SetPen(wxPen(*wxBLACK, 1, wxPENSTYLE_DOT));
    dc.SetBrush(*wxTRANSPARENT_BRUSH);
    dc.DrawRectangle(rect);
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
