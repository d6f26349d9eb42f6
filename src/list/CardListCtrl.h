#pragma once

#include <wx/listctrl.h>

#include <cstddef>
#include <cstdint>
#include <map>
#include <vector>

#include "list/CardColumns.h"
#include "store/FlashCard.h"

class CardList;
class wxStaticText;

// Keeps the cards of the rows on the screen and of about a page on each side, so that a list of any
// length holds at most three pages of cards.
class CardRowCache {
  public:
    void Clear() { mCards.clear(); }

    // Returns the card of a row, or null when it is not cached.
    const FlashCard* Find(int32_t row) const;

    // Forgets the rows that are more than a page away from the page that begins with the row top.
    void Trim(int32_t top, int32_t page);

    const FlashCard& Insert(int32_t row, FlashCard card);

    size_t GetSize() const { return mCards.size(); }

  private:
    std::map<int32_t, FlashCard> mCards;
};

// The virtual list control inside a CardList, which gives it the texts of the cells and outlives
// it. Handles selections as a whole, because the base class takes long for a million single rows,
// and shows a notice when there are no rows. The source begins with the rules of the focus.
class CardListCtrl : public wxListCtrl {
  public:
    enum ControlId : int { kNoticeId = 10000 };

    explicit CardListCtrl(CardList& owner);

    // Shows these columns. Until the user sets a width they fill the list; after that those that
    // were shown before keep their widths.
    void SetColumns(const ListColumns& columns);
    const ListColumns& GetColumns() const { return mColumns; }
    // Returns true once the user has set widths, in this or an earlier run of the program.
    bool AreWidthsSet() const { return mWidthsAreSet; }
    // Takes the present widths as set by the user.
    void KeepWidths() { mWidthsAreSet = true; }

    // Returns the row that the keys act on, or -1.
    long GetFocusedRow() const;
    void SetFocusedRow(long row);
    // Focuses the first row if there are rows and none is focused.
    void FocusSomeRow();

    // Returns the selected rows in ascending order.
    std::vector<long> GetSelectedRows() const;
    // Selects exactly these rows, which are given in ascending order.
    void SetSelectedRows(const std::vector<long>& rows);
    void SelectEveryRow(bool select);
    // Selects the focused row when no row is selected, so that the user sees what a command is
    // about to take.
    void SelectSomeRow();

    // Says what to do while there are no rows, below the notice that there are none.
    void SetAdvice(const wxString& advice);

    // With wxLIST_AUTOSIZE, which a double click on the edge of a heading sends too, makes the
    // column as wide as its heading and the rows in view need, but no wider than the list.
    bool SetColumnWidth(int column, int width) override;

    // The widths follow the font.
    bool SetFont(const wxFont& font) override;

    wxString OnGetItemText(long row, long column) const override;

  private:
    wxWindow* FindHeadings() const;
    int MeasureColumn(int column);
    int MeasureHeading(ListColumn column) const;
    int GetFirstWidth(ListColumn column) const;
    void FitColumns();
    void PlaceNotice();
    void TellFocusedRow();
    void AnchorFocusedRow();
    void KeepHeadingsInPlace();

    void OnItemFocused(wxListEvent& event);
    void OnRowsFocused(wxFocusEvent& event);
    void OnLeftDown(wxMouseEvent& event);
    void OnCharacter(wxKeyEvent& event);
    void OnIdle(wxIdleEvent& event);
    void OnRowsSize(wxSizeEvent& event);

    CardList& mOwner;
    wxWindow* mpRows = nullptr;
    wxStaticText* mpEmptyNotice = nullptr;
    wxString mNotice;
    ListColumns mColumns;
    // The widths of the columns that were shown before, in pixels; hidden ones keep theirs.
    std::map<ListColumn, int> mWidths;
    bool mWidthsAreSet = false;
    // The row of the last focus event. Asking the base class would take a pass over all rows.
    long mLastFocused = -1;
    // True while the row from which Shift extends the selection is the one that the user expects.
    bool mIsAnchored = false;
    // The scroll position and the column widths for which the headings were last drawn.
    std::vector<int> mHeadingPlaces;
};
