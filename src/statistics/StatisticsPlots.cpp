#include "statistics/StatisticsPlots.h"

#include <wx/intl.h>

#include <algorithm>
#include <cmath>
#include <numeric>
#include <utility>

#include "base/Text.h"
#include "base/Time.h"
#include "media/MediaLines.h"

namespace {

// A log axis begins here, since it has no 0.
constexpr double kLeastSeconds = 10.0;
// Fewer reviews say nothing about a category or about long intervals.
constexpr int32_t kTellingReviews = 20;
// Old cards come too late when they are surely remembered less often than the first share, too
// early when more often than the second, and in time when more often than the third.
constexpr double kTooSeldom = 0.8;
constexpr double kTooOften = 0.97;
constexpr double kOftenEnough = 0.75;
// More days than this are drawn as means of weeks.
constexpr size_t kMostBars = 120;

wxString CountText(int64_t count) {
    return wxString::Format("%lld", static_cast<long long>(count));
}

wxString ShareText(double share) {
    return wxString::Format(_("%i %%"), static_cast<int>(std::lround(share * 100.0)));
}

wxString DateText(int32_t day) {
    return FormatDate(NoonOfDay(day), _("%d %b %Y"));
}

wxString RangeText(const TimeRange& range) {
    const wxString to = DurationText(static_cast<double>(range.To));
    if (range.From == 0) {
        // Translators: a length of time, such as "less than 1 min".
        return wxString::Format(_("less than %s"), to);
    }
    const wxString from = DurationText(static_cast<double>(range.From));
    return range.To == 0 ? wxString::Format(_("%s or more"), from)
                         : wxString::Format(_("%s to %s"), from, to);
}

double LowEnd(const TimeRange& range) {
    return std::max(static_cast<double>(range.From), kLeastSeconds);
}

double HighEnd(const TimeRange& range) {
    return range.To == 0 ? 3.0 * static_cast<double>(range.From) : static_cast<double>(range.To);
}

PlotPoint Bar(double left, double right, double height) {
    PlotPoint bar;
    bar.X = left;
    bar.XEnd = right;
    bar.Y = height;
    return bar;
}

Plot NewPlot(StatisticsPage page) {
    Plot plot;
    plot.Title = StatisticsPageName(page);
    return plot;
}

wxString NoReviewsText(const ReviewFigures& figures) {
    return figures.Log.Reviews == 0
               ? _("No reviews yet: every score that you give from now on is noted, and the "
                   "pictures grow with them.")
               : _("No reviews here in this time. Choose a longer time or another category.");
}

// Joins the ranges from that length of time on.
Retention AddUp(const std::array<Retention, kTimeRangeCount>& ranges, int64_t from = 0) {
    Retention sum;
    for (const Retention& range : ranges) {
        if (range.Range.From >= from) {
            sum.Reviews += range.Reviews;
            sum.Remembered += range.Remembered;
        }
    }
    return sum;
}

int32_t ReviewsIn(const std::vector<DayReviews>& days) {
    return std::accumulate(days.begin(), days.end(), 0,
                           [](int32_t sum, const DayReviews& day) { return sum + day.Total(); });
}

// The same with the measure that the person has set, over the whole forecast.
wxString BacklogText(const ReviewFigures& figures) {
    const DueForecast& due = figures.Due;
    const auto* const done = std::find(due.LeftOver.begin(), due.LeftOver.end(), 0);
    if (done == due.LeftOver.begin()) {
        return wxString::Format(_("Your measure of %i a day is enough for what is due today."),
                                due.Measure);
    }
    if (done == due.LeftOver.end()) {
        return wxString::Format(_("At %i a day the backlog is not gone within a year."),
                                due.Measure);
    }
    const auto day = figures.Today + static_cast<int32_t>(done - due.LeftOver.begin());
    // Translators: %s is a date.
    return wxString::Format(_("At %i a day the backlog is gone on %s."), due.Measure,
                            DateText(day));
}

// Says when the overdue reviews will be worked off; empty when there are none, or no end.
wxString WorkedOffText(const ReviewFigures& figures, size_t days) {
    const DueForecast& due = figures.Due;
    if (due.Measure > 0) {
        return BacklogText(figures);
    }
    if (due.UsualDay == 0) {
        return wxString();
    }
    const auto* const end = due.LeftOver.begin() + static_cast<std::ptrdiff_t>(days);
    const auto* const done = std::find(due.LeftOver.begin(), end, 0);
    if (done == due.LeftOver.begin()) {
        return wxString::Format(_("Your usual day of %i reviews is enough for what is due today."),
                                due.UsualDay);
    }
    if (done == end) {
        return wxString::Format(
            _("At your usual %i reviews a day, some cards are still waiting at the end."),
            due.UsualDay);
    }
    const auto day = figures.Today + static_cast<int32_t>(done - due.LeftOver.begin());
    return wxString::Format(_("At your usual %i reviews a day, you have caught up on %s."),
                            due.UsualDay, DateText(day));
}

// What is left at the end of each day, down to the day on which nothing is.
PlotSeries LeftOverLine(const DueForecast& due, size_t days) {
    PlotSeries line;
    line.Name = _("left undone");
    line.Marks = PlotMarks::Line;
    line.Hue = PlotHue::Orange;
    for (size_t i = 0; i < days; ++i) {
        PlotPoint point;
        point.X = static_cast<double>(i) + 1.0;
        point.Y = due.LeftOver[i];
        line.Points.push_back(point);
        if (due.LeftOver[i] == 0) {
            break;
        }
    }
    return line;
}

Plot MakeDue(const ReviewFigures& figures, ReviewSpan span) {
    Plot plot = NewPlot(StatisticsPage::Due);
    const DueForecast& due = figures.Due;
    const auto days =
        span == ReviewSpan::kAll ? kForecastDays : static_cast<size_t>(SpanDays(span));
    PlotSeries fresh;
    fresh.Name = _("due on the day");
    PlotSeries overdue;
    overdue.Name = _("overdue");
    overdue.Hue = PlotHue::Red;
    plot.Table.Headings = {_("Day"), _("Overdue"), _("Due"), _("Left undone")};
    const bool hasLeftOver = due.Measure > 0 || due.UsualDay > 0;
    for (size_t i = 0; i < days; ++i) {
        const auto left = static_cast<double>(i);
        const int32_t late = i == 0 ? due.Overdue : 0;
        fresh.Points.push_back(Bar(left, left + 1.0, due.PerDay[i]));
        overdue.Points.push_back(Bar(left, left + 1.0, late));
        plot.Table.Rows.push_back({DateText(figures.Today + static_cast<int32_t>(i)),
                                   CountText(late), CountText(due.PerDay[i]),
                                   hasLeftOver ? CountText(due.LeftOver[i]) : wxString()});
    }
    plot.Series = {overdue, fresh};
    if (due.Measure > 0) {
        plot.Series.push_back(LeftOverLine(due, days));
        plot.Rules.push_back({static_cast<double>(due.Measure),
                              wxString::Format(_("your measure: %i"), due.Measure)});
    } else if (due.UsualDay > 0) {
        plot.Rules.push_back({static_cast<double>(due.UsualDay),
                              wxString::Format(_("your usual day: %i"), due.UsualDay)});
    }
    plot.Up.Title = _("reviews");
    SetDayAxis(plot.Across, NoonOfDay(figures.Today), static_cast<int>(days));
    SetCountAxis(plot.Up, plot.GreatestY());
    plot.Summary = WorkedOffText(figures, days);
    if (due.Overdue == 0 &&
        std::all_of(due.PerDay.begin(), due.PerDay.begin() + static_cast<std::ptrdiff_t>(days),
                    [](int32_t count) { return count == 0; })) {
        plot.EmptyText = _("Nothing falls due in this time.");
    }
    return plot;
}

// Joins the days to weeks, the last of which may be shorter.
std::vector<DayReviews> JoinWeeks(const std::vector<DayReviews>& days) {
    std::vector<DayReviews> weeks;
    for (size_t i = 0; i < days.size(); ++i) {
        if (i % 7 == 0) {
            weeks.push_back({days[i].Day, {}});
        }
        for (size_t score = 0; score < days[i].ByScore.size(); ++score) {
            weeks.back().ByScore[score] += days[i].ByScore[score];
        }
    }
    return weeks;
}

Plot MakeReviews(const ReviewFigures& figures) {
    Plot plot = NewPlot(StatisticsPage::Reviews);
    const bool byWeek = figures.Days.size() > kMostBars;
    const std::vector<DayReviews> days = byWeek ? JoinWeeks(figures.Days) : figures.Days;
    // Returns where a bar ends. The last week may be shorter.
    const auto end = [&](size_t bar) {
        return std::min((static_cast<double>(bar) + 1.0) * (byWeek ? 7.0 : 1.0),
                        static_cast<double>(figures.Days.size()));
    };
    plot.Table.Headings = {byWeek ? _("Week from") : _("Day")};
    for (int score = 0; score <= 5; ++score) {
        PlotSeries series;
        series.Name = wxString::Format(_("score %i"), score);
        series.Hue = static_cast<PlotHue>(static_cast<int>(PlotHue::Grade0) + score);
        for (size_t i = 0; i < days.size(); ++i) {
            const double left = i == 0 ? 0.0 : end(i - 1);
            series.Points.push_back(
                Bar(left, end(i), days[i].ByScore[static_cast<size_t>(score)] / (end(i) - left)));
        }
        plot.Table.Headings.push_back(series.Name);
        plot.Series.push_back(series);
    }
    plot.Table.Headings.push_back(_("in all"));
    for (const DayReviews& day : days) {
        std::vector<wxString> row{DateText(day.Day)};
        for (const int32_t count : day.ByScore) {
            row.push_back(CountText(count));
        }
        row.push_back(CountText(day.Total()));
        plot.Table.Rows.push_back(row);
    }
    const int32_t all = ReviewsIn(days);
    if (all == 0) {
        plot.EmptyText = NoReviewsText(figures);
        return plot;
    }
    plot.Summary =
        wxString::Format(wxPLURAL("%i review.", "%i reviews.", static_cast<unsigned>(all)), all);
    plot.Up.Title = byWeek ? _("reviews a day, the mean of each week") : _("reviews a day");
    SetDayAxis(plot.Across, NoonOfDay(days.front().Day), static_cast<int>(figures.Days.size()));
    SetCountAxis(plot.Up, plot.GreatestY());
    return plot;
}

Plot MakeCalendar(const ReviewFigures& figures) {
    Plot plot = NewPlot(StatisticsPage::Calendar);
    plot.Kind = PlotKind::Calendar;
    plot.LessLabel = _("fewer");
    plot.MoreLabel = _("more");
    plot.Table.Headings = {_("Day"), _("Reviews")};
    int studied = 0;
    for (const DayReviews& day : figures.Calendar) {
        plot.Days.push_back(day.Total());
        plot.Table.Rows.push_back({DateText(day.Day), CountText(day.Total())});
        studied += day.Total() > 0 ? 1 : 0;
    }
    if (studied == 0) {
        plot.EmptyText = NoReviewsText(figures);
        return plot;
    }
    plot.FirstDay = NoonOfDay(figures.Calendar.front().Day);
    plot.Summary = wxString::Format(
        wxPLURAL("You studied on %i day of the last year.",
                 "You studied on %i days of the last year.", static_cast<unsigned>(studied)),
        studied);
    return plot;
}

wxString JudgeIntervals(const ReviewFigures& figures) {
    const Retention old = AddUp(figures.ByElapsed, kOldInterval);
    if (old.Reviews < kTellingReviews) {
        return wxString();
    }
    const wxString share = ShareText(old.Share());
    if (old.GreatestShare() < kTooSeldom) {
        return wxString::Format(_("Your intervals may be too long: %s of the cards asked after a "
                                  "month or more were remembered."),
                                share);
    }
    if (old.LeastShare() > kTooOften) {
        return wxString::Format(_("Your intervals could be longer: %s of the cards asked after a "
                                  "month or more were remembered."),
                                share);
    }
    if (old.LeastShare() < kOftenEnough) {
        return wxString::Format(_("%s of the cards asked after a month or more were remembered."),
                                share);
    }
    return wxString::Format(
        _("Your intervals fit: %s of the cards asked after a month or more were remembered."),
        share);
}

PlotPoint SharePoint(const Retention& retention) {
    PlotPoint point;
    point.Y = retention.Share();
    point.Low = retention.LeastShare();
    point.High = retention.GreatestShare();
    return point;
}

Plot MakeRemembered(const ReviewFigures& figures, StatisticsPage page,
                    const std::array<Retention, kTimeRangeCount>& ranges,
                    const wxString& axisTitle) {
    Plot plot = NewPlot(page);
    plot.Table.Headings = {axisTitle,  _("Reviews"),  _("Remembered"),
                           _("Share"), _("at least"), _("at most")};
    int32_t most = 1;
    for (const Retention& range : ranges) {
        most = std::max(most, range.Reviews);
    }
    PlotSeries series;
    series.Name = _("remembered");
    series.Marks = PlotMarks::Points;
    double low = 0.0;
    double high = 0.0;
    for (const Retention& range : ranges) {
        if (range.Reviews == 0) {
            continue;
        }
        PlotPoint point = SharePoint(range);
        point.X = std::sqrt(LowEnd(range.Range) * HighEnd(range.Range));
        point.Weight = static_cast<double>(range.Reviews) / most;
        point.Note = CountText(range.Reviews);
        series.Points.push_back(point);
        low = low > 0.0 ? low : LowEnd(range.Range);
        high = HighEnd(range.Range);
        plot.Table.Rows.push_back({RangeText(range.Range), CountText(range.Reviews),
                                   CountText(range.Remembered), ShareText(range.Share()),
                                   ShareText(range.LeastShare()),
                                   ShareText(range.GreatestShare())});
    }
    if (series.Points.empty()) {
        plot.EmptyText = NoReviewsText(figures);
        return plot;
    }
    plot.Series = {series};
    plot.Across.Title = axisTitle;
    plot.Up.Title = _("share remembered, with the number of reviews");
    SetDurationAxis(plot.Across, low, high);
    SetShareAxis(plot.Up);
    const Retention all = AddUp(ranges);
    plot.Summary = wxString::Format(_("%s of %i reviews were remembered (score 3 or more)."),
                                    ShareText(all.Share()), all.Reviews);
    plot.Rules.push_back({all.Share(), wxString()});
    return plot;
}

// Returns the first and the last range with cards, or the whole row when there is none.
std::pair<size_t, size_t> FindFilled(const std::array<int32_t, kTimeRangeCount>& counts) {
    size_t first = 0;
    size_t last = kTimeRangeCount - 1;
    while (first < last && counts[first] == 0) {
        ++first;
    }
    while (last > first && counts[last] == 0) {
        --last;
    }
    return {first, last};
}

template <class Row>
void KeepRows(std::vector<Row>& rows, size_t first, size_t last) {
    rows.erase(rows.begin() + static_cast<std::ptrdiff_t>(last) + 1, rows.end());
    rows.erase(rows.begin(), rows.begin() + static_cast<std::ptrdiff_t>(first));
}

// The range that holds the bound of old cards is split: its old part has the old cards that the
// ranges above it lack.
Plot MakeIntervals(const ReviewFigures& figures) {
    Plot plot = NewPlot(StatisticsPage::Intervals);
    const ScheduleFigures& schedules = figures.Schedules;
    PlotSeries young;
    // Translators: cards with a short interval, in the legend of a plot.
    young.Name = _("young (below 3 weeks)");
    young.Hue = PlotHue::Sky;
    PlotSeries old;
    old.Name = _("old (3 weeks or more)");
    old.Hue = PlotHue::Blue;
    int32_t oldLeft = schedules.Old;
    for (size_t i = kTimeRangeCount; i-- > 0;) {
        const TimeRange& range = TimeRanges()[i];
        const int32_t oldHere = std::clamp(oldLeft, 0, schedules.ByInterval[i]);
        oldLeft -= oldHere;
        old.Points.insert(old.Points.begin(), Bar(LowEnd(range), HighEnd(range), oldHere));
        young.Points.insert(young.Points.begin(),
                            Bar(LowEnd(range), HighEnd(range), schedules.ByInterval[i] - oldHere));
    }
    plot.Table.Headings = {_("Interval"), _("Cards")};
    for (size_t i = 0; i < kTimeRangeCount; ++i) {
        plot.Table.Rows.push_back({RangeText(TimeRanges()[i]), CountText(schedules.ByInterval[i])});
    }
    plot.Series = {young, old};
    plot.Across.Title = _("interval");
    plot.Up.Title = _("cards");
    const auto [first, last] = FindFilled(schedules.ByInterval);
    SetDurationAxis(plot.Across, LowEnd(TimeRanges()[first]), HighEnd(TimeRanges()[last]));
    for (PlotSeries& series : plot.Series) {
        KeepRows(series.Points, first, last);
    }
    KeepRows(plot.Table.Rows, first, last);
    SetCountAxis(plot.Up, plot.GreatestY());
    plot.Summary = wxString::Format(_("%i young, %i old and %i new cards."), schedules.Young,
                                    schedules.Old, schedules.New);
    if (schedules.Young + schedules.Old == 0) {
        plot.EmptyText = _("No card has been studied here yet.");
    }
    return plot;
}

Plot MakeDifficulties(const ReviewFigures& figures) {
    Plot plot = NewPlot(StatisticsPage::Difficulties);
    const auto& counts = figures.Schedules.ByDifficulty;
    PlotSeries series;
    series.Name = _("cards");
    series.Hue = PlotHue::Purple;
    plot.Table.Headings = {_("Difficulty"), _("Cards")};
    for (size_t i = 0; i < counts.size(); ++i) {
        const auto left = static_cast<double>(i);
        series.Points.push_back(Bar(left, left + 1.0, counts[i]));
        plot.Table.Rows.push_back({CountText(static_cast<int64_t>(i)), CountText(counts[i])});
    }
    plot.Series = {series};
    plot.Across.Title = _("difficulty");
    plot.Across.High = static_cast<double>(kDifficultyCount);
    for (int i = 0; i < static_cast<int>(kDifficultyCount); i += 4) {
        plot.Across.Ticks.push_back({i + 0.5, CountText(i)});
    }
    plot.Up.Title = _("cards");
    SetCountAxis(plot.Up, plot.GreatestY());
    plot.Summary = _("0 is easiest, 16 neutral and 32 hardest.");
    if (std::all_of(counts.begin(), counts.end(), [](int32_t count) { return count == 0; })) {
        plot.EmptyText = _("No card has been studied here yet.");
    }
    return plot;
}

Retention RetentionOf(const CategoryFigures& category) {
    Retention retention;
    retention.Reviews = category.Reviews;
    retention.Remembered = category.Remembered;
    return retention;
}

Plot MakeCategories(const ReviewFigures& figures) {
    Plot plot = NewPlot(StatisticsPage::Categories);
    plot.Kind = PlotKind::Ranking;
    plot.Table.Headings = {_("Category"), _("Remembered"), _("Reviews"),
                           _("Overdue"),  _("Tomorrow"),   _("New")};
    PlotSeries series;
    series.Hue = PlotHue::Green;
    for (const CategoryFigures& category : OrderByNeed(figures.Categories)) {
        const Retention retention = RetentionOf(category);
        PlotPoint point;
        if (retention.Reviews > 0) {
            point = SharePoint(retention);
            // Translators: a share and the number of reviews behind it: "91 % of 120".
            point.Note =
                wxString::Format(_("%s of %i"), ShareText(retention.Share()), retention.Reviews);
        } else {
            point.Note = _("no reviews");
        }
        series.Points.push_back(point);
        plot.Names.push_back(ShownName(category.Info.Name));
        plot.Table.Rows.push_back(
            {category.Info.Name, retention.Reviews > 0 ? ShareText(retention.Share()) : wxString(),
             CountText(category.Reviews), CountText(category.Overdue), CountText(category.Tomorrow),
             CountText(category.New)});
    }
    plot.Series = {series};
    SetShareAxis(plot.Up);
    plot.Summary =
        _("How much was remembered in each category, the one that needs most work first.");
    const bool isEmpty = std::all_of(figures.Categories.begin(), figures.Categories.end(),
                                     [](const CategoryFigures& one) { return one.Reviews == 0; });
    if (isEmpty) {
        plot.EmptyText = NoReviewsText(figures);
    }
    return plot;
}

Plot MakeHardest(const ReviewFigures& figures) {
    Plot plot = NewPlot(StatisticsPage::HardestCards);
    plot.Kind = PlotKind::Ranking;
    plot.Table.Headings = {_("Front"), _("Forgotten"), _("Reviews"), _("Difficulty")};
    PlotSeries series;
    series.Hue = PlotHue::Red;
    for (const HardCard& card : figures.Hardest) {
        PlotPoint point;
        point.Y = card.Lapses;
        // Translators: how often a card was forgotten, and its reviews: "3 times of 12".
        point.Note = wxString::Format(
            wxPLURAL("%i time of %i", "%i times of %i", static_cast<unsigned>(card.Lapses)),
            card.Lapses, card.Reviews);
        series.Points.push_back(point);
        plot.Names.push_back(ShownName(WithNamedMediaMarks(card.Front)));
        plot.Table.Rows.push_back({CellText(WithNamedMediaMarks(card.Front)),
                                   CountText(card.Lapses), CountText(card.Reviews),
                                   CountText(card.Difficulty)});
    }
    plot.Series = {series};
    SetCountAxis(plot.Up, plot.GreatestY());
    plot.Summary =
        _("The cards that were forgotten most often. A double click, or Enter, opens the editor.");
    if (figures.Hardest.empty()) {
        plot.EmptyText = figures.Log.Reviews == 0 ? NoReviewsText(figures)
                                                  : _("No card was forgotten in this time.");
    }
    return plot;
}

Plot MakeOverview(const ReviewFigures& figures) {
    Plot plot = NewPlot(StatisticsPage::Overview);
    plot.Table.Headings = {_("What"), _("Number")};
    for (const StatisticsAnswer& answer : MakeAnswers(figures)) {
        plot.Table.Rows.push_back({answer.Caption, answer.Number});
    }
    plot.Summary = MakeAdvice(figures);
    return plot;
}

}  // namespace

wxString StatisticsPageName(StatisticsPage page) {
    const wxString names[kStatisticsPageCount] = {_("Overview"),
                                                  _("Due per Day"),
                                                  _("Reviews per Day"),
                                                  _("Calendar of the Year"),
                                                  _("Remembered by Interval"),
                                                  _("Remembered by Age"),
                                                  _("Intervals"),
                                                  _("Difficulties"),
                                                  _("Categories"),
                                                  _("Hardest Cards")};
    return names[static_cast<size_t>(page)];
}

StatisticsPlots MakeStatisticsPlots(const ReviewFigures& figures, ReviewSpan span) {
    Plot byInterval = MakeRemembered(figures, StatisticsPage::RememberedByInterval,
                                     figures.ByElapsed, _("time since the review before"));
    byInterval.Summary += " " + JudgeIntervals(figures);
    return {MakeOverview(figures),
            MakeDue(figures, span),
            MakeReviews(figures),
            MakeCalendar(figures),
            byInterval,
            MakeRemembered(figures, StatisticsPage::RememberedByAge, figures.ByAge,
                           _("time since the first review of the card")),
            MakeIntervals(figures),
            MakeDifficulties(figures),
            MakeCategories(figures),
            MakeHardest(figures)};
}

StatisticsPlots MakeUncountedPlots() {
    StatisticsPlots plots;
    for (size_t i = 0; i < plots.size(); ++i) {
        plots[i].Title = StatisticsPageName(static_cast<StatisticsPage>(i));
        plots[i].EmptyText = _("Counting...");
    }
    return plots;
}

std::array<StatisticsAnswer, kAnswerCount> MakeAnswers(const ReviewFigures& figures) {
    const wxString unknown(L"\u2013");
    const Retention all = AddUp(figures.ByElapsed);
    const int32_t today = figures.Days.empty() ? 0 : figures.Days.back().Total();
    return {{{CountText(figures.Due.Overdue), _("due now")},
             {CountText(figures.Due.PerDay[1]), _("due tomorrow")},
             {CountText(today), _("reviewed today")},
             {figures.Due.UsualDay == 0 ? unknown : CountText(figures.Due.UsualDay),
              _("on a usual day")},
             {all.Reviews == 0 ? unknown : ShareText(all.Share()), _("remembered")}}};
}

wxString MakeAdvice(const ReviewFigures& figures) {
    if (figures.Log.Reviews == 0) {
        return _(
            "No reviews yet: every score that you give from now on is noted, and the pictures grow "
            "with them.");
    }
    wxString advice;
    const std::vector<CategoryFigures> ordered = OrderByNeed(figures.Categories);
    const auto telling = [](const CategoryFigures& one) { return one.Reviews >= kTellingReviews; };
    const auto worst = std::find_if(ordered.begin(), ordered.end(), telling);
    if (std::count_if(ordered.begin(), ordered.end(), telling) > 1) {
        advice = wxString::Format(_("\"%s\" needs most work: %s of %i reviews were remembered."),
                                  ShownName(worst->Info.Name),
                                  ShareText(RetentionOf(*worst).Share()), worst->Reviews);
    }
    const wxString intervals = JudgeIntervals(figures);
    return advice + (advice.empty() || intervals.empty() ? "" : " ") + intervals;
}

std::vector<CategoryFigures> OrderByNeed(std::vector<CategoryFigures> categories) {
    const auto need = [](const CategoryFigures& one) {
        return one.Reviews == 0 ? 2.0 : RetentionOf(one).Share();
    };
    std::stable_sort(
        categories.begin(), categories.end(),
        [&need](const CategoryFigures& a, const CategoryFigures& b) { return need(a) < need(b); });
    return categories;
}
