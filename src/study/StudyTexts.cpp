#include "study/StudyTexts.h"

#include <wx/button.h>
#include <wx/intl.h>
#include <wx/settings.h>
#include <wx/sizer.h>
#include <wx/stattext.h>
#include <wx/statusbr.h>

#include <algorithm>
#include <cmath>

#include "base/Text.h"
#include "base/Time.h"
#include "scheduler/Scheduler.h"

ScoreLabels GetScoreLabels(bool compact) {
    if (compact) {
        return {"5", "4", "3", "2", "1", "0"};
    }
    return {_("5 - Pass (no hesitation)"),   _("4 - Pass (some hesitation)"),
            _("3 - Pass (with difficulty)"), _("2 - Pass (not confident)"),
            _("1 - Pass (by guessing)"),     _("0 - Fail (incorrect)")};
}

wxString ShowBackLabel(bool compact) {
    return compact ? wxString(">") : _("Show Back");
}

wxString SelectScoreTip() {
    return _("Select a score that indicates your familiarity with this flash card.");
}

wxString IntervalText(float seconds) {
    const IntervalInUnits interval = SplitInterval(seconds);
    constexpr float kMost = 1e9f;
    const auto n = static_cast<unsigned>(std::lround(std::clamp(interval.Value, 0.0f, kMost)));
    return CountOfUnits(n, interval.Unit);
}

wxString ReturnText(const IntervalRange& interval) {
    // Chance divides as often as it multiplies, so the middle is the geometric mean.
    const float middle = std::sqrt(interval.Least) * std::sqrt(interval.Greatest);
    if (std::lround(middle) <= 1) {
        return _("at once");
    }
    const bool isCertain = interval.Least == interval.Greatest;
    // Translators: %s is a length of time such as "4 days".
    return isCertain ? IntervalText(interval.Least)
                     : wxString::Format(_("about %s"), IntervalText(middle));
}

std::vector<wxString> WidestReturnTexts() {
    std::vector<wxString> texts;
    for (const float seconds :
         {50.0f, 50 * 60.0f, 20 * 3600.0f, 50 * 86400.0f, 300 * 86400.0f, 20 * 365 * 86400.0f}) {
        texts.push_back(ReturnText({0.9f * seconds, 1.1f * seconds}));
    }
    return texts;
}

wxString BreakMessage(const wxDateTime& due, const wxDateTime& now) {
    if (!due.IsValid()) {
        return wxString();
    }
    // Translators: forms of a time as strftime knows them: today, this year, and in another year.
    const wxString form = due.IsSameDate(now)              ? _("%H:%M")
                          : due.GetYear() == now.GetYear() ? _("%a %d %b %H:%M")
                                                           : _("%a %d %b %Y %H:%M");
    const auto seconds = static_cast<float>((due - now).GetSeconds().ToDouble());
    // Translators: the first %s is a time of day or a date, the second a length of time.
    return wxString::Format(_("Nothing is due now. Next card: %s (%s). Going on is early review."),
                            FormatDate(due, form), IntervalText(seconds));
}

wxString OfferText(const CategoryReady* category) {
    if (category == nullptr) {
        return wxString();
    }
    if (category->Ready == 0) {
        // Translators: %s is the name of a category, %i the number of its new cards.
        return wxString::Format(_("Study %s (%i new)"), ShownName(category->Info.Name),
                                category->New);
    }
    // Translators: %s is the name of a category, %i the number of its cards that are due.
    return wxString::Format(_("Study %s (%i due)"), ShownName(category->Info.Name),
                            category->Ready);
}

wxString StoreEmptyMessage() {
    return _(
        "Thank you for choosing Ostrel Velomind!  Your flash card database is empty. Click the "
        "'File' menu and 'New Card' menu item to create a flash card.");
}

wxString CategoryEmptyMessage() {
    return _(
        "There are no flash cards in the current category.\nClick the 'File' menu and 'New Card' "
        "menu item to create a flash card.\nTo change the current category, click on the 'View' "
        "menu, click on the 'List View' menu item and select a category from the category drop "
        "down menu.");
}

wxString AllExcludedMessage() {
    return _(
        "All of the flash cards are excluded from review.\nTry switching review direction.  Click "
        "the 'Tools' menu, click 'Study Back to Front' or 'Study Front to Back' menu item.");
}

wxString CategoryExcludedMessage() {
    return _(
        "All of the flash cards in this category are excluded from review.\nTo change the current "
        "category, click on the 'View' menu, click on the 'List View' menu item and select a "
        "category from the category drop down menu.\nTo change review direction click the 'Tools' "
        "menu, click 'Study Back to Front' or 'Study Front to Back' menu item.");
}

wxString NewCardsHeldMessage() {
    return _(
        "The new cards of today are used up, and no other card of this category can be "
        "studied.\nTo go on with new cards, click on the 'View' menu and the 'Show More Today' "
        "menu item.");
}

wxString PauseText(const StudyPause& pause, const wxDateTime& now) {
    const auto seconds = static_cast<float>(now.GetTicks() - pause.LastAnswer);
    const int32_t due = pause.Backlog.Due;
    // Translators: %s is a length of time such as "3 weeks".
    const wxString away =
        wxString::Format(wxPLURAL("After %s away %i card is due.",
                                  "After %s away %i cards are due.", static_cast<unsigned>(due)),
                         IntervalText(seconds), due);
    const int32_t measure = pause.Limits.Enough;
    if (pause.Backlog.DoneAfter == BacklogForecast::kNever) {
        return away;
    }
    const wxString day = FormatDate(now + wxDateSpan::Days(pause.Backlog.DoneAfter), _("%d %b %Y"));
    return away + " " +
           (pause.Limits.EnoughIsMinutes
                ? wxString::Format(_("At %i minutes a day the backlog is gone on %s."), measure,
                                   day)
                : wxString::Format(_("At %i a day the backlog is gone on %s."), measure, day));
}

wxString EnoughText(const DayProgress& progress) {
    const auto done = static_cast<unsigned>(progress.Done);
    // Translators: what was planned for the day is done.
    return wxString::Format(
        progress.IsMinutes
            ? wxPLURAL("Enough for today: %i minute.", "Enough for today: %i minutes.", done)
            : wxPLURAL("Enough for today: %i answer.", "Enough for today: %i answers.", done),
        progress.Done);
}

wxString DayText(const DayProgress& progress) {
    // Translators: how far the day of study is: "23 of 40".
    return wxString::Format(progress.IsMinutes ? _("%i of %i min") : _("%i of %i"), progress.Done,
                            progress.Goal);
}

namespace {

bool IsAsWideAsField(const wxString& text, const wxStatusBar& bar, int field) {
    wxRect rectangle;
    bar.GetFieldRect(field, rectangle);
    // Measured in the frame's font, which is that of the whole window.
    return bar.GetParent()->GetTextExtent(text).GetWidth() >= rectangle.GetWidth();
}

}  // namespace

wxString StudyStepText(const Scheduler& scheduler, bool backShown, const wxStatusBar& bar) {
    const int position = scheduler.GetHistoryIndex();
    if (position < 0) {
        const wxString step = backShown ? _("Score yourself") : _("Try to remember");
        // Translators: the step of study with a card that was forgotten too often.
        return scheduler.TakesTooMuch() ? wxString::Format(_("%s (stubborn)"), step) : step;
    }
    const bool narrow = IsAsWideAsField(_("Recently studied 00/00"), bar, kStepField);
    return wxString::Format(narrow ? _("Recent %i/%i") : _("Recently studied %i/%i"), position + 1,
                            scheduler.GetHistoryCount());
}

wxString StudyCategoryText(const wxString& name, int newCards) {
    if (newCards == 0) {
        return ShownName(name);
    }
    // Translators: the name of a category and the number of its new cards, in a status bar.
    return wxString::Format(_("%s: %i new"), ShownName(name), newCards);
}

wxString StudyReadyText(Scheduler& scheduler, const wxStatusBar& bar) {
    if (scheduler.IsBreakTime()) {
        return _("Break Time");
    }
    const bool narrow = IsAsWideAsField(_("Ready for Review: 0000"), bar, kReadyField);
    return wxString::Format(narrow ? _("Ready: %i") : _("Ready for Review: %i"),
                            scheduler.GetReadyCount());
}

namespace {

constexpr int kRescoreDialogId = 10052;
constexpr int kRescoreId = 10063;
constexpr int kOriginalScoreId = 10065;
// Logical pixels between the parts; twice as many to the edges.
constexpr int kBorder = 6;
constexpr int kTextWidth = 215;

}  // namespace

RescoreMessageBox::RescoreMessageBox(wxWindow* parent) {
    SetExtraStyle(wxFRAME_EX_METAL | wxWS_EX_BLOCK_EVENTS);
    wxDialog::Create(parent, kRescoreDialogId, _("Rescore"), wxDefaultPosition, wxSize(400, 300),
                     wxDEFAULT_DIALOG_STYLE, "dialog");
    SetFont(wxSystemSettings::GetFont(wxSYS_DEFAULT_GUI_FONT));
    SetSizer(new wxBoxSizer(wxVERTICAL));
    const auto addText = [this](const wxString& words) {
        auto* const text = new wxStaticText(this, wxID_STATIC, words);
        text->Wrap(kTextWidth);
        GetSizer()->Add(
            text, wxSizerFlags().Centre().Border(wxLEFT | wxRIGHT | wxTOP, FromDIP(2 * kBorder)));
    };
    addText(
        _("You have changed the score on a flash card in your card history. If you keep the new "
          "score the previous score will be undone and the score you have selected will be "
          "recorded in its place.  "));
    addText(_("Do you want to rescore the card or leave it with its original score?"));

    auto* const buttons = new wxBoxSizer(wxHORIZONTAL);
    GetSizer()->Add(buttons, wxSizerFlags().Centre().Border(wxALL, FromDIP(2 * kBorder)));
    auto* const rescore = new wxButton(this, kRescoreId, _("Rescore"));
    buttons->Add(rescore, wxSizerFlags().Centre().Border(wxRIGHT, FromDIP(kBorder)));
    auto* const original = new wxButton(this, kOriginalScoreId, _("Original Score"));
    buttons->Add(original, wxSizerFlags().Centre());

    rescore->Bind(wxEVT_BUTTON, [this](wxCommandEvent&) { EndModal(wxYES); });
    original->Bind(wxEVT_BUTTON, [this](wxCommandEvent&) { EndModal(wxNO); });
    // Enter keeps the score that was just chosen.
    rescore->SetDefault();
    rescore->SetFocus();
    GetSizer()->SetSizeHints(this);
    Centre(wxBOTH);
}
