#pragma once

#include <wx/colour.h>
#include <wx/font.h>
#include <wx/geometry.h>
#include <wx/string.h>

#include <string>
#include <vector>

class wxGraphicsContext;

// The first character of the scripts of East Asia, which are as wide as high and know no spaces.
constexpr wchar_t kFirstWideCharacter = 0x2e80;

// The few operations that a plot is drawn with. The origin is the upper left corner, and a unit is
// a logical pixel.
enum class PlotAnchor { Left, Middle, Right };
enum class PlotText { Usual, Small, Title };

class PlotCanvas {
  public:
    virtual ~PlotCanvas() = default;

    virtual void Fill(const wxRect2DDouble& box, const wxColour& colour) = 0;
    virtual void Disc(const wxPoint2DDouble& centre, double radius, const wxColour& colour) = 0;
    virtual void Line(const std::vector<wxPoint2DDouble>& points, const wxColour& colour,
                      double width, bool dashed = false) = 0;
    // Writes one line of text with its left end, middle or right end at that place; its middle is
    // at that height.
    virtual void Write(const wxString& text, const wxPoint2DDouble& place, PlotAnchor anchor,
                       PlotText style, const wxColour& colour) = 0;
    // Return the width of a text, and the height of a line.
    virtual double WidthOf(const wxString& text, PlotText style) = 0;
    virtual double HeightOf(PlotText style) = 0;
};

// Draws on a screen or a bitmap. The context is not owned and must outlive the canvas; its font is
// that of usual text.
class ScreenCanvas : public PlotCanvas {
  public:
    ScreenCanvas(wxGraphicsContext& context, const wxFont& font);

    void Fill(const wxRect2DDouble& box, const wxColour& colour) override;
    void Disc(const wxPoint2DDouble& centre, double radius, const wxColour& colour) override;
    void Line(const std::vector<wxPoint2DDouble>& points, const wxColour& colour, double width,
              bool dashed) override;
    void Write(const wxString& text, const wxPoint2DDouble& place, PlotAnchor anchor,
               PlotText style, const wxColour& colour) override;
    double WidthOf(const wxString& text, PlotText style) override;
    double HeightOf(PlotText style) override;

  private:
    void UseFont(PlotText style, const wxColour& colour);

    wxGraphicsContext& mContext;
    wxFont mFont;
};

// Draws an SVG file. It needs no display: since the viewer's fonts are unknown, texts count as wide
// as in a wide font.
class SvgCanvas : public PlotCanvas {
  public:
    // The title is what a screen reader says of the picture.
    SvgCanvas(const wxSize& size, const wxString& title, const wxString& description);

    void Fill(const wxRect2DDouble& box, const wxColour& colour) override;
    void Disc(const wxPoint2DDouble& centre, double radius, const wxColour& colour) override;
    void Line(const std::vector<wxPoint2DDouble>& points, const wxColour& colour, double width,
              bool dashed) override;
    void Write(const wxString& text, const wxPoint2DDouble& place, PlotAnchor anchor,
               PlotText style, const wxColour& colour) override;
    double WidthOf(const wxString& text, PlotText style) override;
    double HeightOf(PlotText style) override;

    // Returns the whole file, in UTF-8.
    std::string GetFile() const;

  private:
    std::string mParts;
};
