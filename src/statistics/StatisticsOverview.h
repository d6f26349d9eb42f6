#pragma once

#include <wx/panel.h>

#include <array>
#include <functional>

#include "reviews/ReviewFigures.h"
#include "statistics/StatisticsPlots.h"

class PlotControl;
class wxStaticText;

// The first page of the statistics: what a learner asks first as large numbers, what they mean in a
// sentence, and four of the plots in small. A double click or Enter on a plot opens its page.
// Main thread only.
class StatisticsOverview : public wxPanel {
  public:
    using PageOpener = std::function<void(StatisticsPage)>;

    StatisticsOverview(wxWindow* parent, const PageOpener& openPage);

    // Shows the plots, and the answers and the advice of the overview's own.
    void SetPlots(const StatisticsPlots& plots);

  private:
    static constexpr size_t kTileCount = 4;

    void WrapAdvice();

    std::array<wxStaticText*, kAnswerCount> mNumbers{};
    std::array<wxStaticText*, kAnswerCount> mCaptions{};
    std::array<PlotControl*, kTileCount> mTiles{};
    wxStaticText* mpAdvice = nullptr;
    wxString mAdvice;
    int mWrapWidth = -1;
};
