#pragma once

#include <wx/control.h>

class wxDropDownWindow;

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
