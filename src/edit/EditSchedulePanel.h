#pragma once

#include <wx/panel.h>

#include "store/FlashCard.h"

class wxCheckBox;
class wxChoice;
class wxSpinCtrl;
class wxTextCtrl;

// The part of the editor in which the schedule of one direction of study is seen and changed. The
// interval is shown in the largest unit that suits it, with two decimals.
class EditSchedulePanel : public wxPanel {
  public:
    // The title says which direction it is: a tool tip, and words for readers of the screen.
    EditSchedulePanel(wxWindow* parent, wxWindowID id, const wxString& title);

    void Load(const CardSchedule& schedule);
    // Shows the schedule that the store has by now, unless the user has touched the present one.
    void Follow(const CardSchedule& schedule);

    // Checks the controls and gives 0 with the whole record. An interval and a difficulty that were
    // not touched come back as they were loaded, though the interval is shown rounded. Otherwise
    // the user was told and stands at the field in question: -1, and the record is unchanged.
    int Save(CardSchedule& schedule);

    // Whether a control differs from what the last load put into it.
    bool IsModified() const;

  private:
    // What the controls hold.
    struct State {
        bool Introduced = false;
        wxString LastReview;
        wxString Interval;
        int Unit = 0;
        wxString Difficulty;
        int Score = 0;

        bool operator==(const State& other) const;
    };

    void CreateControls();
    wxTextCtrl* CreateReadOnlyText(int id);
    void LayOut(const wxString& title);
    void UsePanelColour();
    State GetState() const;
    int CollectInterval(const State& state, float& seconds);
    int CollectDifficulty(const State& state, uint8_t& difficulty);
    bool ReadInterval(float& seconds) const;

    wxCheckBox* mpIntroduced = nullptr;
    wxTextCtrl* mpLastReview = nullptr;
    wxTextCtrl* mpReviewInterval = nullptr;
    wxChoice* mpIntervalUnit = nullptr;
    wxTextCtrl* mpNextReview = nullptr;
    wxSpinCtrl* mpDifficulty = nullptr;
    wxChoice* mpLastScore = nullptr;
    // What the last load put into the controls, and the record that it came from.
    State mSaved;
    CardSchedule mSchedule;
};
