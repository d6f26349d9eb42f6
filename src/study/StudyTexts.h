#pragma once

#include <wx/datetime.h>
#include <wx/dialog.h>
#include <wx/string.h>

#include <array>
#include <vector>

class Scheduler;
struct CategoryReady;
struct DayProgress;
struct IntervalRange;
struct StudyPause;
class wxStatusBar;

// The words of the study window, translated at the moment of the call.

constexpr int kScoreCount = 6;
// Labels of the scores by position: the one at position p stands for score 5 - p.
using ScoreLabels = std::array<wxString, kScoreCount>;
ScoreLabels GetScoreLabels(bool compact);
// What each score button says until the back is uncovered.
wxString ShowBackLabel(bool compact);

// The tip of the scores while the back is shown.
wxString SelectScoreTip();

// Says when a card comes back: "4 days", "about 4 days" where chance plays a part, or "at once".
wxString ReturnText(const IntervalRange& interval);

// Returns texts of that kind among which are the widest ones.
std::vector<wxString> WidestReturnTexts();

// Says a length of time in its largest unit, such as "3 hours".
wxString IntervalText(float seconds);

// The words of the bar in break time: when the next card is due, by the local clock, and what
// studying on means. Empty for a time that is not valid, which a store that failed gives.
wxString BreakMessage(const wxDateTime& due, const wxDateTime& now);
// Offers a category with due cards or, when it has none, with new ones; empty for null.
wxString OfferText(const CategoryReady* category);

// These say why no card is shown, and what to do about it.
wxString StoreEmptyMessage();
wxString CategoryEmptyMessage();
// The first is for a store with one category, the second for one that has others.
wxString AllExcludedMessage();
wxString CategoryExcludedMessage();
// For a category in which nothing but new cards waits, for which today has no room.
wxString NewCardsHeldMessage();

// What the bar above the card says of a pause that has just ended, and of a day that was enough.
wxString PauseText(const StudyPause& pause, const wxDateTime& now);
wxString EnoughText(const DayProgress& progress);

// The texts of the study window's status bar while there is a card. A text with numbers has a wide
// and a narrow form. The wide form is taken when a sample of its greatest length fits the field, so
// that the wording does not change with the number of digits.

constexpr int kReadyField = 0;
constexpr int kStepField = 1;
constexpr int kCategoryField = 2;
// Only with a measure for the day.
constexpr int kDayField = 3;

// Names the step of study.
wxString StudyStepText(const Scheduler& scheduler, bool backShown, const wxStatusBar& bar);
// Says how far the day is: "23 of 40".
wxString DayText(const DayProgress& progress);
// Names a category, and says how many new cards wait in it.
wxString StudyCategoryText(const wxString& name, int newCards);
// Says how many cards are due, or that none is.
wxString StudyReadyText(Scheduler& scheduler, const wxStatusBar& bar);

// Asks whether the new score of a card in the history is to replace the recorded one. ShowModal
// returns wxYES for "Rescore" and wxNO for "Original Score"; closing it in another way returns
// neither, and counts as "Rescore".
class RescoreMessageBox : public wxDialog {
  public:
    explicit RescoreMessageBox(wxWindow* parent);
};
