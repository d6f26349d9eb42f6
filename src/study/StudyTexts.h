#pragma once

#include <wx/string.h>

#include <array>

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
