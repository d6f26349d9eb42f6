#include "categories/CategoryList.h"

#include <wx/menu.h>
#include <wx/settings.h>
#include <wx/time.h>
#include <wx/vector.h>

#include <algorithm>
#include <list>
#include <set>
#include <utility>

#include "base/Text.h"
#include "categories/CurrentCategory.h"
#include "resources/ResourceBitmap.h"
#include "shell/AppServices.h"
#include "shell/CommandIds.h"
#include "shell/MenuBar.h"
#include "shell/MessageBox.h"
#include "shell/Settings.h"
#include "shell/Toolkit.h"
#include "store/Database.h"
#include "store/UndoHistory.h"

namespace {

// A row is moved to the right by one of these, an em space, for each category above it.
constexpr wchar_t kIndent = L'\u2003';
constexpr int kDeepestLevel = 10;

// A letter that is typed later than that begins a new name.
constexpr long kTypingPause = 1000;

constexpr long kChosen = wxLIST_STATE_SELECTED | wxLIST_STATE_FOCUSED;

}  // namespace

CategoryList::CategoryList(AppServices& services, wxWindow* parent, wxWindowID id)
    : wxListCtrl(parent, id, wxDefaultPosition, wxDefaultSize,
                 wxLC_REPORT | wxLC_SINGLE_SEL | wxLC_NO_HEADER, wxDefaultValidator, "listCtrl"),
      mServices(services) {
    SetMinSize(wxSize(100, -1));
    wxVector<wxBitmapBundle> images;
    images.push_back(LoadResourceBitmap("icons/category_list.png"));
    SetSmallImages(images);
    AppendColumn(_("Category"));
    TellRow(*this, wxString(), _("Categories"));
    UseFont();
    mSettingsAttachment.Attach(&mServices.GetSettingsNotifier(), this);
    Bind(
        wxEVT_MENU, [this](wxCommandEvent&) { Rename(); }, ID_RENAME_CATEGORY);
    Bind(wxEVT_LIST_ITEM_FOCUSED, &CategoryList::OnItemFocused, this);
    Bind(wxEVT_LIST_KEY_DOWN, &CategoryList::OnListKeyDown, this);
    Bind(wxEVT_CONTEXT_MENU, &CategoryList::OnContextMenu, this);
    GetRowsWindow(*this).Bind(wxEVT_CHAR, &CategoryList::OnChar, this);
    GetRowsWindow(*this).Bind(wxEVT_KILL_FOCUS, [this](wxFocusEvent& event) {
        event.Skip();
        mTyped.clear();
    });
    GetRowsWindow(*this).Bind(wxEVT_SIZE, [this](wxSizeEvent& event) {
        event.Skip();
        FillWidth();
    });
}

CategoryList::~CategoryList() {
    // The base class sends this event while it destroys its rows, when this part of the object is
    // gone.
    Unbind(wxEVT_LIST_ITEM_FOCUSED, &CategoryList::OnItemFocused, this);
}

void CategoryList::SetDatabase(Database* database) {
    if (database == mpDatabase) {
        return;
    }
    mpDatabase = database;
    mStoreAttachment.Attach(database, this);
    RefreshRows();
}

void CategoryList::Update(Subject* subject) {
    if (subject == &mServices.GetSettingsNotifier()) {
        UseFont();
    } else {
        RefreshRows();
    }
}

void CategoryList::RefreshRows() {
    std::list<Category> categories;
    if (mpDatabase == nullptr || mpDatabase->SelectAllCategories(categories) < 0) {
        return;
    }
    const std::vector<CategoryPlace> places = ArrangeAsTree(std::move(categories));
    ArrangeRows(places);
    const int32_t current = mServices.GetCurrentCategoryId(*mpDatabase);
    const wxDateTime now = mServices.GetClock().Now();
    long row = 0;
    for (const CategoryPlace& place : places) {
        wxString text;
        if (MakeRowText(place, now, text) < 0) {
            return;
        }
        SetItemText(row, text);
        if (place.Own.Id == current) {
            SelectRow(row);
        }
        ++row;
    }
    SetColumnWidth(0, wxLIST_AUTOSIZE);
    mRowWidth = GetColumnWidth(0);
    FillWidth();
    TellFocusedRow();
}

void CategoryList::ArrangeRows(const std::vector<CategoryPlace>& places) {
    std::set<int32_t> ids;
    for (const CategoryPlace& place : places) {
        ids.insert(place.Own.Id);
    }
    // The base class gives the focus of a row that it deletes to another one, which the user has
    // not chosen.
    const wxEventBlocker quiet(this, wxEVT_LIST_ITEM_FOCUSED);
    for (long row = GetItemCount() - 1; row >= 0; --row) {
        if (ids.count(CategoryOf(row)) == 0) {
            DeleteItem(row);
        }
    }
    long row = 0;
    for (const CategoryPlace& place : places) {
        if (row >= GetItemCount() || CategoryOf(row) != place.Own.Id) {
            const long former = FindItem(row, static_cast<wxUIntPtr>(place.Own.Id));
            if (former >= 0) {
                DeleteItem(former);
            }
            InsertItem(row, ShownName(place.ShortName), 0);
            SetItemData(row, place.Own.Id);
        }
        ++row;
    }
}

int CategoryList::MakeRowText(const CategoryPlace& place, const wxDateTime& now, wxString& text) {
    int32_t forward = 0;
    int32_t reverse = 0;
    if (mpDatabase->SelectReadyCountForward(place.Own.Id, now, forward) < 0 ||
        mpDatabase->SelectReadyCountReverse(place.Own.Id, now, reverse) < 0) {
        return -1;
    }
    text = ShownName(place.ShortName);
    if (forward != 0 || reverse != 0) {
        text = wxString::Format(_("%s (%i/%i)"), text, forward, reverse);
    }
    const int level = std::min(place.Level, kDeepestLevel);
    text.Prepend(wxString(kIndent, static_cast<size_t>(level)));
    return 0;
}

// The whole width of a row can be clicked, and shows that it is selected.
void CategoryList::FillWidth() {
    SetColumnWidth(0, std::max(mRowWidth, GetRowsWindow(*this).GetClientSize().x));
}

void CategoryList::SelectRow(long row) {
    // While the control moves the focus, it is about to select the row and deselect the former one.
    if (!mFocusMoves && GetItemState(row, kChosen) != kChosen) {
        SetItemState(row, kChosen, kChosen);
    }
}

void CategoryList::TellFocusedRow() {
    const long row = FocusedRow();
    TellRow(*this, row < 0 ? wxString() : TrimWide(GetItemText(row)), _("Categories"));
}

bool CategoryList::HasFocusedCategory() const {
    const long row = FocusedRow();
    return row >= 0 && CategoryOf(row) != -1;
}

void CategoryList::Rename() {
    const long row = FocusedRow();
    std::list<Category> found;
    if (row < 0 || mpDatabase == nullptr ||
        mpDatabase->SelectCategoryById(CategoryOf(row), found) < 0 || found.empty()) {
        return;
    }
    const Category& category = found.front();
    TextQuestion dialog(this, _("Please enter a new name for the category."), _("Rename Category"),
                        category.Name);
    // The field cannot show every name in full. A text that the user did not touch changes nothing.
    const wxString untouched = dialog.GetValue();
    mAsking = true;
    const bool isAnswered = AskCategoryName(dialog);
    mAsking = false;
    if (!isAnswered) {
        return;
    }
    const wxString newName = dialog.GetValue();
    if (newName == category.Name || newName == untouched) {
        return;
    }
    // Notifies after a failure too, so that the list shows what was done.
    RenameOrMerge(category, newName);
    mpDatabase->Notify();
}

// The store reports what fails; the caller refreshes in any case.
void CategoryList::RenameOrMerge(const Category& category, const wxString& newName) {
    std::list<Category> existing;
    if (mpDatabase->SelectCategoryByName(newName, existing) < 0) {
        return;
    }
    // The store takes some texts for the same name, "7" and "007" for example, and then finds the
    // category itself.
    if (existing.empty() || existing.front().Id == category.Id) {
        RenameOnly(category, newName);
    } else {
        Merge(category, existing.front());
    }
}

void CategoryList::RenameOnly(const Category& category, const wxString& newName) {
    std::list<Category> renamed;
    // Reads it again, as the store may have changed the name's text.
    if (mpDatabase->UpdateCategory({category.Id, newName}) < 0 ||
        mpDatabase->SelectCategoryById(category.Id, renamed) < 0 || renamed.empty()) {
        return;
    }
    StoreChange change;
    change.What = StoreChange::Kind::kRename;
    change.Categories.push_back(category);
    change.NewName = renamed.front().Name;
    mServices.GetUndoHistory().Add(std::move(change));
}

void CategoryList::Merge(const Category& from, const Category& into) {
    const wxString oldName = ShownName(from.Name);
    const wxString newName = ShownName(into.Name);
    const wxString question = wxString::Format(
        _("Category \"%s\" already exists.\n"
          "Continuing will move all of the cards from category \"%s\" into category \"%s\".\n"
          "This may take several minutes.\n"
          "Continue?"),
        newName, oldName, newName);
    int32_t count = 0;
    if (mpDatabase->SelectCategoryIdCount(from.Id, count) < 0) {
        return;
    }
    if (Ask(question + AboutCards(count), _("Confirm Rename"), wxOK | wxCANCEL | wxCENTRE) !=
        wxOK) {
        return;
    }
    // An error was told, and the merge goes on.
    mServices.BackUpStore(this, BackupCause::kMerge);
    const wxBusyCursor busy;
    StoreChange change;
    if (NoteMerge(*mpDatabase, from, into.Id, change) < 0 ||
        mpDatabase->UpdateFlashCardCategory(from.Id, into.Id) < 0) {
        return;
    }
    const wxString notice = DescribeWithoutUndo(change);
    mServices.GetUndoHistory().Add(std::move(change));
    if (!notice.empty()) {
        Ask(notice, _("Confirm Rename"), wxOK | wxCENTRE);
    }
    if (mServices.GetCurrentCategoryId(*mpDatabase) == from.Id) {
        // The current category follows the cards.
        mServices.SetCurrentCategoryId(*mpDatabase, into.Id);
    }
    // When the store refuses, the category stays without cards.
    mpDatabase->DeleteCategory(from.Id);
}

void CategoryList::DeleteFocused() {
    const long row = FocusedRow();
    if (mpDatabase == nullptr || row < 0 || CategoryOf(row) == -1) {
        return;
    }
    const wxString refusal = _("Cannot Delete Category");
    int32_t count = 0;
    std::list<Category> found;
    if (mpDatabase->SelectCategoryIdCount(CategoryOf(row), count) < 0 ||
        mpDatabase->SelectCategoryById(CategoryOf(row), found) < 0 || found.empty()) {
        RefreshRows();
        return;
    }
    // The text of the row has the counts too.
    const wxString name = ShownName(found.front().Name);
    if (GetItemCount() < 2) {
        Ask(wxString::Format(_("Cannot delete category \"%s\" because it is the only category"),
                             name),
            refusal);
        return;
    }
    if (count > 0) {
        Ask(wxString::Format(_("Cannot delete category \"%s\" because there are flash cards in it"),
                             name) +
                AboutCards(count),
            refusal);
        return;
    }
    const int answer = Ask(_("Do you really want to delete the selected category?"),
                           _("Delete Category"), wxOK | wxCANCEL | wxICON_EXCLAMATION);
    if (answer == wxOK) {
        DeleteCategoryOf(row);
    }
}

int CategoryList::Ask(const wxString& text, const wxString& caption, long style) {
    mAsking = true;
    const int answer = ShowMessageBox(text, caption, style, this);
    mAsking = false;
    return answer;
}

void CategoryList::DeleteCategoryOf(long row) {
    const int32_t id = CategoryOf(row);
    const long heir = row + 1 < GetItemCount() ? row + 1 : row - 1;
    mServices.SetCurrentCategoryId(*mpDatabase, CategoryOf(heir));
    SelectRow(heir);
    // When the store refuses, the refresh shows that the row is still there.
    mpDatabase->DeleteCategory(id);
    mpDatabase->Notify();
}

void CategoryList::Paste() {
    if (CanPaste()) {
        mServices.PasteCards(CategoryOf(FocusedRow()), AppServices::EmptyCut::kAfter);
    }
}

bool CategoryList::CanPaste() const {
    return HasFocusedRow() && mServices.CanPasteCards();
}

// Returns the room that all rows need, so that the window around the list can be that small.
wxSize CategoryList::DoGetBestClientSize() const {
    wxRect row;
    if (GetItemCount() == 0 || !GetItemRect(0, row)) {
        return wxListCtrl::DoGetBestClientSize();
    }
    const int scrollBar = std::max(wxSystemSettings::GetMetric(wxSYS_VSCROLL_X, this), 0);
    return wxSize(mRowWidth + scrollBar, GetItemCount() * row.height);
}

void CategoryList::UseFont() {
    SetFont(ReadFontSetting(kSettingBrowseFont));
}

void CategoryList::OnItemFocused(wxListEvent& event) {
    // The event has no row when the focus is lost.
    if (mpDatabase == nullptr || event.GetIndex() < 0) {
        return;
    }
    TellFocusedRow();
    const int32_t id = CategoryOf(event.GetIndex());
    // Nothing changes when the category is current already.
    if (id != mServices.GetCurrentCategoryId(*mpDatabase)) {
        mServices.SetCurrentCategoryId(*mpDatabase, id);
        mFocusMoves = true;
        mpDatabase->Notify();
        mFocusMoves = false;
        // The window around it hears of the user's choice.
        event.Skip();
    }
}

void CategoryList::OnListKeyDown(wxListEvent& event) {
    if (event.GetKeyCode() == WXK_DELETE) {
        DeleteFocused();
    } else {
        event.Skip();
    }
}

// Finds a row by the first letters of its name. The base class would take the blanks of a row that
// stands below another one for a part of the name.
void CategoryList::OnChar(wxKeyEvent& event) {
    const wxLongLong now = wxGetUTCTimeMillis();
    const wxChar letter = event.GetUnicodeKey();
    if (now - mTypedAt > kTypingPause || now < mTypedAt) {
        mTyped.clear();
    }
    const bool isLetter = letter > WXK_SPACE && letter != WXK_DELETE;
    if (event.HasAnyModifiers() || !(isLetter || (letter == WXK_SPACE && !mTyped.empty()))) {
        mTyped.clear();
        event.Skip();
        return;
    }
    mTyped += letter;
    mTypedAt = now;
    const wxString wanted = mTyped.Lower();
    const long count = GetItemCount();
    // The first letter leaves the present row, so that it goes through the names that begin so.
    const long first = std::max(FocusedRow(), 0L) + (mTyped.length() == 1 ? 1 : 0);
    for (long row = first; row < first + count; ++row) {
        if (TrimWide(GetItemText(row % count)).Lower().StartsWith(wanted)) {
            SelectRow(row % count);
            EnsureVisible(row % count);
            return;
        }
    }
}

void CategoryList::OnContextMenu(wxContextMenuEvent& event) {
    mAsking = true;
    PopUpMenu(*this, *BuildCategoryMenu(), event);
    mAsking = false;
}
