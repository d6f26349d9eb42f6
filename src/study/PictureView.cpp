#include "study/PictureView.h"

#include <wx/dcbuffer.h>
#include <wx/graphics.h>

#include <memory>
#include <utility>

#include "media/windows/CardPictures.h"
#include "shell/Toolkit.h"

PictureView::PictureView(wxWindow* parent, std::function<void()> leave) : mLeave(std::move(leave)) {
    SetBackgroundStyle(wxBG_STYLE_PAINT);
    Create(parent, wxID_ANY, wxDefaultPosition, wxDefaultSize, wxBORDER_NONE | wxWANTS_CHARS,
           "picture");
    Bind(wxEVT_PAINT, &PictureView::OnPaint, this);
    Bind(wxEVT_KEY_DOWN, &PictureView::OnKey, this);
    Bind(wxEVT_LEFT_UP, [this](wxMouseEvent&) { Step(1); });
    Bind(wxEVT_SIZE, [this](wxSizeEvent& event) {
        event.Skip();
        Refresh();
    });
}

void PictureView::SetPictures(CardPictures* pictures, const std::vector<wxString>& names,
                              size_t first) {
    mpPictures = pictures;
    mNames = names;
    mCurrent = first;
    SetAccessibleName(*this, mNames[mCurrent]);
    Refresh();
}

void PictureView::Step(int way) {
    if (way < 0 && mCurrent == 0) {
        return;
    }
    if (way > 0 && mCurrent + 1 == mNames.size()) {
        mLeave();
        return;
    }
    SetPictures(mpPictures, mNames, way > 0 ? mCurrent + 1 : mCurrent - 1);
}

void PictureView::OnKey(wxKeyEvent& event) {
    switch (event.GetKeyCode()) {
        case WXK_SPACE:
        case WXK_RETURN:
        case WXK_NUMPAD_ENTER:
        case WXK_RIGHT:
        case WXK_DOWN:
        case WXK_PAGEDOWN:
            Step(1);
            break;
        case WXK_LEFT:
        case WXK_UP:
        case WXK_PAGEUP:
            Step(-1);
            break;
        case WXK_ESCAPE:
            mLeave();
            break;
        default:
            event.Skip();
    }
}

void PictureView::OnPaint(wxPaintEvent& /*event*/) {
    wxAutoBufferedPaintDC dc(this);
    dc.SetPen(*wxTRANSPARENT_PEN);
    dc.SetBrush(wxBrush(GetBackgroundColour()));
    dc.DrawRectangle(wxPoint(0, 0), GetClientSize());
    const wxSize natural =
        mpPictures == nullptr ? wxSize() : FromDIP(mpPictures->FindSize(GetPicture()));
    if (natural.x <= 0) {
        return;
    }
    // In a window of its own a small picture may be seen large, but never distorted.
    constexpr double kLargest = 4.0;
    const wxSize room = GetClientSize();
    const double scale = std::min({static_cast<double>(room.x) / natural.x,
                                   static_cast<double>(room.y) / natural.y, kLargest});
    const wxSize size(std::max(wxRound(natural.x * scale), 1),
                      std::max(wxRound(natural.y * scale), 1));
    const wxRect place(wxPoint((room.x - size.x) / 2, (room.y - size.y) / 2), size);
    const std::unique_ptr<wxGraphicsContext> context(wxGraphicsContext::CreateFromUnknownDC(dc));
    mpPictures->Draw(*context, GetPicture(), place, GetContentScaleFactor(), GetBackgroundColour());
}
