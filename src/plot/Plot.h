#pragma once

#include <wx/datetime.h>
#include <wx/string.h>

#include <cstdint>
#include <vector>

// A picture of numbers as a value: what is drawn and from which numbers, but neither size nor
// colours. PlotDrawing.h draws it, PlotControl.h shows it in a window. A plot knows nothing of
// where its numbers come from. No display is needed to make or to draw one.

// A name beside an axis.
struct PlotTick {
    double Value = 0.0;
    wxString Label;
};

// A logarithmic axis has only values above 0.
enum class PlotScale { Linear, Log };

struct PlotAxis {
    wxString Title;
    double Low = 0.0;
    // Above Low.
    double High = 1.0;
    PlotScale Scale = PlotScale::Linear;
    // In rising order. The drawing leaves out labels that would touch the one before.
    std::vector<PlotTick> Ticks;

    // Returns where a value lies: 0 at Low, 1 at High, less or more outside.
    double PartOf(double value) const;
};

// The colours that a series can have. Colour-blind eyes can tell neighbours in this order apart.
// The grades go from bad to good, in shades of red and of blue.
enum class PlotHue {
    Blue,
    Orange,
    Green,
    Purple,
    Sky,
    Red,
    Grade0,
    Grade1,
    Grade2,
    Grade3,
    Grade4,
    Grade5
};

// One value of a series.
struct PlotPoint {
    double X = 0.0;
    double Y = 0.0;
    // The right edge of a bar, whose left edge is X.
    double XEnd = 0.0;
    // The ends of the whisker that tells how sure the value is; there is none when they are equal.
    double Low = 0.0;
    double High = 0.0;
    // The area of the point's disc as a part of the largest disc's, 0 to 1.
    double Weight = 0.0;
    // A few characters above the point, such as the number of observations.
    wxString Note;
};

// Bars of all series of a plot are stacked upon each other, the first at the bottom.
enum class PlotMarks { Bars, Line, Points };

struct PlotSeries {
    // Stands in the legend, which a plot with a single series does without.
    wxString Name;
    PlotMarks Marks = PlotMarks::Bars;
    PlotHue Hue = PlotHue::Blue;
    std::vector<PlotPoint> Points;
};

// A dashed line across the plot, with its name at its right end unless that is empty.
struct PlotRule {
    double Y = 0.0;
    wxString Label;
};

// The numbers of a plot as a person or another program reads them.
struct PlotTable {
    std::vector<wxString> Headings;
    // Each row has as many cells as there are headings.
    std::vector<std::vector<wxString>> Rows;

    // Returns the table with tabs between cells and a line break after each row, headings first.
    wxString TabSeparated() const;
    // Returns one row in words: "12 May: due 14, overdue 3". Empty for a row that does not exist.
    wxString Describe(int row) const;
};

// Chart: two axes. Ranking: one bar across for each name, the first at the top; the points of the
// first series give lengths, whiskers and notes. Calendar: one square for each day, a column for a
// week.
enum class PlotKind { Chart, Ranking, Calendar };

struct Plot {
    wxString Title;
    // The message of the plot in a sentence, for those who cannot see it. May be empty.
    wxString Summary;
    // Shown in place of the picture when it is not empty.
    wxString EmptyText;
    PlotKind Kind = PlotKind::Chart;
    PlotAxis Across;
    PlotAxis Up;
    std::vector<PlotSeries> Series;
    std::vector<PlotRule> Rules;
    // The names of a ranking.
    std::vector<wxString> Names;
    // The numbers of a calendar, one a day from the first day on.
    wxDateTime FirstDay;
    std::vector<int64_t> Days;
    // What the ends of the calendar's colour scale are called.
    wxString LessLabel;
    wxString MoreLabel;
    // Row i tells of point i, name i or day i.
    PlotTable Table;

    // Returns the height of the bars at an index, all series together.
    double StackedHeight(size_t index) const;
    // Returns the greatest Y of the chart: of stacked bars, points, whiskers and rules.
    double GreatestY() const;
};

// Sets an axis of counts from 0 to a round number that is at least the greatest value, with ticks
// at whole numbers, and with at most five steps.
void SetCountAxis(PlotAxis& axis, double greatest);
// Sets an axis from 0 to 1 with ticks in percent.
void SetShareAxis(PlotAxis& axis);
// Sets a logarithmic axis of seconds, with ticks at the usual lengths of time. Both ends are above
// 0 and are kept.
void SetDurationAxis(PlotAxis& axis, double lowSeconds, double highSeconds);
// Sets an axis of days that counts from the first day, 0, to the end, with ticks at days, months or
// years.
void SetDayAxis(PlotAxis& axis, const wxDateTime& firstDay, int days);

// Returns a length of time in words, rounded to its largest unit: "3 weeks".
wxString DurationText(double seconds);
// Returns a day of the year in a few characters: "12 May".
wxString DayText(const wxDateTime& day);

// Returns the shade of a number of a calendar, 1 to 4, or 0 for nothing. The shades split the
// numbers up to the greatest evenly.
int CalendarShade(int64_t number, int64_t greatest);
