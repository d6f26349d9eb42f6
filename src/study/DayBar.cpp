#include "study/DayBar.h"

#include <wx/dcbuffer.h>
#include <wx/settings.h>

#include <algorithm>

#include "shell/Toolkit.h"

namespace {

// Logical pixels.
constexpr int kHeight = 3;

}  // namespace

DayBar::DayBar(wxWindow* parent)
    : wxWindow(parent, wxID_ANY, wxDefaultPosition, wxDefaultSize, wxBORDER_NONE, "dayBar") {
    SetBackgroundStyle(wxBG_STYLE_PAINT);
    SetCanFocus(false);
    Bind(wxEVT_PAINT, &DayBar::OnPaint, this);
}

void DayBar::Place(const wxRect& field) {
    const int height = FromDIP(kHeight);
    SetSize(field.x, field.GetBottom() + 1 - height, field.width, height);
}

void DayBar::SetProgress(int done, int goal) {
    if (done != mDone || goal != mGoal) {
        mDone = done;
        mGoal = std::max(goal, 1);
        Refresh();
    }
}

void DayBar::OnPaint(wxPaintEvent&) {
    wxAutoBufferedPaintDC dc(this);
    const wxColour text = wxSystemSettings::GetColour(wxSYS_COLOUR_BTNTEXT);
    const wxColour ground = wxSystemSettings::GetColour(wxSYS_COLOUR_BTNFACE);
    dc.SetBackground(wxBrush(MixColours(ground, text, 0.2)));
    dc.Clear();
    const wxSize size = GetClientSize();
    const int filled = static_cast<int>(int64_t{size.x} * std::clamp(mDone, 0, mGoal) / mGoal);
    dc.SetPen(*wxTRANSPARENT_PEN);
    dc.SetBrush(wxBrush(wxSystemSettings::GetColour(wxSYS_COLOUR_HIGHLIGHT)));
    dc.DrawRectangle(0, 0, filled, size.y);
}
