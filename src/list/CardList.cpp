#include "list/CardList.h"

#include <wx/log.h>
#include <wx/menu.h>
#include <wx/sizer.h>

#include <algorithm>
#include <cstdio>
#include <list>
#include <optional>
#include <utility>

#include "base/Collator.h"
#include "base/Text.h"
#include "categories/CurrentCategory.h"
#include "reviews/ReviewFigures.h"
#include "shell/AppServices.h"
#include "shell/MenuBar.h"
#include "shell/ProgramInfo.h"
#include "shell/Settings.h"
#include "shell/Toolkit.h"
#include "store/CardSort.h"
#include "store/Database.h"

namespace {

// A list of more cards takes long enough to be shown in two steps: at a start, and before it is
// sorted by a text.
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

// Returns the row ids in the order in which they stand in the former list. New ones come last, in
// the order that they are given in.
std::vector<int64_t> InFormerOrder(const std::vector<int64_t>& former,
                                   const std::vector<int64_t>& rowIds) {
    // A few bits a card, as row ids lie close together. Where they do not, the order is new.
    constexpr size_t kMostBitsPerCard = 64;
    const auto [least, most] = std::minmax_element(rowIds.begin(), rowIds.end());
    if (former.empty() || rowIds.empty() ||
        static_cast<uint64_t>(*most - *least) / kMostBitsPerCard > rowIds.size()) {
        return rowIds;
    }
    const int64_t first = *least;
    std::vector<bool> isMissing(static_cast<size_t>(*most - first) + 1);
    for (const int64_t rowId : rowIds) {
        isMissing[static_cast<size_t>(rowId - first)] = true;
    }
    std::vector<int64_t> ordered;
    ordered.reserve(rowIds.size());
    for (const std::vector<int64_t>* const list : {&former, &rowIds}) {
        for (const int64_t rowId : *list) {
            const auto place = static_cast<size_t>(rowId - first);
            if (rowId >= first && place < isMissing.size() && isMissing[place]) {
                isMissing[place] = false;
                ordered.push_back(rowId);
            }
        }
    }
    return ordered;
}

const std::function<bool()> kNeverStopped;

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
                     [this](wxListEvent& event) { EditFrom(event.GetIndex()); });
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
    mChoice = CategoryChoice();
    ArrangeColumns();
    if (mpListCtrl->AreWidthsSet()) {
        WriteColumnWidths(kApplicationName, kSettingCardListColumns, *mpListCtrl);
    }
}

void CardList::SetDatabase(Database* database, Extent extent) {
    if (database == mpDatabase) {
        return;
    }
    // The worker reads the store.
    mSortJob.Cancel();
    mFailureJob.Cancel();
    mHardJob.Cancel();
    mDescribed.Hard.clear();
    mpFailureCounts = std::make_shared<CardFailures::Counts>();
    mpDatabase = database;
    mStoreAttachment.Attach(database, this);
    if (database != nullptr) {
        FollowChoice();
    }
    mViewWhenSorted = View::kBeginsAtTop;
    RefreshRows(extent);
}

bool CardList::FollowChoice() {
    const int32_t former = mChoice.Id;
    const bool showed = ShowsCategories();
    mChoice = mServices.GetCurrentChoice(*mpDatabase);
    if (ShowsCategories() != showed) {
        ArrangeColumns();
    }
    return mChoice.Id != former;
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
        ArrangeColumns();
        ShowOtherCards();
    }
}

void CardList::SetSearch(const wxString& text, bool isExact) {
    TrySearch(text, isExact, kNeverStopped);
}

bool CardList::TrySearch(const wxString& text, bool isExact,
                         const std::function<bool()>& isStopped) {
    if (text == mSearch && isExact == mIsSearchExact) {
        return true;
    }
    const wxString former = std::exchange(mSearch, text);
    const bool wasExact = std::exchange(mIsSearchExact, isExact);
    const ListOrder formerOrder = mOrder;
    ArrangeColumns();
    if (TryOtherCards(isStopped)) {
        return true;
    }
    mSearch = former;
    mIsSearchExact = wasExact;
    mOrder = formerOrder;
    ArrangeColumns();
    return false;
}

void CardList::FollowDirection() {
    if (mIsReverse != mServices.IsReverseStudy()) {
        mIsReverse = !mIsReverse;
        RefreshRows();
    }
}

void CardList::Update(Subject* subject) {
    if (subject == &mServices.GetSettingsNotifier()) {
        UseFont();
        return;
    }
    if (FollowChoice()) {
        ShowOtherCards();
    } else {
        RefreshRows();
    }
}

void CardList::RefreshRows(Extent extent) {
    TryRefresh(extent, kNeverStopped);
}

bool CardList::TryRefresh(Extent extent, const std::function<bool()>& isStopped) {
    if (mpDatabase == nullptr) {
        ShowNothing();
        return true;
    }
    mStoreCount = 0;
    if (mpDatabase->CountAllCards(mStoreCount) < 0) {
        mStoreCount = 0;
    }
    DescribeSearch();
    std::vector<int64_t> rowIds;
    if (!ReadRowIds(extent, isStopped, rowIds)) {
        return false;
    }
    mRowCache.Clear();
    mCategoryNames.clear();
    mpListCtrl->SetAdvice(mSearch.empty() ? _("Ctrl+N writes a card, Ctrl+I imports a list.")
                                          : _("Nothing here matches the search."));
    ShowRows(std::move(rowIds));
    mpListCtrl->FocusSomeRow();
    mpListCtrl->Refresh();
    ReadFailures();
    ReadHardest();
    return true;
}

void CardList::ShowNothing() {
    mHasFirstPageOnly = false;
    mRowCache.Clear();
    mCategoryNames.clear();
    mRowIds.clear();
    mStoreCount = 0;
    mpListCtrl->SetFocusedRow(-1);
    mpListCtrl->SetItemCount(0);
    mpListCtrl->Refresh();
}

void CardList::ShowRows(std::vector<int64_t> rowIds) {
    // The same rows keep their selection and focus.
    if (rowIds == mRowIds) {
        return;
    }
    std::vector<int64_t> selected = RowIdsOf(mRowIds, mpListCtrl->GetSelectedRows());
    const long focusedRow = mpListCtrl->GetFocusedRow();
    const int64_t focused = GetFocusedRowId();
    mRowIds = std::move(rowIds);
    const auto count = static_cast<long>(mRowIds.size());
    if (focusedRow >= count) {
        // Otherwise the control keeps using a focused row that no longer exists.
        mpListCtrl->SetFocusedRow(-1);
    }
    mpListCtrl->SetItemCount(count);
    RestoreSelection(std::move(selected));
    RestoreFocus(focused, focusedRow);
}

CardOrder CardList::GetStoreOrder() const {
    const ListColumnTraits& traits = TraitsOf(mOrder.Column);
    return {mIsReverse ? traits.ReverseOrder : traits.Order, mOrder.IsDescending};
}

bool CardList::ReadRowIds(Extent extent, const std::function<bool()>& isStopped,
                          std::vector<int64_t>& rowIds) {
    const CardOrder order = GetStoreOrder();
    const bool isFirstPage = extent == Extent::kFirstPage && mStoreCount > kManyCards &&
                             mShowCategory && !mSearchAll && mSearch.empty();
    if (isFirstPage) {
        // In the order that the store can give at once. The rest comes in the user's order.
        const bool isDescending =
            order.Column == CardColumn::kIntroductionOrder && order.Descending;
        if (mpDatabase->CardSelectFirstRowIds(mChoice, isDescending, kFirstPage, rowIds) < 0) {
            rowIds.clear();
        }
        mHasFirstPageOnly = rowIds.size() == kFirstPage;
        mViewWhenSorted = View::kBeginsAtTop;
        return true;
    }
    const bool isSortedHere = MakeSort() != nullptr;
    if (!ReadRowIds(isSortedHere ? CardOrder(CardColumn::kIntroductionOrder) : order, isStopped,
                    rowIds)) {
        return false;
    }
    mHasFirstPageOnly = false;
    mSortJob.Cancel();
    if (isSortedHere) {
        SortRowIds(mRowIds, rowIds);
    }
    return true;
}

bool CardList::ReadRowIds(CardOrder order, const std::function<bool()>& isStopped,
                          std::vector<int64_t>& rowIds) {
    if (isStopped != nullptr) {
        bool stopped = false;
        const auto stop = [&] { return stopped = stopped || isStopped(); };
        if (mpDatabase->TryUntil(stop, [&] { ReadRowIds(order, rowIds); }) || stopped) {
            return !stopped;
        }
        // A failure, which comes again and is told.
        rowIds.clear();
    }
    ReadRowIds(order, rowIds);
    return true;
}

void CardList::DescribeSearch() {
    mDescribed.Query = mIsSearchExact ? SearchQuery::Exact(mSearch) : SearchQuery::Words(mSearch);
    mDescribed.Direction = GetDirection();
    mDescribed.Now = mServices.GetClock().Now();
}

void CardList::ReadHardest() {
    const size_t most = mDescribed.Query.CountHardest();
    if (most == 0) {
        return;
    }
    ReviewQuery query{std::nullopt, mDescribed.Direction, ReviewSpan::kYear, mDescribed.Now, most};
    if (mShowCategory && !mSearchAll) {
        query.Asked = mChoice;
    }
    const auto hard = std::make_shared<std::optional<std::vector<CardUuid>>>();
    mHardJob.Start(
        [this, &database = *mpDatabase, query, hard](const std::atomic<bool>& isCancelled) {
            std::vector<CardUuid> cards;
            if (ReadHardestCards(database, query, mHistory, isCancelled, cards) == 0) {
                *hard = std::move(cards);
            }
        },
        [this, hard] {
            if (*hard && **hard != mDescribed.Hard) {
                mDescribed.Hard = std::move(**hard);
                RefreshRows();
            }
        });
}

void CardList::ReadRowIds(CardOrder order, std::vector<int64_t>& rowIds) {
    if (!mSearch.empty()) {
        // The store itself reports a failure.
        if (mShowCategory && !mSearchAll) {
            mpDatabase->SearchRowIdsOrder(mChoice, mDescribed, order, rowIds);
        } else {
            mpDatabase->SearchRowIdsOrder(mDescribed, order, rowIds);
        }
    } else if (mShowCategory) {
        rowIds.reserve(static_cast<size_t>(mStoreCount));
        const int result = mSearchAll ? mpDatabase->CardSelectRowIdsOrder(order, rowIds)
                                      : mpDatabase->CardSelectRowIdsOrder(mChoice, order, rowIds);
        if (result < 0) {
            wxLogError(_("Database::CardSelectRowIdsOrder returned %i"), result);
            rowIds.clear();
        }
    }
}

CardList::Sort CardList::MakeSort() const {
    const CardOrder order = GetStoreOrder();
    Database& database = *mpDatabase;
    if (mOrder.Column == ListColumn::kFailures) {
        const auto makeKey = [counts = mpFailureCounts, direction = GetDirection()](
                                 std::u16string_view text, std::string& keys) {
            CardUuid card;
            ParseUuid(text, card);
            char key[9];
            std::snprintf(key, sizeof key, "%08x",
                          static_cast<unsigned>(CardFailures::Count(*counts, card, direction)));
            keys.append(key, sizeof key);
        };
        return [&database, order, makeKey](auto& isCancelled, auto& rowIds) {
            return SortByKey(database, {CardColumn::kCardId, order.Descending}, makeKey,
                             isCancelled, rowIds);
        };
    }
    if (IsTextColumn(order.Column) && Collator().IsLoaded()) {
        return [&database, order](auto& isCancelled, auto& rowIds) {
            return SortByText(database, order, isCancelled, rowIds);
        };
    }
    return nullptr;
}

void CardList::SortRowIds(const std::vector<int64_t>& former, std::vector<int64_t>& rowIds) {
    const CardOrder order = GetStoreOrder();
    const Sort sort = MakeSort();
    if (rowIds.size() > kManyCards) {
        struct Result {
            std::vector<int64_t> RowIds;
            bool IsSorted = false;
        };
        const auto result = std::make_shared<Result>();
        result->RowIds = rowIds;
        mSortJob.Start(
            [sort, result](const std::atomic<bool>& isCancelled) {
                result->IsSorted = sort(isCancelled, result->RowIds);
            },
            [this, order, result] {
                TakeSorted(order, std::move(result->RowIds), result->IsSorted);
            });
        rowIds = InFormerOrder(former, rowIds);
        return;
    }
    const std::atomic<bool> isCancelled{false};
    if (!sort(isCancelled, rowIds)) {
        rowIds.clear();
        ReadRowIds(order, rowIds);
    }
}

void CardList::TakeSorted(CardOrder order, std::vector<int64_t> rowIds, bool isSorted) {
    if (!isSorted) {
        rowIds.clear();
        ReadRowIds(order, rowIds);
    }
    const View view = std::exchange(mViewWhenSorted, View::kStays);
    const bool isAtTop = IsAtTop();
    if (rowIds != mRowIds) {
        mRowCache.Clear();
        ShowRows(std::move(rowIds));
    }
    if (view == View::kBeginsAtTop && isAtTop && !mRowIds.empty()) {
        mpListCtrl->SetFocusedRow(0);
    }
    if (view != View::kStays && mpListCtrl->GetFocusedRow() >= 0) {
        mpListCtrl->EnsureVisible(mpListCtrl->GetFocusedRow());
    }
    mpListCtrl->FocusSomeRow();
    mpListCtrl->Refresh();
}

void CardList::ShowOtherCards() {
    TryOtherCards(kNeverStopped);
}

bool CardList::TryOtherCards(const std::function<bool()>& isStopped) {
    const int64_t focused = GetFocusedRowId();
    if (!TryRefresh(Extent::kAll, isStopped)) {
        return false;
    }
    mViewWhenSorted = View::kShowsFocus;
    if (mRowIds.empty()) {
        return true;
    }
    if (GetFocusedRowId() != focused) {
        // The focused card is not among the new rows.
        mpListCtrl->SetFocusedRow(0);
        mViewWhenSorted = View::kBeginsAtTop;
    }
    mpListCtrl->EnsureVisible(mpListCtrl->GetFocusedRow());
    return true;
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

int64_t CardList::FindNeighbour(int64_t rowId, int step) const {
    const long row = FindRow(rowId);
    const long wanted = row + step;
    const bool isThere = row >= 0 && wanted >= 0 && wanted < static_cast<long>(mRowIds.size());
    return isThere ? mRowIds[static_cast<size_t>(wanted)] : kNoCard;
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
    if (column == ListColumn::kFailures) {
        return FailuresOf(*card);
    }
    return MakeCellText(*card, column, GetDirection());
}

void CardList::ReadFailures() {
    // A start does not wait for the log.
    if (!IsColumnShown(ListColumn::kFailures) || mHasFirstPageOnly) {
        return;
    }
    const auto counts = std::make_shared<CardFailures::Counts>();
    mFailureJob.Start(
        [this, counts, path = ReviewLogPath(mpDatabase->GetPath())](
            const std::atomic<bool>& isCancelled) { mFailures.Update(path, isCancelled, *counts); },
        [this, counts] {
            if (*counts != *mpFailureCounts) {
                mpFailureCounts = counts;
                if (mOrder.Column == ListColumn::kFailures) {
                    RefreshRows();
                } else {
                    mpListCtrl->Refresh();
                }
            }
        });
}

wxString CardList::FailuresOf(const FlashCard& card) const {
    if (!ScheduleOf(card, GetDirection()).Introduced) {
        return wxString();
    }
    return wxString::Format("%i",
                            CardFailures::Count(*mpFailureCounts, card.CardId, GetDirection()));
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
