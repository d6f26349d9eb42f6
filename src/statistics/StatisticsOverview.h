#pragma once

#include <wx/panel.h>

#include <array>
#include <functional>

#include "reviews/ReviewFigures.h"
#include "statistics/StatisticsPlots.h"

class PlotControl;
class wxStaticText;

// The first page of the statistics: large numbers that answer a learner's first questions, a
// sentence on what they mean, and four of the plots in small. A double click or Enter on a plot
// opens its page. Main thread only.
class StatisticsOverview : public wxPanel {
  public:
    using PageOpener = std::function<void(StatisticsPage)>;

    StatisticsOverview(wxWindow* parent, const PageOpener& openPage);

    // Shows the plots, the answers and the advice.
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
