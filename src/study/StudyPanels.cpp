#include "study/StudyPanels.h"

#include <wx/bmpbuttn.h>
#include <wx/button.h>
#include <wx/intl.h>
#include <wx/settings.h>
#include <wx/sizer.h>
#include <wx/stattext.h>

#include <algorithm>

#include "shell/CommandIds.h"
#include "shell/Toolkit.h"

namespace {

// Logical pixels between the parts, and between the parts and the sides of the bar.
constexpr int kBetween = 6;
constexpr int kEdge = 12;
constexpr int kNarrowestMessage = 120;

// The background with a quarter of the colour of selections in it, in a light theme and in a dark
// one.
wxColour BarColour() {
    const wxColour back = wxSystemSettings::GetColour(wxSYS_COLOUR_BTNFACE);
    const wxColour tint = wxSystemSettings::GetColour(wxSYS_COLOUR_HIGHLIGHT);
    return MixColours(back, tint, 0.25);
}

}  // namespace

BreakBar::BreakBar(wxWindow* parent) {
    wxPanel::Create(parent, wxID_ANY, wxDefaultPosition, wxDefaultSize, wxBORDER_NONE, "breakBar");
    mpText = new wxStaticText(this, wxID_ANY, wxString());
    mpOffer = new wxButton(this, ID_NEXT_DUE_CATEGORY, wxString());
    mpOffer->SetToolTip(_("Studies the next category with due cards (Ctrl+D)."));
    mpMore = new wxButton(this, ID_SHOW_MORE_TODAY, _("Show More Today"));
    mpMore->SetToolTip(_("Introduces new cards beyond those of today."));
    mpMore->Hide();
    mpDismiss = wxBitmapButton::NewCloseButton(this, wxID_CLOSE);
    mpDismiss->SetToolTip(_("Dismiss (Esc)"));
    SetAccessibleName(*mpDismiss, _("Dismiss"));
    for (wxWindow* const button :
         {static_cast<wxWindow*>(mpOffer), static_cast<wxWindow*>(mpMore), mpDismiss}) {
        button->SetCanFocus(false);
    }
    auto* const row = new wxBoxSizer(wxHORIZONTAL);
    const int between = FromDIP(kBetween);
    row->Add(mpText, wxSizerFlags(1).CentreVertical().Border(wxLEFT, FromDIP(kEdge)));
    row->Add(mpOffer, wxSizerFlags().CentreVertical().Border(wxLEFT | wxTOP | wxBOTTOM, between));
    row->Add(mpMore, wxSizerFlags().CentreVertical().Border(wxLEFT | wxTOP | wxBOTTOM, between));
    row->Add(mpDismiss, wxSizerFlags().CentreVertical().Border(wxALL, between));
    SetSizer(row);
    UseColours();
    Bind(wxEVT_SIZE, [this](wxSizeEvent& event) {
        event.Skip();
        WrapMessage();
    });
}

void BreakBar::SetTexts(const wxString& message, const wxString& offer, bool offersMore) {
    const wxString label = wxControl::EscapeMnemonics(offer);
    if (message == mMessage && label == mpOffer->GetLabel() && offersMore == mpMore->IsShown()) {
        return;
    }
    mpMore->Show(offersMore);
    mMessage = message;
    mpOffer->SetLabel(label);
    mpOffer->Show(!label.empty());
    mWrapWidth = -1;
    WrapMessage();
}

void BreakBar::UseColours() {
    SetBackgroundColour(BarColour());
    mpText->SetForegroundColour(wxSystemSettings::GetColour(wxSYS_COLOUR_BTNTEXT));
    mpDismiss->SetBackgroundColour(BarColour());
    Refresh();
}

// Breaks the message at the width that the buttons leave, and tells the frame the new height.
void BreakBar::WrapMessage() {
    const int between = FromDIP(kBetween);
    int width = GetClientSize().x - FromDIP(kEdge) - mpDismiss->GetBestSize().x - 3 * between;
    for (const wxButton* const button : {mpOffer, mpMore}) {
        width -= button->IsShown() ? button->GetBestSize().x + between : 0;
    }
    width = std::max(width, FromDIP(kNarrowestMessage));
    if (width == mWrapWidth) {
        return;
    }
    mWrapWidth = width;
    mpText->SetLabel(mMessage);
    mpText->Wrap(width);
    InvalidateBestSize();
    // The frame is laying itself out when the bar gets its size.
    CallAfter([this] { GetParent()->Layout(); });
}
