#pragma once

#include <wx/panel.h>

#include <bitset>
#include <cstddef>

#include "plot/Plot.h"
#include "store/FlashCard.h"

class PlotControl;
class wxButton;
class wxCheckBox;
class wxChoice;
class wxFlexGridSizer;
class wxSizer;
class wxSpinCtrl;
class wxStaticText;
class wxTextCtrl;

// Returns a time as a person reads it: how far from now it is, and when it is by the clock on the
// wall, such as "in 3 days, Sat 28 Nov 14:05". The year is part of it unless it is the present one.
wxString DescribeTime(const wxDateTime& time, const wxDateTime& now);

// A part of a schedule, in the order of the parts of a card.
enum class SchedulePart : size_t {
    kIntroduced,
    kReviewInterval,
    kDifficulty,
    kLastScore,
    kLastReview,
    kErc
};
using ScheduleParts = std::bitset<6>;

// Shows the schedule of one direction of study in the editor and lets the user change it. The
// review interval appears in the largest unit that suits it, with two decimals. Owned by the form.
class EditSchedulePanel : public wxPanel {
  public:
    enum ControlId : int {
        ID_REVIEW_INTERVAL = 10000,
        ID_INTRODUCED = 10001,
        ID_LAST_REVIEW = 10002,
        ID_INTERVAL_UNIT = 10003,
        ID_NEXT_REVIEW = 10004,
        ID_LAST_SCORE = 10005,
        ID_DIFFICULTY = 10007,
        ID_CARD_LIFE = 10120,
        ID_RESET_SCHEDULE = 10121
    };

    // The title says which direction it is. It is the heading and the tool tip, and part of what
    // screen readers say.
    EditSchedulePanel(wxWindow* parent, wxWindowID id, const wxString& title);

    void Load(const CardSchedule& schedule);
    // The same for the schedules of many cards, which differ in some parts. Those stay as they are
    // until the user puts a value in.
    void LoadMany(const CardSchedule& schedule, const ScheduleParts& several);
    // Shows the schedule as the store has it now, unless the user has touched the present one, and
    // how far away its times are by now.
    void Follow(const CardSchedule& schedule);
    void FollowMany(const CardSchedule& schedule, const ScheduleParts& several);

    // Checks the controls and writes those that the user has touched into the record, which else
    // keeps what study has put there meanwhile. Returns 0, or -1 with the record unchanged when the
    // user was told of a fault; the focus is then on the field in question.
    int Save(CardSchedule& schedule);

    // Shows the plot of the reviews that the card has had in this direction, or hides it. Returns
    // true when the panel needs another height than before.
    bool ShowLife(Plot plot, bool isShown);

    // Returns true when a control differs from what the last load put into it.
    bool IsModified() const;
    // Returns the parts that the user has touched.
    ScheduleParts GetTouched() const;

  private:
    // The values of the controls.
    struct State {
        // As the toolkit has the three states of a box.
        int Introduced = 0;
        wxString LastReview;
        wxString Interval;
        int Unit = 0;
        wxString Difficulty;
        int Score = 0;

        bool operator==(const State& other) const;
    };

    bool IsSeveral(SchedulePart part) const { return mSeveral.test(static_cast<size_t>(part)); }
    void CreateControls();
    void ShowSchedule(const CardSchedule& schedule, const ScheduleParts& several);
    void Reset();
    wxTextCtrl* CreateReadOnlyText(int id);
    wxStaticText* CreateDescription();
    void LayOut(const wxString& title);
    void AddRow(wxFlexGridSizer& grid, const wxString& label, wxWindow& control,
                const wxString& title, wxSizer* field = nullptr);
    void DescribeTimes();
    void UsePanelColour();
    State GetState() const;
    int CollectInterval(const State& state, float& seconds);
    int CollectDifficulty(const State& state, uint8_t& difficulty);
    bool ReadInterval(float& seconds) const;

    wxCheckBox* mpIntroduced = nullptr;
    wxButton* mpReset = nullptr;
    wxTextCtrl* mpLastReview = nullptr;
    wxStaticText* mpLastReviewHere = nullptr;
    wxTextCtrl* mpReviewInterval = nullptr;
    wxChoice* mpIntervalUnit = nullptr;
    wxTextCtrl* mpNextReview = nullptr;
    wxStaticText* mpNextReviewHere = nullptr;
    wxSpinCtrl* mpDifficulty = nullptr;
    wxChoice* mpLastScore = nullptr;
    PlotControl* mpLife = nullptr;
    // The values that the last load put into the controls, and the record they came from.
    State mSaved;
    CardSchedule mSchedule;
    // The parts that are not the same in all cards.
    ScheduleParts mSeveral;
    // True once the user has asked for the schedule of a new card, until the next load.
    bool mIsReset = false;
};
