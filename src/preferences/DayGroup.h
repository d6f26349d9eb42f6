#pragma once

class wxCheckBox;
class wxChoice;
class wxScrolledWindow;
class wxSizer;
class wxSpinCtrl;

// The group of the options that says how much a day of study holds: the new cards of a day, and the
// answers or minutes after which it is enough. The controls belong to the form.
class DayGroup {
  public:
    enum ControlId : int {
        kNewCardsId = 10160,
        kNewCardsCountId = 10161,
        kNewCardsPlaceId = 10162,
        kEnoughId = 10163,
        kEnoughCountId = 10164,
        kEnoughUnitId = 10165
    };

    // Adds the group to the end of a column of the form.
    DayGroup(wxScrolledWindow& form, wxSizer& column);

    void Load();
    void Store() const;

  private:
    // A check box with its number and what the number means.
    struct Limit {
        wxCheckBox* pSwitch = nullptr;
        wxSpinCtrl* pNumber = nullptr;
        wxChoice* pMeaning = nullptr;
    };

    static void Enable(const Limit& limit);

    Limit mNewCards;
    Limit mEnough;
};
