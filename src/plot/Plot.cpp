#include "plot/Plot.h"

#include <wx/intl.h>

#include <algorithm>
#include <cmath>
#include <iterator>

#include "base/Time.h"

namespace {

constexpr double kMinute = 60.0;
constexpr double kHour = 60.0 * kMinute;
constexpr double kDay = 24.0 * kHour;
constexpr double kWeek = 7.0 * kDay;
constexpr double kMonth = 30.0 * kDay;
constexpr double kYear = 365.0 * kDay;

// Lengths that a person thinks in, from the shortest to the longest.
constexpr double kTickSeconds[] = {1.0,         10.0,         kMinute,      10.0 * kMinute, kHour,
                                   kDay,        kWeek,        kMonth,       3.0 * kMonth,   kYear,
                                   3.0 * kYear, 10.0 * kYear, 100.0 * kYear};

// An axis with more days than this has its ticks at the months, and at the years.
constexpr int kMostDaysByWeek = 62;
constexpr int kMostDaysByMonth = 1200;

// Returns the step of 1, 2 or 5 times a power of ten that is at least that long.
double RoundStep(double least) {
    const double power = std::pow(10.0, std::floor(std::log10(least)));
    for (const double times : {1.0, 2.0, 5.0}) {
        // A step that should be exact may come out a little above it.
        if (power * times >= least * (1.0 - 1e-9)) {
            return power * times;
        }
    }
    return power * 10.0;
}

wxString MonthText(const wxDateTime& day) {
    const wxString month = MonthName(day.GetMonth());
    if (day.GetMonth() != wxDateTime::Jan) {
        return month;
    }
    // Translators: a month and its year below a plot, such as "Jan 2026".
    return wxString::Format(_("%s %i"), month, day.GetYear());
}

void AddWeekTicks(PlotAxis& axis, const wxDateTime& firstDay, int days) {
    for (int day = 0; day < days; day += 7) {
        axis.Ticks.push_back({day + 0.5, DayText(firstDay + wxDateSpan::Days(day))});
    }
}

void AddMonthTicks(PlotAxis& axis, const wxDateTime& firstDay, int days, bool yearsOnly) {
    for (int day = 0; day < days; ++day) {
        const wxDateTime date = firstDay + wxDateSpan::Days(day);
        if (date.GetDay() != 1 || (yearsOnly && date.GetMonth() != wxDateTime::Jan)) {
            continue;
        }
        axis.Ticks.push_back(
            {day + 0.5, yearsOnly ? wxString::Format("%i", date.GetYear()) : MonthText(date)});
    }
}

}  // namespace

double PlotAxis::PartOf(double value) const {
    if (Scale == PlotScale::Linear) {
        return (value - Low) / (High - Low);
    }
    return std::log(std::max(value, 1e-9) / Low) / std::log(High / Low);
}

wxString PlotTable::TabSeparated() const {
    wxString text;
    const auto add = [&text](const std::vector<wxString>& cells) {
        for (size_t i = 0; i < cells.size(); ++i) {
            wxString cell = cells[i];
            for (const char* const breaker : {"\t", "\r", "\n"}) {
                cell.Replace(breaker, " ");
            }
            text += (i == 0 ? wxString() : wxString("\t")) + cell;
        }
        text += "\n";
    };
    add(Headings);
    for (const auto& row : Rows) {
        add(row);
    }
    return text;
}

wxString PlotTable::Describe(int row) const {
    if (row < 0 || static_cast<size_t>(row) >= Rows.size()) {
        return wxString();
    }
    const std::vector<wxString>& cells = Rows[static_cast<size_t>(row)];
    wxString text;
    for (size_t i = 0; i < cells.size(); ++i) {
        if (i == 0) {
            text = cells[i];
        } else if (!cells[i].empty()) {
            text += (i == 1 ? ": " : ", ") + Headings[i] + " " + cells[i];
        }
    }
    return text;
}

double Plot::StackedHeight(size_t index) const {
    double height = 0.0;
    for (const PlotSeries& series : Series) {
        if (series.Marks == PlotMarks::Bars && index < series.Points.size()) {
            height += series.Points[index].Y;
        }
    }
    return height;
}

double Plot::GreatestY() const {
    double greatest = 0.0;
    for (const PlotSeries& series : Series) {
        for (size_t i = 0; i < series.Points.size(); ++i) {
            const PlotPoint& point = series.Points[i];
            const double y = series.Marks == PlotMarks::Bars ? StackedHeight(i) : point.Y;
            greatest = std::max({greatest, y, point.High});
        }
    }
    for (const PlotRule& rule : Rules) {
        greatest = std::max(greatest, rule.Y);
    }
    return greatest;
}

void SetCountAxis(PlotAxis& axis, double greatest) {
    constexpr int kMostSteps = 5;
    const double step = std::max(1.0, RoundStep(std::max(greatest, 1.0) / kMostSteps));
    const int steps = std::max(1, static_cast<int>(std::ceil(greatest / step - 1e-9)));
    axis.Scale = PlotScale::Linear;
    axis.Low = 0.0;
    axis.High = steps * step;
    axis.Ticks.clear();
    for (int i = 0; i <= steps; ++i) {
        axis.Ticks.push_back({i * step, wxString::Format("%.0f", i * step)});
    }
}

void SetShareAxis(PlotAxis& axis) {
    axis.Scale = PlotScale::Linear;
    axis.Low = 0.0;
    axis.High = 1.0;
    axis.Ticks.clear();
    for (int percent = 0; percent <= 100; percent += 20) {
        axis.Ticks.push_back({percent / 100.0, wxString::Format(_("%i %%"), percent)});
    }
}

void SetDurationAxis(PlotAxis& axis, double lowSeconds, double highSeconds) {
    axis.Scale = PlotScale::Log;
    axis.Low = lowSeconds;
    axis.High = highSeconds;
    axis.Ticks.clear();
    for (const double seconds : kTickSeconds) {
        if (seconds >= lowSeconds && seconds <= highSeconds) {
            axis.Ticks.push_back({seconds, DurationText(seconds)});
        }
    }
}

void SetDayAxis(PlotAxis& axis, const wxDateTime& firstDay, int days) {
    axis.Scale = PlotScale::Linear;
    axis.Low = 0.0;
    axis.High = std::max(days, 1);
    axis.Ticks.clear();
    if (days <= kMostDaysByWeek) {
        AddWeekTicks(axis, firstDay, days);
    } else {
        AddMonthTicks(axis, firstDay, days, days > kMostDaysByMonth);
    }
}

wxString DurationText(double seconds) {
    // From the hour on, in the order of the units of CountOfUnits, whose hour is 2.
    constexpr double kUnits[] = {kHour, kDay, kWeek, kMonth, kYear};
    constexpr size_t kHourUnit = 2;
    const auto round = [seconds](double unit) { return std::lround(seconds / unit); };
    // The unit is the largest that rounds to at least one.
    for (size_t i = std::size(kUnits); i-- > 0;) {
        if (seconds >= 0.95 * kUnits[i]) {
            return CountOfUnits(static_cast<unsigned>(round(kUnits[i])),
                                static_cast<int>(i + kHourUnit));
        }
    }
    return seconds >= 0.95 * kMinute
               ? wxString::Format(_("%i min"), static_cast<int>(round(kMinute)))
               : wxString::Format(_("%i s"), static_cast<int>(round(1.0)));
}

wxString DayText(const wxDateTime& day) {
    const wxString month = MonthName(day.GetMonth());
    // Translators: a day and the short name of its month, such as "12 May". "%2$s %1$i" turns the
    // order round.
    return wxString::Format(_("%i %s"), day.GetDay(), month);
}

int CalendarShade(int64_t number, int64_t greatest) {
    if (number <= 0) {
        return 0;
    }
    const double part =
        static_cast<double>(number) / static_cast<double>(std::max(greatest, number));
    return std::clamp(static_cast<int>(std::ceil(part * 4.0)), 1, 4);
}
