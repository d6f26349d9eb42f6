#pragma once

#include <wx/panel.h>

#include <vector>

#include "reviews/ReviewFigures.h"

class AppServices;
class Database;
class wxButton;
class wxListCtrl;

// The list of the cards that take too much, below the plot of the hardest ones, and what can be
// done about several at once: excluding them from the directions in which they do, editing them,
// and beginning them anew. Excluding and resetting are one step each that the list can take back.
// Main thread only.
class CostlyCardsPanel : public wxPanel {
  public:
    enum ControlId : int { kListId = 11220, kExcludeId = 11221, kEditId = 11222, kResetId = 11223 };

    // The services are not owned and must outlive the window.
    CostlyCardsPanel(wxWindow* parent, AppServices& services);
    // The list sends events while it goes.
    ~CostlyCardsPanel() override { DestroyChildren(); }
    CostlyCardsPanel(const CostlyCardsPanel&) = delete;
    CostlyCardsPanel& operator=(const CostlyCardsPanel&) = delete;

    // Null lets go of the store, which is not owned.
    void SetDatabase(Database* database) { mpDatabase = database; }
    void SetCards(const std::vector<CostlyCard>& cards);
    bool IsEmpty() const { return mCards.empty(); }

  private:
    std::vector<CostlyCard> GetSelected() const;
    void EnableButtons();
    void Edit();
    // Changes the selected cards in the directions in which they take too much.
    void Change(void (*change)(FlashCard& card, ReviewDirection direction, const wxDateTime& now));

    AppServices& mServices;
    Database* mpDatabase = nullptr;
    std::vector<CostlyCard> mCards;
    wxListCtrl* mpList = nullptr;
    std::vector<wxButton*> mButtons;
};
