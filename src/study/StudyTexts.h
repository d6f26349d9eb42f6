#pragma once

#include <wx/string.h>

#include <array>

class Scheduler;
class wxStatusBar;

// The words of the study window, translated at the moment of the call.

constexpr int kScoreCount = 6;
// Labels of the scores by position: the one at position p stands for score 5 - p.
using ScoreLabels = std::array<wxString, kScoreCount>;
ScoreLabels GetScoreLabels(bool compact);
// What every score button reads until the back is uncovered.
wxString ShowBackLabel(bool compact);

// Why no card is shown, and what to do about it.
wxString StoreEmptyMessage();
wxString CategoryEmptyMessage();
// For a store of one category, and for one with others to turn to.
wxString AllExcludedMessage();
wxString CategoryExcludedMessage();

// What the status bar of the study window says, only while there is a card. A text with numbers has
// a wide and a narrow form. Which one is taken depends on whether a sample, the longest wide text
// to be expected, fits its field, so that the wording does not change with the number of digits.

constexpr int kReadyField = 0;
constexpr int kStepField = 1;

// Which step of study this is.
wxString StudyStepText(const Scheduler& scheduler, bool backShown, const wxStatusBar& bar);
// How many cards are due, or that none is.
wxString StudyReadyText(Scheduler& scheduler, const wxStatusBar& bar);
