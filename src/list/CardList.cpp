#include "list/CardList.h"

#include <wx/log.h>
#include <wx/menu.h>
#include <wx/sizer.h>
#include <wx/utils.h>

#include <algorithm>
#include <iterator>
#include <list>
#include <memory>

#include "base/Text.h"
#include "list/CardListCtrl.h"
#include "shell/AppServices.h"
#include "shell/CommandIds.h"
#include "shell/MenuBar.h"
#include "shell/MessageBox.h"
#include "shell/ProgramInfo.h"
#include "shell/Settings.h"
#include "shell/Toolkit.h"
#include "store/Database.h"

namespace {

constexpr int kNoCard = -1;

struct Column {
    const char* Heading;
    int DefaultWidth;
    CardColumn Order;
};

constexpr Column kColumns[] = {{wxTRANSLATE("#"), 30, CardColumn::kIntroductionOrder},
                               {wxTRANSLATE("Front"), 90, CardColumn::kFront},
                               {wxTRANSLATE("Back"), 90, CardColumn::kBack}};
constexpr int kColumnCount = static_cast<int>(std::size(kColumns));

struct ColumnMenuRow {
    int Id;
    wxItemKind Kind;
    const char* Label;
};

constexpr ColumnMenuRow kColumnMenu[] = {
    {ID_COLUMN_AUTO_SIZE, wxITEM_NORMAL, wxTRANSLATE("Auto Size Column")},
    {ID_COLUMN_AUTO_SIZE_ALL, wxITEM_NORMAL, wxTRANSLATE("Auto Size All Columns")},
    {wxID_SEPARATOR, wxITEM_SEPARATOR, ""},
    {ID_COLUMN_AUTHOR, wxITEM_CHECK, wxTRANSLATE("Author")},
    {ID_COLUMN_CHAPTER, wxITEM_CHECK, wxTRANSLATE("Chapter")},
    {ID_COLUMN_FORWARD_EXCLUDE, wxITEM_CHECK, wxTRANSLATE("Forward Exclude")},
    {ID_COLUMN_REVERSE_EXCLUDE, wxITEM_CHECK, wxTRANSLATE("Reverse Exclude")},
    {ID_COLUMN_NOTES, wxITEM_CHECK, wxTRANSLATE("Notes")}};

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
      mpListCtrl(new CardListCtrl(*this)) {
    UseFont();
    // The default widths suit the desktop's font and grow with a larger one.
    const int usualLine = GetCharHeight();
    const int line = std::max(usualLine, mpListCtrl->GetCharHeight());
    int widths[kColumnCount];
    for (int i = 0; i < kColumnCount; ++i) {
        widths[i] = kColumns[i].DefaultWidth * line / usualLine;
        mpListCtrl->AppendColumn(wxGetTranslation(kColumns[i].Heading));
    }
    ReadColumnWidths(kApplicationName, kSettingCardListColumns, *mpListCtrl, widths, kColumnCount);
    auto* const sizer = new wxBoxSizer(wxVERTICAL);
    sizer->Add(mpListCtrl, 1, wxEXPAND, 5);
    SetSizer(sizer);
    mSettingsAttachment.Attach(&mServices.GetSettingsNotifier(), this);

    mpListCtrl->Bind(wxEVT_LIST_ITEM_ACTIVATED, &CardList::OnItemActivated, this);
    mpListCtrl->Bind(wxEVT_LIST_KEY_DOWN, &CardList::OnListKeyDown, this);
    mpListCtrl->Bind(wxEVT_LIST_COL_CLICK, &CardList::OnColumnClick, this);
    mpListCtrl->Bind(wxEVT_LIST_COL_RIGHT_CLICK, &CardList::OnColumnRightClick, this);
    mpListCtrl->Bind(wxEVT_CONTEXT_MENU, &CardList::OnContextMenu, this);
}

CardList::~CardList() {
    WriteColumnWidths(kApplicationName, kSettingCardListColumns, *mpListCtrl);
}

void CardList::SetDatabase(Database* database) {
    if (database == mpDatabase) {
        return;
    }
    mpDatabase = database;
    mStoreAttachment.Attach(database, this);
    if (database != nullptr) {
        mCategoryId = mServices.GetCurrentCategoryId(*database);
    }
    RefreshRows();
}

void CardList::SetShowCategory(bool show) {
    if (show != mShowCategory) {
        mShowCategory = show;
        RefreshRows();
    }
}

void CardList::SetSearch(const wxString& text) {
    if (text != mSearch) {
        mSearch = text;
        ShowOtherCards();
    }
}

void CardList::SetFocus() {
    mpListCtrl->SetFocus();
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

void CardList::RefreshRows() {
    mRowCache.Clear();
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
    mRowIds.reserve(static_cast<size_t>(mStoreCount));
    SelectRowIds();
    // When the rows are the same, so are their selection and focus.
    if (mRowIds != former) {
        ShowRows(RowIdsOf(former, mpListCtrl->GetSelectedRows()), focused, focusedRow);
    }
    mpListCtrl->FocusSomeRow();
    mpListCtrl->Refresh();
}

void CardList::ShowRows(std::vector<int64_t> selected, int64_t focused, long focusedRow) {
    const auto count = static_cast<long>(mRowIds.size());
    if (focusedRow >= count) {
        // Otherwise the control goes on to use a focused row that no longer exists.
        mpListCtrl->SetFocusedRow(-1);
    }
    mpListCtrl->SetItemCount(count);
    RestoreSelection(std::move(selected));
    RestoreFocus(focused, focusedRow);
}

void CardList::SelectRowIds() {
    const CardColumn order = kColumns[mSortColumn].Order;
    if (!mSearch.empty()) {
        // The store itself reports a failure.
        if (mShowCategory) {
            mpDatabase->SearchRowIdsOrder(mCategoryId, mSearch, order, mRowIds);
        } else {
            mpDatabase->SearchRowIdsOrder(mSearch, order, mRowIds);
        }
    } else if (mShowCategory) {
        const int result = mpDatabase->CardSelectRowIdsOrder(mCategoryId, order, mRowIds);
        if (result < 0) {
            wxLogError(_("Database::CardSelectRowIdsOrder returned %i"), result);
            mRowIds.clear();
        }
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

wxString CardList::GetCellText(long row, long column) {
    const FlashCard* const card = FetchRow(row);
    if (card == nullptr) {
        return _("Error: contact technical support");
    }
    switch (column) {
        case 0:
            return wxString::Format("%i", card->IntroductionOrder);
        case 1:
            return CellText(card->Front);
        case 2:
            return CellText(card->Back);
        default:
            return wxString();
    }
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

bool CardList::CanEdit() const {
    return mServices.CanOpenEditor() && HasTarget();
}

void CardList::EditRow(long row) {
    if (!mServices.CanOpenEditor() || row < 0 || static_cast<size_t>(row) >= mRowIds.size()) {
        return;
    }
    std::list<FlashCard> cards;
    if (mpDatabase->SelectCardByRowId(mRowIds[static_cast<size_t>(row)], cards) >= 0 &&
        !cards.empty()) {
        mServices.OpenEditor(cards.front());
    }
}

void CardList::PutOnClipboard(bool cut) {
    if (CanPutOnClipboard()) {
        mpListCtrl->SelectSomeRow();
        std::vector<int64_t> rowIds;
        CollectSelection(rowIds, false);
        mServices.PutCardsOnClipboard(rowIds, cut);
    }
}

bool CardList::CanPutOnClipboard() const {
    return mServices.CanPutCardsOnClipboard() && HasTarget();
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
        ShowMessageBox(_("Do you really want to delete the selected card(s)?"), _("Delete Card(s)"),
                       wxOK | wxCANCEL | wxICON_EXCLAMATION, this);
    if (answer != wxOK) {
        return;
    }
    const wxBusyCursor busy;
    const std::vector<long> rows = mpListCtrl->GetSelectedRows();
    if (rows.empty()) {
        return;
    }
    for (const long row : rows) {
        // The store itself reports a failure; the other cards are deleted all the same.
        mpDatabase->CardDeleteByRowId(mRowIds[static_cast<size_t>(row)]);
    }
    mpListCtrl->SelectEveryRow(false);
    mpListCtrl->SetFocusedRow(-1);
    mpDatabase->Notify();
    // The keys go on where the deleted cards were.
    RestoreFocus(kNoCard, rows.front());
    if (mpListCtrl->GetFocusedRow() >= 0) {
        mpListCtrl->EnsureVisible(mpListCtrl->GetFocusedRow());
    }
}

void CardList::SelectAll() {
    mpListCtrl->SelectEveryRow(true);
}

bool CardList::HasTarget() const {
    return mpListCtrl->GetFocusedRow() >= 0 || mpListCtrl->GetSelectedItemCount() > 0;
}

void CardList::UseFont() {
    mpListCtrl->SetFont(ReadFontSetting(kSettingBrowseFont));
    KeepHeadingFont(*mpListCtrl);
}

void CardList::OnItemActivated(wxListEvent& event) {
    EditRow(event.GetIndex());
}

void CardList::OnListKeyDown(wxListEvent& event) {
    if (event.GetKeyCode() == WXK_DELETE) {
        DeleteSelected();
    } else {
        event.Skip();
    }
}

void CardList::OnColumnClick(wxListEvent& event) {
    if (event.GetColumn() < 0 || event.GetColumn() >= kColumnCount) {
        return;
    }
    std::vector<int64_t> selected;
    CollectSelection(selected, true);
    const long focusedRow = mpListCtrl->GetFocusedRow();
    const int64_t focused = GetFocusedRowId();
    mpListCtrl->SetFocusedRow(-1);
    mSortColumn = static_cast<uint32_t>(event.GetColumn());
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

void CardList::OnColumnRightClick(wxListEvent& event) {
    const int column = event.GetColumn();
    wxMenu menu;
    for (const ColumnMenuRow& row : kColumnMenu) {
        menu.Append(row.Id, *row.Label == '\0' ? wxString() : wxGetTranslation(row.Label),
                    wxString(), row.Kind);
    }
    menu.Enable(ID_COLUMN_AUTO_SIZE, column >= 0);
    menu.Bind(
        wxEVT_MENU,
        [this, column](wxCommandEvent&) { mpListCtrl->SetColumnWidth(column, wxLIST_AUTOSIZE); },
        ID_COLUMN_AUTO_SIZE);
    menu.Bind(
        wxEVT_MENU, [this](wxCommandEvent&) { AutoSizeAllColumns(); }, ID_COLUMN_AUTO_SIZE_ALL);
    PopupMenu(&menu);
}

void CardList::AutoSizeAllColumns() {
    for (int column = 0; column < kColumnCount; ++column) {
        mpListCtrl->SetColumnWidth(column, wxLIST_AUTOSIZE);
    }
}

void CardList::OnContextMenu(wxContextMenuEvent& event) {
    const std::unique_ptr<wxMenu> menu = BuildCardMenu();
    PopUpMenu(*this, *menu, event);
}
