#pragma once

#include <wx/bitmap.h>
#include <wx/colour.h>
#include <wx/scrolwin.h>
#include <wx/string.h>

#include <array>
#include <cstdint>

#include "study/TextWrap.h"

class wxDC;

// The picture that hides the back of a card: one pixel wide and 256 high, from the first colour at
// the top to the second at the bottom, to be stretched over whatever it covers.
wxBitmap MakeStudyCover(const wxColour& top, const wxColour& bottom);

// One of the two texts that a CardViewer shows.
struct CardViewerSide {
    wxString Text;
    // The lines at the width beside no scroll bar, only as far as they tell whether one is needed,
    // and beside one. Both stay until the text, the font or the width changes.
    std::array<WrappedText, 2> Wraps;
    wxColour TextColour = *wxBLACK;
    // When valid, drawn stretched over the whole rectangle instead of the background.
    wxBitmap Cover;
    // In virtual coordinates.
    wxRect Rect;
};

// The scrolled panel that shows both sides of a card, divided by a thin line, one above the other
// or side by side. It wraps and centres the texts by itself; a click on it goes to the parent as a
// button event with this window's id. It knows texts, colours and a cover, but no cards. The owner
// sets the scroll rate: none horizontally, one pixel vertically.
//
// The beginning of a long text is laid out at once and the rest in idle moments, while the part
// that can be scrolled to grows. Of a text longer than anybody reads the end is left out.
class CardViewer : public wxScrolledWindow {
  public:
    CardViewer(wxWindow* parent, wxWindowID id, const wxPoint& position = wxDefaultPosition,
               const wxSize& size = wxDefaultSize, long style = wxHSCROLL | wxVSCROLL,
               const wxString& name = wxASCII_STR(wxPanelNameStr));

    // A text of more than kMostCharacters ends with an ellipsis in their place.
    static constexpr size_t kMostCharacters = 8000000;
    void SetFirstText(const wxString& text);
    void SetSecondText(const wxString& text);
    const wxString& GetFirstText() const { return mFirst.Text; }
    const wxString& GetSecondText() const { return mSecond.Text; }

    // Colours and the cover are only stored: the caller refreshes.
    void SetFirstColour(const wxColour& colour);
    void SetSecondColour(const wxColour& colour);
    // A null bitmap takes the cover away.
    void SetSecondCover(const wxBitmap& cover);
    bool IsSecondCovered() const { return mSecond.Cover.IsOk(); }

    // Words on what the window shows. Nothing draws them.
    void SetHint(const wxString& text);
    const wxString& GetHint() const { return mHint; }

    // wxVERTICAL (the first side above the second) or wxHORIZONTAL.
    void SetLayout(int32_t orientation);
    int32_t GetLayout() const { return mLayout; }

    bool SetFont(const wxFont& font) override;

    // A press of the mouse that is under way is no click when it ends.
    void DropPress();

    void ScrollToTop();
    // Puts the dividing line at the top, when there is anything to scroll.
    void ScrollToSecond();
    void PageUp();
    void PageDown();

    const CardViewerSide& GetFirst() const { return mFirst; }
    const CardViewerSide& GetSecond() const { return mSecond; }
    // The lines of a side that are shown.
    const WrappedText& LinesOf(const CardViewerSide& side) const {
        return side.Wraps[mScrollNeeded ? 1 : 0];
    }
    bool IsScrollNeeded() const { return mScrollNeeded; }
    // Nothing is left to lay out.
    bool IsLaidOut() const { return LinesOf(mFirst).IsWhole && LinesOf(mSecond).IsWhole; }

  private:
    void SetText(CardViewerSide& side, const wxString& text);
    // The width for the text without a scroll bar, and what a scroll bar takes of it.
    int32_t FullWidth() const;
    int32_t ScrollBarWidth() const;
    // Goes on with the lines of both sides at mColumnWidth.
    void WrapSides(int32_t height, size_t characters);
    // Lays out anew, as far as that many more characters of each side go.
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
    void OnContextMenu(wxContextMenuEvent& event);

    int32_t mLayout = wxVERTICAL;
    int32_t mColumnWidth = 0;
    CardViewerSide mFirst;
    CardViewerSide mSecond;
    wxString mHint;
    int32_t mLineHeight = 0;
    bool mScrollNeeded = false;

    // Before the first size there is nothing to lay out for.
    bool mIsSized = false;
    // Rotation of the wheel that is not yet used up, times pixels.
    int32_t mWheelRest = 0;
};
