#include "preferences/AppearanceControls.h"

#include <wx/button.h>
#include <wx/colordlg.h>
#include <wx/fontdlg.h>
#include <wx/intl.h>
#include <wx/settings.h>
#include <wx/sizer.h>
#include <wx/textctrl.h>

#include <algorithm>

#include "shell/Forms.h"
#include "shell/Toolkit.h"

namespace {

constexpr int kSwatchId = 10062;
constexpr int kColorButtonId = 10064;
constexpr int kFontButtonId = 10051;

// Room for most names of fonts, in pixels at the usual resolution and in characters.
constexpr int kNameWidth = 180;
constexpr int kNameLength = 22;

}  // namespace

void AppearanceControl::CreateRow(wxWindow* sample, int buttonId, const wxString& buttonText,
                                  const wxString& label) {
    auto* const row = new wxBoxSizer(wxHORIZONTAL);
    row->Add(sample, wxSizerFlags(1).Expand());
    mpButton = new wxButton(this, buttonId, buttonText);
    row->Add(mpButton, wxSizerFlags().CentreVertical().Border(wxLEFT, FromDIP(kFormGap)));
    SetSizer(row);
    SetAccessibleName(*mpButton, label + " " + mpButton->GetLabelText());
    mpButton->Bind(wxEVT_BUTTON, [this](wxCommandEvent&) { Change(); });
}

void AppearanceControl::AlignButtons(std::initializer_list<const AppearanceControl*> controls) {
    int width = 0;
    for (const AppearanceControl* const control : controls) {
        width = std::max(width, control->mpButton->GetBestSize().x);
    }
    for (const AppearanceControl* const control : controls) {
        control->mpButton->SetMinSize(wxSize(width, -1));
    }
}

ColorControl::ColorControl(wxWindow* parent, wxWindowID id, const wxString& label)
    : AppearanceControl(parent, id) {
    mpSwatch =
        new wxPanel(this, kSwatchId, wxDefaultPosition, FromDIP(wxSize(10, 10)), wxBORDER_SIMPLE);
    mpSwatch->SetCanFocus(false);
    CreateRow(mpSwatch, kColorButtonId, _("Change Color..."), label);
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
    CreateRow(mpName, kFontButtonId, _("Change Font..."), label);
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
