#pragma once

#include <wx/control.h>
#include <wx/geometry.h>

#include <vector>

#include "plot/Plot.h"

// Shows a plot in the colours of the theme. The mouse, or the arrow keys with Home and End, mark a
// row of the plot's numbers, whose words a tip shows and a screen reader says. Enter and a double
// click send wxEVT_BUTTON. Main thread only.
class PlotControl : public wxControl {
  public:
    // A tile leaves out the summary; a compact control also the legend, the titles of axes and the
    // notes.
    enum class Form { Full, Tile, Compact };
    PlotControl(wxWindow* parent, wxWindowID id, Form form = Form::Full);

    void SetPlot(Plot plot);
    const Plot& GetPlot() const { return mPlot; }
    // Leaves the title to the surrounding window. A screen reader still says it.
    void HideTitle();

    // Returns the marked row of the plot's table, or -1.
    int GetMarkedRow() const { return mMarkedRow; }
    // Returns the row at a place of the control, or -1.
    int RowAt(const wxPoint& place) const;

    bool AcceptsFocusFromKeyboard() const override { return true; }

  protected:
    wxSize DoGetBestClientSize() const override;

  private:
    void Mark(int row);
    void TellMeaning();

    void OnPaint(wxPaintEvent& event);
    void OnKey(wxKeyEvent& event);

    Plot mPlot;
    Form mForm;
    bool mHasTitle = true;
    int mMarkedRow = -1;
    // The area of each row as it was painted last.
    std::vector<wxRect2DDouble> mRows;
};
