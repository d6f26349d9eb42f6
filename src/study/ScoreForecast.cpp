#include "study/ScoreForecast.h"

#include <wx/control.h>
#include <wx/dcbuffer.h>
#include <wx/settings.h>

#include <algorithm>

#include "shell/Toolkit.h"
#include "study/QuickScore.h"

namespace {

// Logical pixels between a text and the border of the buttons, and between a text and the edge of
// the window.
constexpr int kGap = 6;

}  // namespace

ScoreForecast::ScoreForecast(wxWindow* parent, const QuickScore& scores)
    : wxWindow(parent, wxID_ANY, wxDefaultPosition, wxDefaultSize,
               wxBORDER_NONE | wxFULL_REPAINT_ON_RESIZE, "forecast"),
      mScores(scores) {
    SetBackgroundStyle(wxBG_STYLE_PAINT);
    // The scores say the same, so screen readers need not stop here.
    SetCanFocus(false);
    SetAccessibleRole(*this, AccessibleRole::Label);
    Bind(wxEVT_PAINT, &ScoreForecast::OnPaint, this);
}

void ScoreForecast::SetTexts(const ScoreLabels& texts) {
    if (texts != mTexts) {
        mTexts = texts;
        Refresh();
    }
}

// The column takes the room that the buttons leave and asks for none.
wxSize ScoreForecast::DoGetBestClientSize() const {
    return wxSize(0, 0);
}

void ScoreForecast::OnPaint(wxPaintEvent&) {
    wxAutoBufferedPaintDC dc(this);
    dc.SetBackground(wxBrush(GetParent()->GetBackgroundColour()));
    dc.Clear();
    dc.SetFont(mScores.GetFont());
    dc.SetTextForeground(wxSystemSettings::GetColour(wxSYS_COLOUR_BTNTEXT));
    const int gap = FromDIP(kGap);
    const int room = std::max(GetClientSize().x - 2 * gap, 0);
    const int above = mScores.GetPosition().y - GetPosition().y;
    for (size_t n = 0; n < mTexts.size(); ++n) {
        const wxString text = wxControl::Ellipsize(mTexts.at(n), dc, wxELLIPSIZE_END, room);
        const wxSize extent = dc.GetTextExtent(text);
        const wxRect button = mScores.GetItemRect(static_cast<int32_t>(n));
        dc.DrawText(text, gap + room - extent.x, above + button.y + (button.height - extent.y) / 2);
    }
}
