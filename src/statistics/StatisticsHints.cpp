#include "statistics/StatisticsHints.h"

#include <wx/button.h>
#include <wx/hyperlink.h>
#include <wx/intl.h>
#include <wx/sizer.h>
#include <wx/stattext.h>

#include <algorithm>
#include <utility>

#include "shell/Forms.h"
#include "shell/Settings.h"

namespace {

// Fewer answers in a month tell of no habit.
constexpr int32_t kTellingMonth = 100;
// The texts wrap at this width, in pixels at the usual resolution.
constexpr int kTextWidth = 520;

}  // namespace

std::vector<StatisticsHint> MakeHints(const StudyHabit& habit, int relearnShare) {
    std::vector<StatisticsHint> hints;
    // A quarter of the answers.
    if (relearnShare == 0 && habit.Answers >= kTellingMonth &&
        4 * habit.AfterForgotten >= habit.Answers) {
        hints.push_back(
            {wxString::Format(_("In the last month %i of your %i answers went to cards that were "
                                "forgotten that day. A forgotten card can keep a quarter of its "
                                "interval instead of beginning again."),
                              habit.AfterForgotten, habit.Answers),
             kSettingHideRelearnHint, true});
    }
    if (habit.Passes >= kTellingMonth && 2 * habit.Threes > habit.Passes) {
        hints.push_back(
            {wxString::Format(_("In the last month %i of your %i passes were a 3, which keeps an "
                                "interval as it is. 4 is the pass that lengthens it."),
                              habit.Threes, habit.Passes),
             kSettingHidePassHint, false});
    }
    return hints;
}

HintsPanel::HintsPanel(wxWindow* parent, std::function<void()> openOptions)
    : wxPanel(parent, wxID_ANY, wxDefaultPosition, wxDefaultSize, wxTAB_TRAVERSAL, "hints"),
      mOpenOptions(std::move(openOptions)) {
    SetSizer(new wxBoxSizer(wxVERTICAL));
    Hide();
}

void HintsPanel::SetHints(std::vector<StatisticsHint> hints) {
    const auto isDismissed = [](const StatisticsHint& hint) {
        return ReadBooleanSetting(hint.pSetting);
    };
    hints.erase(std::remove_if(hints.begin(), hints.end(), isDismissed), hints.end());
    const bool isSame = std::equal(
        hints.begin(), hints.end(), mHints.begin(), mHints.end(),
        [](const StatisticsHint& a, const StatisticsHint& b) { return a.Text == b.Text; });
    // The focus may be on one of the buttons.
    if (!isSame) {
        mHints = std::move(hints);
        Rebuild();
    }
}

void HintsPanel::Rebuild() {
    GetSizer()->Clear(true);
    const int gap = FromDIP(kFormGap);
    for (const StatisticsHint& hint : mHints) {
        auto* const text = new wxStaticText(this, wxID_ANY, hint.Text);
        text->Wrap(FromDIP(kTextWidth));
        auto* const row = new wxBoxSizer(wxHORIZONTAL);
        if (hint.HasOption) {
            auto* const link =
                new wxHyperlinkCtrl(this, wxID_PREFERENCES, _("Options > Study"), wxString());
            // Not skipped, so that no browser opens.
            link->Bind(wxEVT_HYPERLINK, [this](wxHyperlinkEvent&) { mOpenOptions(); });
            row->Add(link, wxSizerFlags().CentreVertical().Border(wxRIGHT, gap));
        }
        auto* const button = new wxButton(this, wxID_ANY, _("Don't show this again"));
        // The button is gone when its event has been handled.
        button->Bind(wxEVT_BUTTON, [this, setting = hint.pSetting](wxCommandEvent&) {
            CallAfter([this, setting] { Dismiss(setting); });
        });
        row->Add(button);
        GetSizer()->Add(text);
        GetSizer()->Add(row, wxSizerFlags().Border(wxBOTTOM, gap));
    }
    Show(!mHints.empty());
    GetParent()->Layout();
}

void HintsPanel::Dismiss(const char* setting) {
    WriteBooleanSetting(setting, true);
    std::vector<StatisticsHint> hints = mHints;
    SetHints(std::move(hints));
}
