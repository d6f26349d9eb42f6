#pragma once

#include <wx/dialog.h>
#include <wx/string.h>

#include <array>

class Scheduler;
class wxStatusBar;

// The words of the study window, translated at the moment of the call.

constexpr int kScoreCount = 6;
// Labels of the scores by position: the one at position p stands for score 5 - p.
using ScoreLabels = std::array<wxString, kScoreCount>;
ScoreLabels GetScoreLabels(bool compact);
// What each score button says until the back is uncovered.
wxString ShowBackLabel(bool compact);

// Why no card is shown, and what to do about it.
wxString StoreEmptyMessage();
wxString CategoryEmptyMessage();
// For a store with one category, and for one that has others to turn to.
wxString AllExcludedMessage();
wxString CategoryExcludedMessage();

// What the status bar of the study window says while there is a card. A text with numbers has a
// wide and a narrow form. The wide form is taken when a sample of its greatest length fits the
// field, so that the wording does not change with the number of digits.

constexpr int kReadyField = 0;
constexpr int kStepField = 1;

// Names the step of study.
wxString StudyStepText(const Scheduler& scheduler, bool backShown, const wxStatusBar& bar);
// Says how many cards are due, or that none is.
wxString StudyReadyText(Scheduler& scheduler, const wxStatusBar& bar);

// Asks whether the new score of a card in the history is to replace the recorded one. ShowModal
// returns wxYES for "Rescore" and wxNO for "Original Score"; closing it in another way returns
// neither, and counts as "Rescore".
class RescoreMessageBox : public wxDialog {
  public:
    explicit RescoreMessageBox(wxWindow* parent);

  private:
    void AddText(const wxString& words);
    void CreateControls();
};
