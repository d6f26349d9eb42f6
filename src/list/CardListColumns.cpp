#include "list/CardList.h"

#include <wx/menu.h>

#include <algorithm>
#include <vector>

#include "shell/CommandIds.h"
#include "shell/Toolkit.h"
#include "store/Database.h"

// The columns of the list: which are shown, their menu, and the one that sorts the cards.

void CardList::ArrangeColumns() {
    ListColumns columns;
    for (const ListColumn column : mShownColumns) {
        if (column != ListColumn::kCategory || ShowsCategories()) {
            columns.push_back(column);
        }
    }
    mpListCtrl->SetColumns(columns);
    auto sorted = std::find(columns.begin(), columns.end(), mOrder.Column);
    if (sorted == columns.end()) {
        mOrder = ListOrder();
        sorted = columns.begin();
    }
    mpListCtrl->ShowSortIndicator(static_cast<int>(sorted - columns.begin()), !mOrder.IsDescending);
}

void CardList::OnColumnClick(wxListEvent& event) {
    const ListColumns& columns = mpListCtrl->GetColumns();
    if (event.GetColumn() >= 0 && static_cast<size_t>(event.GetColumn()) < columns.size()) {
        const ListColumn column = columns[static_cast<size_t>(event.GetColumn())];
        // A second click turns the order.
        SortBy({column, column == mOrder.Column && !mOrder.IsDescending});
    }
}

bool CardList::IsColumnShown(ListColumn column) const {
    const ListColumns& columns = mpListCtrl->GetColumns();
    return std::find(columns.begin(), columns.end(), column) != columns.end();
}

void CardList::SortBy(const ListOrder& order) {
    if (!CanSortBy(order.Column)) {
        return;
    }
    if (!IsColumnShown(order.Column)) {
        ToggleColumn(order.Column);
    }
    mOrder = order;
    WriteListOrder(mOrder);
    ArrangeColumns();
    // The view stays with cards that the user has selected. Without any the focus is nobody's
    // choice.
    const bool hasSelection = mpListCtrl->GetSelectedItemCount() > 0;
    mViewWhenSorted = hasSelection ? View::kShowsFocus : View::kBeginsAtTop;
    RefreshRows();
    if (!hasSelection && !mRowIds.empty()) {
        mpListCtrl->SetFocusedRow(0);
    }
    if (mpListCtrl->GetFocusedRow() >= 0) {
        mpListCtrl->EnsureVisible(mpListCtrl->GetFocusedRow());
    }
}

std::unique_ptr<wxMenu> BuildSortMenu() {
    auto menu = std::make_unique<wxMenu>();
    int id = ID_SORT_FIRST;
    for (const ListColumnTraits& traits : AllListColumns()) {
        menu->AppendRadioItem(id++, wxGetTranslation(traits.Heading));
    }
    menu->AppendSeparator();
    menu->AppendRadioItem(ID_SORT_ASCENDING, _("Ascending"));
    menu->AppendRadioItem(ID_SORT_DESCENDING, _("Descending"));
    return menu;
}

void CardList::OpenColumnMenu() {
    ShowColumnMenu(-1, GetRowsWindow(*mpListCtrl).GetPosition());
}

void CardList::ShowColumnMenu(int column, const wxPoint& place) {
    mMenuColumn = column;
    wxMenu menu;
    menu.Append(ID_COLUMN_AUTO_SIZE, _("Auto Size Column"))->Enable(mMenuColumn >= 0);
    menu.Append(ID_COLUMN_AUTO_SIZE_ALL, _("Auto Size All Columns"));
    menu.AppendSeparator();
    for (const ListColumnTraits& traits : AllListColumns()) {
        if (traits.MenuId != 0) {
            menu.AppendCheckItem(traits.MenuId, wxGetTranslation(traits.Heading))
                ->Check(std::count(mShownColumns.begin(), mShownColumns.end(), traits.Column) != 0);
        }
    }
    menu.Enable(ID_COLUMN_CATEGORY, ShowsCategories());
    menu.AppendSeparator();
    menu.AppendSubMenu(BuildSortMenu().release(), _("Sort by"));
    PopupMenu(&menu, place);
}

void CardList::BindColumnMenu() {
    for (const ListColumnTraits& traits : AllListColumns()) {
        if (traits.MenuId != 0) {
            Bind(
                wxEVT_MENU, [this, &traits](wxCommandEvent&) { ToggleColumn(traits.Column); },
                traits.MenuId);
        }
    }
    Bind(
        wxEVT_MENU,
        [this](wxCommandEvent&) { mpListCtrl->SetColumnWidth(mMenuColumn, wxLIST_AUTOSIZE); },
        ID_COLUMN_AUTO_SIZE);
    Bind(
        wxEVT_MENU,
        [this](wxCommandEvent&) {
            for (int column = 0; column < mpListCtrl->GetColumnCount(); ++column) {
                mpListCtrl->SetColumnWidth(column, wxLIST_AUTOSIZE);
            }
        },
        ID_COLUMN_AUTO_SIZE_ALL);
}

void CardList::ToggleColumn(ListColumn column) {
    const auto place = std::lower_bound(mShownColumns.begin(), mShownColumns.end(), column);
    if (place != mShownColumns.end() && *place == column) {
        mShownColumns.erase(place);
    } else {
        mShownColumns.insert(place, column);
    }
    WriteShownColumns(mShownColumns);
    const ListColumn sorted = mOrder.Column;
    ArrangeColumns();
    if (mOrder.Column != sorted) {
        RefreshRows();
    } else if (mpDatabase != nullptr) {
        ReadFailures();
    }
}
