#pragma once

#include <wx/arrstr.h>
#include <wx/bitmap.h>
#include <wx/ctrlsub.h>
#include <wx/event.h>
#include <wx/stopwatch.h>

#include <cstdint>
#include <optional>
#include <set>
#include <vector>

class wxDC;

// Page Up or Page Down was typed: for the window beside the control.
wxDECLARE_EVENT(EVT_QUICKSCORE_PAGE_UP, wxCommandEvent);
wxDECLARE_EVENT(EVT_QUICKSCORE_PAGE_DOWN, wxCommandEvent);

// A column of large buttons: a single-selection list to its container, push buttons to the user.
// The cursor is the item with the focus rectangle and is what GetSelection returns; the mark is the
// highlighted item, the recorded score of a card in the history. A key or the mouse presses an item
// and the release chooses it. Only a key that truly goes down starts a press: one that repeats, as
// it was held down already, here or in a window before, does not.
//
// Events go straight to the parent: wxEVT_LISTBOX when the user moves the cursor,
// wxEVT_LISTBOX_DCLICK when a choice has moved the mark, with wxID_FORWARD or wxID_BACKWARD as
// extra long (which way to go through the history after it), the menu commands wxID_BACKWARD and
// wxID_FORWARD, and the two page events.
class QuickScore : public wxControlWithItems {
  public:
    QuickScore() = default;
    QuickScore(wxWindow* parent, wxWindowID id, const wxPoint& position = wxDefaultPosition,
               const wxSize& size = wxDefaultSize, long style = wxBORDER_NONE | wxWANTS_CHARS,
               const wxString& name = wxASCII_STR(wxPanelNameStr));

    bool Create(wxWindow* parent, wxWindowID id, const wxPoint& position = wxDefaultPosition,
                const wxSize& size = wxDefaultSize, long style = wxBORDER_NONE | wxWANTS_CHARS,
                const wxString& name = wxASCII_STR(wxPanelNameStr));

    // The items. Every change of a label measures anew.
    unsigned int GetCount() const override;
    wxString GetString(unsigned int n) const override;
    void SetString(unsigned int n, const wxString& label) override;
    // New labels, with cursor and mark where they were; then the best size becomes the minimum
    // size.
    void SetItems(const wxString* labels, size_t count);
    void SetAllStrings(const wxString& label);

    // The cursor and the mark move silently here; -1 is none.
    void SetSelection(int n) override;
    int GetSelection() const override { return mCursor; }
    void SetMark(int32_t n);
    void ClearMark() { SetMark(-1); }
    int32_t GetMark() const { return mMark; }
    // The item drawn as pressed, or -1.
    int32_t GetPressed() const { return mPressed; }

    // Lets go of what a key or the mouse holds down, and chooses nothing: for an owner that comes
    // to show something else than what the press was meant for, or whose menu or dialog takes the
    // release.
    void DropPress();
    // The keys come back from a menu or another window. Those that are down were pressed there, and
    // start no press before they have been let go.
    void ResumeKeys();

    // Inner margin of an item in 1/96 inch.
    void SetMargin(int32_t units);

    bool SetFont(const wxFont& font) override;
    bool Enable(bool enable = true) override;

    // In client coordinates. A point beside the items gives -1.
    int32_t ItemAt(const wxPoint& point) const;
    wxRect GetItemRect(int32_t n) const;

  protected:
    wxSize DoGetBestClientSize() const override;
    int DoInsertItems(const wxArrayStringsAdapter& items, unsigned int pos, void** clientData,
                      wxClientDataType type) override;
    void DoSetItemClientData(unsigned int n, void* clientData) override;
    void* DoGetItemClientData(unsigned int n) const override;
    void DoClear() override;
    void DoDeleteOneItem(unsigned int pos) override;

    // Whether the platform says that a key is down, or nothing where it does not tell. A test
    // answers in its place.
    virtual std::optional<bool> IsKeyDown(int key) const;

  private:
    void ForgetPositions();
    void UpdateMetrics();
    void EnsureBitmaps();
    void RefreshItem(int32_t n);
    const wxBitmap& ItemBitmap(int32_t n) const;
    void PaintItem(wxDC& dc, int32_t n);
    void PaintBitmap(wxDC& dc, const wxBitmap& bitmap, const wxRect& item) const;
    void PaintFocus(wxDC& dc, const wxRect& rect) const;

    void MoveCursor(int32_t n, bool notify);
    // Moves the mark; with a direction other than 0 that is a choice of the user.
    void Activate(int32_t n, int direction);
    void SetPressed(int32_t n);
    void ClearPressed();
    // A key or a mouse button holds an item down.
    bool IsHeld() const;
    void Press(int32_t key);
    void PressDigit(int32_t key, int32_t digit);
    // The held key was let go.
    void ChooseHeldItem();
    // False when something holds an item already.
    bool HoldByMouse(int32_t button);
    void PressUnder(const wxPoint& point);
    // Forgets the keys that are up by the platform's word although no release came here, as
    // somebody had grabbed the keys meanwhile. The key of the present event is left out: its
    // release may only be late.
    void ForgetLostKeys(int present);
    // True when the key may start a press.
    bool NoteKeyDown(const wxKeyEvent& event);
    void SendCommand(wxEventType type, int id, int item = -1, long extra = 0);
    void Navigate(bool forward);
    // False when the control does not know the key.
    bool HandleKey(int key, bool shift, bool mayPress);

    void OnKeyDown(wxKeyEvent& event);
    void OnKeyUp(wxKeyEvent& event);
    void OnSetFocus(wxFocusEvent& event);
    void OnKillFocus(wxFocusEvent& event);
    void OnLeaveWindow(wxMouseEvent& event);
    void OnLeftDown(wxMouseEvent& event);
    void OnLeftUp(wxMouseEvent& event);
    void OnMiddleDown(wxMouseEvent& event);
    void OnMiddleUp(wxMouseEvent& event);
    void OnDrag(wxMouseEvent& event);
    void OnWheel(wxMouseEvent& event);
    void OnCaptureLost(wxMouseCaptureLostEvent& event);
    void OnPaint(wxPaintEvent& event);
    void OnSystemColourChanged(wxSysColourChangedEvent& event);

    int32_t mMark = -1;
    int32_t mCursor = -1;
    int32_t mPressed = -1;
    // Key code of the key that holds an item down.
    int32_t mHeldKey = -1;
    // When it went down.
    wxStopWatch mHeldSince;
    // Item that it chooses.
    int32_t mHeldItem = -1;
    // Mouse button that holds an item down: 0 none, 1 left, 2 middle.
    int32_t mHeldButton = 0;
    // Rotation of the wheel that is not yet used up.
    int32_t mWheelRest = 0;
    // Keys that are down and may not start a press before they have been let go.
    std::set<int> mDownKeys;
    int32_t mItemHeight = 0;
    int32_t mItemWidth = 0;
    wxArrayString mStrings;
    std::vector<void*> mClientData;
    wxBitmap mDefaultBitmap;
    wxBitmap mSelectedBitmap;
    wxBitmap mPressedBitmap;
    wxBitmap mDisabledBitmap;
    // What the four pictures were painted for.
    wxColour mBitmapBackground;
    int32_t mMargin = 3;
    int32_t mPadX = 0;
    int32_t mPadY = 0;
    int32_t mTextHeight = 0;

    wxDECLARE_DYNAMIC_CLASS(QuickScore);
};
