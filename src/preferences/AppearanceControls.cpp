#include "preferences/AppearanceControls.h"

#include <wx/button.h>
#include <wx/colordlg.h>
#include <wx/fontdlg.h>
#include <wx/intl.h>
#include <wx/settings.h>
#include <wx/sizer.h>
#include <wx/textctrl.h>

#include <algorithm>

#include "shell/Toolkit.h"

namespace {

constexpr int kSwatchId = 10062;
constexpr int kColorButtonId = 10064;
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
    auto* const change = new wxButton(this, kColorButtonId, _("Change Color..."));
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

namespace {

constexpr int kNameId = 10047;
constexpr int kFontButtonId = 10051;
// Room for most names.
constexpr int kNameWidth = 180;
constexpr int kNameLength = 22;

}  // namespace

FontControl::FontControl(wxWindow* parent, wxWindowID id, const wxString& label)
    : wxPanel(parent, id) {
    auto* const row = new wxBoxSizer(wxHORIZONTAL);
    const int border = FromDIP(kBorder);
    mpName = new wxTextCtrl(this, kNameId, wxString(), wxDefaultPosition,
                            wxSize(std::max(FromDIP(kNameWidth), kNameLength * GetCharWidth()), -1),
                            wxTE_READONLY | wxTE_CENTRE);
    mpName->SetBackgroundColour(wxSystemSettings::GetColour(wxSYS_COLOUR_BTNFACE));
    row->Add(mpName, wxSizerFlags().CentreVertical().Border(wxRIGHT, border));
    auto* const change = new wxButton(this, kFontButtonId, _("Change Font..."));
    row->Add(change, wxSizerFlags().CentreVertical().Border(wxALL, border));
    SetSizer(row);
    SetAccessibleName(*mpName, label);
    SetAccessibleName(*change, label + " " + change->GetLabelText());
    change->Bind(wxEVT_BUTTON, [this](wxCommandEvent&) { OnChange(); });
}

void FontControl::SetFontData(const wxFontData& data) {
    const int size = mpName->GetFont().GetPointSize();
    mData = data;
    wxFont font = GetFontOfData();
    mpName->SetValue(wxString::Format(_("%ipt, %s"), font.GetPointSize(), font.GetFaceName()));
    font.SetPointSize(size);
    mpName->SetFont(font);
}

wxFont FontControl::GetFontOfData() const {
    const wxFont chosen = mData.GetChosenFont();
    return chosen.IsOk() ? chosen : mData.GetInitialFont();
}

void FontControl::OnChange() {
    wxFontDialog dialog(this, mData);
    if (dialog.ShowModal() == wxID_OK) {
        SetFontData(dialog.GetFontData());
    }
}
