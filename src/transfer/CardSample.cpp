#include "transfer/CardSample.h"

#include <wx/sizer.h>
#include <wx/statline.h>
#include <wx/stattext.h>

#include <algorithm>
#include <utility>

#include "base/Text.h"
#include "media/MediaLines.h"
#include "shell/Forms.h"
#include "shell/Settings.h"

namespace {

constexpr size_t kLongestSide = 300;
constexpr int kLeastWrap = 40;

}  // namespace

CardSample::CardSample(wxWindow* parent) : wxPanel(parent) {
    SetBackgroundColour(ReadColourSetting(kSettingStudyBgColor));
    auto* const rows = new wxBoxSizer(wxVERTICAL);
    SetSizer(rows);
    mpFront = AddSide(ID_FRONT);
    rows->Add(new wxStaticLine(this), wxSizerFlags().Expand());
    mpBack = AddSide(ID_BACK);
    Bind(wxEVT_SIZE, [this](wxSizeEvent& event) {
        event.Skip();
        WrapTexts();
    });
}

wxStaticText* CardSample::AddSide(int id) {
    auto* const side = new wxStaticText(this, id, wxString(), wxDefaultPosition, wxDefaultSize,
                                        wxALIGN_CENTRE_HORIZONTAL);
    side->SetFont(ReadFontSetting(kSettingFont));
    side->SetForegroundColour(ReadColourSetting(kSettingFontColor));
    auto* const half = new wxBoxSizer(wxVERTICAL);
    half->AddStretchSpacer();
    half->Add(side, wxSizerFlags().CentreHorizontal().Border(wxLEFT | wxRIGHT, FromDIP(kFormGap)));
    half->AddStretchSpacer();
    GetSizer()->Add(half, wxSizerFlags(1).Expand());
    return side;
}

void CardSample::SetTexts(const wxString& front, const wxString& back) {
    mFront = CutWithEllipsis(WithNamedMediaMarks(front), kLongestSide);
    mBack = CutWithEllipsis(WithNamedMediaMarks(back), kLongestSide);
    mWrapWidth = -1;
    WrapTexts();
}

void CardSample::WrapTexts() {
    const int width = std::max(GetClientSize().x - FromDIP(2 * kFormGap), FromDIP(kLeastWrap));
    if (width == mWrapWidth) {
        return;
    }
    mWrapWidth = width;
    for (const auto& [label, text] : {std::pair(mpFront, mFront), {mpBack, mBack}}) {
        label->SetLabelText(text);
        label->Wrap(width);
    }
    Layout();
}
