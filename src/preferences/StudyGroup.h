#pragma once

class wxChoice;
class wxScrolledWindow;
class wxSizer;

// The group "Study" of the options: what a card that was forgotten keeps of its interval. The
// controls belong to the form.
class StudyGroup {
  public:
    enum ControlId : int { kRelearningId = 10154 };

    // Adds the group to the end of a column of the form.
    StudyGroup(wxScrolledWindow& form, wxSizer& column);

    // Shows the settings. One that makes no sense counts as the first choice.
    void Load();
    void Store() const;

  private:
    wxChoice* mpRelearning = nullptr;
};
