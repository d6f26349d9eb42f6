#pragma once

#include <cstdint>
#include <vector>

class wxChoice;
class wxScrolledWindow;
class wxSizer;

// The group "Study" of the options: what a card that was forgotten keeps of its interval, and when
// the user is reminded of due cards. The controls belong to the form.
class StudyGroup {
  public:
    enum ControlId : int { kRelearningId = 10154, kReminderId = 10155 };

    // Adds the group to the end of a column of the form.
    StudyGroup(wxScrolledWindow& form, wxSizer& column);

    // Shows the settings. One that makes no sense counts as the first choice.
    void Load();
    void Store() const;

  private:
    void ShowMinutes();

    wxChoice* mpRelearning = nullptr;
    wxChoice* mpReminder = nullptr;
    // The minute of the day that each entry of the reminder stands for, -1 for the first.
    std::vector<int32_t> mMinutes;
};
