#include "list/CardListCtrl.h"

#include <wx/dcclient.h>
#include <wx/stattext.h>

#include <algorithm>
#include <utility>

#include "list/CardList.h"
#include "shell/Toolkit.h"

// Focus and selection. A person who works by the keys needs three promises that the base class does
// not keep:
//
// 1. While there are rows, one of them is focused, so that every key has a card to act on. The base
//    class starts with no focused row, and after a refresh it may keep one that is gone.
// 2. Commands act on the selected cards, or on the focused card when none is selected.
// 3. Shift extends the selection from the focused row. The base class extends it from a row of its
//    own, the anchor, which only the user's keys and clicks move. After a refresh that row shows
//    another card: with the focus restored to row 7 and an anchor left at row 2, Shift+Down would
//    select rows 2 to 8. So a focus that the program sets marks the anchor as stale (mIsAnchored),
//    and the next key or click with Shift first moves the anchor (AnchorFocusedRow).

const FlashCard* CardRowCache::Find(int32_t row) const {
    const auto found = mCards.find(row);
    return found == mCards.end() ? nullptr : &found->second;
}

void CardRowCache::Trim(int32_t top, int32_t page) {
    // The last row at or above the beginning of the previous page stays.
    auto first = mCards.upper_bound(top - page);
    if (first != mCards.begin()) {
        mCards.erase(mCards.begin(), --first);
    }
    mCards.erase(mCards.lower_bound(top + 2 * page + 1), mCards.end());
}

const FlashCard& CardRowCache::Insert(int32_t row, FlashCard card) {
    return mCards.insert_or_assign(row, std::move(card)).first->second;
}

namespace {

constexpr int kNoticePlace = 30;
constexpr int kNarrowestNotice = 180;
// The base class cuts a longer text by adding up the widths of its single characters. That is slow,
// and it draws the dots over the text where letters join or kern.
constexpr size_t kShortText = 40;
// The first combining mark. All characters before it stand alone.
constexpr wxUniChar::value_type kFirstJoining = 0x300;
// The part of a column's width in which the base class draws no text, in pixels.
constexpr int kCellMargins = 8;
// Space beside the widest text of a column that was fitted to its texts.
constexpr int kSpareWidth = 4;
constexpr int kNarrowest = 30;
// The least width of a column of texts that share the room.
constexpr int kNarrowestText = 90;
// The mark of the sorted column, in its heading.
constexpr int kSortMark = 20;

bool IsCutWell(const wxString& text) {
    return text.length() <= kShortText &&
           std::all_of(text.begin(), text.end(),
                       [](wxUniChar character) { return character.GetValue() < kFirstJoining; });
}

}  // namespace

CardListCtrl::CardListCtrl(CardList& owner)
    : wxListCtrl(&owner, kCardListId, wxDefaultPosition, wxSize(100, 100),
                 wxLC_REPORT | wxLC_VIRTUAL | wxBORDER_NONE, wxDefaultValidator, "listCtrl"),
      mOwner(owner) {
    mpRows = &GetRowsWindow(*this);
    mpEmptyNotice = new wxStaticText(this, kNoticeId, wxString());
    SetAdvice(wxString());
    mpEmptyNotice->Hide();
    TellRow(*this, wxString(), _("Cards"));
    Bind(wxEVT_LIST_ITEM_FOCUSED, &CardListCtrl::OnItemFocused, this);
    GetRowsWindow(*this).Bind(wxEVT_SET_FOCUS, &CardListCtrl::OnRowsFocused, this);
    Bind(wxEVT_LEFT_DOWN, &CardListCtrl::OnLeftDown, this);
    Bind(wxEVT_CHAR, &CardListCtrl::OnCharacter, this);
    Bind(wxEVT_IDLE, &CardListCtrl::OnIdle, this);
    GetRowsWindow(*this).Bind(wxEVT_SIZE, &CardListCtrl::OnRowsSize, this);
    Bind(wxEVT_LIST_COL_END_DRAG, [this](wxListEvent& event) {
        event.Skip();
        KeepWidths();
    });
}

void CardListCtrl::SetColumns(const ListColumns& columns) {
    if (columns == mColumns) {
        return;
    }
    for (size_t i = 0; i < mColumns.size(); ++i) {
        mWidths[mColumns[i]] = GetColumnWidth(static_cast<int>(i));
    }
    DeleteAllColumns();
    mColumns = columns;
    for (const ListColumn column : mColumns) {
        AppendColumn(wxGetTranslation(TraitsOf(column).Heading));
    }
    FitColumns();
}

// Returns the width of a column before anyone has set one; 0 when it takes a share of the room.
int CardListCtrl::GetFirstWidth(ListColumn column) const {
    const int digits = TraitsOf(column).Digits;
    if (digits == 0) {
        return 0;
    }
    const int text = GetTextExtent(wxString('0', static_cast<size_t>(digits))).x;
    return std::max(text, MeasureHeading(column)) + kCellMargins + kSpareWidth;
}

void CardListCtrl::FitColumns() {
    std::vector<int> widths;
    for (const ListColumn column : mColumns) {
        const auto known = mWidths.find(column);
        const bool isKept = mWidthsAreSet && known != mWidths.end();
        widths.push_back(isKept ? known->second : GetFirstWidth(column));
    }
    ShareRoom(widths, GetRowsWindow(*this).GetClientSize().x, FromDIP(kNarrowestText));
    for (size_t i = 0; i < widths.size(); ++i) {
        const int column = static_cast<int>(i);
        if (GetColumnWidth(column) != widths[i]) {
            wxListCtrl::SetColumnWidth(column, widths[i]);
        }
    }
}

bool CardListCtrl::SetFont(const wxFont& font) {
    const bool isSet = wxListCtrl::SetFont(font);
    if (!mWidthsAreSet) {
        FitColumns();
    }
    return isSet;
}

void CardListCtrl::SetAdvice(const wxString& advice) {
    mNotice = _("There are no items to show in this view");
    if (!advice.empty()) {
        mNotice << "\n\n" << advice;
    }
    PlaceNotice();
}

void CardListCtrl::PlaceNotice() {
    const int room = GetRowsWindow(*this).GetClientSize().x - 2 * kNoticePlace;
    mpEmptyNotice->SetLabel(mNotice);
    mpEmptyNotice->Wrap(std::max(room, kNarrowestNotice));
}

long CardListCtrl::GetFocusedRow() const {
    const bool isFocused = mLastFocused >= 0 && mLastFocused < GetItemCount() &&
                           GetItemState(mLastFocused, wxLIST_STATE_FOCUSED) != 0;
    return isFocused ? mLastFocused : -1;
}

void CardListCtrl::SetFocusedRow(long row) {
    const long former = GetFocusedRow();
    mIsAnchored = false;
    if (row >= 0) {
        SetItemState(row, wxLIST_STATE_FOCUSED, wxLIST_STATE_FOCUSED);
    } else if (former >= 0) {
        SetItemState(former, 0, wxLIST_STATE_FOCUSED);
    }
}

void CardListCtrl::FocusSomeRow() {
    if (GetFocusedRow() < 0 && GetItemCount() > 0) {
        SetFocusedRow(0);
    }
}

std::vector<long> CardListCtrl::GetSelectedRows() const {
    const auto count = static_cast<size_t>(GetSelectedItemCount());
    // Each question for the next selected row takes the base class a pass over all selected rows.
    // Most selections are one run of rows around the focused row, so that run is tried first.
    const auto isSelected = [this](long row) {
        return row >= 0 && row < GetItemCount() && GetItemState(row, wxLIST_STATE_SELECTED) != 0;
    };
    long first = GetFocusedRow();
    long end = first;
    while (isSelected(first - 1)) {
        --first;
    }
    while (isSelected(end)) {
        ++end;
    }
    std::vector<long> rows;
    rows.reserve(count);
    if (static_cast<size_t>(end - first) == count) {
        for (long row = first; row < end; ++row) {
            rows.push_back(row);
        }
        return rows;
    }
    long row = -1;
    while (rows.size() < count &&
           (row = GetNextItem(row, wxLIST_NEXT_ALL, wxLIST_STATE_SELECTED)) >= 0) {
        rows.push_back(row);
    }
    return rows;
}

void CardListCtrl::SetSelectedRows(const std::vector<long>& rows) {
    // Nobody listens to these events, and one for each row would take longer than all the rest.
    wxEventBlocker quiet(this, wxEVT_LIST_ITEM_SELECTED);
    quiet.Block(wxEVT_LIST_ITEM_DESELECTED);
    // Sets all rows to the more frequent state in one call, then the others one by one.
    const long count = GetItemCount();
    const bool most = rows.size() > static_cast<size_t>(count) / 2;
    SelectEveryRow(most);
    if (!most) {
        for (const long row : rows) {
            SetItemState(row, wxLIST_STATE_SELECTED, wxLIST_STATE_SELECTED);
        }
        return;
    }
    auto selected = rows.begin();
    for (long row = 0; row < count; ++row) {
        if (selected != rows.end() && *selected == row) {
            ++selected;
        } else {
            SetItemState(row, 0, wxLIST_STATE_SELECTED);
        }
    }
}

void CardListCtrl::SelectEveryRow(bool select) {
    // The base class lists the rows that are in the rarer state. It drops that list in one step
    // only when the state of all rows turns over, hence the two calls.
    if (GetItemCount() > 0) {
        SetItemState(-1, select ? 0 : wxLIST_STATE_SELECTED, wxLIST_STATE_SELECTED);
        SetItemState(-1, select ? wxLIST_STATE_SELECTED : 0, wxLIST_STATE_SELECTED);
    }
}

void CardListCtrl::SelectSomeRow() {
    const long row = GetFocusedRow();
    if (GetSelectedItemCount() == 0 && row >= 0) {
        SetItemState(row, wxLIST_STATE_SELECTED, wxLIST_STATE_SELECTED);
    }
}

bool CardListCtrl::SetColumnWidth(int column, int width) {
    if (width != wxLIST_AUTOSIZE && width != wxLIST_AUTOSIZE_USEHEADER) {
        return wxListCtrl::SetColumnWidth(column, width);
    }
    KeepWidths();
    // The first click of a double click begins to drag the edge. The headings apply the width of a
    // drag when they are idle, which would replace the new width by the old one.
    if (wxWindow* const headings = FindHeadings()) {
        headings->OnInternalIdle();
    }
    return wxListCtrl::SetColumnWidth(column, MeasureColumn(column));
}

wxWindow* CardListCtrl::FindHeadings() const {
    for (wxWindow* const child : GetChildren()) {
        if (child != mpEmptyNotice && child != mpRows) {
            return child;
        }
    }
    return nullptr;
}

int CardListCtrl::MeasureHeading(ListColumn column) const {
    const wxWindow* const headings = FindHeadings();
    const wxString text = wxGetTranslation(TraitsOf(column).Heading);
    return (headings == nullptr ? 0 : headings->GetTextExtent(text).x) + FromDIP(kSortMark);
}

// The base class would measure the texts as they were cut for the present width.
int CardListCtrl::MeasureColumn(int column) {
    const ListColumn shown = mColumns[static_cast<size_t>(column)];
    int width = MeasureHeading(shown);
    const long end = std::min<long>(GetTopItem() + GetCountPerPage() + 1, GetItemCount());
    for (long row = GetTopItem(); row < end; ++row) {
        width = std::max(width, GetTextExtent(mOwner.GetCellText(row, shown)).x);
    }
    return std::min(width + kCellMargins + kSpareWidth, std::max(GetClientSize().x, kNarrowest));
}

wxString CardListCtrl::OnGetItemText(long row, long column) const {
    if (static_cast<size_t>(column) >= mColumns.size()) {
        return wxString();
    }
    const wxString text = mOwner.GetCellText(row, mColumns[static_cast<size_t>(column)]);
    if (IsCutWell(text)) {
        return text;
    }
    wxClientDC dc(mpRows);
    dc.SetFont(GetFont());
    const int width = GetColumnWidth(static_cast<int>(column)) - kCellMargins;
    return wxControl::Ellipsize(text, dc, wxELLIPSIZE_END, width, wxELLIPSIZE_FLAGS_NONE);
}

void CardListCtrl::OnItemFocused(wxListEvent& event) {
    event.Skip();
    mLastFocused = event.GetIndex();
    TellFocusedRow();
}

void CardListCtrl::TellFocusedRow() {
    // This reads the card, which is cheap: nearly always the row is about to be drawn anyway.
    wxString row;
    if (mLastFocused >= 0 && GetRowsWindow(*this).HasFocus()) {
        row = mOwner.GetCellText(mLastFocused, ListColumn::kFront) + "\n" +
              mOwner.GetCellText(mLastFocused, ListColumn::kBack);
    }
    TellRow(*this, row, _("Cards"));
}

void CardListCtrl::OnRowsFocused(wxFocusEvent& event) {
    event.Skip();
    // The base class would draw the focus around the first row without focusing it.
    FocusSomeRow();
    TellFocusedRow();
    // The window of the rows scrolls, and the toolkit does not pass the focus notice of such a
    // window on to its parents.
    wxChildFocusEvent notice(this);
    ProcessWindowEvent(notice);
}

// Makes the focused row the anchor. The base class offers no way but a key that steps onto the row,
// so one is sent from the row above. It deselects the other rows, which are selected again
// afterwards.
void CardListCtrl::AnchorFocusedRow() {
    const long row = GetFocusedRow();
    if (row < 0) {
        return;
    }
    const std::vector<long> selected = GetSelectedRows();
    {
        wxEventBlocker quiet(this, wxEVT_LIST_ITEM_FOCUSED);
        wxKeyEvent step(wxEVT_CHAR);
        step.m_keyCode = row == 0 ? WXK_HOME : WXK_DOWN;
        SetItemState(std::max(row - 1, 0L), wxLIST_STATE_FOCUSED, wxLIST_STATE_FOCUSED);
        GetRowsWindow(*this).ProcessWindowEvent(step);
    }
    SetSelectedRows(selected);
    mIsAnchored = true;
}

void CardListCtrl::OnLeftDown(wxMouseEvent& event) {
    event.Skip();
    int place = 0;
    if (HitTest(event.GetPosition(), place) < 0) {
        return;
    }
    if (event.ShiftDown() && !mIsAnchored) {
        AnchorFocusedRow();
    }
    mIsAnchored = true;
}

void CardListCtrl::OnCharacter(wxKeyEvent& event) {
    switch (event.GetKeyCode()) {
        case WXK_UP:
        case WXK_DOWN:
        case WXK_HOME:
        case WXK_END:
        case WXK_PAGEUP:
        case WXK_PAGEDOWN:
            if (event.ShiftDown() && !mIsAnchored) {
                AnchorFocusedRow();
            }
            mIsAnchored = mIsAnchored || !event.ControlDown();
            event.Skip();
            break;
        case WXK_RETURN:
        case WXK_NUMPAD_ENTER:
            // The base class opens no row that is focused but not selected.
            if (event.HasModifiers() || GetFocusedRow() < 0) {
                event.Skip();
            } else {
                wxListEvent activated(wxEVT_LIST_ITEM_ACTIVATED, GetId());
                activated.SetEventObject(this);
                activated.m_itemIndex = GetFocusedRow();
                ProcessWindowEvent(activated);
            }
            break;
        default: {
            // The base class would look for the first row that begins with the character and read
            // every card of the store on the way.
            const bool isText =
                event.GetUnicodeKey() > WXK_SPACE && event.GetKeyCode() != WXK_DELETE;
            event.Skip(!isText || event.HasModifiers());
        }
    }
}

void CardListCtrl::OnIdle(wxIdleEvent& event) {
    event.Skip();
    const bool isEmpty = GetItemCount() == 0;
    if (mpEmptyNotice->IsShown() != isEmpty) {
        // Hidden, it stands outside the rows: GTK complains of a hidden child whenever it scrolls.
        mpEmptyNotice->Hide();
        mpEmptyNotice->Reparent(isEmpty ? mpRows : this);
        mpEmptyNotice->Move(kNoticePlace, kNoticePlace);
        mpEmptyNotice->Show(isEmpty);
    }
    KeepHeadingsInPlace();
}

void CardListCtrl::OnRowsSize(wxSizeEvent& event) {
    event.Skip();
    if (!mWidthsAreSet) {
        FitColumns();
    }
    PlaceNotice();
}

// Draws the headings again after the rows have scrolled. The base class draws them before, so they
// would stay one step behind.
void CardListCtrl::KeepHeadingsInPlace() {
    std::vector<int> places{0};
    CalcUnscrolledPosition(0, 0, &places.front(), nullptr);
    for (int column = 0; column < GetColumnCount(); ++column) {
        places.push_back(GetColumnWidth(column));
    }
    wxWindow* const headings = FindHeadings();
    if (places != mHeadingPlaces && headings != nullptr) {
        mHeadingPlaces = std::move(places);
        headings->Refresh();
    }
}
