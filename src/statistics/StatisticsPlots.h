#pragma once

#include <wx/string.h>

#include <array>
#include <vector>

#include "plot/Plot.h"
#include "reviews/ReviewFigures.h"

// Turns the figures into what the statistics window shows: a picture and its numbers for each page,
// and the answers to a learner's first questions. Needs no window.

// In the order of the window's list of pages. The overview shows some of the others in small.
enum class StatisticsPage {
    Overview,
    Due,
    Reviews,
    Calendar,
    RememberedByInterval,
    RememberedByAge,
    Intervals,
    Difficulties,
    Categories,
    HardestCards
};
constexpr size_t kStatisticsPageCount = 10;

// Returns the name of a page, translated.
wxString StatisticsPageName(StatisticsPage page);

// One plot for each page. The overview's has no picture, only the table of the answers. A plot
// without numbers says kindly why.
using StatisticsPlots = std::array<Plot, kStatisticsPageCount>;
StatisticsPlots MakeStatisticsPlots(const ReviewFigures& figures, ReviewSpan span);
// The same while nothing has been counted yet.
StatisticsPlots MakeUncountedPlots();

// A number and what it counts: "43", "due tomorrow".
struct StatisticsAnswer {
    wxString Number;
    wxString Caption;
};
constexpr size_t kAnswerCount = 5;
std::array<StatisticsAnswer, kAnswerCount> MakeAnswers(const ReviewFigures& figures);

// Returns which category needs work and whether the intervals suit the learner, in sentences.
wxString MakeAdvice(const ReviewFigures& figures);

// Orders categories by the share that was remembered, the lowest first, and those without a review
// last.
std::vector<CategoryFigures> OrderByNeed(std::vector<CategoryFigures> categories);
