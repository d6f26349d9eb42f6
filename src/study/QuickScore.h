#pragma once

#include <wx/arrstr.h>
#include <wx/ctrlsub.h>
#include <wx/event.h>
#include <wx/font.h>
#include <wx/stopwatch.h>

#include <cstdint>
#include <optional>
#include <set>
#include <vector>

class wxDC;

// Page Up or Page Down was typed; meant for the card beside the control.
wxDECLARE_EVENT(EVT_QUICKSCORE_PAGE_UP, wxCommandEvent);
wxDECLARE_EVENT(EVT_QUICKSCORE_PAGE_DOWN, wxCommandEvent);

// A column of large buttons: a single-selection list to its container, push buttons to the user.
// The cursor is the item with the frame and is what GetSelection returns; the mark is the
// highlighted item, the recorded score of a card in the history. A key or the mouse presses an item
// and the release chooses it. Only a key that truly goes down starts a press. A key that repeats,
// because it has been held down since before, here or in another window, does not.
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

    // The labels of the items. Each change measures the control anew.
    unsigned int GetCount() const override { return static_cast<unsigned int>(mStrings.size()); }
    wxString GetString(unsigned int n) const override;
    void SetString(unsigned int n, const wxString& label) override;
    // Replaces all labels, keeps cursor and mark, and makes the best size the minimum size.
    void SetItems(const wxString* labels, size_t count);
    // Gives each item another label; there are as many labels as items.
    void SetStrings(const wxString* labels);
    void SetAllStrings(const wxString& label);

    // These move the cursor and the mark without an event; -1 is none.
    void SetSelection(int n) override { MoveCursor(n, false); }
    int GetSelection() const override { return mCursor; }
    void SetMark(int32_t n) { Activate(n, 0); }
    void ClearMark() { SetMark(-1); }
    int32_t GetMark() const { return mMark; }
    // The item drawn as pressed, or -1.
    int32_t GetPressed() const { return mPressed; }

    // Forgets a press that is under way and chooses nothing. The owner calls it when it shows
    // something other than what the press was meant for, or when a menu or dialog gets the release.
    void DropPress();
    // Called when the keys come back from a menu or another window. Keys that are down now were
    // pressed there, and start no press before they have been released.
    void ResumeKeys();
    // Takes the focus from a field in which a key went down that is still held: its repeats and
    // its release belong to the field.
    void TakeFocusWithKey(int key);

    // Sets the tips of the single items, which replace the control's own; an empty list keeps that
    // one.
    void SetItemTips(const std::vector<wxString>& tips);

    // Sets what stands at the right end of each item, such as when a card comes back; an empty list
    // takes the notes away. The widest ones reserve room, so that the items keep their width
    // whatever the notes say. With notes the items stand at the right of the control, as wide as
    // they and their notes need, and else they fill it.
    void SetNotes(const std::vector<wxString>& notes);
    void ReserveNotes(const std::vector<wxString>& widest);
    const std::vector<wxString>& GetNotes() const { return mNotes; }

    // Inner margin of an item in 1/96 inch.
    void SetMargin(int32_t units);

    bool SetFont(const wxFont& font) override;
    bool Enable(bool enable = true) override;

    // Both are in client coordinates. A point outside the items gives -1.
    int32_t ItemAt(const wxPoint& point) const;
    wxRect GetItemRect(int32_t n) const;

  protected:
    wxSize DoGetBestClientSize() const override;
    int DoInsertItems(const wxArrayStringsAdapter& items, unsigned int pos, void** clientData,
                      wxClientDataType type) override;
    void DoSetItemClientData(unsigned int n, void* data) override { mClientData[n] = data; }
    void* DoGetItemClientData(unsigned int n) const override { return mClientData[n]; }
    void DoClear() override;
    void DoDeleteOneItem(unsigned int pos) override;

    // Asks the platform whether a key is down; nothing where it does not tell. Tests override it.
    virtual std::optional<bool> IsKeyDown(int key) const;

  private:
    void ForgetPositions();
    void UpdateMetrics();
    void UpdateNoteWidth();
    void RefreshItem(int32_t n);
    // A label as it is drawn; the figure is empty where the label has none.
    struct LabelParts {
        wxString Figure;
        wxString Words;
    };
    LabelParts SplitLabel(int32_t n) const;
    void PaintItem(wxDC& dc, int32_t n);
    void PaintButton(wxDC& dc, const wxRect& button, int32_t n);
    void PaintSign(wxDC& dc, const wxRect& place, int32_t n) const;
    void PaintNote(wxDC& dc, int32_t right, int32_t left, int32_t baseline, int32_t n) const;

    void MoveCursor(int32_t n, bool notify);
    // Moves the mark; a direction other than 0 says that the user chose it.
    void Activate(int32_t n, int direction);
    void SetPressed(int32_t n);
    void ClearPressed() { SetPressed(-1); }
    // True while a key or a mouse button holds an item down.
    bool IsHeld() const;
    void Press(int32_t key);
    void PressDigit(int32_t key, int32_t digit);
    // Ends a press by key with a choice.
    void ChooseHeldItem();
    // Begins a press by mouse; false when something holds an item already.
    bool HoldByMouse(int32_t button);
    void PressUnder(const wxPoint& point);
    // True for a press that the platform would count as the second or third click of one gesture
    // that has made a choice already.
    bool IsRepeatedClick(const wxMouseEvent& event);
    void ShowTipOf(int32_t item);
    // Forgets keys whose release went elsewhere, because somebody grabbed the keyboard, when the
    // platform says that they are up. The key of the present event is left out: its release may
    // only be late.
    void ForgetLostKeys(int present);
    // Records that a key is down; true when it was up before and so may start a press.
    bool NoteKeyDown(const wxKeyEvent& event);
    void SendCommand(wxEventType type, int id, int item = -1, long extra = 0);
    void Navigate(bool forward);
    // Returns false when the control has no use for the key.
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
    // Item that its release chooses.
    int32_t mHeldItem = -1;
    // Mouse button that holds an item down: 0 none, 1 left, 2 middle.
    int32_t mHeldButton = 0;
    // Where and when (in milliseconds of the platform's events) the left button went down last, and
    // whether that press, or the gesture it belongs to, has made a choice.
    wxPoint mClickPlace;
    long mClickTime = 0;
    bool mClickChose = false;
    std::vector<wxString> mItemTips;
    // The item under the pointer, or -1; it looks like a button that can be pressed.
    int32_t mTipItem = -1;
    // Rotation of the wheel that has not yet moved the cursor.
    int32_t mWheelRest = 0;
    // Keys that are down and may not start a press before they are released.
    std::set<int> mDownKeys;
    int32_t mItemHeight = 0;
    // The item height at which the minimum size was set, or 0 before that.
    int32_t mMinItemHeight = 0;
    int32_t mItemWidth = 0;
    wxArrayString mStrings;
    std::vector<void*> mClientData;
    int32_t mMargin = 3;
    int32_t mPadX = 0;
    int32_t mPadY = 0;
    // Room for the sign and the figure before the words. Both are 0 while every label is a figure.
    int32_t mSignWidth = 0;
    int32_t mFigureWidth = 0;
    wxFont mBoldFont;
    std::vector<wxString> mNotes;
    std::vector<wxString> mWidestNotes;
    // Room for the widest note; 0 without notes.
    int32_t mNoteWidth = 0;
    // The radius of the corners in the present theme, or -1 before it was asked for.
    int32_t mRadius = -1;

    wxDECLARE_DYNAMIC_CLASS(QuickScore);
};
