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
constexpr int kFontNameId = 10047;
constexpr int kFontButtonId = 10051;

constexpr int kBorder = 5;
// Room for most names of fonts, in pixels at the usual resolution and in characters.
constexpr int kNameWidth = 180;
constexpr int kNameLength = 22;

}  // namespace

void AppearanceControl::CreateRow(wxWindow* sample, const wxSizerFlags& sampleFlags, int buttonId,
                                  const wxString& buttonText, const wxString& label) {
    auto* const row = new wxBoxSizer(wxHORIZONTAL);
    const int border = FromDIP(kBorder);
    row->Add(sample, wxSizerFlags(sampleFlags).Border(wxRIGHT, border));
    auto* const change = new wxButton(this, buttonId, buttonText);
    row->Add(change, wxSizerFlags().CentreVertical().Border(wxALL, border));
    SetSizer(row);
    SetAccessibleName(*change, label + " " + change->GetLabelText());
    change->Bind(wxEVT_BUTTON, [this](wxCommandEvent&) { Change(); });
}

ColorControl::ColorControl(wxWindow* parent, wxWindowID id, const wxString& label)
    : AppearanceControl(parent, id) {
    mpSwatch =
        new wxPanel(this, kSwatchId, wxDefaultPosition, FromDIP(wxSize(10, 10)), wxBORDER_SIMPLE);
    mpSwatch->SetCanFocus(false);
    CreateRow(mpSwatch, wxSizerFlags(1).Expand(), kColorButtonId, _("Change Color..."), label);
}

void ColorControl::SetColourData(const wxColourData& data) {
    mData = data;
    mpSwatch->SetBackgroundColour(mData.GetColour());
    mpSwatch->Refresh();
}

void ColorControl::Change() {
    wxColourDialog dialog(this, &mData);
    if (dialog.ShowModal() == wxID_OK) {
        SetColourData(dialog.GetColourData());
    }
}

FontControl::FontControl(wxWindow* parent, wxWindowID id, const wxString& label)
    : AppearanceControl(parent, id) {
    const int width = std::max(FromDIP(kNameWidth), kNameLength * GetCharWidth());
    mpName = new wxTextCtrl(this, kFontNameId, wxString(), wxDefaultPosition, wxSize(width, -1),
                            wxTE_READONLY | wxTE_CENTRE);
    mpName->SetBackgroundColour(wxSystemSettings::GetColour(wxSYS_COLOUR_BTNFACE));
    SetAccessibleName(*mpName, label);
    CreateRow(mpName, wxSizerFlags().CentreVertical(), kFontButtonId, _("Change Font..."), label);
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

void FontControl::Change() {
    wxFontDialog dialog(this, mData);
    if (dialog.ShowModal() == wxID_OK) {
        SetFontData(dialog.GetFontData());
    }
}
