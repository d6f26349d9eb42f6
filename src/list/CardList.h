#pragma once

#include <wx/panel.h>

#include <atomic>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <vector>

#include "list/CardColumns.h"
#include "list/CardListCtrl.h"
#include "list/RowJob.h"
#include "reviews/CardFailures.h"
#include "reviews/ReviewLog.h"
#include "store/CardSequence.h"
#include "store/CategoryChoice.h"
#include "store/SearchQuery.h"
#include "store/Subject.h"

class AppServices;
class Database;
class wxListEvent;
class wxMenu;

// Window id of the panel and of its list control.
constexpr int kCardListId = 10093;

// Shows the cards of the current category, or those that match a search, in the order of a column.
// Holds one row id for each card and reads a card only when it is drawn, so a store of any size
// opens at once. Texts have the order of the user's language; a worker sorts many, and the rows
// stay as they are until it has. Refreshes itself when the store or the settings notify; the
// selection stays with its cards, not with its rows. Main thread only.
class CardList : public wxPanel, private Observer {
  public:
    // The services are not owned and must outlive the panel.
    CardList(AppServices& services, wxWindow* parent, const wxSize& size);
    ~CardList() override;

    // How much of a store a list reads when it is given one. With the first page alone, a large
    // store is on the screen as fast as a small one; ReadAll has to follow.
    enum class Extent { kAll, kFirstPage };

    // Shows that store, which is not owned; null shows nothing.
    void SetDatabase(Database* database, Extent extent = Extent::kAll);
    // Returns true until ReadAll brings the cards that are missing.
    bool HasFirstPageOnly() const { return mHasFirstPageOnly; }
    void ReadAll() { RefreshRows(); }
    // Calls back once, from the event loop, after the rows are next drawn.
    void CallWhenDrawn(std::function<void()> callback);
    // True takes the rows from the current category, false from searches in the whole store.
    void SetShowCategory(bool show);
    // True lets a search find cards of all categories, and an empty search every card.
    void SetSearchAll(bool all);
    // Shows the cards that the words of the text describe (SearchQuery), or in exact mode those
    // that contain it as it stands; an empty text shows all. A word that means nothing finds
    // nothing.
    void SetSearch(const wxString& text, bool isExact = false);
    // The same, unless the function, which is asked every few milliseconds, returns true before the
    // cards are found. Then nothing changes and the result is false.
    bool TrySearch(const wxString& text, bool isExact, const std::function<bool()>& isStopped);
    // Returns the search whose cards are shown.
    const SearchQuery& GetSearch() const { return mDescribed.Query; }

    // Sorts the rows and keeps the order for the next start.
    void SortBy(const ListOrder& order);
    const ListOrder& GetOrder() const { return mOrder; }
    // Returns true until a worker has sorted the rows, which have another order so far.
    bool IsSorting() const { return mSortJob.IsRunning(); }
    bool IsColumnShown(ListColumn column) const;
    // The categories are a column only where cards of several are shown.
    bool CanSortBy(ListColumn column) const {
        return column != ListColumn::kCategory || IsColumnShown(column);
    }

    // Returns the text of a cell. Reads the card from the store when it is not in the cache.
    wxString GetCellText(long row, ListColumn column);

    int GetCardCount() const { return static_cast<int>(mRowIds.size()); }
    // The rows' cards, in the order on the screen.
    const std::vector<int64_t>& GetRowIds() const { return mRowIds; }
    int GetSelectedCount() const { return mpListCtrl->GetSelectedItemCount(); }

    // Opens the menu of the columns by the headings, as a right click on a heading does.
    void OpenColumnMenu();

    // Shows the schedules of the direction that is under study now.
    void FollowDirection();

    // Fills rowIds with the row ids of the selected rows, in the order of the rows. With clear the
    // rows are deselected.
    void CollectSelection(std::vector<int64_t>& rowIds, bool clear);

    // Opens the selected card in its editor, several together, or the focused one without a
    // selection.
    void EditSelected();
    // Returns true when no row is above the focused one.
    bool IsAtTop() const { return mpListCtrl->GetFocusedRow() <= 0; }
    void Cut() { PutOnClipboard(true); }
    void Copy() { PutOnClipboard(false); }
    void Paste();
    bool CanPaste() const;
    // Finds and replaces in the selected cards or in all that are shown.
    void ReplaceTexts();
    // These set the order of introduction by hand, each as one step that can be undone.
    // Moves the selected cards one place up or down as the list shows the numbers, each in its
    // category. Without selection the focused card moves.
    void MoveSelected(bool isDown);
    // Asks for a number and gives the selected cards the numbers from it on, in the order of the
    // list.
    void RenumberSelected();
    // Deals the numbers of the current category's cards that are new in the direction of study.
    void DealNewCards();
    // Asks before it deletes. When no card is selected, the focused card is deleted.
    void DeleteSelected();
    void SelectAll() { mpListCtrl->SelectEveryRow(true); }
    // Selects and shows the cards of these row ids. Does nothing when none of them is in the list.
    void SelectCards(std::vector<int64_t> rowIds);
    // The same, but a selection that has one of them already stays.
    void ShowCards(const std::vector<int64_t>& rowIds);
    // Returns the row id that many rows after that one, or before it; -1 when there is none.
    int64_t FindNeighbour(int64_t rowId, int step) const;
    // Returns true when a command has a card to act on: a selected one, or the focused one.
    bool HasTarget() const;
    // Returns true when the whole store had no card at its last notice, or could not count them.
    bool IsStoreEmpty() const { return mStoreCount == 0; }

    void SetFocus() override { mpListCtrl->SetFocus(); }

  private:
    void Update(Subject* subject) override;

    // What becomes of the view when the rows get their order.
    enum class View { kStays, kShowsFocus, kBeginsAtTop };

    void RefreshRows(Extent extent = Extent::kAll);
    // Returns false, with nothing changed, when it was stopped.
    bool TryRefresh(Extent extent, const std::function<bool()>& isStopped);
    void ShowNothing();
    CardOrder GetStoreOrder() const;
    bool ReadRowIds(Extent extent, const std::function<bool()>& isStopped,
                    std::vector<int64_t>& rowIds);
    bool ReadRowIds(CardOrder order, const std::function<bool()>& isStopped,
                    std::vector<int64_t>& rowIds);
    void ReadRowIds(CardOrder order, std::vector<int64_t>& rowIds);
    // Sorts a few row ids at once, and lets the worker sort many, which follow the former order
    // meanwhile.
    void SortRowIds(const std::vector<int64_t>& former, std::vector<int64_t>& rowIds);
    void TakeSorted(CardOrder order, std::vector<int64_t> rowIds, bool isSorted);
    // Returns how to sort row ids in the order that the list has now, for any thread; nothing where
    // the store itself can.
    using Sort =
        std::function<bool(const std::atomic<bool>& isCancelled, std::vector<int64_t>& rowIds)>;
    Sort MakeSort() const;
    // Lets a worker count the failures where they are shown.
    void ReadFailures();
    wxString FailuresOf(const FlashCard& card) const;
    ReviewDirection GetDirection() const { return mIsReverse ? kReviewReverse : kReviewForward; }
    // Takes what the words are measured by as it is now.
    void DescribeSearch();
    // Lets a worker find the hardest cards for a search that names them, and refreshes the rows if
    // they are others than before.
    void ReadHardest();
    // Turns to the current category and those below it. Returns true for another than before.
    bool FollowChoice();
    // True while the cards may be of several categories.
    bool ShowsCategories() const { return mSearchAll || mChoice.IsMany(); }
    // Shows the columns that the user has chosen, as far as they mean something for these rows.
    void ArrangeColumns();
    void ToggleColumn(ListColumn column);
    wxString NameCategory(int32_t id);
    // Gives the control one row for each row id, and restores what was selected and focused.
    void ShowRows(std::vector<int64_t> rowIds);
    // Refreshes after a change of category or search, when the former place of the focus means
    // nothing, and scrolls to the focused row.
    void ShowOtherCards();
    bool TryOtherCards(const std::function<bool()>& isStopped);
    // Selects the rows of these cards, given in any order, and deselects all others.
    void RestoreSelection(std::vector<int64_t> rowIds);
    // Puts the focus on the row of that card. When the card is gone, the row that took its place
    // gets the focus.
    void RestoreFocus(int64_t rowId, long formerRow);
    long FindRow(int64_t rowId) const;
    int64_t GetFocusedRowId() const;
    const FlashCard* FetchRow(long row);
    void EditRow(long row);
    void EditFrom(long row);
    void WriteOrders(const CardRenumberings& changes, const wxString& caption);
    void PutOnClipboard(bool cut);
    void UseFont();

    void OnListKeyDown(wxListEvent& event);
    void OnColumnClick(wxListEvent& event);
    void BindColumnMenu();
    // Opens the menu on the heading of a column, or of none for -1.
    void ShowColumnMenu(int column, const wxPoint& place);
    void OnRowsPaint(wxPaintEvent& event);

    AppServices& mServices;
    CardListCtrl* mpListCtrl = nullptr;
    Database* mpDatabase = nullptr;
    bool mShowCategory = false;
    wxString mSearch;
    bool mIsSearchExact = false;
    CardSearch mDescribed;
    // The reviews in the log, as far as mHardJob has read them.
    ReviewHistory mHistory;
    bool mSearchAll = false;
    // What stands for the row id of a card that is not there.
    static constexpr int kNoCard = -1;
    CategoryChoice mChoice;
    // The columns that the user has chosen, and the one of them that gives the order.
    ListColumns mShownColumns = ReadShownColumns();
    ListOrder mOrder = ReadListOrder();
    bool mIsReverse;
    // The column whose heading the menu was opened on, or -1.
    int mMenuColumn = -1;
    // Names of categories that were drawn since the last refresh, by id.
    std::map<int32_t, wxString> mCategoryNames;
    CardRowCache mRowCache;
    // The store's row id of each list row, in the order on the screen.
    std::vector<int64_t> mRowIds;
    bool mHasFirstPageOnly = false;
    std::function<void()> mWhenDrawn;
    int32_t mStoreCount = 0;
    CardFailures mFailures;
    std::shared_ptr<const CardFailures::Counts> mpFailureCounts =
        std::make_shared<CardFailures::Counts>();
    RowJob mFailureJob;
    RowJob mHardJob;
    RowJob mSortJob;
    View mViewWhenSorted = View::kStays;
    SubjectAttachment mSettingsAttachment;
    SubjectAttachment mStoreAttachment;
};

// Returns the menu of the orders, whose entries have the ids from ID_SORT_FIRST on.
std::unique_ptr<wxMenu> BuildSortMenu();
