#include "preferences/ColorControl.h"

#include <wx/button.h>
#include <wx/colordlg.h>
#include <wx/intl.h>
#include <wx/sizer.h>

#include "shell/AccessibleName.h"

namespace {

constexpr int kSwatchId = 10062;
constexpr int kButtonId = 10064;
constexpr int kBorder = 5;

}  // namespace

ColorControl::ColorControl(wxWindow* parent, wxWindowID id, const wxString& label)
    : wxPanel(parent, id) {
    auto* const row = new wxBoxSizer(wxHORIZONTAL);
    const int border = FromDIP(kBorder);
    mpSwatch =
        new wxPanel(this, kSwatchId, wxDefaultPosition, FromDIP(wxSize(10, 10)), wxBORDER_SIMPLE);
    mpSwatch->SetCanFocus(false);
    row->Add(mpSwatch, wxSizerFlags(1).Expand().Border(wxRIGHT, border));
    auto* const change = new wxButton(this, kButtonId, _("Change Color..."));
    row->Add(change, wxSizerFlags().CentreVertical().Border(wxALL, border));
    SetSizer(row);
    SetAccessibleName(*change, label + " " + change->GetLabelText());
    change->Bind(wxEVT_BUTTON, [this](wxCommandEvent&) { OnChange(); });
}

void ColorControl::SetColourData(const wxColourData& data) {
    mData = data;
    mpSwatch->SetBackgroundColour(mData.GetColour());
    mpSwatch->Refresh();
}

void ColorControl::OnChange() {
    wxColourDialog dialog(this, &mData);
    if (dialog.ShowModal() == wxID_OK) {
        SetColourData(dialog.GetColourData());
    }
}
