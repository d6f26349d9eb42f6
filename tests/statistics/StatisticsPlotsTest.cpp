#include "statistics/StatisticsPlots.h"

#include <gtest/gtest.h>

#include <initializer_list>

#include "base/Time.h"

namespace {

constexpr int32_t kToday = 20000;

const Plot& PlotOf(const StatisticsPlots& plots, StatisticsPage page) {
    return plots[static_cast<size_t>(page)];
}

ReviewFigures MakeFigures(size_t days) {
    ReviewFigures figures;
    figures.Today = kToday;
    figures.Log.Reviews = 1;
    for (size_t i = 0; i < days; ++i) {
        DayReviews day;
        day.Day = kToday - static_cast<int32_t>(days - 1 - i);
        day.ByScore = {1, 0, 0, 2, 0, static_cast<int32_t>(i)};
        figures.Days.push_back(day);
    }
    for (size_t i = 0; i < kTimeRangeCount; ++i) {
        figures.ByElapsed[i].Range = figures.ByAge[i].Range = TimeRanges()[i];
    }
    return figures;
}

CategoryFigures MakeCategory(const char* name, int32_t reviews, int32_t remembered) {
    CategoryFigures category;
    category.Info.Name = name;
    category.Reviews = reviews;
    category.Remembered = remembered;
    return category;
}

double Sum(const PlotSeries& series) {
    double sum = 0.0;
    for (const PlotPoint& point : series.Points) {
        sum += point.Y;
    }
    return sum;
}

// The height of each bar times its days.
double Area(const PlotSeries& series) {
    double area = 0.0;
    for (const PlotPoint& point : series.Points) {
        area += point.Y * (point.XEnd - point.X);
    }
    return area;
}

}  // namespace

TEST(StatisticsPlotsTest, APlotWithoutNumbersSaysWhy) {
    ReviewFigures figures = MakeFigures(0);
    figures.Log.Reviews = 0;
    const StatisticsPlots plots = MakeStatisticsPlots(figures, ReviewSpan::kMonth);
    for (size_t i = 1; i < plots.size(); ++i) {
        EXPECT_FALSE(plots[i].EmptyText.empty()) << plots[i].Title;
    }
    const wxString noReviews = "No reviews yet";
    EXPECT_TRUE(MakeAdvice(figures).StartsWith(noReviews));
    EXPECT_TRUE(PlotOf(plots, StatisticsPage::Calendar).EmptyText.StartsWith(noReviews));
}

TEST(StatisticsPlotsTest, WhatIsOverdueStandsOnTodayAndTheUsualDayIsALine) {
    ReviewFigures figures = MakeFigures(1);
    figures.Due.Overdue = 30;
    figures.Due.PerDay[0] = 4;
    figures.Due.PerDay[1] = 5;
    figures.Due.UsualDay = 20;
    figures.Due.LeftOver[0] = 14;
    const Plot plot =
        PlotOf(MakeStatisticsPlots(figures, ReviewSpan::kQuarter), StatisticsPage::Due);
    EXPECT_EQ(plot.Table.Rows.size(), 90U);
    EXPECT_EQ(plot.StackedHeight(0), 34);
    EXPECT_EQ(plot.StackedHeight(1), 5);
    ASSERT_EQ(plot.Rules.size(), 1U);
    EXPECT_EQ(plot.Rules[0].Y, 20);
    EXPECT_TRUE(plot.Summary.Contains(FormatDate(NoonOfDay(kToday + 1), "%d %b %Y")))
        << plot.Summary;
    EXPECT_EQ(plot.Table.Rows[0][3], "14");
    // A measure that the person has set takes its place.
    figures.Due.Measure = 15;
    const Plot other =
        PlotOf(MakeStatisticsPlots(figures, ReviewSpan::kQuarter), StatisticsPage::Due);
    EXPECT_EQ(other.Rules[0].Y, 15);
    EXPECT_EQ(other.Series[2].Points.size(), 2U);
    EXPECT_EQ(other.Summary, "At 15 a day the backlog is gone on " +
                                 FormatDate(NoonOfDay(kToday + 1), "%d %b %Y") + ".");
}

TEST(StatisticsPlotsTest, ManyDaysOfReviewsAreDrawnAsMeansOfWeeksAndNoneIsLost) {
    for (const auto& [days, rows] : {std::pair<size_t, size_t>{30, 30}, {401, 58}}) {
        const ReviewFigures figures = MakeFigures(days);
        const Plot plot =
            PlotOf(MakeStatisticsPlots(figures, ReviewSpan::kAll), StatisticsPage::Reviews);
        ASSERT_EQ(plot.Table.Rows.size(), rows);
        EXPECT_NEAR(Area(plot.Series[0]), static_cast<double>(days), 1e-6);
        EXPECT_NEAR(Area(plot.Series[5]), 0.5 * static_cast<double>(days * (days - 1)), 1e-6);
        EXPECT_EQ(plot.Series[5].Points.back().XEnd, days);
        // Two days are left for the last week of 401.
        EXPECT_EQ(plot.Table.Rows.back().back(), days == 30 ? "32" : "805");
    }
}

TEST(StatisticsPlotsTest, TheIntervalsAreSplitIntoYoungAndOldCards) {
    ReviewFigures figures = MakeFigures(1);
    // Half of the range from two weeks to a month is old.
    figures.Schedules.ByInterval[3] = 7;
    figures.Schedules.ByInterval[9] = 10;
    figures.Schedules.ByInterval[12] = 3;
    figures.Schedules.Young = 12;
    figures.Schedules.Old = 8;
    const Plot plot =
        PlotOf(MakeStatisticsPlots(figures, ReviewSpan::kAll), StatisticsPage::Intervals);
    EXPECT_EQ(Sum(plot.Series[0]), 12);
    EXPECT_EQ(Sum(plot.Series[1]), 8);
    // Empty ranges at both ends are left out.
    ASSERT_EQ(plot.Table.Rows.size(), 10U);
    EXPECT_EQ(plot.Series[0].Points[6].Y, 5);
    EXPECT_EQ(plot.Series[1].Points[6].Y, 5);
    EXPECT_EQ(plot.Across.Low, TimeRanges()[3].From);
}

TEST(StatisticsPlotsTest, TheShareBehindManyReviewsLooksSurer) {
    ReviewFigures figures = MakeFigures(1);
    figures.ByElapsed[4].Reviews = 500;
    figures.ByElapsed[4].Remembered = 400;
    figures.ByElapsed[8].Reviews = 5;
    figures.ByElapsed[8].Remembered = 4;
    const Plot plot = PlotOf(MakeStatisticsPlots(figures, ReviewSpan::kAll),
                             StatisticsPage::RememberedByInterval);
    const auto& points = plot.Series[0].Points;
    ASSERT_EQ(points.size(), 2U);
    EXPECT_EQ(points[0].Y, points[1].Y);
    EXPECT_GT(points[1].High - points[1].Low, 5 * (points[0].High - points[0].Low));
    EXPECT_EQ(points[0].Weight, 1.0);
    EXPECT_EQ(points[1].Weight, 0.01);
    EXPECT_EQ(plot.Table.Rows[1][1], "5");
}

TEST(StatisticsPlotsTest, TheAdviceNamesTheWorstCategoryAndJudgesTheIntervals) {
    ReviewFigures figures = MakeFigures(1);
    figures.Categories = {MakeCategory("few", 5, 0), MakeCategory("good", 100, 95),
                          MakeCategory("bad", 100, 60), MakeCategory("none", 0, 0)};
    EXPECT_TRUE(MakeAdvice(figures).StartsWith("\"bad\" needs most work: 60 %"))
        << MakeAdvice(figures);
    const std::vector<CategoryFigures> ordered = OrderByNeed(figures.Categories);
    EXPECT_EQ(ordered.front().Info.Name, "few");
    EXPECT_EQ(ordered.back().Info.Name, "none");

    figures.Categories = {MakeCategory("only", 100, 50)};
    const std::pair<std::pair<int32_t, int32_t>, const char*> cases[] = {
        {{19, 0}, ""},
        {{100, 50}, "Your intervals may be too long: 50 %"},
        {{1000, 995}, "Your intervals could be longer: 100 %"},
        {{200, 180}, "Your intervals fit: 90 %"},
        {{20, 16}, "80 % of the cards"}};
    for (const auto& [reviews, text] : cases) {
        figures.ByElapsed[10].Reviews = reviews.first;
        figures.ByElapsed[10].Remembered = reviews.second;
        const wxString advice = MakeAdvice(figures);
        EXPECT_TRUE(advice.StartsWith(text)) << advice;
        EXPECT_EQ(advice.empty(), *text == '\0') << advice;
    }
}
