#pragma once

#include <wx/window.h>

// A thin bar at the lower edge of a field of a status bar, which fills as the day of study does.
// The field's own text says the numbers, so the bar is for the eye alone. Owned by its parent.
class DayBar : public wxWindow {
  public:
    explicit DayBar(wxWindow* parent);

    // Lies along the lower edge of the field.
    void Place(const wxRect& field);
    // More than the goal fills the bar, as the goal does.
    void SetProgress(int done, int goal);

    bool AcceptsFocus() const override { return false; }

  private:
    void OnPaint(wxPaintEvent& event);

    int mDone = 0;
    int mGoal = 1;
};
