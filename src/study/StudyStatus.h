#pragma once

#include <wx/string.h>

class Scheduler;
class wxStatusBar;

// What the status bar of the study window says, only while there is a card. A text with numbers has
// a wide and a narrow form. Which one is taken depends on whether a sample, the longest wide text
// to be expected, fits its field, so that the wording does not change with the number of digits.

constexpr int kReadyField = 0;
constexpr int kStepField = 1;

// Which step of study this is.
wxString StudyStepText(const Scheduler& scheduler, bool backShown, const wxStatusBar& bar);
// How many cards are due, or that none is.
wxString StudyReadyText(Scheduler& scheduler, const wxStatusBar& bar);
