#pragma once

#include <wx/bitmap.h>
#include <wx/colour.h>
#include <wx/geometry.h>

#include <string>
#include <vector>

#include "plot/Plot.h"

class PlotCanvas;

// The colours of a plot, for a light or a dark ground.
class PlotLook {
  public:
    // Chooses by the brightness of the background. The other colours are mixed from the two.
    PlotLook(const wxColour& background, const wxColour& text);

    // Black on white, for files and the clipboard.
    static PlotLook Paper() { return {*wxWHITE, wxColour(34, 34, 34)}; }

    const wxColour& Background() const { return mBackground; }
    const wxColour& Text() const { return mText; }
    // For axis labels, and lines that must not be louder than the numbers.
    const wxColour& Muted() const { return mMuted; }
    const wxColour& Grid() const { return mGrid; }
    wxColour Of(PlotHue hue) const;
    // The shades of a calendar, 0 to 4.
    wxColour Shade(int shade) const;

  private:
    wxColour mBackground;
    wxColour mText;
    wxColour mMuted;
    wxColour mGrid;
    bool mDark;
};

// How much of a plot is drawn.
struct PlotOptions {
    bool HasTitle = true;
    // The summary stands below the title.
    bool HasSummary = true;
    // A small picture: no legend, no titles of axes and no notes. A picture that is too low for
    // them is always compact.
    bool IsCompact = false;
    // The row of the table that is marked, or -1.
    int MarkedRow = -1;
};

// Draws a plot over the whole size. Returns the area of each row of the plot's table, for the
// mouse; none when the plot has no picture.
std::vector<wxRect2DDouble> DrawPlot(PlotCanvas& canvas, const Plot& plot, const wxSize& size,
                                     const PlotLook& look, const PlotOptions& options = {});

// Returns a plot as an SVG file in UTF-8. Needs no display.
std::string DrawPlotAsSvg(const Plot& plot, const wxSize& size);
// Returns a plot as a picture with so many pixels for each unit of the size.
wxBitmap DrawPlotAsBitmap(const Plot& plot, const wxSize& size, int scale);
