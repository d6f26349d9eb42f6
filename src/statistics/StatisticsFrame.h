#pragma once

#include <wx/frame.h>

#include <list>
#include <memory>
#include <vector>

#include "reviews/ReviewLog.h"
#include "statistics/StatisticsPlots.h"
#include "store/FlashCard.h"
#include "store/Subject.h"

class AppServices;
class CostlyCardsPanel;
class Database;
class NumbersList;
class PlotControl;
class wxButton;
class wxChoice;
class wxListBox;
class wxCheckBox;
struct FiguresJob;

class StatisticsOverview;

// The window that shows what was learnt and what comes: a list of pages, each a plot whose numbers
// can be shown as a table, copied and saved. It counts on a worker thread when it opens, comes to
// the front or hears that the store changed, and shows the last figures meanwhile. At most one is
// open; it deletes itself when it closes. Main thread only.
class StatisticsFrame : public wxFrame, private Observer {
  public:
    enum ControlId : int {
        kCategoryId = 11210,
        kDirectionId = 11211,
        kSpanId = 11212,
        kPagesId = 11213,
        kPlotId = 11214,
        kNumbersId = 11215,
        kShowNumbersId = 11216
    };

    // The services are not owned and must outlive the window.
    explicit StatisticsFrame(AppServices& services);
    ~StatisticsFrame() override;

    // Shows that store, which is not owned; null shows none.
    void SetDatabase(Database* database);

    // True while the figures on show are not those of the present choices.
    bool IsCounting() const { return mpJob != nullptr; }
    StatisticsPage GetPage() const;
    void ShowPage(StatisticsPage page);

    // Writes the picture of the page: SVG for a path that ends in ".svg", else PNG with two pixels
    // for each unit. Returns false, with the file as it was, when it cannot be written.
    bool SavePicture(const wxString& path) const;

  private:
    void Update(Subject* subject) override;

    void BuildControls();
    wxSizer* BuildChoices();
    wxSizer* BuildButtons();
    wxChoice* AddChoice(wxSizer& row, int id, const wxString& label,
                        const std::vector<wxString>& entries);
    void BindCommands();
    void ListCategories();
    ReviewQuery ReadQuery() const;
    const Plot& CurrentPlot() const { return mPlots[static_cast<size_t>(GetPage())]; }

    void Count();
    void StartJob();
    void TakeFigures();
    void ShowPlots();
    void ShowCurrent();
    void Copy();
    void Save();
    void OpenCard(int row);
    void LetGoOfStore();

    void OnActivate(wxActivateEvent& event);
    void OnClose(wxCloseEvent& event);
    void OnCharHook(wxKeyEvent& event);

    AppServices& mServices;
    Database* mpDatabase = nullptr;
    wxChoice* mpCategory = nullptr;
    wxChoice* mpDirection = nullptr;
    wxChoice* mpSpan = nullptr;
    wxListBox* mpPages = nullptr;
    StatisticsOverview* mpOverview = nullptr;
    PlotControl* mpPlot = nullptr;
    CostlyCardsPanel* mpCostly = nullptr;
    NumbersList* mpNumbers = nullptr;
    wxCheckBox* mpShowNumbers = nullptr;
    wxButton* mpCopy = nullptr;
    wxButton* mpSave = nullptr;

    // The categories of the choice, from its second entry on.
    std::vector<Category> mCategories;
    StatisticsPlots mPlots;
    std::vector<HardCard> mHardest;
    // Used by the worker alone.
    ReviewHistory mHistory;
    std::unique_ptr<FiguresJob> mpJob;
    // The choices or the store changed while the worker was counting.
    bool mCountAgain = false;
    SubjectAttachment mStoreAttachment;
};
