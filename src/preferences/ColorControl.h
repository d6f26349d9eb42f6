#pragma once

#include <wx/colourdata.h>
#include <wx/panel.h>

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
