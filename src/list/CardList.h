#pragma once

#include <wx/panel.h>

#include <cstdint>
#include <vector>

#include "list/CardListCtrl.h"
#include "store/Subject.h"

class AppServices;
class CardListCtrl;
class Database;
class wxListEvent;

// The panel and its list control share it.
constexpr int kCardListId = 10093;

// Shows the cards of the current category, or those of them that match a search, in the order of a
// column. Holds one row id per card and reads only the cards that are drawn, so a store of any size
// opens at once. Follows the store and the settings by their notices; the selection follows its
// cards. Main thread only.
class CardList : public wxPanel, private Observer {
  public:
    // The services are not owned and must outlive the panel.
    CardList(AppServices& services, wxWindow* parent, const wxSize& size);
    ~CardList() override;

    // The store to show, not owned; null shows nothing.
    void SetDatabase(Database* database);
    // True takes the rows from the current category, false from searches in the whole store.
    void SetShowCategory(bool show);
    // An empty text shows all. "%" and "_" are wild cards.
    void SetSearch(const wxString& text);

    // What a cell shows; reads the card when it is not at hand.
    wxString GetCellText(long row, long column);

    // The row ids of the selected rows, ascending by row; with clear the rows are deselected.
    void CollectSelection(std::vector<int64_t>& rowIds, bool clear);

    // Opens the first row that is focused or selected in its editor.
    void EditSelected();
    bool CanEdit() const;
    void Cut() { PutOnClipboard(true); }
    void Copy() { PutOnClipboard(false); }
    bool CanPutOnClipboard() const;
    void Paste();
    bool CanPaste() const;
    // Asks first. Without a selection the focused card goes.
    void DeleteSelected();
    void SelectAll();
    // A card is there for the commands to take: selected, or else focused.
    bool HasTarget() const;
    // As of the last notice of the store; true also when the cards could not be counted.
    bool IsStoreEmpty() const { return mStoreCount == 0; }

    void SetFocus() override;

  private:
    void Update(Subject* subject) override;

    void RefreshRows();
    void SelectRowIds();
    // Shows as many rows as there are row ids, with what was selected and focused before.
    void ShowRows(std::vector<int64_t> selected, int64_t focused, long focusedRow);
    // Reads the rows anew where they are other cards than before, and scrolls to the focused one.
    void ShowOtherCards();
    // Selects the rows of those cards, in any order, and nothing else.
    void RestoreSelection(std::vector<int64_t> rowIds);
    // Puts the focus on the row of that card. With none, onto the row that stands where it stood.
    void RestoreFocus(int64_t rowId, long formerRow);
    long FindRow(int64_t rowId) const;
    int64_t GetFocusedRowId() const;
    const FlashCard* FetchRow(long row);
    void EditRow(long row);
    void PutOnClipboard(bool cut);
    void UseFont();

    void OnItemActivated(wxListEvent& event);
    void OnListKeyDown(wxListEvent& event);
    void OnColumnClick(wxListEvent& event);
    void OnColumnRightClick(wxListEvent& event);
    void AutoSizeAllColumns();
    void OnContextMenu(wxContextMenuEvent& event);

    AppServices& mServices;
    CardListCtrl* mpListCtrl = nullptr;
    Database* mpDatabase = nullptr;
    bool mShowCategory = false;
    wxString mSearch;
    int32_t mCategoryId = -1;
    uint32_t mSortColumn = 0;
    CardRowCache mRowCache;
    // One for each list row, in the order of display.
    std::vector<int64_t> mRowIds;
    int32_t mStoreCount = 0;
    SubjectAttachment mSettingsAttachment;
    SubjectAttachment mStoreAttachment;
};
