#pragma once

#include <wx/frame.h>
#include <wx/string.h>
#include <wx/timer.h>
#include <wx/weakref.h>

#include <functional>
#include <tuple>
#include <utility>
#include <vector>

#include "list/CardList.h"
#include "store/Subject.h"

class AppServices;
class CategoryList;
class Database;
class wxDropDownButton;
class UndoHistory;
struct UndoOutcome;
class wxButton;
class wxSearchCtrl;
class wxStaticText;

// Keeps the texts that were searched for last: newest first, each once, at most five. A new list
// begins with a text that is always its oldest, and with the newest four of the last one.
class RecentSearches {
  public:
    // Reads what Write has stored.
    void Read();
    void Write() const;
    // Puts the text in front. Returns false when it stood there already and nothing changed.
    bool Add(const wxString& text);

    const std::vector<wxString>& GetTexts() const { return mTexts; }

  private:
    std::vector<wxString> mTexts;
};

// The window in which the user finds and manages cards: a category drop-down and a search field
// above the list of cards, and a line below it that counts them. The list follows the search field
// once the user pauses; Enter searches at once, keeps the text among the recent ones, and pressed
// again opens the only card found. Choosing a category gives the keys to the cards; the menu bar
// leaves the drop-down open, so that its commands mean the category. The application makes one when
// it is first needed, and forgets it when the window reports that it closes. Main thread only.
class BrowseFrame : public wxFrame, private Observer {
  public:
    enum ControlId : int {
        kCategoryListId = 11001,
        kSearchId = 11050,
        kSearchMenuId = 11051,
        kStudyButtonId = 11052,
        kSearchAllId = 11006,
        kExactSearchId = 11007,
        // One id for each CardState in the field's menu.
        kFirstStateId = 11010,
        kLastStateId = 11015,
        kSearchProblemId = 11053,
        kFirstStepsId = 11060,
        kFirstCardId = 11061,
        kFirstImportId = 11062,
        kSampleId = 11063,
        // One id for each recent search in the field's menu. The last one is spare.
        kFirstRecentId = 11000,
        kLastRecentId = 11005
    };

    // The services are not owned and must outlive the window.
    explicit BrowseFrame(AppServices& services);
    ~BrowseFrame() override;

    // Shows that store, which is not owned; null shows none.
    void SetDatabase(Database* database) { Attach(database, CardList::Extent::kAll); }
    // The same for the window shown at start: reads what is on the screen at once, and the rest
    // once that is drawn. When the rest cannot be read, the user may choose another store, as
    // before the window was shown.
    void ShowAtStart(Database& database);

    // Tells of the last exchange with other computers, beside the numbers of cards.
    void ShowExchangeState(const wxString& text);

    // Selects that card and brings it into view, if the list has it. Does not take the focus.
    void ShowCard(const CardUuid& id);

    // Gives the card that many rows after that one, or before it. Returns false when the list lacks
    // either.
    bool FindNeighbour(const CardUuid& id, int step, FlashCard& card) const;

    // Brings the window to the front with the search field ready for a text. Does nothing while the
    // window is hidden.
    void FocusSearch();

  private:
    // What a command does while one of the lists has the keyboard focus. An empty Run means that
    // the list does not have this command.
    struct ListCommand {
        std::function<void()> Run;
        std::function<bool()> IsEnabled;
    };

    static constexpr int kGap = 6;

    // Returns true when the window with the keyboard focus is the control or stands inside it.
    static bool HasFocusIn(const wxWindow& control);
    void Attach(Database* database, CardList::Extent extent);
    void ReadRest();
    void ReadAll();
    void Update(Subject* subject) override;
    void BuildControls();
    void BuildDropDown();
    void BuildSearchField(wxSizer& row);
    void BuildStudyButton(wxSizer& row);
    void BuildFirstSteps(wxSizer& column);
    void BindCommands();
    void BindViewCommands();
    void BindListCommands();
    void BindPrinting();
    void BindSortMenu(wxMenu& view);
    void BindOrderMenu();
    void OrderTabs();
    void AddListCommand(int id, const ListCommand& inCategories, const ListCommand& inCards);
    const ListCommand* FindListCommand(const ListCommand& inCategories,
                                       const ListCommand& inCards) const;
    void GiveKeysTo(wxWindow& child);
    void UseFont();
    void ShowCategory();
    void ShowReadyCount();
    void ShowFirstSteps();
    void ShowUndoSteps();
    void AddRecentSearch(const wxString& text);
    void RebuildSearchMenu();
    void ShowStates();
    bool CheckSearch(const wxString& text);
    bool Search(const wxString& text);
    void ClearSearch();
    void SetSearchAll(bool all);
    void ShowChosenCategory();
    void ShowCounts();
    void Print();
    void ClosePreview();
    void LetGoOfStore();

    void OnActivate(wxActivateEvent& event);
    void OnChildFocus(wxChildFocusEvent& event);
    void OnClose(wxCloseEvent& event);
    void OnCharHook(wxKeyEvent& event);
    void OnSearchText(wxCommandEvent& event);
    void OnSearchPause(wxTimerEvent& event);
    void OnSearchEnter(wxCommandEvent& event);
    void OnRecentSearch(wxCommandEvent& event);
    void OnSearchAll(wxCommandEvent& event);
    void OnExactSearch(wxCommandEvent& event);
    void OnState(wxCommandEvent& event);
    using TakeStep = int (UndoHistory::*)(Database& database, UndoOutcome& outcome);
    void OnUndo(wxCommandEvent& event, TakeStep take, const wxString& caption);
    void OnUpdateUndo(wxUpdateUIEvent& event);

    AppServices& mServices;
    RecentSearches mRecentSearches;
    bool mSearchAll = false;
    bool mIsSearchExact = false;
    wxSearchCtrl* mpSearchCtrl = nullptr;
    // Says below the field which word of the search means nothing.
    wxStaticText* mpSearchProblem = nullptr;
    wxDropDownButton* mpButton = nullptr;
    wxButton* mpStudyButton = nullptr;
    // The time and the direction (true in reverse) of the ready cards on the study button.
    std::pair<wxDateTime, bool> mReadyShown;
    // Runs while the user types and a little longer.
    wxTimer mTyping;
    // What Enter was last pressed for in the search field; empty once the text was changed.
    wxString mEntered;
    // What the status bar tells: the cards that are shown and selected, whether they are being
    // sorted, and of the last exchange with other computers.
    std::tuple<int, int, bool, wxString> mCounts{-1, 0, false, wxString()};
    wxString mExchangeState;
    // Opens the menu of the search field.
    wxDropDownButton* mpSearchMenuButton = nullptr;
    Database* mpDatabase = nullptr;
    CategoryList* mpCategoryList = nullptr;
    CardList* mpCardList = nullptr;
    // Shows pages of cards, and no other window can be used meanwhile. Null while there is none.
    wxWeakRef<wxFrame> mpPreview;
    // Gets the keyboard focus when the window comes back to the screen.
    wxWindow* mpChildFocus = nullptr;
    SubjectAttachment mSettingsAttachment;
    SubjectAttachment mStoreAttachment;
};
