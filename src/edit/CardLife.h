#pragma once

#include <wx/string.h>

#include <vector>

#include "plot/Plot.h"
#include "reviews/ReviewLog.h"

// Returns the picture of a card's reviews in one direction: how its interval grew and fell from
// review to review. The title names the direction. Reviews in the other one are passed over.
Plot MakeCardLifePlot(const wxString& title, const std::vector<ReviewRecord>& reviews,
                      ReviewDirection direction);
