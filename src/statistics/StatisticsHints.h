#pragma once

#include <wx/panel.h>
#include <wx/string.h>

#include <functional>
#include <vector>

#include "reviews/StudyHabit.h"

// What the last month says that a person may want to change.
struct StatisticsHint {
    wxString Text;
    // The boolean setting that is set once the hint is to stay away.
    const char* pSetting = nullptr;
    // True for what the options can change.
    bool HasOption = false;
};

// Returns the hints that are true of the habit. RelearnShare is the setting.
std::vector<StatisticsHint> MakeHints(const StudyHabit& habit, int relearnShare);

// Shows the hints that were not sent away, each with "Don't show this again" and, where there is
// one, a link to the options. Tells its parent to lay itself out. Main thread only.
class HintsPanel : public wxPanel {
  public:
    HintsPanel(wxWindow* parent, std::function<void()> openOptions);

    void SetHints(std::vector<StatisticsHint> hints);
    const std::vector<StatisticsHint>& GetHints() const { return mHints; }

  private:
    void Rebuild();
    void Dismiss(const char* setting);

    const std::function<void()> mOpenOptions;
    std::vector<StatisticsHint> mHints;
};
