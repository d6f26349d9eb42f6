#include "list/CardList.h"

#include <wx/log.h>
#include <wx/menu.h>
#include <wx/sizer.h>
#include <wx/utils.h>

#include <algorithm>
#include <list>
#include <utility>

#include "base/Text.h"
#include "categories/CurrentCategory.h"
#include "shell/AppServices.h"
#include "shell/CommandIds.h"
#include "shell/MenuBar.h"
#include "shell/MessageBox.h"
#include "shell/ProgramInfo.h"
#include "shell/Settings.h"
#include "shell/Toolkit.h"
#include "store/Database.h"
#include "store/UndoHistory.h"

namespace {

constexpr int kNoCard = -1;
// A store with more cards takes long enough to be shown in two steps.
constexpr int32_t kManyCards = 20000;
// More rows than any screen has.
constexpr int kFirstPage = 1000;

std::vector<int64_t> RowIdsOf(const std::vector<int64_t>& all, const std::vector<long>& rows) {
    std::vector<int64_t> rowIds;
    rowIds.reserve(rows.size());
    for (const long row : rows) {
        rowIds.push_back(all[static_cast<size_t>(row)]);
    }
    return rowIds;
}

}  // namespace

CardList::CardList(AppServices& services, wxWindow* parent, const wxSize& size)
    : wxPanel(parent, kCardListId, wxDefaultPosition, size, wxBORDER_NONE | wxTAB_TRAVERSAL,
              "panel"),
      mServices(services),
      mpListCtrl(new CardListCtrl(*this)),
      mIsReverse(services.IsReverseStudy()) {
    UseFont();
    ArrangeColumns();
    if (ReadColumnWidths(kApplicationName, kSettingCardListColumns, *mpListCtrl)) {
        mpListCtrl->KeepWidths();
    }
    auto* const sizer = new wxBoxSizer(wxVERTICAL);
    sizer->Add(mpListCtrl, 1, wxEXPAND, 5);
    SetSizer(sizer);
    mSettingsAttachment.Attach(&mServices.GetSettingsNotifier(), this);

    mpListCtrl->Bind(wxEVT_LIST_ITEM_ACTIVATED,
                     [this](wxListEvent& event) { EditRow(event.GetIndex()); });
    mpListCtrl->Bind(wxEVT_LIST_KEY_DOWN, &CardList::OnListKeyDown, this);
    mpListCtrl->Bind(wxEVT_LIST_COL_CLICK, &CardList::OnColumnClick, this);
    mpListCtrl->Bind(wxEVT_LIST_COL_RIGHT_CLICK, [this](wxListEvent& event) {
        ShowColumnMenu(event.GetColumn(), wxDefaultPosition);
    });
    mpListCtrl->Bind(wxEVT_CONTEXT_MENU, [this](wxContextMenuEvent& event) {
        PopUpMenu(*this, *BuildCardMenu(), event);
    });
    BindColumnMenu();
}

CardList::~CardList() {
    // The stored widths are those of the columns that a new list begins with.
    mSearchAll = false;
    ArrangeColumns();
    if (mpListCtrl->AreWidthsSet()) {
        WriteColumnWidths(kApplicationName, kSettingCardListColumns, *mpListCtrl);
    }
}

void CardList::SetDatabase(Database* database, Extent extent) {
    if (database == mpDatabase) {
        return;
    }
    mpDatabase = database;
    mStoreAttachment.Attach(database, this);
    if (database != nullptr) {
        mCategoryId = mServices.GetCurrentCategoryId(*database);
    }
    RefreshRows(extent);
}

void CardList::CallWhenDrawn(std::function<void()> callback) {
    // A start may ask again, once it has had to choose another store.
    if (mWhenDrawn == nullptr) {
        GetRowsWindow(*mpListCtrl).Bind(wxEVT_PAINT, &CardList::OnRowsPaint, this);
    }
    mWhenDrawn = std::move(callback);
}

void CardList::OnRowsPaint(wxPaintEvent& event) {
    event.Skip();
    GetRowsWindow(*mpListCtrl).Unbind(wxEVT_PAINT, &CardList::OnRowsPaint, this);
    CallAfter(std::exchange(mWhenDrawn, nullptr));
}

void CardList::SetShowCategory(bool show) {
    if (show != mShowCategory) {
        mShowCategory = show;
        RefreshRows();
    }
}

void CardList::SetSearchAll(bool all) {
    if (all != mSearchAll) {
        mSearchAll = all;
        if (!mSearch.empty()) {
            ArrangeColumns();
            ShowOtherCards();
        }
    }
}

void CardList::SetSearch(const wxString& text) {
    if (text != mSearch) {
        mSearch = text;
        ArrangeColumns();
        ShowOtherCards();
    }
}

void CardList::FollowDirection() {
    if (mIsReverse != mServices.IsReverseStudy()) {
        mIsReverse = !mIsReverse;
        RefreshRows();
    }
}

void CardList::ArrangeColumns() {
    ListColumns columns;
    for (const ListColumn column : mShownColumns) {
        if (column != ListColumn::kCategory || IsSearchOverAll()) {
            columns.push_back(column);
        }
    }
    mpListCtrl->SetColumns(columns);
    if (std::find(columns.begin(), columns.end(), mSortColumn) == columns.end()) {
        mSortColumn = ListColumn::kNumber;
    }
    const auto sorted = std::find(columns.begin(), columns.end(), mSortColumn);
    mpListCtrl->ShowSortIndicator(static_cast<int>(sorted - columns.begin()));
}

void CardList::Update(Subject* subject) {
    if (subject == &mServices.GetSettingsNotifier()) {
        UseFont();
        return;
    }
    const int32_t former = mCategoryId;
    mCategoryId = mServices.GetCurrentCategoryId(*mpDatabase);
    if (mCategoryId != former) {
        ShowOtherCards();
    } else {
        RefreshRows();
    }
}

void CardList::RefreshRows(Extent extent) {
    mHasFirstPageOnly = false;
    mRowCache.Clear();
    mCategoryNames.clear();
    mpListCtrl->SetAdvice(mSearch.empty() ? _("Ctrl+N writes a card, Ctrl+I imports a list.")
                                          : _("Nothing here matches the search."));
    if (mpDatabase == nullptr) {
        mRowIds.clear();
        mStoreCount = 0;
        mpListCtrl->SetFocusedRow(-1);
        mpListCtrl->SetItemCount(0);
        mpListCtrl->Refresh();
        return;
    }
    const long focusedRow = mpListCtrl->GetFocusedRow();
    const int64_t focused = GetFocusedRowId();
    mStoreCount = 0;
    if (mpDatabase->CountAllCards(mStoreCount) < 0) {
        mStoreCount = 0;
    }
    const std::vector<int64_t> former = std::move(mRowIds);
    mRowIds.clear();
    SelectRowIds(extent);
    // The same rows keep their selection and focus.
    if (mRowIds != former) {
        ShowRows(RowIdsOf(former, mpListCtrl->GetSelectedRows()), focused, focusedRow);
    }
    mpListCtrl->FocusSomeRow();
    mpListCtrl->Refresh();
}

void CardList::ShowRows(std::vector<int64_t> selected, int64_t focused, long focusedRow) {
    const auto count = static_cast<long>(mRowIds.size());
    if (focusedRow >= count) {
        // Otherwise the control keeps using a focused row that no longer exists.
        mpListCtrl->SetFocusedRow(-1);
    }
    mpListCtrl->SetItemCount(count);
    RestoreSelection(std::move(selected));
    RestoreFocus(focused, focusedRow);
}

void CardList::SelectRowIds(Extent extent) {
    const ListColumnTraits& traits = TraitsOf(mSortColumn);
    const CardColumn order = mIsReverse ? traits.ReverseOrder : traits.Order;
    if (!mSearch.empty()) {
        // The store itself reports a failure.
        if (mShowCategory && !mSearchAll) {
            mpDatabase->SearchRowIdsOrder(mCategoryId, mSearch, order, mRowIds);
        } else {
            mpDatabase->SearchRowIdsOrder(mSearch, order, mRowIds);
        }
    } else if (mShowCategory) {
        SelectRowIdsOfCategory(order, extent);
    }
}

void CardList::SelectRowIdsOfCategory(CardColumn order, Extent extent) {
    mHasFirstPageOnly = extent == Extent::kFirstPage && mStoreCount > kManyCards &&
                        order == CardColumn::kIntroductionOrder;
    int result = 0;
    if (mHasFirstPageOnly) {
        result = mpDatabase->CardSelectFirstRowIds(mCategoryId, kFirstPage, mRowIds);
        mHasFirstPageOnly = mRowIds.size() == kFirstPage;
    } else {
        mRowIds.reserve(static_cast<size_t>(mStoreCount));
        result = mpDatabase->CardSelectRowIdsOrder(mCategoryId, order, mRowIds);
    }
    if (result < 0) {
        wxLogError(_("Database::CardSelectRowIdsOrder returned %i"), result);
        mRowIds.clear();
    }
}

void CardList::ShowOtherCards() {
    const int64_t focused = GetFocusedRowId();
    RefreshRows();
    if (mRowIds.empty()) {
        return;
    }
    if (GetFocusedRowId() != focused) {
        // The focused card is not among the new rows.
        mpListCtrl->SetFocusedRow(0);
    }
    mpListCtrl->EnsureVisible(mpListCtrl->GetFocusedRow());
}

void CardList::RestoreSelection(std::vector<int64_t> rowIds) {
    std::sort(rowIds.begin(), rowIds.end());
    std::vector<long> rows;
    if (!rowIds.empty()) {
        for (size_t row = 0; row < mRowIds.size(); ++row) {
            if (std::binary_search(rowIds.begin(), rowIds.end(), mRowIds[row])) {
                rows.push_back(static_cast<long>(row));
            }
        }
    }
    mpListCtrl->SetSelectedRows(rows);
}

void CardList::RestoreFocus(int64_t rowId, long formerRow) {
    if (formerRow < 0 || mRowIds.empty()) {
        return;
    }
    const long row = FindRow(rowId);
    const auto last = static_cast<long>(mRowIds.size()) - 1;
    mpListCtrl->SetFocusedRow(row >= 0 ? row : std::min(formerRow, last));
}

long CardList::FindRow(int64_t rowId) const {
    const auto found = std::find(mRowIds.begin(), mRowIds.end(), rowId);
    return found == mRowIds.end() ? -1 : static_cast<long>(found - mRowIds.begin());
}

int64_t CardList::GetFocusedRowId() const {
    const long row = mpListCtrl->GetFocusedRow();
    return row < 0 ? kNoCard : mRowIds[static_cast<size_t>(row)];
}

const FlashCard* CardList::FetchRow(long row) {
    const auto key = static_cast<int32_t>(row);
    if (const FlashCard* const cached = mRowCache.Find(key)) {
        return cached;
    }
    if (mpDatabase == nullptr || row < 0 || static_cast<size_t>(row) >= mRowIds.size()) {
        return nullptr;
    }
    mRowCache.Trim(static_cast<int32_t>(mpListCtrl->GetTopItem()), mpListCtrl->GetCountPerPage());
    std::list<FlashCard> cards;
    if (mpDatabase->SelectCardByRowId(mRowIds[static_cast<size_t>(row)], cards) < 0 ||
        cards.empty()) {
        return nullptr;
    }
    return &mRowCache.Insert(key, std::move(cards.front()));
}

wxString CardList::GetCellText(long row, ListColumn column) {
    const FlashCard* const card = FetchRow(row);
    if (card == nullptr) {
        return _("Error: contact technical support");
    }
    if (column == ListColumn::kCategory) {
        return NameCategory(card->CategoryId);
    }
    return MakeCellText(*card, column, mIsReverse ? kReviewReverse : kReviewForward);
}

wxString CardList::NameCategory(int32_t id) {
    const auto known = mCategoryNames.find(id);
    if (known != mCategoryNames.end()) {
        return known->second;
    }
    const wxString name = ShownName(GetCategoryName(*mpDatabase, id));
    mCategoryNames.emplace(id, name);
    return name;
}

void CardList::CollectSelection(std::vector<int64_t>& rowIds, bool clear) {
    rowIds = RowIdsOf(mRowIds, mpListCtrl->GetSelectedRows());
    if (clear) {
        mpListCtrl->SelectEveryRow(false);
    }
}

void CardList::EditSelected() {
    EditRow(
        mpListCtrl->GetNextItem(-1, wxLIST_NEXT_ALL, wxLIST_STATE_FOCUSED | wxLIST_STATE_SELECTED));
}

void CardList::EditRow(long row) {
    if (row < 0 || static_cast<size_t>(row) >= mRowIds.size()) {
        return;
    }
    std::list<FlashCard> cards;
    if (mpDatabase->SelectCardByRowId(mRowIds[static_cast<size_t>(row)], cards) >= 0 &&
        !cards.empty()) {
        mServices.OpenEditor(cards.front());
    }
}

void CardList::PutOnClipboard(bool cut) {
    if (HasTarget()) {
        mpListCtrl->SelectSomeRow();
        std::vector<int64_t> rowIds;
        CollectSelection(rowIds, false);
        mServices.PutCardsOnClipboard(rowIds, cut);
    }
}

void CardList::Paste() {
    if (CanPaste()) {
        mServices.PasteCards(mCategoryId, AppServices::EmptyCut::kBefore);
    }
}

bool CardList::CanPaste() const {
    return mpDatabase != nullptr && mServices.CanPasteCards();
}

void CardList::DeleteSelected() {
    if (!HasTarget()) {
        return;
    }
    mpListCtrl->SelectSomeRow();
    const int answer =
        ShowMessageBox(_("Do you really want to delete the selected card(s)?") +
                           AboutCards(mpListCtrl->GetSelectedItemCount()),
                       _("Delete Card(s)"), wxOK | wxCANCEL | wxICON_EXCLAMATION, this);
    if (answer != wxOK) {
        return;
    }
    mServices.BackUpDay(this);
    const wxBusyCursor busy;
    const std::vector<long> rows = mpListCtrl->GetSelectedRows();
    if (rows.empty()) {
        return;
    }
    const std::vector<int64_t> rowIds = RowIdsOf(mRowIds, rows);
    StoreChange change;
    if (NoteDeletion(*mpDatabase, rowIds, change) < 0) {
        return;
    }
    // The store itself reports a failure; the other cards are deleted all the same.
    mpDatabase->CardsDeleteByRowId(rowIds);
    const wxString notice = DescribeWithoutUndo(change);
    mServices.GetUndoHistory().Add(std::move(change));
    mpListCtrl->SelectEveryRow(false);
    mpListCtrl->SetFocusedRow(-1);
    mpDatabase->Notify();
    // The keys go on where the deleted cards were.
    RestoreFocus(kNoCard, rows.front());
    if (mpListCtrl->GetFocusedRow() >= 0) {
        mpListCtrl->EnsureVisible(mpListCtrl->GetFocusedRow());
    }
    if (!notice.empty()) {
        ShowMessageBox(notice, _("Delete Card(s)"), wxOK | wxCENTRE, this);
    }
}

void CardList::SelectCards(std::vector<int64_t> rowIds) {
    std::sort(rowIds.begin(), rowIds.end());
    const auto isAmong = [&rowIds](int64_t rowId) {
        return std::binary_search(rowIds.begin(), rowIds.end(), rowId);
    };
    const auto first = std::find_if(mRowIds.begin(), mRowIds.end(), isAmong);
    if (first == mRowIds.end()) {
        return;
    }
    const auto row = static_cast<long>(first - mRowIds.begin());
    RestoreSelection(std::move(rowIds));
    mpListCtrl->SetFocusedRow(row);
    mpListCtrl->EnsureVisible(row);
}

void CardList::ShowCards(const std::vector<int64_t>& rowIds) {
    std::vector<int64_t> selected;
    CollectSelection(selected, false);
    const bool isSelected = std::any_of(rowIds.begin(), rowIds.end(), [&selected](int64_t rowId) {
        return std::find(selected.begin(), selected.end(), rowId) != selected.end();
    });
    SelectCards(isSelected ? selected : rowIds);
}

bool CardList::HasTarget() const {
    return mpListCtrl->GetFocusedRow() >= 0 || mpListCtrl->GetSelectedItemCount() > 0;
}

void CardList::UseFont() {
    mpListCtrl->SetFont(ReadFontSetting(kSettingBrowseFont));
    KeepHeadingFont(*mpListCtrl);
}

void CardList::OnListKeyDown(wxListEvent& event) {
    if (event.GetKeyCode() == WXK_DELETE) {
        DeleteSelected();
    } else {
        event.Skip();
    }
}

void CardList::OnColumnClick(wxListEvent& event) {
    const ListColumns& columns = mpListCtrl->GetColumns();
    if (event.GetColumn() < 0 || static_cast<size_t>(event.GetColumn()) >= columns.size()) {
        return;
    }
    std::vector<int64_t> selected;
    CollectSelection(selected, true);
    const long focusedRow = mpListCtrl->GetFocusedRow();
    const int64_t focused = GetFocusedRowId();
    mpListCtrl->SetFocusedRow(-1);
    mSortColumn = columns[static_cast<size_t>(event.GetColumn())];
    mpListCtrl->ShowSortIndicator(event.GetColumn());
    RefreshRows();
    if (!selected.empty()) {
        RestoreSelection(std::move(selected));
    }
    const long row = focusedRow < 0 ? -1 : FindRow(focused);
    if (row >= 0) {
        mpListCtrl->SetFocusedRow(row);
        mpListCtrl->EnsureVisible(row);
    }
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
    menu.Enable(ID_COLUMN_CATEGORY, IsSearchOverAll());
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
    const ListColumn sorted = mSortColumn;
    ArrangeColumns();
    if (mSortColumn != sorted) {
        RefreshRows();
    }
}
