#pragma once

#include <wx/control.h>
#include <wx/frame.h>
#include <wx/longlong.h>

#include <functional>

class wxDropDownWindow;
class wxMenuBar;

// A button with a label and an arrow that opens a wxDropDownWindow, drawn as the desktop's theme
// draws buttons. A long label is cut. Opens by a click, the space bar, Enter or the arrow down.
class wxDropDownButton : public wxControl {
  public:
    wxDropDownButton(wxWindow* parent, wxWindowID id, const wxString& label,
                     const wxString& name = "dropDownButton");

    // The window to open, a child of the button; not owned.
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
    // The press found the window open, so it is to close.
    bool mPressCloses = false;
};

// What a wxDropDownButton opens: a frame with no decorations around one child, which has the focus
// while it is open. It goes when the person turns to another window. Owned by the button, its
// parent.
class wxDropDownWindow : public wxFrame {
  public:
    explicit wxDropDownWindow(wxWindow* button, const wxString& name = "dropDownWindow");

    // The one child.
    void SetContent(wxWindow* content);

    // Opens below the button, as large as the child would like to be and the screen has room.
    void Popup();
    // Closes, and gives the focus back to the button.
    void Dismiss();
    // It went a moment ago: a press on the button that took the focus away must not open it again.
    bool WasJustClosed() const;

    // Its keys for commands are those of a menu bar, and its commands go the way of the button's
    // frame, as far as the rules there have them enabled.
    void TakeAccelerators(const wxMenuBar& bar);

    // While the function says so it stays, although a question or a menu of the child is active.
    void StayOpenWhile(const std::function<bool()>& isHeld) { mIsHeld = isHeld; }

    bool ShouldPreventAppExit() const override { return false; }

  private:
    void HideNow();

    void OnActivate(wxActivateEvent& event);
    void OnOwnerActivate(wxActivateEvent& event);
    void OnCharHook(wxKeyEvent& event);
    void OnClose(wxCloseEvent& event);
    void OnCommand(wxCommandEvent& event);

    wxWindow* mpContent = nullptr;
    // It was left for a question of the child.
    bool mComesBack = false;
    std::function<bool()> mIsHeld = [] { return false; };
    wxLongLong mClosedAt;
};
