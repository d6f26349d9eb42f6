#pragma once

#include <wx/listctrl.h>

#include <vector>

class CardList;
class wxStaticText;

// The virtual list control of a CardList: asks it for the text of what is drawn, and tells in words
// when there is nothing to show. Works on whole selections, as a pass over a million rows by the
// control's own operations is slow.
class CardListCtrl : public wxListCtrl {
  public:
    explicit CardListCtrl(CardList& owner);

    // The row that the keys act on, or -1.
    long GetFocusedRow() const;
    void SetFocusedRow(long row);

    // Ascending.
    std::vector<long> GetSelectedRows() const;
    // Exactly these rows, ascending, are selected afterwards.
    void SetSelectedRows(const std::vector<long>& rows);
    void SelectEveryRow(bool select);

    wxString OnGetItemText(long row, long column) const override;

  private:
    void OnItemFocused(wxListEvent& event);
    void OnCharacter(wxKeyEvent& event);
    void OnIdle(wxIdleEvent& event);

    CardList& mOwner;
    wxStaticText* mpEmptyNotice = nullptr;
    // The control tells of a new focused row; asking it means a pass over all rows.
    long mLastFocused = -1;
};
