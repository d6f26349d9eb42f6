#include "study/CardViewer.h"

#include <wx/dcbuffer.h>
#include <wx/dcclient.h>
#include <wx/dcmemory.h>
#include <wx/graphics.h>
#include <wx/image.h>
#include <wx/menu.h>
#include <wx/settings.h>

#include <algorithm>
#include <cstdlib>

#include "base/Text.h"
#include "media/windows/CardPictures.h"
#include "shell/MenuBar.h"
#include "shell/Toolkit.h"

wxDEFINE_EVENT(EVT_CARD_PICTURE, wxCommandEvent);

wxBitmap MakeStudyCover(const wxColour& colour) {
    wxImage image(1, 1, false);
    image.SetRGB(0, 0, colour.Red(), colour.Green(), colour.Blue());
    return wxBitmap(image);
}

namespace {

constexpr int32_t kDivider = 1;

// Returns the height of the first side: half of the window, unless one of the texts needs more.
int32_t FirstHeightOf(int32_t clientHeight, int32_t firstHeight, int32_t secondHeight) {
    const int32_t half = (clientHeight - kDivider) / 2;
    if (firstHeight < half && secondHeight < half) {
        return half;
    }
    if (firstHeight + secondHeight >= 2 * half) {
        return firstHeight;
    }
    if (firstHeight <= half) {
        return clientHeight - secondHeight - kDivider;
    }
    return firstHeight;
}

}  // namespace

int32_t CardColumnWidth(wxOrientation orientation, int32_t width) {
    return orientation == wxHORIZONTAL ? (width - kDivider) / 2 : width;
}

int32_t CardHeightNeeded(wxOrientation orientation, int32_t firstHeight, int32_t secondHeight) {
    return orientation == wxHORIZONTAL ? std::max(firstHeight, secondHeight)
                                       : firstHeight + secondHeight + kDivider;
}

CardLayout ArrangeCard(wxOrientation orientation, const wxSize& client, int32_t firstHeight,
                       int32_t secondHeight) {
    const int32_t column = CardColumnWidth(orientation, client.x);
    const int32_t needed = CardHeightNeeded(orientation, firstHeight, secondHeight);
    CardLayout layout;
    layout.VirtualHeight = std::max(client.y, needed);
    if (orientation == wxHORIZONTAL) {
        const int32_t second = column + kDivider;
        layout.First = wxRect(0, 0, column, layout.VirtualHeight);
        layout.Second = wxRect(second, 0, client.x - second, layout.VirtualHeight);
    } else {
        const int32_t first = FirstHeightOf(client.y, firstHeight, secondHeight);
        const int32_t second = first + kDivider;
        layout.First = wxRect(0, 0, column, first);
        layout.Second = wxRect(0, second, column, layout.VirtualHeight - second);
    }
    return layout;
}

namespace {

constexpr int32_t kNarrowest = 32;
// Logical pixels between a text and the edges of its side.
constexpr int32_t kTextMargin = 12;
// Characters that are laid out before a text is first shown (a few screens), and in one idle moment
// (about a hundredth of a second).
constexpr size_t kCharactersAtOnce = 10000;
constexpr size_t kCharactersWhenIdle = 5000;
// The greatest height of a side in pixels. Nobody scrolls through more, and two sides together
// still fit into the toolkit's 32-bit numbers.
constexpr int64_t kHighestSide = 1000000000;

int32_t TextHeight(const WrappedText& wrapped, int32_t lineHeight) {
    return static_cast<int32_t>(wrapped.Lines.size()) * lineHeight;
}

// A black line would not be seen on a dark background.
wxColour DividerColour(const wxColour& background) {
    return background.GetLuminance() < 0.5 ? *wxWHITE : *wxBLACK;
}

}  // namespace

CardViewer::CardViewer(wxWindow* parent, wxWindowID id, const wxPoint& position, const wxSize& size,
                       long style, const wxString& name) {
    SetBackgroundStyle(wxBG_STYLE_PAINT);
    wxScrolledWindow::Create(parent, id, position, size, style, name);
    Bind(wxEVT_PAINT, &CardViewer::OnPaint, this);
    Bind(wxEVT_IDLE, &CardViewer::OnIdle, this);
    Bind(wxEVT_SIZE, &CardViewer::OnSize, this);
    Bind(wxEVT_LEFT_DOWN, &CardViewer::OnLeftDown, this);
    Bind(wxEVT_LEFT_UP, &CardViewer::OnLeftUp, this);
    Bind(wxEVT_MOUSEWHEEL, &CardViewer::OnWheel, this);
    Bind(wxEVT_CONTEXT_MENU,
         [this](wxContextMenuEvent& event) { PopUpMenu(*this, *BuildCardMenu(), event); });
    // A press that loses the mouse gets no release, and the press alone has done nothing.
    Bind(wxEVT_MOUSE_CAPTURE_LOST, [](wxMouseCaptureLostEvent&) {});
}

CardViewer::~CardViewer() = default;

void CardViewer::SetText(CardViewerSide& side, const wxString& text) {
    if (text.length() > kMostCharacters) {
        SetText(side, CutWithEllipsis(text, kMostCharacters));
    } else if (side.Text != text) {
        side.Text = text;
        TakeMedia(side);
        side.Wraps = {};
        Relayout(kCharactersAtOnce);
    }
}

void CardViewer::SetStore(const wxString& storePath) {
    if (mStore != storePath) {
        mStore = storePath;
        if (mpPictures != nullptr) {
            mpPictures->SetStore(mStore);
        }
    }
}

void CardViewer::LookForPictures() {
    bool hasChanged = false;
    for (CardViewerSide* const side : {&mFirst, &mSecond}) {
        for (SidePicture& picture : side->Pictures) {
            const wxSize size = mpPictures->FindSize(picture.Name);
            hasChanged = hasChanged || size != picture.Natural;
            picture.Natural = size;
        }
    }
    if (hasChanged) {
        Relayout(kCharactersAtOnce);
    } else if (mpPictures != nullptr) {
        Refresh();
    }
}

void CardViewer::SetLayout(int32_t orientation) {
    if (mLayout == orientation) {
        return;
    }
    mLayout = orientation;
    Relayout(kCharactersAtOnce);
}

bool CardViewer::SetFont(const wxFont& font) {
    if (font == GetFont()) {
        return true;
    }
    const bool isSet = wxScrolledWindow::SetFont(font);
    mFirst.Wraps = {};
    mSecond.Wraps = {};
    Relayout(kCharactersAtOnce);
    return isSet;
}

int32_t CardViewer::FullWidth() const {
    return GetSize().x - GetWindowBorderSize().x;
}

int32_t CardViewer::ScrollBarWidth() const {
    // An overlay scroll bar takes no room from the window, but the text must still stay clear of
    // it. The metric can be unknown (-1), and some themes draw wider bars than it says.
    const int32_t metric = wxSystemSettings::GetMetric(wxSYS_VSCROLL_X, this);
    return std::max({metric, FullWidth() - GetClientSize().x, 0});
}

void CardViewer::WrapSides(int32_t height, size_t characters) {
    wxClientDC dc(this);
    dc.SetFont(GetFont());
    const TextMeasure measure = [&dc](const wxString& text) { return dc.GetTextExtent(text); };
    // Without a scroll bar, lines are cut only until they are higher than the window: then the loop
    // in Relayout starts again with one.
    const int64_t highest = mScrollNeeded ? kHighestSide : height;
    for (CardViewerSide* const side : {&mFirst, &mSecond}) {
        WrappedText& wrapped = side->Wraps[mScrollNeeded ? 1 : 0];
        if (wrapped.MaxWidth != mColumnWidth) {
            wrapped = WrappedText();
            wrapped.MaxWidth = mColumnWidth;
        }
        WrapText(side->GetWords(), measure, {highest, characters}, wrapped);
        wrapped.IsWhole = wrapped.IsWhole || wrapped.Height() > kHighestSide;
    }
    mLineHeight = std::max(LinesOf(mFirst).LineHeight, LinesOf(mSecond).LineHeight);
}

void CardViewer::Relayout(size_t characters) {
    if (!mIsSized) {
        return;
    }
    const int32_t fullWidth = FullWidth();
    const int32_t height = GetClientSize().y;
    const auto orientation = static_cast<wxOrientation>(mLayout);
    int32_t width = 0;
    int32_t firstHeight = 0;
    int32_t secondHeight = 0;
    mScrollNeeded = false;
    for (;;) {
        width = std::max(fullWidth - (mScrollNeeded ? ScrollBarWidth() : 0), kNarrowest);
        const int32_t column = CardColumnWidth(orientation, width);
        mColumnWidth = std::max(column - 2 * FromDIP(kTextMargin), std::min(column, kNarrowest));
        WrapSides(height, characters);
        firstHeight = TextHeight(LinesOf(mFirst), mLineHeight);
        secondHeight = TextHeight(LinesOf(mSecond), mLineHeight);
        if (mFirst.HasMedia || mSecond.HasMedia) {
            SizePictures(height, firstHeight, secondHeight);
            firstHeight += mFirst.PicturesHeight;
            secondHeight += mSecond.PicturesHeight;
        }
        if (mScrollNeeded || CardHeightNeeded(orientation, firstHeight, secondHeight) <= height) {
            break;
        }
        mScrollNeeded = true;
    }
    const CardLayout layout =
        ArrangeCard(orientation, wxSize(width, height), firstHeight, secondHeight);
    mFirst.Rect = layout.First;
    mSecond.Rect = layout.Second;
    SetVirtualSize(width, layout.VirtualHeight);
    Refresh();
}

void CardViewer::OnIdle(wxIdleEvent& event) {
    event.Skip();
    if (!mIsSized || IsLaidOut()) {
        return;
    }
    const int32_t top = GetViewStart().y;
    const int32_t divider = mFirst.Rect.height;
    Relayout(kCharactersWhenIdle);
    // The first side grows above what the user may be looking at: scroll along with it.
    const bool isSecondSeen =
        mLayout == wxVERTICAL && !mSecond.Text.empty() && top + GetClientSize().y > divider + 1;
    if (isSecondSeen && mFirst.Rect.height > divider) {
        ScrollBy(mFirst.Rect.height - divider);
    }
    if (!IsLaidOut()) {
        event.RequestMore();
    }
}

void CardViewer::DropPress() {
    if (HasCapture()) {
        ReleaseMouse();
    }
}

void CardViewer::ScrollToSecond() {
    if (mLayout == wxHORIZONTAL) {
        ScrollToTop();
    } else if (GetVirtualSize().y != GetClientSize().y) {
        Scroll(wxDefaultCoord, mFirst.Rect.height);
    }
}

void CardViewer::ScrollByPage(int32_t direction) {
    ScrollBy(direction * (GetClientSize().y * 8 / 10));
}

void CardViewer::ScrollBy(int32_t pixels) {
    // To the toolkit -1 means "leave as it is".
    Scroll(wxDefaultCoord, std::max(GetViewStart().y + pixels, 0));
}

void CardViewer::OnPaint(wxPaintEvent& /*event*/) {
    wxAutoBufferedPaintDC dc(this);
    DoPrepareDC(dc);
    dc.SetFont(GetFont());
    const wxRect visible(CalcUnscrolledPosition(wxPoint(0, 0)), GetClientSize());
    dc.SetPen(*wxTRANSPARENT_PEN);
    dc.SetBrush(wxBrush(GetBackgroundColour()));
    dc.DrawRectangle(visible);
    PaintDivider(dc, visible);
    PaintSide(dc, mFirst, visible);
    PaintSide(dc, mSecond, visible);
    if (!mFirst.Pictures.empty() || !mSecond.Pictures.empty()) {
        const std::unique_ptr<wxGraphicsContext> context(
            wxGraphicsContext::CreateFromUnknownDC(dc));
        PaintPictures(*context, mFirst, visible);
        PaintPictures(*context, mSecond, visible);
    }
}

void CardViewer::PaintDivider(wxDC& dc, const wxRect& visible) const {
    const wxRect& first = mFirst.Rect;
    dc.SetPen(wxPen(DividerColour(GetBackgroundColour())));
    if (mLayout == wxVERTICAL) {
        dc.DrawLine(0, first.height, std::max(first.width, visible.width), first.height);
    } else {
        dc.DrawLine(first.width, 0, first.width, first.height);
    }
}

// Draws over the background, which OnPaint has filled.
void CardViewer::PaintSide(wxDC& dc, const CardViewerSide& side, const wxRect& visible) const {
    if (side.Cover.IsOk() && !side.Rect.IsEmpty()) {
        wxMemoryDC cover;
        cover.SelectObjectAsSource(side.Cover);
        // An overlay scroll bar is transparent, so the cover reaches below it.
        const wxSize size(std::max(side.Rect.width, visible.width - side.Rect.x), side.Rect.height);
        dc.StretchBlit(side.Rect.GetPosition(), size, &cover, wxPoint(0, 0), side.Cover.GetSize());
    }
    const std::vector<TextLine>& lines = LinesOf(side).Lines;
    if (lines.empty()) {
        return;
    }
    dc.SetTextForeground(side.TextColour);
    const auto count = static_cast<int32_t>(lines.size());
    const int32_t top = TopOf(side);
    for (int32_t i = std::max((visible.y - top) / mLineHeight, 0); i < count; ++i) {
        const int32_t y = top + i * mLineHeight;
        if (y > visible.GetBottom()) {
            return;
        }
        const TextLine& line = lines[static_cast<size_t>(i)];
        const int32_t room = std::max(side.Rect.width - line.Width, 0);
        dc.DrawText(LineText(side.GetWords(), line), side.Rect.x + room / 2, y);
    }
}

void CardViewer::OnSize(wxSizeEvent& event) {
    mIsSized = true;
    Relayout(kCharactersAtOnce);
    event.Skip();
}

// The event is not skipped, so that the focus stays with the scoring control.
void CardViewer::OnLeftDown(wxMouseEvent& /*event*/) {
    if (!HasCapture()) {
        CaptureMouse();
    }
}

void CardViewer::OnLeftUp(wxMouseEvent& event) {
    if (!HasCapture()) {
        return;
    }
    ReleaseMouse();
    if (wxRect(GetSize()).Contains(event.GetPosition())) {
        const SidePicture* const picture = FindPicture(event.GetPosition());
        wxCommandEvent click(picture != nullptr ? EVT_CARD_PICTURE : wxEVT_BUTTON, GetId());
        click.SetEventObject(this);
        if (picture != nullptr) {
            click.SetString(picture->Name);
        }
        GetParent()->GetEventHandler()->ProcessEvent(click);
    }
}

// Scrolls by lines of text: the scroll unit, a pixel, is too small a step.
void CardViewer::OnWheel(wxMouseEvent& event) {
    const int32_t delta = event.GetWheelDelta();
    if (delta <= 0 || event.GetWheelAxis() != wxMOUSE_WHEEL_VERTICAL) {
        return;
    }
    if (event.ControlDown()) {
        ChangeTextSize(event.GetWheelRotation(), delta);
        return;
    }
    mWheelRest -= event.GetWheelRotation() * event.GetLinesPerAction() * mLineHeight;
    const int32_t pixels = mWheelRest / delta;
    mWheelRest -= pixels * delta;
    ScrollBy(pixels);
}

void CardViewer::ChangeTextSize(int32_t rotation, int32_t delta) {
    mZoomRest += rotation;
    for (; std::abs(mZoomRest) >= delta; mZoomRest -= mZoomRest > 0 ? delta : -delta) {
        wxCommandEvent command(wxEVT_MENU, mZoomRest > 0 ? wxID_ZOOM_IN : wxID_ZOOM_OUT);
        command.SetEventObject(this);
        GetParent()->GetEventHandler()->ProcessEvent(command);
    }
}
