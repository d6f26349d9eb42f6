#pragma once

#include <wx/bitmap.h>
#include <wx/colour.h>
#include <wx/gdicmn.h>
#include <wx/scrolwin.h>
#include <wx/string.h>

#include <array>
#include <cstdint>
#include <memory>
#include <vector>

#include "shell/TextWrap.h"

class CardPictures;
class wxDC;
class wxGraphicsContext;

// The picture that hides the back of a card: one pixel of that colour, to be stretched over
// whatever it covers. It has the colour of the card: that the back is hidden, the buttons say, and
// a gradient or a grey area would draw the eye to where nothing stands.
wxBitmap MakeStudyCover(const wxColour& colour);

// Where the two sides of a card stand on the surface that they scroll on together. A line of one
// pixel divides them.
struct CardLayout {
    int32_t VirtualHeight = 0;
    wxRect First;
    wxRect Second;
};

// Returns the width at which the text of a side is wrapped in a window of that width.
int32_t CardColumnWidth(wxOrientation orientation, int32_t width);

// Returns the height that the texts of both sides need together.
int32_t CardHeightNeeded(wxOrientation orientation, int32_t firstHeight, int32_t secondHeight);

// Places the sides. wxVERTICAL puts the first above the second, each with half of the window while
// the texts are short; wxHORIZONTAL puts the first left of the second. Client is the part of the
// window that the scroll bar leaves; the heights are those of the two texts.
CardLayout ArrangeCard(wxOrientation orientation, const wxSize& client, int32_t firstHeight,
                       int32_t secondHeight);

// A picture below the text of its side. One that cannot be shown is a frame with its name.
struct SidePicture {
    wxString Name;
    // At a scale of 1; empty for one that cannot be shown.
    wxSize Natural;
    // As it is drawn, in logical pixels.
    wxSize Size;
};

// One of the two texts that a CardViewer shows, and the pictures that it names.
struct CardViewerSide {
    // As it was set, and, where lines of it name pictures or sounds, what is left to be read.
    wxString Text;
    wxString Words;
    bool HasMedia = false;
    std::vector<SidePicture> Pictures;
    // What the pictures need together; 0 without any.
    int32_t PicturesHeight = 0;

    const wxString& GetWords() const { return HasMedia ? Words : Text; }

    // The lines at the full width of the window, cut only until they are known to need a scroll
    // bar, and the lines at the width that the scroll bar leaves. Both are kept until the text, the
    // font or the width changes.
    std::array<WrappedText, 2> Wraps;
    wxColour TextColour = *wxBLACK;
    // When valid, drawn stretched over the whole rectangle instead of the background.
    wxBitmap Cover;
    // In virtual coordinates.
    wxRect Rect;
};

// The scrolled panel that shows both sides of a card, divided by a thin line, one above the other
// or side by side. It wraps and centres the texts itself, and sends a click to its parent as a
// button event with its own id; Ctrl and the wheel go there as the menu commands wxID_ZOOM_IN and
// wxID_ZOOM_OUT. It knows texts, colours and a cover, but no cards. The owner sets
// the scroll rate: none horizontally, one pixel vertically.
//
// Pictures that lines of a text name stand below it. Both sides share the height of the window, so
// that the card stays where it is when its back is uncovered; a picture takes what the text of its
// side leaves, is never larger than it is and never distorted. A click on one sends
// EVT_CARD_PICTURE with its name in place of the button event.
//
// The beginning of a long text is laid out at once. The rest follows in idle moments, while the
// part that can be scrolled to grows. The end of a text longer than anybody reads is left out.
wxDECLARE_EVENT(EVT_CARD_PICTURE, wxCommandEvent);

class CardViewer : public wxScrolledWindow {
  public:
    CardViewer(wxWindow* parent, wxWindowID id, const wxPoint& position = wxDefaultPosition,
               const wxSize& size = wxDefaultSize, long style = wxHSCROLL | wxVSCROLL,
               const wxString& name = wxASCII_STR(wxPanelNameStr));
    ~CardViewer() override;

    // A longer text is cut here and ends with an ellipsis.
    static constexpr size_t kMostCharacters = 8000000;
    void SetFirstText(const wxString& text) { SetText(mFirst, text); }
    void SetSecondText(const wxString& text) { SetText(mSecond, text); }
    const wxString& GetFirstText() const { return mFirst.Text; }
    const wxString& GetSecondText() const { return mSecond.Text; }

    // Says where the pictures of the cards are. Does nothing when that is known.
    void SetStore(const wxString& storePath);
    // Shows pictures of the card that have come, or were changed, since it came up.
    void LookForPictures();
    // Null while no card has had a picture.
    CardPictures* GetPictures() const { return mpPictures.get(); }

    // Colours and the cover are only stored: the caller refreshes.
    void SetFirstColour(const wxColour& colour) { mFirst.TextColour = colour; }
    void SetSecondColour(const wxColour& colour) { mSecond.TextColour = colour; }
    // A null bitmap takes the cover away.
    void SetSecondCover(const wxBitmap& cover) { mSecond.Cover = cover; }
    bool IsSecondCovered() const { return mSecond.Cover.IsOk(); }

    // Tells screen readers what the window shows; nothing is drawn.
    void SetHint(const wxString& text) { mHint = text; }
    const wxString& GetHint() const { return mHint; }

    // wxVERTICAL (the first side above the second) or wxHORIZONTAL.
    void SetLayout(int32_t orientation);
    int32_t GetLayout() const { return mLayout; }

    bool SetFont(const wxFont& font) override;

    // Forgets a press of the mouse that is under way, so that its release is not a click.
    void DropPress();

    void ScrollToTop() { Scroll(wxDefaultCoord, 0); }
    // Scrolls until the dividing line is at the top; does nothing when there is nothing to scroll.
    void ScrollToSecond();
    void PageUp() { ScrollByPage(-1); }
    void PageDown() { ScrollByPage(1); }

    const CardViewerSide& GetFirst() const { return mFirst; }
    const CardViewerSide& GetSecond() const { return mSecond; }
    // The lines of a side that are shown.
    const WrappedText& LinesOf(const CardViewerSide& side) const {
        return side.Wraps[mScrollNeeded ? 1 : 0];
    }
    bool IsScrollNeeded() const { return mScrollNeeded; }
    // True when nothing is left for the idle moments.
    bool IsLaidOut() const { return LinesOf(mFirst).IsWhole && LinesOf(mSecond).IsWhole; }

  private:
    void SetText(CardViewerSide& side, const wxString& text);
    // Divides a text with lines that name files into words and pictures.
    void TakeMedia(CardViewerSide& side);
    // Gives the pictures of a side their sizes in so much height.
    void SizePictures(CardViewerSide& side, int32_t room) const;
    void SizePictures(int32_t height, int32_t firstText, int32_t secondText);
    int32_t TopOf(const CardViewerSide& side) const;
    // Calls the function with each picture of a side and its place.
    template <class Function>
    void VisitPictures(const CardViewerSide& side, Function visit) const;
    const SidePicture* FindPicture(const wxPoint& point) const;
    void PaintPictures(wxGraphicsContext& context, const CardViewerSide& side,
                       const wxRect& visible) const;
    // Pixels between the borders, and how many of them a scroll bar takes.
    int32_t FullWidth() const;
    int32_t ScrollBarWidth() const;
    // Cuts more lines of both sides at mColumnWidth, up to that height and for that many
    // characters.
    void WrapSides(int32_t height, size_t characters);
    // Wraps up to that many more characters of each side and places both sides anew.
    void Relayout(size_t characters);

    void PaintDivider(wxDC& dc, const wxRect& visible) const;
    void PaintSide(wxDC& dc, const CardViewerSide& side, const wxRect& visible) const;
    void ScrollByPage(int32_t direction);
    void ScrollBy(int32_t pixels);

    void OnPaint(wxPaintEvent& event);
    void OnIdle(wxIdleEvent& event);
    void OnSize(wxSizeEvent& event);
    void OnLeftDown(wxMouseEvent& event);
    void OnLeftUp(wxMouseEvent& event);
    void OnWheel(wxMouseEvent& event);
    void ChangeTextSize(int32_t rotation, int32_t delta);

    int32_t mLayout = wxVERTICAL;
    int32_t mColumnWidth = 0;
    CardViewerSide mFirst;
    CardViewerSide mSecond;
    wxString mHint;
    wxString mStore;
    std::unique_ptr<CardPictures> mpPictures;
    int32_t mLineHeight = 0;
    bool mScrollNeeded = false;

    // False until the first size event; before it there is no width to wrap at.
    bool mIsSized = false;
    // Rotation of the wheel that has not yet scrolled a whole pixel, times pixels.
    int32_t mWheelRest = 0;
    // Rotation with Ctrl that has not yet changed the size of the text.
    int32_t mZoomRest = 0;
};
