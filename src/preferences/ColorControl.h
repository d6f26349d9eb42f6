#pragma once

#include <wx/colourdata.h>
#include <wx/panel.h>

// A colour as a swatch, with a button beside it that changes it.
class ColorControl : public wxPanel {
  public:
    ColorControl(wxWindow* parent, wxWindowID id);

    void SetColourData(const wxColourData& data);
    const wxColourData& GetColourData() const { return mData; }

  private:
    void OnChange();

    wxColourData mData;
    wxPanel* mpSwatch = nullptr;
};
