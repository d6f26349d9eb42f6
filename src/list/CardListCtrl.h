#pragma once

#include <wx/listctrl.h>

#include <cstddef>
#include <cstdint>
#include <map>
#include <vector>

#include "store/FlashCard.h"

class CardList;
class wxStaticText;

// The cards of the list rows that are drawn, and of about a page on each side, so that a list of
// any length holds three pages of cards.
class CardRowCache {
  public:
    void Clear() { mCards.clear(); }

    // The card of a row, or null when it is not here.
    const FlashCard* Find(int32_t row) const;

    // Forgets the rows far from a page that begins with the row top.
    void Trim(int32_t top, int32_t page);

    const FlashCard& Insert(int32_t row, FlashCard card);

    size_t GetSize() const { return mCards.size(); }

  private:
    std::map<int32_t, FlashCard> mCards;
};

// The virtual list control of a CardList: asks it for the text of what is drawn, and tells in words
// when there is nothing to show. Works on whole selections, as a pass over a million rows by the
// control's own operations is slow. While there are rows one of them is focused, so that every key
// has a row to act on.
class CardListCtrl : public wxListCtrl {
  public:
    explicit CardListCtrl(CardList& owner);

    // The row that the keys act on, or -1.
    long GetFocusedRow() const;
    void SetFocusedRow(long row);
    // Focuses the first row if there are rows and none is focused.
    void FocusSomeRow();

    // Ascending.
    std::vector<long> GetSelectedRows() const;
    // Exactly these rows, ascending, are selected afterwards.
    void SetSelectedRows(const std::vector<long>& rows);
    void SelectEveryRow(bool select);
    // Selects the focused row if no row is selected, so that the user sees what a command takes.
    void SelectSomeRow();

    // Takes wxLIST_AUTOSIZE as well, also when the user double-clicks on the edge of a heading: as
    // wide as the heading and the rows in view need, but no wider than the list.
    bool SetColumnWidth(int column, int width) override;

    wxString OnGetItemText(long row, long column) const override;

  private:
    wxWindow* FindHeadings();
    int MeasureColumn(int column);
    void TellFocusedRow();
    void AnchorFocusedRow();
    void KeepHeadingsInPlace();

    void OnItemFocused(wxListEvent& event);
    void OnRowsFocused(wxFocusEvent& event);
    void OnLeftDown(wxMouseEvent& event);
    void OnCharacter(wxKeyEvent& event);
    void OnIdle(wxIdleEvent& event);

    CardList& mOwner;
    wxStaticText* mpEmptyNotice = nullptr;
    // The control tells of a new focused row; asking it means a pass over all rows.
    long mLastFocused = -1;
    // The control knows from where Shift extends the selection. It learns that from the user's keys
    // and clicks alone, and its row is another card after a refresh.
    bool mIsAnchored = false;
    // Scroll position and widths for which the headings were last drawn.
    std::vector<int> mHeadingPlaces;
};
