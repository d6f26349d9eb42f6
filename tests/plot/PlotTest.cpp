#include "plot/Plot.h"

#include <glib.h>

#include <cmath>
#include <set>
#include <utility>

#include "base/Time.h"
#include "plot/PlotCanvas.h"
#include "plot/PlotControl.h"
#include "plot/PlotDrawing.h"
#include "support/GuiTest.h"

namespace {

using Values = std::vector<double>;

Values TickValues(const PlotAxis& axis) {
    Values values;
    for (const PlotTick& tick : axis.Ticks) {
        values.push_back(tick.Value);
    }
    return values;
}

// Bars of 1 wide, one series upon the other.
Plot MakeBars(const std::vector<Values>& heights) {
    Plot plot;
    plot.Title = "Due & <overdue>";
    plot.Up.Title = "cards";
    for (size_t s = 0; s < heights.size(); ++s) {
        PlotSeries series;
        series.Name = wxString::Format("Series %zu", s);
        series.Hue = s == 0 ? PlotHue::Blue : PlotHue::Orange;
        for (size_t i = 0; i < heights[s].size(); ++i) {
            PlotPoint bar;
            bar.X = static_cast<double>(i);
            bar.XEnd = bar.X + 1.0;
            bar.Y = heights[s][i];
            series.Points.push_back(bar);
        }
        plot.Series.push_back(series);
    }
    const int count = static_cast<int>(heights.front().size());
    SetDayAxis(plot.Across, wxDateTime(15, wxDateTime::Jan, 2026), count);
    SetCountAxis(plot.Up, plot.GreatestY());
    plot.Table.Headings = {"Day", "Cards"};
    for (int i = 0; i < count; ++i) {
        plot.Table.Rows.push_back({wxString::Format("day %i", i), "7"});
    }
    return plot;
}

// Keeps where the texts of a drawing stand.
struct TextPlaces : SvgCanvas {
    explicit TextPlaces(const wxSize& size) : SvgCanvas(size, "", "") {}
    void Write(const wxString& text, const wxPoint2DDouble& place, PlotAnchor anchor,
               PlotText style, const wxColour&) override {
        const double width = WidthOf(text, style);
        const double height = HeightOf(PlotText::Small) / 1.35;
        const double left = width * static_cast<int>(anchor) / 2.0;
        Places.emplace_back(
            text, wxRect2DDouble(place.m_x - left, place.m_y - height / 2, width, height));
    }
    std::vector<std::pair<wxString, wxRect2DDouble>> Places;
};

// The number of pixels of a colour in each column of a picture.
std::vector<int> CountByColumn(const wxImage& image, const wxColour& colour) {
    std::vector<int> counts(static_cast<size_t>(image.GetWidth()));
    for (int x = 0; x < image.GetWidth(); ++x) {
        for (int y = 0; y < image.GetHeight(); ++y) {
            counts[static_cast<size_t>(x)] += image.GetRed(x, y) == colour.Red() &&
                                              image.GetGreen(x, y) == colour.Green() &&
                                              image.GetBlue(x, y) == colour.Blue();
        }
    }
    return counts;
}

struct PlotTest : GuiTest {};

}  // namespace

TEST_F(PlotTest, AnAxisOfCountsEndsAtARoundNumberOfWholeSteps) {
    const std::tuple<double, double, size_t> cases[] = {
        {0, 1, 2}, {1, 1, 2}, {5, 5, 6}, {7, 8, 5}, {10, 10, 6}, {101, 150, 4}, {99999, 100000, 6}};
    for (const auto& [greatest, high, ticks] : cases) {
        PlotAxis axis;
        SetCountAxis(axis, greatest);
        EXPECT_EQ(axis.High, high) << greatest;
        EXPECT_EQ(axis.Ticks.size(), ticks) << greatest;
    }
}

TEST_F(PlotTest, ADurationAxisIsLogarithmicWithTheUsualLengths) {
    PlotAxis axis;
    SetDurationAxis(axis, 60, 3600);
    EXPECT_EQ(TickValues(axis), (Values{60, 600, 3600}));
    EXPECT_EQ(axis.Ticks[1].Label, "10 min");
    EXPECT_DOUBLE_EQ(axis.PartOf(60), 0.0);
    EXPECT_DOUBLE_EQ(axis.PartOf(std::sqrt(60.0 * 3600.0)), 0.5);
    const std::pair<double, const char*> texts[] = {
        {59, "1 min"},    {7 * 86400, "1 week"},    {45, "45 s"},     {30 * 86400, "1 month"},
        {86400, "1 day"}, {730 * 86400, "2 years"}, {7200, "2 hours"}};
    for (const auto& [seconds, text] : texts) {
        EXPECT_EQ(DurationText(seconds), text);
    }
}

TEST_F(PlotTest, ADayAxisHasWeeksMonthsOrYears) {
    const wxDateTime first(15, wxDateTime::Jan, 2026);
    PlotAxis axis;
    SetDayAxis(axis, first, 10);
    EXPECT_EQ(TickValues(axis), (Values{0.5, 7.5}));
    EXPECT_EQ(axis.Ticks[1].Label, "22 Jan");
    SetDayAxis(axis, first, 90);
    EXPECT_EQ(TickValues(axis), (Values{17.5, 45.5, 76.5}));
    EXPECT_EQ(axis.Ticks.front().Label, "Feb");
    SetDayAxis(axis, first, 1300);
    EXPECT_EQ(TickValues(axis), (Values{351.5, 716.5, 1082.5}));
    EXPECT_EQ(axis.Ticks.front().Label, "2027");
}

TEST_F(PlotTest, BarsReachTheirHeightAndStandUponEachOther) {
    const Plot plot = MakeBars({{10, 5, 0}, {0, 5, 10}});
    EXPECT_EQ(plot.GreatestY(), 10);
    const wxImage image = DrawPlotAsBitmap(plot, wxSize(300, 250), 2).ConvertToImage();
    ASSERT_EQ(image.GetSize(), wxSize(600, 500));
    const PlotLook look = PlotLook::Paper();
    const auto blue = CountByColumn(image, look.Of(PlotHue::Blue));
    const auto orange = CountByColumn(image, look.Of(PlotHue::Orange));
    TextPlaces canvas(wxSize(300, 250));
    const auto rows = DrawPlot(canvas, plot, wxSize(300, 250), look);
    ASSERT_EQ(rows.size(), 3U);
    const auto at = [&rows](const std::vector<int>& counts, size_t row) {
        return counts[static_cast<size_t>(2 * rows[row].GetCentre().m_x)];
    };
    const int full = at(blue, 0);
    EXPECT_GT(full, 250);
    EXPECT_EQ(at(orange, 0), 0);
    // A grid line may show at the foot.
    EXPECT_NEAR(at(blue, 1), full / 2.0, 4);
    EXPECT_NEAR(at(blue, 1) + at(orange, 1), full, 4);
    EXPECT_EQ(at(blue, 2), 0);
    EXPECT_NEAR(at(orange, 2), full, 4);
}

TEST_F(PlotTest, NoTextIsCutAndNoneTouchesAnother) {
    for (const size_t days : {30U, 90U, 365U, 3000U}) {
        for (const wxSize& size : {wxSize(180, 140), wxSize(420, 240), wxSize(1100, 600)}) {
            const Plot plot = MakeBars({Values(days, 12345.0), Values(days, 1.0)});
            TextPlaces canvas(size);
            DrawPlot(canvas, plot, size, PlotLook::Paper());
            EXPECT_GE(canvas.Places.size(), 6U);
            for (size_t i = 0; i < canvas.Places.size(); ++i) {
                const auto& [text, place] = canvas.Places[i];
                EXPECT_TRUE(wxRect2DDouble(0, 0, size.x, size.y).Contains(place)) << text;
                for (size_t k = i + 1; k < canvas.Places.size(); ++k) {
                    EXPECT_FALSE(place.Intersects(canvas.Places[k].second))
                        << text << " and " << canvas.Places[k].first;
                }
            }
        }
    }
}

TEST_F(PlotTest, ACalendarFillsItsPageAndNamesItsMonths) {
    Plot plot;
    plot.Kind = PlotKind::Calendar;
    plot.FirstDay = wxDateTime(26, wxDateTime::Nov, 2025, 12);
    plot.Days.assign(365, 1);
    for (const wxSize& size : {wxSize(340, 200), wxSize(700, 520), wxSize(1200, 400)}) {
        TextPlaces canvas(size);
        const auto days = DrawPlot(canvas, plot, size, PlotLook::Paper());
        ASSERT_EQ(days.size(), 365U);
        double right = 0.0;
        double bottom = 0.0;
        for (const wxRect2DDouble& day : days) {
            right = std::max(right, day.GetRight());
            bottom = std::max(bottom, day.GetBottom());
        }
        EXPECT_LE(right, size.x);
        EXPECT_LE(bottom, size.y);
        EXPECT_TRUE(right > size.x * 0.9 || bottom > size.y * 0.8) << right << " " << bottom;
        EXPECT_GT(right * bottom, size.x * size.y * 0.45);
        std::set<wxString> names;
        for (const auto& [text, place] : canvas.Places) {
            EXPECT_TRUE(wxRect2DDouble(0, 0, size.x, size.y).Contains(place)) << text;
            names.insert(text);
        }
        for (int month = 0; month < 12; ++month) {
            EXPECT_EQ(names.count(MonthName(static_cast<wxDateTime::Month>(month))), 1U) << month;
        }
    }
}

TEST_F(PlotTest, AnSvgIsWellFormedAndHasTheTexts) {
    const std::string svg = DrawPlotAsSvg(MakeBars({{1}, {2}}), wxSize(300, 200));
    GMarkupParser parser{};
    parser.text = [](GMarkupParseContext*, const gchar* text, gsize size, gpointer texts,
                     GError**) { static_cast<std::string*>(texts)->append(text, size) += '|'; };
    std::string texts;
    GMarkupParseContext* const context =
        g_markup_parse_context_new(&parser, GMarkupParseFlags{}, &texts, nullptr);
    EXPECT_TRUE(g_markup_parse_context_parse(context, svg.c_str(), static_cast<gssize>(svg.size()),
                                             nullptr));
    EXPECT_TRUE(g_markup_parse_context_end_parse(context, nullptr));
    g_markup_parse_context_free(context);
    for (const char* const text : {"Due & <overdue>|", "Series 1|", "cards|", "15 Jan|", "3|"}) {
        EXPECT_THAT(texts, testing::HasSubstr(text));
    }
}

TEST_F(PlotTest, ATableIsPastedWithOneLineForEachRow) {
    PlotTable table;
    table.Headings = {"Day", "Due", "Over"};
    table.Rows = {{"a\tb\nc", "1", ""}};
    EXPECT_EQ(table.TabSeparated(), "Day\tDue\tOver\na b c\t1\t\n");
    EXPECT_EQ(table.Describe(0), "a\tb\nc: Due 1");
    EXPECT_EQ(table.Describe(1), "");
}

TEST_F(PlotTest, KeysAndMouseFindTheNumbersOfAControl) {
    wxFrame& frame = *new wxFrame(nullptr, wxID_ANY, "plot", wxDefaultPosition, wxSize(400, 300));
    auto& control = *new PlotControl(&frame, 7);
    control.SetPlot(MakeBars({{1, 2, 3}}));
    ShowAndWait(frame);
    ASSERT_TRUE(WaitFor([&] { return control.RowAt(wxPoint(350, 100)) == 2; }));
    control.SetFocus();
    const std::pair<int, int> keys[] = {{WXK_RIGHT, 0}, {WXK_RIGHT, 1}, {WXK_END, 2},
                                        {WXK_RIGHT, 2}, {WXK_HOME, 0},  {WXK_LEFT, 0}};
    for (const auto& [key, row] : keys) {
        SendKeyDown(control, key);
        EXPECT_EQ(control.GetMarkedRow(), row);
    }
    EXPECT_EQ(control.GetToolTipText(), "day 0: Cards 7");
    SendMouse(control, wxEVT_MOTION, wxPoint(350, 100));
    EXPECT_EQ(control.GetMarkedRow(), 2);
    frame.Destroy();
}
