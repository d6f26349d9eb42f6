#pragma once

#include <wx/colourdata.h>
#include <wx/fontdata.h>
#include <wx/panel.h>

class wxTextCtrl;

// A colour as a swatch, with a button beside it that changes it.
class ColorControl : public wxPanel {
  public:
    // The label is the one beside the control, for those who hear the screen.
    ColorControl(wxWindow* parent, wxWindowID id, const wxString& label);

    void SetColourData(const wxColourData& data);
    const wxColourData& GetColourData() const { return mData; }

  private:
    void OnChange();

    wxColourData mData;
    wxPanel* mpSwatch = nullptr;
};

// A font as its own name, written in it at a constant size, with a button beside it that changes
// it.
class FontControl : public wxPanel {
  public:
    // The label is the one beside the control, for those who hear the screen.
    FontControl(wxWindow* parent, wxWindowID id, const wxString& label);

    void SetFontData(const wxFontData& data);
    const wxFontData& GetFontData() const { return mData; }

    // The chosen font, or the initial one where none was chosen.
    wxFont GetFontOfData() const;

  private:
    void OnChange();

    wxFontData mData;
    wxTextCtrl* mpName = nullptr;
};
