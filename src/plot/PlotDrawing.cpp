#include "plot/PlotDrawing.h"

#include <wx/dcmemory.h>
#include <wx/graphics.h>
#include <wx/settings.h>

#include <algorithm>
#include <cmath>
#include <memory>

#include "base/Time.h"
#include "plot/PlotCanvas.h"
#include "shell/Toolkit.h"

namespace {

// Colour-blind people tell these apart (Okabe and Ito). The grades are two runs of one hue each,
// which differ in brightness as well. Each row has the colour on a light and on a dark ground.
constexpr unsigned kHues[][2] = {{0x0072b2, 0x4aa8e0}, {0xe69f00, 0xf0b030}, {0x009e73, 0x2bc49a},
                                 {0xb0629a, 0xdd95c5}, {0x56b4e9, 0x8fd0f5}, {0xd55e00, 0xff8a3d},
                                 {0x8c2d04, 0xc4511d}, {0xd8630e, 0xf08a3c}, {0xf8b26a, 0xffcf99},
                                 {0x9ccbe8, 0xc7e4f7}, {0x3f8fc8, 0x6db5e6}, {0x0b4f8a, 0x3d84c2}};
constexpr unsigned kShades[][2] = {{0xebedf0, 0x34383e},
                                   {0xbcd9ef, 0x1d4463},
                                   {0x7fb5de, 0x2b6a9c},
                                   {0x3585c0, 0x4b9bd8},
                                   {0x0a4a82, 0xa5d6ff}};

// Distances in logical pixels.
constexpr double kEdge = 10.0;
constexpr double kGap = 6.0;
constexpr double kSwatch = 11.0;
constexpr double kLargestDisc = 11.0;
// The number of largest discs that fit across the picture, unless they get too large or small.
constexpr double kDiscPart = 50.0;
constexpr double kSmallestDisc = 3.0;
// The part of its place that a bar fills. Places this narrow are filled whole.
constexpr double kBarPart = 0.82;
constexpr double kNarrowPlace = 4.0;
constexpr double kThickestRow = 26.0;
constexpr double kLargestDay = 40.0;
constexpr int kMostBands = 4;
// The days whose names stand beside a calendar.
constexpr wxDateTime::WeekDay kNamedDays[] = {wxDateTime::Mon, wxDateTime::Wed, wxDateTime::Fri};
// A picture with room for fewer lines of text is drawn compact.
constexpr double kLinesOfAll = 8.5;

wxColour FromRgb(unsigned rgb) {
    return wxColour(static_cast<unsigned char>(rgb >> 16U), static_cast<unsigned char>(rgb >> 8U),
                    static_cast<unsigned char>(rgb));
}

wxColour WithAlpha(const wxColour& colour, unsigned char alpha) {
    return wxColour(colour.Red(), colour.Green(), colour.Blue(), alpha);
}

}  // namespace

PlotLook::PlotLook(const wxColour& background, const wxColour& text)
    : mBackground(background),
      mText(text),
      mMuted(MixColours(background, text, 0.68)),
      mGrid(MixColours(background, text, 0.13)),
      mDark(background.GetLuminance() < 0.5) {}

wxColour PlotLook::Of(PlotHue hue) const {
    return FromRgb(kHues[static_cast<size_t>(hue)][mDark ? 1 : 0]);
}

wxColour PlotLook::Shade(int shade) const {
    return FromRgb(kShades[std::clamp(shade, 0, 4)][mDark ? 1 : 0]);
}

namespace {

// Draws one plot: takes the room for title, legend and labels from the edges of the picture, and
// fills what is left with the numbers.
class PlotPainter {
  public:
    PlotPainter(PlotCanvas& canvas, const Plot& plot, const wxSize& size, const PlotLook& look,
                const PlotOptions& options)
        : mCanvas(canvas),
          mPlot(plot),
          mLook(look),
          mOptions(options),
          mWidth(size.x),
          mHeight(size.y),
          mArea(kEdge, kEdge, size.x - 2 * kEdge, size.y - 2 * kEdge) {}

    std::vector<wxRect2DDouble> Draw();

  private:
    void Write(const wxString& text, double x, double y, PlotAnchor anchor, PlotText style,
               const wxColour& colour) {
        mCanvas.Write(text, {x, y}, anchor, style, colour);
    }
    double Line(PlotText style) { return mCanvas.HeightOf(style); }
    // Takes height from the top of the area, and returns where it began.
    double TakeTop(double height);
    wxString Fit(const wxString& text, double width, PlotText style);
    std::vector<wxString> Wrap(const wxString& text);
    void DrawTitle();
    void DrawMessage(const wxString& text);
    void DrawLegend();

    void DrawChart();
    bool HasNotes() const;
    void ReserveAxes();
    void DrawUpAxis();
    void DrawAcrossAxis();
    void DrawSeries();
    void DrawBars();
    void DrawLine(const PlotSeries& series);
    void DrawPoints(const PlotSeries& series);
    void DrawRules();
    void FindRows();
    double AtX(double value) const {
        return mArea.m_x + mPlot.Across.PartOf(value) * mArea.m_width;
    }
    double AtY(double value) const {
        return mArea.m_y + (1.0 - std::clamp(mPlot.Up.PartOf(value), 0.0, 1.0)) * mArea.m_height;
    }

    void DrawRanking();
    void DrawRankingRow(size_t i, double scale);
    void DrawCalendar();
    void FitCalendar(int weeks, double width, double height, double head);
    wxRect2DDouble PlaceOfDay(int day) const;
    void DrawMonths(int firstOfBand, int offset);
    void DrawShades(double left, double y);

    void MarkRow();

    PlotCanvas& mCanvas;
    const Plot& mPlot;
    const PlotLook& mLook;
    const PlotOptions& mOptions;
    double mWidth;
    double mHeight;
    // The area that is still free.
    wxRect2DDouble mArea;
    std::vector<wxRect2DDouble> mRows;
    // How the days of a calendar are laid out.
    struct {
        int Bands = 1;
        int WeeksInBand = 1;
        double Side = 0.0;
        double Left = 0.0;
        double Top = 0.0;
        // The height of the names of months.
        double Head = 0.0;

        double BandHeight() const { return Head + 7 * Side; }
    } mCalendar;
};

std::vector<wxRect2DDouble> PlotPainter::Draw() {
    mCanvas.Fill({0, 0, mWidth, mHeight}, mLook.Background());
    DrawTitle();
    if (!mPlot.EmptyText.empty()) {
        DrawMessage(mPlot.EmptyText);
        return {};
    }
    switch (mPlot.Kind) {
        case PlotKind::Chart:
            DrawChart();
            break;
        case PlotKind::Ranking:
            DrawRanking();
            break;
        case PlotKind::Calendar:
            DrawCalendar();
            break;
    }
    return mRows;
}

double PlotPainter::TakeTop(double height) {
    const double top = mArea.m_y;
    const double taken = std::min(height, mArea.m_height);
    mArea.m_y += taken;
    mArea.m_height -= taken;
    return top;
}

wxString PlotPainter::Fit(const wxString& text, double width, PlotText style) {
    if (mCanvas.WidthOf(text, style) <= width) {
        return text;
    }
    wxString cut = text;
    while (!cut.empty() && mCanvas.WidthOf(cut + wxString(L"\u2026"), style) > width) {
        cut.RemoveLast();
    }
    return cut + wxString(L"\u2026");
}

void PlotPainter::DrawTitle() {
    if (mOptions.HasTitle && !mPlot.Title.empty()) {
        const double height = Line(PlotText::Title);
        const double top = TakeTop(height + kGap);
        Write(Fit(mPlot.Title, mArea.m_width, PlotText::Title), mArea.m_x, top + height / 2,
              PlotAnchor::Left, PlotText::Title, mLook.Text());
    }
    if (!mOptions.HasSummary || mOptions.IsCompact || !mPlot.EmptyText.empty()) {
        return;
    }
    const double height = Line(PlotText::Usual);
    for (const wxString& line : Wrap(mPlot.Summary)) {
        Write(line, mArea.m_x, TakeTop(height) + height / 2, PlotAnchor::Left, PlotText::Usual,
              mLook.Text());
    }
    TakeTop(kGap);
}

// Breaks a text into lines that fit the area: at spaces, and anywhere in the scripts of East Asia,
// which have none.
std::vector<wxString> PlotPainter::Wrap(const wxString& text) {
    std::vector<wxString> lines;
    wxString line;
    // The part of the line that stays when the rest moves to the next one.
    size_t whole = 0;
    for (const wxUniChar character : text) {
        if (character == ' ' || character.GetValue() >= kFirstWideCharacter) {
            whole = line.length();
        }
        line += character;
        if (whole > 0 && mCanvas.WidthOf(line, PlotText::Usual) > mArea.m_width) {
            lines.push_back(line.Left(whole));
            line = line.Mid(whole).Trim(false);
            whole = 0;
        }
    }
    if (!line.empty()) {
        lines.push_back(Fit(line, mArea.m_width, PlotText::Usual));
    }
    return lines;
}

void PlotPainter::DrawMessage(const wxString& text) {
    const std::vector<wxString> lines = Wrap(text);
    const double height = Line(PlotText::Usual) * 1.2;
    double y = mArea.m_y + (mArea.m_height - height * static_cast<double>(lines.size() - 1)) / 2;
    for (const wxString& line : lines) {
        Write(line, mArea.m_x + mArea.m_width / 2, y, PlotAnchor::Middle, PlotText::Usual,
              mLook.Muted());
        y += height;
    }
}

// A coloured square and a name for each series, in as many lines as they need.
void PlotPainter::DrawLegend() {
    if (mOptions.IsCompact || mPlot.Series.size() < 2) {
        return;
    }
    const double height = Line(PlotText::Small) + 2;
    double x = mArea.m_x;
    double y = TakeTop(height) + height / 2;
    for (const PlotSeries& series : mPlot.Series) {
        const wxString name = Fit(series.Name, mArea.m_width - kSwatch - kGap, PlotText::Small);
        const double width = kSwatch + kGap + mCanvas.WidthOf(name, PlotText::Small);
        if (x > mArea.m_x && x + width > mArea.m_x + mArea.m_width) {
            x = mArea.m_x;
            y = TakeTop(height) + height / 2;
        }
        const wxColour colour = mLook.Of(series.Hue);
        if (series.Marks == PlotMarks::Bars) {
            mCanvas.Fill({x, std::round(y - kSwatch / 2), kSwatch, kSwatch}, colour);
        } else if (series.Marks == PlotMarks::Points) {
            mCanvas.Disc({x + kSwatch / 2, y}, kSwatch / 2, colour);
        } else {
            mCanvas.Line({{x, y}, {x + kSwatch, y}}, colour, 2.5);
        }
        Write(name, x + kSwatch + kGap, y, PlotAnchor::Left, PlotText::Small, mLook.Text());
        x += width + 2.5 * kGap;
    }
    TakeTop(kGap);
}

void PlotPainter::DrawChart() {
    DrawLegend();
    ReserveAxes();
    FindRows();
    MarkRow();
    DrawUpAxis();
    DrawAcrossAxis();
    DrawSeries();
}

bool PlotPainter::HasNotes() const {
    return std::any_of(mPlot.Series.begin(), mPlot.Series.end(), [](const PlotSeries& series) {
        return std::any_of(series.Points.begin(), series.Points.end(),
                           [](const PlotPoint& point) { return !point.Note.empty(); });
    });
}

// Leaves room for the labels of the axes, and above the highest points for their notes. The title
// of the upward axis stands above it, where it can be read without turning the head.
void PlotPainter::ReserveAxes() {
    const double line = Line(PlotText::Small);
    if (!mOptions.IsCompact && !mPlot.Up.Title.empty()) {
        const double top = TakeTop(line + kGap);
        Write(Fit(mPlot.Up.Title, mArea.m_width, PlotText::Small), mArea.m_x, top + line / 2,
              PlotAnchor::Left, PlotText::Small, mLook.Muted());
    } else {
        TakeTop(line / 2);
    }
    if (!mOptions.IsCompact && HasNotes()) {
        TakeTop(line);
    }
    double widest = 0.0;
    for (const PlotTick& tick : mPlot.Up.Ticks) {
        widest = std::max(widest, mCanvas.WidthOf(tick.Label, PlotText::Small));
    }
    mArea.m_x += widest + kGap;
    mArea.m_width = std::max(1.0, mArea.m_width - widest - kGap);
    const bool hasTitle = !mOptions.IsCompact && !mPlot.Across.Title.empty();
    mArea.m_height = std::max(1.0, mArea.m_height - kGap - line - (hasTitle ? line + 2 : 0));
    // The edges of bars and the axis lie on whole pixels, so that they are crisp.
    mArea.m_x = std::round(mArea.m_x);
    mArea.m_y = std::round(mArea.m_y);
    mArea.m_width = std::round(mArea.m_width);
    mArea.m_height = std::round(mArea.m_height);
}

void PlotPainter::DrawUpAxis() {
    const double line = Line(PlotText::Small);
    double last = mHeight + line;
    for (const PlotTick& tick : mPlot.Up.Ticks) {
        const double y = std::round(AtY(tick.Value)) - 0.5;
        mCanvas.Line({{mArea.m_x, y}, {mArea.m_x + mArea.m_width, y}}, mLook.Grid(), 1.0);
        if (last - y < line) {
            continue;
        }
        Write(tick.Label, mArea.m_x - kGap, y, PlotAnchor::Right, PlotText::Small, mLook.Muted());
        last = y;
    }
}

// A label that would touch the one before it, or leave the picture, is moved inside or left out.
void PlotPainter::DrawAcrossAxis() {
    const double bottom = mArea.m_y + mArea.m_height;
    const double line = Line(PlotText::Small);
    double free = 0.0;
    for (const PlotTick& tick : mPlot.Across.Ticks) {
        const double x = AtX(tick.Value);
        const double width = mCanvas.WidthOf(tick.Label, PlotText::Small);
        const double left = std::clamp(x - width / 2, 0.0, std::max(0.0, mWidth - 2 - width));
        if (left < free) {
            continue;
        }
        mCanvas.Line({{x, bottom}, {x, bottom + 3}}, mLook.Muted(), 1.0);
        Write(tick.Label, left, bottom + kGap + line / 2, PlotAnchor::Left, PlotText::Small,
              mLook.Muted());
        free = left + width + 1.5 * kGap;
    }
    if (!mOptions.IsCompact && !mPlot.Across.Title.empty()) {
        Write(Fit(mPlot.Across.Title, mArea.m_width, PlotText::Small),
              mArea.m_x + mArea.m_width / 2, bottom + kGap + line * 1.5 + 2, PlotAnchor::Middle,
              PlotText::Small, mLook.Muted());
    }
    mCanvas.Line({{mArea.m_x, bottom - 0.5}, {mArea.m_x + mArea.m_width, bottom - 0.5}},
                 mLook.Muted(), 1.0);
}

// The rules lie above the bars and below the lines and points.
void PlotPainter::DrawSeries() {
    DrawBars();
    DrawRules();
    for (const PlotSeries& series : mPlot.Series) {
        if (series.Marks == PlotMarks::Line) {
            DrawLine(series);
        } else if (series.Marks == PlotMarks::Points) {
            DrawPoints(series);
        }
    }
}

void PlotPainter::DrawBars() {
    std::vector<double> heights;
    for (const PlotSeries& series : mPlot.Series) {
        if (series.Marks != PlotMarks::Bars) {
            continue;
        }
        heights.resize(std::max(heights.size(), series.Points.size()), 0.0);
        for (size_t i = 0; i < series.Points.size(); ++i) {
            const PlotPoint& point = series.Points[i];
            const double place = AtX(point.XEnd) - AtX(point.X);
            const double space = place <= kNarrowPlace ? 0.0 : place * (1.0 - kBarPart) / 2;
            const double left = AtX(point.X) + space;
            const double bottom = std::round(AtY(heights[i]));
            heights[i] += point.Y;
            // Even a single one among thousands shows.
            const double top =
                point.Y > 0 ? std::min(std::round(AtY(heights[i])), bottom - 1) : bottom;
            if (bottom > top) {
                mCanvas.Fill({left, top, std::max(1.0, place - 2 * space), bottom - top},
                             mLook.Of(series.Hue));
            }
        }
    }
}

void PlotPainter::DrawLine(const PlotSeries& series) {
    std::vector<wxPoint2DDouble> points;
    for (const PlotPoint& point : series.Points) {
        points.emplace_back(AtX(point.X), AtY(point.Y));
    }
    mCanvas.Line(points, mLook.Of(series.Hue), 2.0);
}

// Draws a disc whose area grows with the value's weight, on a whisker that shows how sure it is.
void PlotPainter::DrawPoints(const PlotSeries& series) {
    const wxColour colour = mLook.Of(series.Hue);
    const double line = Line(PlotText::Small);
    const double largest =
        mOptions.IsCompact ? kLargestDisc / 2
                           : std::clamp(mArea.m_width / kDiscPart, kLargestDisc / 2, kLargestDisc);
    double free = 0.0;
    for (const PlotPoint& point : series.Points) {
        const double x = AtX(point.X);
        const double y = AtY(point.Y);
        double top = y;
        if (point.High > point.Low) {
            top = AtY(point.High);
            mCanvas.Line({{x, AtY(point.Low)}, {x, top}}, WithAlpha(colour, 130), 2.0);
        }
        const double radius = std::max(kSmallestDisc, largest * std::sqrt(point.Weight));
        mCanvas.Disc({x, y}, radius, colour);
        const double width = mCanvas.WidthOf(point.Note, PlotText::Small);
        if (mOptions.IsCompact || point.Note.empty() || x - width / 2 < free) {
            continue;
        }
        const double above = std::min(top, y - radius) - line / 2 - 1;
        const bool fits = above - line / 2 >= mArea.m_y - line;
        const double middle = fits ? above : std::max(y + radius, AtY(point.Low)) + line / 2;
        // A dashed line may run behind the note.
        mCanvas.Fill({x - width / 2, middle - line / 2, width, line},
                     WithAlpha(mLook.Background(), 200));
        Write(point.Note, x, middle, PlotAnchor::Middle, PlotText::Small, mLook.Text());
        free = x + width / 2 + kGap;
    }
}

void PlotPainter::DrawRules() {
    for (const PlotRule& rule : mPlot.Rules) {
        const double y = std::round(AtY(rule.Y)) - 0.5;
        const double right = mArea.m_x + mArea.m_width;
        mCanvas.Line({{mArea.m_x, y}, {right, y}}, mLook.Text(), 1.5, true);
        if (mOptions.IsCompact || rule.Label.empty()) {
            continue;
        }
        const double line = Line(PlotText::Small);
        const wxString label = Fit(rule.Label, mArea.m_width, PlotText::Small);
        const double width = mCanvas.WidthOf(label, PlotText::Small);
        const double above = y - line < 0 ? y + line / 2 + 2 : y - line / 2 - 2;
        // Bars may stand behind the label.
        mCanvas.Fill({right - width - 4, above - line / 2, width + 4, line},
                     WithAlpha(mLook.Background(), 200));
        Write(label, right - 2, above, PlotAnchor::Right, PlotText::Small, mLook.Text());
    }
}

// Each row of the table belongs to a point of the first series: its bar over the whole height, or
// the room halfway to the next point.
void PlotPainter::FindRows() {
    if (mPlot.Series.empty() || mPlot.Series.front().Points.size() != mPlot.Table.Rows.size()) {
        return;
    }
    const PlotSeries& series = mPlot.Series.front();
    const std::vector<PlotPoint>& points = series.Points;
    for (size_t i = 0; i < points.size(); ++i) {
        double left = AtX(points[i].X);
        double right = AtX(points[i].XEnd);
        if (series.Marks != PlotMarks::Bars) {
            const double x = left;
            left = i == 0 ? mArea.m_x : (AtX(points[i - 1].X) + x) / 2;
            right =
                i + 1 == points.size() ? mArea.m_x + mArea.m_width : (AtX(points[i + 1].X) + x) / 2;
        }
        mRows.emplace_back(left, mArea.m_y, right - left, mArea.m_height);
    }
}

void PlotPainter::MarkRow() {
    const int row = mOptions.MarkedRow;
    if (row >= 0 && static_cast<size_t>(row) < mRows.size()) {
        const wxRect2DDouble& place = mRows[static_cast<size_t>(row)];
        mCanvas.Fill({place.m_x - 1, place.m_y, place.m_width + 2, place.m_height},
                     WithAlpha(mLook.Text(), 36));
    }
}

void PlotPainter::DrawRanking() {
    if (mPlot.Series.empty() || mPlot.Names.empty()) {
        return;
    }
    double names = 0.0;
    for (const wxString& name : mPlot.Names) {
        names = std::max(names, mCanvas.WidthOf(name, PlotText::Usual));
    }
    double notes = 0.0;
    for (const PlotPoint& point : mPlot.Series.front().Points) {
        notes = std::max(notes, mCanvas.WidthOf(point.Note, PlotText::Small));
    }
    names = std::min(names, mArea.m_width * 0.4);
    const size_t most = static_cast<size_t>(mArea.m_height / (Line(PlotText::Usual) + 2));
    const size_t count = std::min({mPlot.Names.size(), mPlot.Series.front().Points.size(), most});
    const double height =
        std::min(mArea.m_height / static_cast<double>(std::max<size_t>(count, 1)), kThickestRow);
    for (size_t i = 0; i < count; ++i) {
        mRows.emplace_back(mArea.m_x, mArea.m_y + height * static_cast<double>(i), mArea.m_width,
                           height);
    }
    MarkRow();
    mArea.m_x += names + kGap;
    mArea.m_width -= names + kGap;
    for (size_t i = 0; i < count; ++i) {
        DrawRankingRow(i, std::max(1.0, mArea.m_width - notes - 2 * kGap));
    }
}

void PlotPainter::DrawRankingRow(size_t i, double scale) {
    const PlotSeries& series = mPlot.Series.front();
    const PlotPoint& point = series.Points[i];
    const wxRect2DDouble& row = mRows[i];
    const double y = row.m_y + row.m_height / 2;
    const auto reach = [&](double value) {
        return mArea.m_x + scale * std::clamp(mPlot.Up.PartOf(value), 0.0, 1.0);
    };
    Write(Fit(mPlot.Names[i], mArea.m_x - kGap - row.m_x, PlotText::Usual), mArea.m_x - kGap, y,
          PlotAnchor::Right, PlotText::Usual, mLook.Text());
    const double thick = std::round(row.m_height * 0.62);
    mCanvas.Fill({mArea.m_x, std::round(y - thick / 2), scale, thick}, mLook.Grid());
    mCanvas.Fill({mArea.m_x, std::round(y - thick / 2), reach(point.Y) - mArea.m_x, thick},
                 mLook.Of(series.Hue));
    if (point.High > point.Low) {
        mCanvas.Line({{reach(point.Low), y}, {reach(point.High), y}}, mLook.Text(), 1.5);
    }
    Write(point.Note, mArea.m_x + scale + kGap, y, PlotAnchor::Left, PlotText::Small,
          mLook.Muted());
}

// The weeks begin on Monday.
int Weekday(const wxDateTime& day) {
    return (static_cast<int>(day.GetWeekDay()) + 6) % 7;
}

// Breaks the weeks into as many bands, one below the other, as make the days the largest. A band
// has its months above it.
void PlotPainter::FitCalendar(int weeks, double width, double height, double head) {
    mCalendar.Side = 0.0;
    for (int bands = 1; bands <= kMostBands; ++bands) {
        const int perBand = (weeks + bands - 1) / bands;
        const double side = std::min({width / perBand, (height / bands - head) / 7, kLargestDay});
        if (side > mCalendar.Side) {
            mCalendar.Side = side;
            mCalendar.WeeksInBand = perBand;
            mCalendar.Bands = bands;
        }
    }
    mCalendar.Side = std::max(2.0, mCalendar.Side);
    mCalendar.Head = head;
}

// Returns the place of a day, counted from the Monday of the first week.
wxRect2DDouble PlotPainter::PlaceOfDay(int day) const {
    const int week = day / 7;
    const double side = mCalendar.Side;
    const double top =
        mCalendar.Top + mCalendar.BandHeight() * (week / mCalendar.WeeksInBand) + mCalendar.Head;
    return {mCalendar.Left + side * (week % mCalendar.WeeksInBand), top + side * (day % 7), side,
            side};
}

void PlotPainter::DrawCalendar() {
    if (mPlot.Days.empty()) {
        return;
    }
    const double line = Line(PlotText::Small);
    const int offset = Weekday(mPlot.FirstDay);
    const int weeks = (offset + static_cast<int>(mPlot.Days.size()) + 6) / 7;
    double names = 0.0;
    for (const auto day : kNamedDays) {
        names = std::max(names, mCanvas.WidthOf(WeekdayName(day), PlotText::Small));
    }
    const double shades = mOptions.IsCompact ? 0.0 : line + kGap;
    FitCalendar(weeks, mArea.m_width - names - kGap, mArea.m_height - shades, line + kGap);
    mCalendar.Left = mArea.m_x + names + kGap;
    mCalendar.Top = mArea.m_y;
    const int64_t greatest = *std::max_element(mPlot.Days.begin(), mPlot.Days.end());
    const double space = mCalendar.Side >= 6 ? 1.5 : 0.5;
    for (size_t i = 0; i < mPlot.Days.size(); ++i) {
        const wxRect2DDouble place = PlaceOfDay(offset + static_cast<int>(i));
        mRows.push_back(place);
        mCanvas.Fill({place.m_x, place.m_y, place.m_width - space, place.m_height - space},
                     mLook.Shade(CalendarShade(mPlot.Days[i], greatest)));
    }
    MarkRow();
    for (int band = 0; band < mCalendar.Bands; ++band) {
        const int first = band * mCalendar.WeeksInBand * 7;
        for (const auto day : kNamedDays) {
            const wxRect2DDouble place = PlaceOfDay(first + static_cast<int>(day) - 1);
            Write(WeekdayName(day), mCalendar.Left - kGap, place.GetCentre().m_y, PlotAnchor::Right,
                  PlotText::Small, mLook.Muted());
        }
        DrawMonths(first, offset);
    }
    DrawShades(mCalendar.Left,
               mCalendar.Top + mCalendar.BandHeight() * mCalendar.Bands + kGap + line / 2);
}

// Names the months of a band where they begin. The one that begins before the band is named too
// where there is room before the next.
void PlotPainter::DrawMonths(int firstOfBand, int offset) {
    constexpr int kRoomForName = 20;
    const int end = std::min(firstOfBand + mCalendar.WeeksInBand * 7,
                             offset + static_cast<int>(mPlot.Days.size()));
    const int start = std::max(firstOfBand, offset);
    double free = 0.0;
    for (int day = start; day < end; ++day) {
        const wxDateTime date = mPlot.FirstDay + wxDateSpan::Days(day - offset);
        const int dayOfMonth = date.GetDay();
        if (dayOfMonth != 1 && (day != start || dayOfMonth > kRoomForName)) {
            continue;
        }
        const wxString name = MonthName(date.GetMonth());
        const double width = mCanvas.WidthOf(name, PlotText::Small);
        const wxRect2DDouble place = PlaceOfDay(day);
        const double top = mCalendar.Top +
                           mCalendar.BandHeight() * (day / 7 / mCalendar.WeeksInBand) +
                           (mCalendar.Head - kGap) / 2;
        const double x = std::min(place.m_x, mArea.GetRight() - width);
        if (x >= free) {
            Write(name, x, top, PlotAnchor::Left, PlotText::Small, mLook.Muted());
            free = x + width + kGap;
        }
    }
}

void PlotPainter::DrawShades(double left, double y) {
    if (mOptions.IsCompact) {
        return;
    }
    Write(mPlot.LessLabel, left, y, PlotAnchor::Left, PlotText::Small, mLook.Muted());
    double x = left + mCanvas.WidthOf(mPlot.LessLabel, PlotText::Small) + kGap;
    for (int shade = 0; shade <= 4; ++shade) {
        mCanvas.Fill({x, y - kSwatch / 2, kSwatch, kSwatch}, mLook.Shade(shade));
        x += kSwatch + 2;
    }
    Write(mPlot.MoreLabel, x + kGap - 2, y, PlotAnchor::Left, PlotText::Small, mLook.Muted());
}

}  // namespace

std::vector<wxRect2DDouble> DrawPlot(PlotCanvas& canvas, const Plot& plot, const wxSize& size,
                                     const PlotLook& look, const PlotOptions& options) {
    PlotOptions fitting = options;
    // A low picture is for the numbers.
    fitting.IsCompact |= size.y < kLinesOfAll * canvas.HeightOf(PlotText::Usual);
    return PlotPainter(canvas, plot, size, look, fitting).Draw();
}

std::string DrawPlotAsSvg(const Plot& plot, const wxSize& size) {
    SvgCanvas canvas(size, plot.Title, plot.Summary);
    DrawPlot(canvas, plot, size, PlotLook::Paper());
    return canvas.GetFile();
}

wxBitmap DrawPlotAsBitmap(const Plot& plot, const wxSize& size, int scale) {
    wxBitmap bitmap(size * scale, 24);
    wxMemoryDC dc(bitmap);
    {
        const std::unique_ptr<wxGraphicsContext> context(wxGraphicsContext::Create(dc));
        context->Scale(scale, scale);
        ScreenCanvas canvas(*context, wxSystemSettings::GetFont(wxSYS_DEFAULT_GUI_FONT));
        DrawPlot(canvas, plot, size, PlotLook::Paper());
    }
    dc.SelectObject(wxNullBitmap);
    return bitmap;
}
