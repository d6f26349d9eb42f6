#include "edit/CardLife.h"

#include <wx/intl.h>

#include <algorithm>
#include <iterator>
#include <utility>

#include "base/Time.h"

namespace {

constexpr double kSecondsPerDay = 86400.0;
// Seconds. The axis is logarithmic, so shorter intervals are drawn as this one.
constexpr double kLeastInterval = 10.0;

double ShownInterval(const ReviewRecord& review) {
    return std::max(static_cast<double>(review.NewInterval), kLeastInterval);
}

wxDateTime TimeOf(const ReviewRecord& review) {
    return wxDateTime(static_cast<time_t>(review.Time));
}

// The axes are wide enough for one review, and for many on one day.
void SetAxes(Plot& plot, const std::vector<ReviewRecord>& reviews, const wxDateTime& firstDay) {
    const auto days = static_cast<int>((TimeOf(reviews.back()) - firstDay).GetDays()) + 1;
    SetDayAxis(plot.Across, firstDay, days);
    double low = ShownInterval(reviews.front());
    double high = low;
    for (const ReviewRecord& review : reviews) {
        low = std::min(low, ShownInterval(review));
        high = std::max(high, ShownInterval(review));
    }
    SetDurationAxis(plot.Up, low / 2, high * 2);
    plot.Up.Title = _("Interval");
}

}  // namespace

Plot MakeCardLifePlot(const wxString& title, const std::vector<ReviewRecord>& reviews,
                      ReviewDirection direction) {
    std::vector<ReviewRecord> shown;
    std::copy_if(reviews.begin(), reviews.end(), std::back_inserter(shown),
                 [direction](const ReviewRecord& each) { return each.Direction == direction; });
    Plot plot;
    plot.Title = title;
    if (shown.empty()) {
        plot.EmptyText = _("No reviews yet");
        return plot;
    }
    const wxDateTime firstDay = TimeOf(shown.front()).GetDateOnly();
    SetAxes(plot, shown, firstDay);
    plot.Table.Headings = {_("Time"), _("Score"), _("Interval")};
    PlotSeries line{_("Interval"), PlotMarks::Line, PlotHue::Sky, {}};
    PlotSeries passes{_("Remembered"), PlotMarks::Points, PlotHue::Blue, {}};
    PlotSeries failures{_("Forgotten"), PlotMarks::Points, PlotHue::Orange, {}};
    for (const ReviewRecord& review : shown) {
        PlotPoint point;
        point.X = (TimeOf(review) - firstDay).GetSeconds().ToDouble() / kSecondsPerDay;
        point.Y = ShownInterval(review);
        point.Note = wxString::Format("%i", review.Score);
        line.Points.push_back(point);
        (review.Score >= 3 ? passes : failures).Points.push_back(point);
        plot.Table.Rows.push_back({FormatDate(TimeOf(review), _("%a %d %b %Y %H:%M")), point.Note,
                                   DurationText(static_cast<double>(review.NewInterval))});
    }
    plot.Series = {std::move(line), std::move(passes), std::move(failures)};
    return plot;
}
