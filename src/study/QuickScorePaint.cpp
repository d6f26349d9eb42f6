#include "study/QuickScore.h"

#include <wx/brush.h>
#include <wx/dcbuffer.h>
#include <wx/dcmemory.h>
#include <wx/image.h>
#include <wx/pen.h>
#include <wx/settings.h>

#include <cmath>

#include "shell/Toolkit.h"

// How the control looks. Each state of a button is a square picture, made once; PaintBitmap
// stretches its middle column to the width of the item.

namespace {

// The picture is painted at four times its size; scaling it down smooths the round corners.
constexpr int32_t kOversampling = 4;

// Fades from the background outside to nearly grey inside.
void PaintShadow(wxDC& dc, wxRect shadow, int32_t radius, const wxColour& background) {
    constexpr int32_t kSteps = 8;
    const wxColour grey(127, 127, 127);
    for (int32_t k = 1; k <= kSteps; ++k) {
        const wxColour colour = MixColours(background, grey, static_cast<double>(k) / kSteps);
        dc.SetPen(wxPen(colour, kSteps));
        dc.SetBrush(wxBrush(colour));
        dc.DrawRoundedRectangle(shadow, radius);
        shadow.Deflate(1);
    }
}

// Returns by how many pixels the round corner shortens row y at each end.
int32_t RowInset(int32_t y, int32_t height, int32_t radius) {
    int32_t d = 0;
    if (y < radius) {
        d = radius - y;
    } else if (y > height - radius) {
        d = y - height + radius;
    } else {
        return 0;
    }
    return radius - static_cast<int32_t>(std::sqrt(static_cast<double>(radius * radius - d * d)));
}

void PaintGradient(wxDC& dc, const wxRect& button, int32_t radius, const wxColour& top,
                   const wxColour& bottom) {
    for (int32_t y = 0; y < button.height; ++y) {
        const double t = button.height > 1 ? static_cast<double>(y) / (button.height - 1) : 0.0;
        const int32_t inset = RowInset(y, button.height, radius);
        dc.SetPen(wxPen(MixColours(top, bottom, t), 1));
        dc.DrawLine(button.x + inset, button.y + y, button.x + button.width - inset, button.y + y);
    }
}

// A square picture of a button with round corners: a gradient from top to bottom, with a drop
// shadow, or pressed in when sunk. The size is in logical pixels; the bitmap has scale times as
// many.
wxBitmap MakeButtonBitmap(int32_t size, const wxColour& background, const wxColour& top,
                          const wxColour& bottom, bool sunk, double scale) {
    const int32_t s = kOversampling;
    const int32_t edge = size - 1;
    const int32_t radius = edge / 4 * s;
    wxBitmap canvas(size * s, size * s);
    wxMemoryDC dc(canvas);
    dc.SetPen(wxPen(background));
    dc.SetBrush(wxBrush(background));
    dc.DrawRectangle(0, 0, size * s, size * s);

    const int32_t origin = sunk ? s : 0;
    wxRect button(origin, origin, edge * s, edge * s);
    button.Deflate(2);
    if (!sunk) {
        wxRect shadow = button;
        shadow.Offset(s, s);
        PaintShadow(dc, shadow, radius, background);
    }
    PaintGradient(dc, button, radius, sunk ? bottom : top, sunk ? top : bottom);
    dc.SetBrush(*wxTRANSPARENT_BRUSH);
    dc.SetPen(wxPen(wxColour(102, 102, 102), s));
    dc.DrawRoundedRectangle(button, radius);
    dc.SelectObject(wxNullBitmap);

    const int pixels = static_cast<int>(std::lround(size * scale));
    const wxImage image = canvas.ConvertToImage();
    // Normal scaling averages whole blocks of pixels; with a fraction it would leave pixels out.
    const auto quality =
        image.GetWidth() % pixels == 0 ? wxIMAGE_QUALITY_NORMAL : wxIMAGE_QUALITY_HIGH;
    return wxBitmap(image.Scale(pixels, pixels, quality), wxBITMAP_SCREEN_DEPTH, scale);
}

}  // namespace

// Makes the pictures of the four states anew when size, background, screen or theme have changed.
void QuickScore::EnsureBitmaps() {
    const wxColour background = GetBackgroundColour();
    const double scale = GetContentScaleFactor();
    if (mDefaultBitmap.IsOk() && mDefaultBitmap.GetScaleFactor() == scale &&
        mBitmapBackground == background) {
        return;
    }
    const wxColour face = wxSystemSettings::GetColour(wxSYS_COLOUR_BTNFACE);
    const int32_t size = mItemHeight;
    // Light buttons would shine in a dark window.
    mIsDark = background.GetLuminance() < 0.5;
    const wxColour top = mIsDark ? wxColour(92, 92, 92) : *wxWHITE;
    const wxColour grey = mIsDark ? wxColour(66, 66, 66) : wxColour(197, 197, 197);
    const wxColour blue = mIsDark ? wxColour(45, 75, 168) : wxColour(97, 127, 220);
    mDefaultBitmap = MakeButtonBitmap(size, background, top, grey, false, scale);
    mSelectedBitmap = MakeButtonBitmap(size, background, top, blue, false, scale);
    mPressedBitmap = MakeButtonBitmap(size, background, top, blue, true, scale);
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

// Draws both ends of the button as they are, and its middle column stretched between them.
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

// Draws a rectangle of our own, which can be seen on the button.
void QuickScore::PaintFocus(wxDC& dc, const wxRect& rect) const {
    dc.SetPen(wxPen(mIsDark ? *wxWHITE : *wxBLACK, 1, wxPENSTYLE_DOT));
    dc.SetBrush(*wxTRANSPARENT_BRUSH);
    dc.DrawRectangle(rect);
}

void QuickScore::OnPaint(wxPaintEvent& /*event*/) {
    EnsureBitmaps();
    wxAutoBufferedPaintDC dc(this);
    dc.SetBackground(wxBrush(GetBackgroundColour()));
    dc.Clear();
    dc.SetFont(GetFont());
    dc.SetTextForeground(IsEnabled() ? (mIsDark ? *wxWHITE : *wxBLACK)
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
    if (mMinItemHeight > 0) {
        // Labels wider than the present ones may have set the width.
        SetMinSize(wxSize(GetMinWidth() * mItemHeight / mMinItemHeight,
                          ClientToWindowSize(DoGetBestClientSize()).y));
        mMinItemHeight = mItemHeight;
    }
    Refresh();
    event.Skip();
}
