#pragma once

#include <wx/control.h>
#include <wx/eventfilter.h>
#include <wx/panel.h>
#include <wx/weakref.h>

#include <functional>

class wxDropDownWindow;

// A button with a label and an arrow that opens a wxDropDownWindow, drawn as the desktop's theme
// draws buttons. A long label is cut, and with an empty one the button is as narrow as the arrow.
// Opens by a click, the space bar, Enter or the arrow down.
class wxDropDownButton : public wxControl {
  public:
    wxDropDownButton(wxWindow* parent, wxWindowID id, const wxString& label,
                     const wxString& name = "dropDownButton");

    // Sets what the button opens, which is not owned. Without one a press only sends wxEVT_BUTTON.
    void SetPopup(wxDropDownWindow* popup) { mpPopup = popup; }
    wxDropDownWindow* GetPopup() const { return mpPopup; }

    void SetLabel(const wxString& label) override;
    bool SetFont(const wxFont& font) override;

  protected:
    wxSize DoGetBestClientSize() const override;

  private:
    void Press();

    void OnPaint(wxPaintEvent& event);
    void OnLeftDown(wxMouseEvent& event);
    void OnLeftUp(wxMouseEvent& event);
    void OnHover(wxMouseEvent& event);
    void OnKeyDown(wxKeyEvent& event);

    wxDropDownWindow* mpPopup = nullptr;
    bool mPressed = false;
    bool mHovered = false;
    // The press found the drop-down open and closes it.
    bool mPressCloses = false;
};

// A panel around one child that lies over the other contents of a frame while it is open, and has
// the keyboard focus then. It is a part of the frame, no window of its own, so it takes keys, moves
// with the frame and has a place even on platforms that let no program place its windows. It closes
// by Escape, by a click or a move of the focus to anything else in the frame, and when the user
// turns to another window. Owned by its frame.
class wxDropDownWindow : public wxPanel, private wxEventFilter {
  public:
    // Opens below the anchor, a child of the frame; with null in the upper left corner of the
    // frame.
    wxDropDownWindow(wxWindow* frame, wxWindow* anchor, const wxString& name = "dropDownWindow");
    ~wxDropDownWindow() override;

    // Sets the one child, which must have been created with this panel as its parent.
    void SetContent(wxWindow* content);

    // Opens, as large as the child wants to be and the frame has room for.
    void Popup();
    // Closes, and gives the focus back to the window that had it when the drop-down opened.
    void Dismiss();

    // Keeps the drop-down open while the function returns true, even when a question or a menu of
    // the child has the keys.
    void StayOpenWhile(const std::function<bool()>& isHeld) { mIsHeld = isHeld; }

  private:
    int FilterEvent(wxEvent& event) override;
    void Place();
    bool IsOutside(const wxWindow& window) const;

    void OnFrameActivate(wxActivateEvent& event);
    void OnFrameSize(wxSizeEvent& event);
    void OnCharHook(wxKeyEvent& event);
    void OnPaint(wxPaintEvent& event);

    wxWindow* mpAnchor;
    wxWindow* mpContent = nullptr;
    wxWeakRef<wxWindow> mFormerFocus;
    std::function<bool()> mIsHeld = [] { return false; };
};
