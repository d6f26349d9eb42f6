#include "study/QuickScore.h"

#include <wx/brush.h>
#include <wx/dcbuffer.h>
#include <wx/pen.h>
#include <wx/renderer.h>
#include <wx/settings.h>

#include <algorithm>

#include "shell/Toolkit.h"

// How the control looks. The desktop's theme paints the buttons in its own colours, corners and
// contrast; they replace gradients of our own, which fitted no theme. Inside each one stand, from
// left to right: a sign, the figure of the key, the words, and the note at the other end.
//
//     | > 3   Pass (with difficulty)      60 minutes |
//
// The signs tell without colours what the colours tell as well: a triangle and a frame show the
// cursor, a tick the recorded score.

namespace {

// Logical pixels of the strokes.
constexpr int kStroke = 2;
// Logical pixels that stay clear between two buttons.
constexpr int kBetween = 1;
constexpr int32_t kHighestScore = 5;

// The texts of a row stand on one line, whatever their scripts add to their heights.
struct TextPlace {
    int32_t Width;
    int32_t Ascent;
};

TextPlace Measure(const wxDC& dc, const wxString& text) {
    wxCoord width = 0;
    wxCoord height = 0;
    wxCoord descent = 0;
    dc.GetTextExtent(text, &width, &height, &descent);
    return {width, height - descent};
}

wxColour SystemColour(wxSystemColour colour) {
    return wxSystemSettings::GetColour(colour);
}

}  // namespace

// Labels such as "5 - Pass" begin with the key of their item, which stands apart from the words.
QuickScore::LabelParts QuickScore::SplitLabel(int32_t n) const {
    const wxString& label = mStrings[static_cast<size_t>(n)];
    wxString words;
    if (label.StartsWith(wxString::Format("%i - ", kHighestScore - n), &words)) {
        return {label.Left(1), words};
    }
    return {wxString(), label};
}

void QuickScore::PaintButton(wxDC& dc, const wxRect& button, int32_t n) {
    int flags = 0;
    if (!IsEnabled()) {
        flags = wxCONTROL_DISABLED;
    } else if (n == mPressed) {
        flags = wxCONTROL_PRESSED;
    } else if (n == mTipItem) {
        flags = wxCONTROL_CURRENT;
    }
    wxRendererNative::Get().DrawPushButton(this, dc, button, flags);
    if (IsEnabled() && n == mMark && n != mPressed) {
        dc.SetPen(*wxTRANSPARENT_PEN);
        dc.SetBrush(wxBrush(SystemColour(wxSYS_COLOUR_HIGHLIGHT)));
        dc.DrawRoundedRectangle(button, mRadius);
    }
    if (IsEnabled() && n == mCursor && HasFocus()) {
        const int stroke = FromDIP(kStroke);
        wxRect frame(button);
        frame.Deflate(stroke / 2);
        dc.SetPen(wxPen(SystemColour(wxSYS_COLOUR_BTNTEXT), stroke));
        dc.SetBrush(*wxTRANSPARENT_BRUSH);
        dc.DrawRoundedRectangle(frame, mRadius);
    }
}

// Draws the tick of the recorded score, or else the triangle of the cursor.
void QuickScore::PaintSign(wxDC& dc, const wxRect& place, int32_t n) const {
    const int size = place.width;
    const wxPoint middle(place.x + size / 2, place.y + place.height / 2);
    if (n == mMark) {
        const wxPoint tick[] = {middle + wxPoint(-size * 3 / 8, 0),
                                middle + wxPoint(-size / 8, size / 4),
                                middle + wxPoint(size * 3 / 8, -size * 3 / 8)};
        dc.SetPen(wxPen(dc.GetTextForeground(), FromDIP(kStroke)));
        dc.DrawLines(static_cast<int>(std::size(tick)), tick);
    } else if (n == mCursor) {
        const wxPoint triangle[] = {middle + wxPoint(-size / 4, -size * 3 / 8),
                                    middle + wxPoint(-size / 4, size * 3 / 8),
                                    middle + wxPoint(size / 4, 0)};
        dc.SetPen(*wxTRANSPARENT_PEN);
        dc.SetBrush(wxBrush(dc.GetTextForeground()));
        dc.DrawPolygon(static_cast<int>(std::size(triangle)), triangle);
    }
}

void QuickScore::PaintItem(wxDC& dc, int32_t n) {
    wxRect button = GetItemRect(n);
    button.height -= FromDIP(kBetween);
    PaintButton(dc, button, n);
    const bool isMarked = n == mMark && n != mPressed;
    dc.SetTextForeground(SystemColour(!IsEnabled() ? wxSYS_COLOUR_GRAYTEXT
                                      : isMarked   ? wxSYS_COLOUR_HIGHLIGHTTEXT
                                                   : wxSYS_COLOUR_BTNTEXT));
    const int32_t y = button.y + mPadY;
    if (mSignWidth == 0) {
        // A single figure: its sign stands in the margin beside it.
        const wxString& figure = mStrings[static_cast<size_t>(n)];
        dc.DrawText(figure, button.x + (button.width - dc.GetTextExtent(figure).x) / 2, y);
        PaintSign(dc, wxRect(button.x, button.y, 2 * mPadX, button.height), n);
        return;
    }
    int32_t x = button.x + mPadX;
    PaintSign(dc, wxRect(x, button.y, mSignWidth, button.height), n);
    x += mSignWidth + mPadX;
    const LabelParts parts = SplitLabel(n);
    const TextPlace words = Measure(dc, parts.Words);
    const int32_t baseline = y + words.Ascent;
    if (!parts.Figure.empty()) {
        dc.SetFont(mBoldFont);
        dc.DrawText(parts.Figure, x, baseline - Measure(dc, parts.Figure).Ascent);
        dc.SetFont(GetFont());
        x += mFigureWidth;
    }
    dc.DrawText(parts.Words, x, y);
    PaintNote(dc, button.GetRight() - 2 * mPadX, x + words.Width + 2 * mPadX, baseline, n);
}

// Draws the note up to the right end, as far as the words leave it room.
void QuickScore::PaintNote(wxDC& dc, int32_t right, int32_t left, int32_t baseline,
                           int32_t n) const {
    const auto index = static_cast<size_t>(n);
    if (mNoteWidth == 0 || index >= mNotes.size()) {
        return;
    }
    wxString note = mNotes[index];
    TextPlace place = Measure(dc, note);
    if (place.Width > right - left) {
        note = Ellipsize(note, dc, wxELLIPSIZE_END, std::max(right - left, 0));
        place = Measure(dc, note);
    }
    dc.DrawText(note, right - place.Width, baseline - place.Ascent);
}

void QuickScore::OnPaint(wxPaintEvent& /*event*/) {
    wxAutoBufferedPaintDC dc(this);
    dc.SetBackground(wxBrush(GetBackgroundColour()));
    dc.Clear();
    dc.SetFont(GetFont());
    if (mRadius < 0) {
        mRadius = GetThemeCornerRadius();
    }
    for (int32_t n = 0; n < static_cast<int32_t>(GetCount()); ++n) {
        if (GetUpdateRegion().Contains(GetItemRect(n)) != wxOutRegion) {
            PaintItem(dc, n);
        }
    }
}

void QuickScore::OnSystemColourChanged(wxSysColourChangedEvent& event) {
    mRadius = -1;
    mBoldFont = wxNullFont;
    UpdateMetrics();
    UpdateNoteWidth();
    if (mMinItemHeight > 0) {
        // Labels wider than the present ones may have set the width.
        SetMinSize(wxSize(GetMinWidth() * mItemHeight / mMinItemHeight,
                          ClientToWindowSize(DoGetBestClientSize()).y));
        mMinItemHeight = mItemHeight;
    }
    Refresh();
    event.Skip();
}
