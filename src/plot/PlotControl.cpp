#include "plot/PlotControl.h"

#include <wx/dcbuffer.h>
#include <wx/graphics.h>
#include <wx/settings.h>

#include <algorithm>
#include <memory>
#include <utility>

#include "plot/PlotCanvas.h"
#include "plot/PlotDrawing.h"
#include "shell/Toolkit.h"

namespace {

const wxSize kFullSize(420, 240);
const wxSize kTileSize(260, 150);
const wxSize kCompactSize(220, 110);

}  // namespace

PlotControl::PlotControl(wxWindow* parent, wxWindowID id, Form form) : mForm(form) {
    SetBackgroundStyle(wxBG_STYLE_PAINT);
    wxControl::Create(parent, id, wxDefaultPosition, wxDefaultSize,
                      wxBORDER_NONE | wxWANTS_CHARS | wxFULL_REPAINT_ON_RESIZE, wxDefaultValidator,
                      "plot");
    SetAccessibleRole(*this, AccessibleRole::Chart);
    Bind(wxEVT_PAINT, &PlotControl::OnPaint, this);
    Bind(wxEVT_KEY_DOWN, &PlotControl::OnKey, this);
    Bind(wxEVT_MOTION, [this](wxMouseEvent& event) {
        event.Skip();
        Mark(RowAt(event.GetPosition()));
    });
    Bind(wxEVT_LEAVE_WINDOW, [this](wxMouseEvent&) { Mark(-1); });
    Bind(wxEVT_LEFT_DOWN, [this](wxMouseEvent&) { SetFocus(); });
    Bind(wxEVT_LEFT_DCLICK, [this](wxMouseEvent&) { SendPress(*this); });
    for (const auto& type : {wxEVT_SET_FOCUS, wxEVT_KILL_FOCUS}) {
        Bind(type, [this](wxFocusEvent& event) {
            event.Skip();
            Refresh();
        });
    }
}

void PlotControl::SetPlot(Plot plot) {
    mPlot = std::move(plot);
    mMarkedRow = -1;
    mRows.clear();
    TellMeaning();
    Refresh();
}

void PlotControl::HideTitle() {
    mHasTitle = false;
    Refresh();
}

int PlotControl::RowAt(const wxPoint& place) const {
    const wxPoint2DDouble point(place.x, place.y);
    const auto found = std::find_if(mRows.begin(), mRows.end(),
                                    [&](const wxRect2DDouble& row) { return row.Contains(point); });
    return found == mRows.end() ? -1 : static_cast<int>(found - mRows.begin());
}

wxSize PlotControl::DoGetBestClientSize() const {
    return FromDIP(mForm == Form::Full   ? kFullSize
                   : mForm == Form::Tile ? kTileSize
                                         : kCompactSize);
}

void PlotControl::Mark(int row) {
    if (row == mMarkedRow) {
        return;
    }
    mMarkedRow = row;
    const wxString words = mPlot.Table.Describe(row);
    if (words.empty()) {
        UnsetToolTip();
    } else {
        SetToolTip(words);
    }
    TellMeaning();
    Refresh();
}

void PlotControl::TellMeaning() {
    wxString words = mPlot.Title;
    const wxString more = mPlot.EmptyText.empty()
                              ? (mMarkedRow < 0 ? mPlot.Summary : mPlot.Table.Describe(mMarkedRow))
                              : mPlot.EmptyText;
    if (!more.empty()) {
        words += (words.empty() ? "" : ". ") + more;
    }
    SetAccessibleName(*this, words);
}

void PlotControl::OnPaint(wxPaintEvent&) {
    wxAutoBufferedPaintDC dc(this);
    const PlotLook look(wxSystemSettings::GetColour(wxSYS_COLOUR_WINDOW),
                        wxSystemSettings::GetColour(wxSYS_COLOUR_WINDOWTEXT));
    dc.SetBackground(wxBrush(look.Background()));
    dc.Clear();
    const wxSize size = GetClientSize();
    const std::unique_ptr<wxGraphicsContext> context(wxGraphicsContext::Create(dc));
    if (context == nullptr || size.x < 2 || size.y < 2) {
        return;
    }
    ScreenCanvas canvas(*context, GetFont());
    PlotOptions options;
    options.HasTitle = mHasTitle;
    options.HasSummary = mForm == Form::Full;
    options.IsCompact = mForm == Form::Compact;
    options.MarkedRow = mMarkedRow;
    mRows = DrawPlot(canvas, mPlot, size, look, options);
    if (HasFocus()) {
        const double right = size.x - 1.0;
        const double bottom = size.y - 1.0;
        canvas.Line({{1, 1}, {right, 1}, {right, bottom}, {1, bottom}, {1, 1}},
                    wxSystemSettings::GetColour(wxSYS_COLOUR_HIGHLIGHT), 2.0, false);
    }
}

void PlotControl::OnKey(wxKeyEvent& event) {
    const int last = static_cast<int>(mPlot.Table.Rows.size()) - 1;
    switch (event.GetKeyCode()) {
        case WXK_LEFT:
        case WXK_UP:
            Mark(mMarkedRow < 0 ? last : std::max(0, mMarkedRow - 1));
            return;
        case WXK_RIGHT:
        case WXK_DOWN:
            Mark(std::min(last, mMarkedRow + 1));
            return;
        case WXK_HOME:
            Mark(std::min(0, last));
            return;
        case WXK_END:
            Mark(last);
            return;
        case WXK_TAB:
            Navigate(event.ShiftDown() ? int{wxNavigationKeyEvent::IsBackward}
                                       : int{wxNavigationKeyEvent::IsForward});
            return;
        case WXK_RETURN:
        case WXK_NUMPAD_ENTER:
            SendPress(*this);
            return;
        default:
            event.Skip();
    }
}
