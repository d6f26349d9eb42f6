#include "list/BrowseFrame.h"

#include <wx/button.h>
#include <wx/dcclient.h>
#include <wx/dnd.h>
#include <wx/menu.h>
#include <wx/sizer.h>
#include <wx/srchctrl.h>
#include <wx/statline.h>
#include <wx/stattext.h>
#include <wx/statusbr.h>
#include <wx/utils.h>

#include <algorithm>
#include <cstddef>
#include <list>

#include "base/Text.h"
#include "categories/CategoryList.h"
#include "categories/CurrentCategory.h"
#include "categories/DropDown.h"
#include "files/windows/StoreOpening.h"
#include "list/PrintCards.h"
#include "shell/AppServices.h"
#include "shell/CommandIds.h"
#include "shell/MenuBar.h"
#include "shell/MessageBox.h"
#include "shell/ProgramInfo.h"
#include "shell/Settings.h"
#include "shell/TextUndo.h"
#include "shell/Toolkit.h"
#include "store/Database.h"
#include "store/SearchQuery.h"
#include "store/UndoHistory.h"

namespace {

constexpr size_t kMost = 5;

}  // namespace

bool RecentSearches::Add(const wxString& text) {
    const auto found = std::find(mTexts.begin(), mTexts.end(), text);
    if (found == mTexts.end()) {
        mTexts.insert(mTexts.begin(), text);
        mTexts.resize(std::min(mTexts.size(), kMost));
        return true;
    }
    if (found == mTexts.begin()) {
        return false;
    }
    std::rotate(mTexts.begin(), found, found + 1);
    return true;
}

namespace {

const wxString& OldestSearch() {
    static const wxString text(L"\u65e5\u672c\u8a9e");
    return text;
}

}  // namespace

void RecentSearches::Read() {
    Add(OldestSearch());
    std::vector<wxString> stored = ReadRecentTexts(kSettingRecentSearch);
    stored.resize(std::min(stored.size(), kMost - 1));
    for (auto text = stored.rbegin(); text != stored.rend(); ++text) {
        Add(*text);
    }
}

void RecentSearches::Write() const {
    std::vector<wxString> texts = mTexts;
    texts.erase(std::remove(texts.begin(), texts.end(), OldestSearch()), texts.end());
    WriteRecentTexts(kSettingRecentSearch, texts);
}

namespace {

const wxSize kFirstSize(640, 480);
// In a smaller window the search field leaves no room for the category's name.
const wxSize kSmallestSize(480, 320);

constexpr int kLineId = 11138;
constexpr int kDropDownId = 13245;

constexpr int kGap = 6;
constexpr int kSearchWidth = 200;
constexpr int kWidestSearch = 400;
constexpr int kSearchCharacters = 30;

// How long the user types nothing before the list follows the search field, in milliseconds.
constexpr int kTypingPause = 200;
// A search that takes no longer is not broken off.
constexpr int kShortSearch = 50;

// What the menu of the search calls each CardState.
constexpr const char* kStateNames[] = {wxTRANSLATE("Due Cards"),    wxTRANSLATE("New Cards"),
                                       wxTRANSLATE("Failed Cards"), wxTRANSLATE("Excluded Cards"),
                                       wxTRANSLATE("Same Fronts"),  wxTRANSLATE("Hardest Cards")};

constexpr int kForeignCommands[] = {ID_SAVE_CLOSE, ID_SAVE_NEW, ID_STUDY_FORWARD, ID_STUDY_REVERSE,
                                    ID_CUSTOMIZE_MENU};

// Returns true when the window with the keyboard focus is the control or stands inside it.
bool HasFocusIn(const wxWindow& control) {
    const wxWindow* window = wxWindow::FindFocus();
    while (window != nullptr && window != &control) {
        window = window->IsTopLevel() ? nullptr : window->GetParent();
    }
    return window != nullptr;
}

// Says in whole sentences what the undoing could not change; empty when it changed everything.
wxString DescribeLeftAlone(const UndoOutcome& outcome) {
    if (outcome.NameTaken) {
        return _(
            "The category keeps its name, because its former name belongs to another category "
            "now, or because it was renamed or deleted since.");
    }
    const auto count = static_cast<unsigned>(outcome.LeftAlone);
    return count == 0
               ? wxString()
               : wxString::Format(
                     wxPLURAL("%i card stays as it is, because it was changed since.",
                              "%i cards stay as they are, because they were changed since.", count),
                     outcome.LeftAlone);
}

// Opens the files that are dropped on the window.
class FileDrop : public wxFileDropTarget {
  public:
    explicit FileDrop(AppServices& services) : mServices(services) {}

    bool OnDropFiles(wxCoord, wxCoord, const wxArrayString& paths) override {
        for (const wxString& path : paths) {
            mServices.OpenFile(path);
        }
        return !paths.empty();
    }

  private:
    AppServices& mServices;
};

}  // namespace

// A search field whose menu opens below it. On Wayland the library counts the place of the menu
// from the corner of the surrounding window and not of the field; the window around the field opens
// a menu in the right place on every platform.
class SearchField : public wxSearchCtrl {
  public:
    using wxSearchCtrl::wxSearchCtrl;

  protected:
    bool DoPopupMenu(wxMenu* menu, int x, int y) override {
        // A menu has one invoking window at a time, and gets the other one here.
        menu->SetInvokingWindow(nullptr);
        return GetParent()->PopupMenu(menu, GetPosition() + wxPoint(x, y));
    }
};

namespace {

// The library draws a new text at once, with all of the window around it, before the controls that
// have just appeared have a size. This bar waits for its turn.
class CountBar : public wxStatusBar {
  public:
    explicit CountBar(wxFrame* parent)
        : wxStatusBar(parent, wxID_ANY, wxSTB_DEFAULT_STYLE, "statusBar") {}

  protected:
    void DoUpdateStatusText(int) override { Refresh(); }
};

}  // namespace

BrowseFrame::BrowseFrame(AppServices& services)
    : wxFrame(nullptr, ID_WINDOW_LIST, _("List - Velomind"), wxDefaultPosition, kFirstSize,
              wxDEFAULT_FRAME_STYLE | wxTAB_TRAVERSAL, "frame"),
      mServices(services) {
    InitFrame(*this, "browse_window");
    for (const int id : kForeignCommands) {
        RemoveMenuItem(*GetMenuBar(), id);
    }
    BuildControls();
    BindCommands();
    BindListCommands();
    SetMinSize(FromDIP(kSmallestSize));
    SetDropTarget(new FileDrop(mServices));
    Centre(wxBOTH);
    RestoreWindowPosition(kSettingBrowseFramePosition, kApplicationName, *this);
    mSettingsAttachment.Attach(&mServices.GetSettingsNotifier(), this);
    GiveKeysTo(*mpCardList);
}

BrowseFrame::~BrowseFrame() {
    LetGoOfStore();
}

void BrowseFrame::ShowAtStart(Database& database) {
    Attach(nullptr, CardList::Extent::kAll);
    Attach(&database, CardList::Extent::kFirstPage);
    mpCardList->CallWhenDrawn([this] { ReadRest(); });
}

void BrowseFrame::ReadRest() {
    Database* const database = mpDatabase;
    if (database == nullptr || TryQuietly(*database, [this] { ReadAll(); })) {
        return;
    }
    Hide();
    AskBeforeWindows(*database, [this, database] {
        SetDatabase(nullptr);
        SetDatabase(database);
    });
    Show();
}

void BrowseFrame::ReadAll() {
    if (mpCardList->HasFirstPageOnly()) {
        mpCardList->ReadAll();
    }
    mpCategoryList->SetDatabase(mpDatabase);
}

void BrowseFrame::Attach(Database* database, CardList::Extent extent) {
    ClosePreview();
    mpDatabase = database;
    mpCardList->SetShowCategory(true);
    mpCardList->SetDatabase(database, extent);
    // The drop-down counts the ready cards of each category, which no one sees before it opens.
    mpCategoryList->SetDatabase(extent == CardList::Extent::kAll ? database : nullptr);
    mStoreAttachment.Attach(database, this);
    if (database != nullptr) {
        ShowCategory();
    }
}

void BrowseFrame::FocusSearch() {
    if (!IsShown()) {
        return;
    }
    Raise();
    if (IsIconized()) {
        Iconize(false);
    }
    GiveKeysTo(*mpSearchCtrl);
    mpSearchCtrl->SelectAll();
}

void BrowseFrame::ShowCard(const CardUuid& id) {
    std::vector<int64_t> rowIds;
    if (mpDatabase != nullptr && mpDatabase->SelectRowIdById(id, rowIds) >= 0) {
        mpCardList->ShowCards(rowIds);
    }
}

bool BrowseFrame::FindNeighbour(const CardUuid& id, int step, FlashCard& card) const {
    std::vector<int64_t> rowIds;
    std::list<FlashCard> found;
    const bool isFound = mpDatabase != nullptr && mpDatabase->SelectRowIdById(id, rowIds) >= 0 &&
                         !rowIds.empty() &&
                         mpDatabase->SelectCardByRowId(
                             mpCardList->FindNeighbour(rowIds.front(), step), found) >= 0 &&
                         !found.empty();
    if (isFound) {
        card = std::move(found.front());
    }
    return isFound;
}

void BrowseFrame::Update(Subject* subject) {
    if (subject == &mServices.GetSettingsNotifier()) {
        SaveWindowPosition(kSettingBrowseFramePosition, kApplicationName, *this);
        UseFont();
        RestoreWindowPosition(kSettingBrowseFramePosition, kApplicationName, *this);
    } else {
        ShowCategory();
    }
}

void BrowseFrame::BuildControls() {
    auto* const column = new wxBoxSizer(wxVERTICAL);
    auto* const row = new wxBoxSizer(wxHORIZONTAL);
    mpButton = new wxDropDownButton(this, kDropDownId, _("Category"));
    row->Add(mpButton, 0, wxEXPAND);
    BuildStudyButton(*row);
    row->Add(new wxStaticText(this, wxID_ANY, wxString()), 1, wxEXPAND);
    BuildSearchField(*row);
    column->Add(row, wxSizerFlags().Expand().Border(wxALL, FromDIP(kGap)));
    mpSearchProblem = new wxStaticText(this, kSearchProblemId, wxString());
    mpSearchProblem->Hide();
    column->Add(mpSearchProblem,
                wxSizerFlags().Expand().Border(wxLEFT | wxRIGHT | wxBOTTOM, FromDIP(kGap)));
    BuildFirstSteps(*column);
    column->Add(new wxStaticLine(this, kLineId, wxDefaultPosition, wxSize(1, 1), wxLI_HORIZONTAL),
                0, wxEXPAND);
    mpCardList = new CardList(mServices, this, wxSize(100, 100));
    mpCardList->SetMinSize(wxSize(100, -1));
    column->Add(mpCardList, 1, wxEXPAND);
    SetSizer(column);
    BuildDropDown();
    OrderTabs();
    SetStatusBar(new CountBar(this));
    // The help of menu entries would put former counts back.
    SetStatusBarPane(-1);
    ShowCounts();
    Bind(wxEVT_IDLE, [this](wxIdleEvent& event) {
        event.Skip();
        ShowCounts();
    });
    mIsSearchExact = ReadBooleanSetting(kSettingExactSearch);
    mRecentSearches.Read();
    RebuildSearchMenu();
    UseFont();
}

// Tab leads from the search field to the cards, and then to the buttons.
void BrowseFrame::OrderTabs() {
    mpSearchCtrl->MoveBeforeInTabOrder(mpButton);
    mpCardList->MoveAfterInTabOrder(mpSearchCtrl);
}

void BrowseFrame::ShowCounts() {
    const int shown = mpCardList->GetCardCount();
    const int selected = mpCardList->GetSelectedCount();
    const std::tuple counts(shown, selected, mpCardList->IsSorting());
    if (counts == mCounts) {
        return;
    }
    mCounts = counts;
    wxString text =
        wxString::Format(wxPLURAL("%i card", "%i cards", static_cast<unsigned>(shown)), shown);
    if (selected > 0) {
        text << "   "
             << wxString::Format(
                    wxPLURAL("%i selected", "%i selected", static_cast<unsigned>(selected)),
                    selected);
    }
    if (mpCardList->IsSorting()) {
        text << "   " << _("Sorting...");
    }
    SetStatusText(text);
}

void BrowseFrame::BuildDropDown() {
    auto* const window = new wxDropDownWindow(this, mpButton);
    mpCategoryList = new CategoryList(mServices, window, kCategoryListId);
    window->SetContent(mpCategoryList);
    window->StayOpenWhile([this] { return mpCategoryList->IsAsking(); });
    mpButton->SetPopup(window);
}

void BrowseFrame::BuildSearchField(wxSizer& row) {
    mpSearchCtrl =
        new SearchField(this, kSearchId, wxString(), wxDefaultPosition, wxSize(kSearchWidth, -1),
                        wxTE_PROCESS_ENTER, wxDefaultValidator, "searchCtrl");
    mpSearchCtrl->ShowSearchButton(true);
    mpSearchCtrl->SetMinSize(wxSize(kSearchWidth, -1));
    mpSearchCtrl->SetMaxSize(wxSize(kWidestSearch, -1));
    SetAccessibleName(*mpSearchCtrl, _("Search"));
    TextUndo::AttachTo(*mpSearchCtrl);
    row.Add(mpSearchCtrl, 5, wxEXPAND);
    mpSearchMenuButton = new wxDropDownButton(this, kSearchMenuId, wxString(), "searchMenuButton");
    mpSearchMenuButton->SetToolTip(_("Recent Searches"));
    SetAccessibleName(*mpSearchMenuButton, _("Recent Searches"));
    row.Add(mpSearchMenuButton, 0, wxEXPAND);

    // Bound to the field and not to this window, because the field handles some of these events and
    // does not pass them on.
    mpSearchCtrl->Bind(wxEVT_TEXT, &BrowseFrame::OnSearchText, this);
    mTyping.Bind(wxEVT_TIMER, &BrowseFrame::OnSearchPause, this);
    mpSearchCtrl->Bind(wxEVT_TEXT_ENTER, &BrowseFrame::OnSearchEnter, this);
    mpSearchCtrl->Bind(wxEVT_SEARCH_CANCEL, [this](wxCommandEvent&) { ClearSearch(); });
    Bind(wxEVT_MENU, &BrowseFrame::OnRecentSearch, this, kFirstRecentId, kLastRecentId);
    Bind(wxEVT_MENU, &BrowseFrame::OnSearchAll, this, kSearchAllId);
    Bind(wxEVT_MENU, &BrowseFrame::OnExactSearch, this, kExactSearchId);
    Bind(wxEVT_MENU, &BrowseFrame::OnState, this, kFirstStateId, kLastStateId);
    mpSearchMenuButton->Bind(wxEVT_BUTTON,
                             [this](wxCommandEvent&) { mpSearchCtrl->PopupSearchMenu(); });
}

void BrowseFrame::BuildStudyButton(wxSizer& row) {
    mpStudyButton = new wxButton(this, kStudyButtonId, _("Study"));
    mpStudyButton->Bind(wxEVT_BUTTON, [this](wxCommandEvent&) { ProcessCommand(ID_WINDOW_STUDY); });
    row.Add(mpStudyButton, wxSizerFlags().Expand().Border(wxLEFT, FromDIP(kGap)));
}

// Buttons for what a new user does first. They stand above the list while the store has no cards.
void BrowseFrame::BuildFirstSteps(wxSizer& column) {
    auto* const steps = new wxPanel(this, kFirstStepsId);
    auto* const row = new wxBoxSizer(wxHORIZONTAL);
    const auto add = [this, steps, row](int id, const wxString& label, auto&& act) {
        auto* const button = new wxButton(steps, id, label);
        button->Bind(wxEVT_BUTTON, [act](wxCommandEvent&) { act(); });
        row->Add(button, wxSizerFlags().Border(wxRIGHT, FromDIP(kGap)));
    };
    add(kFirstCardId, _("New Card"), [this] { ProcessCommand(wxID_NEW); });
    add(kFirstImportId, _("Import..."), [this] { ProcessCommand(ID_IMPORT); });
    const wxString sample = FindSampleList();
    if (!sample.empty()) {
        add(kSampleId, _("Try a Sample List..."), [this, sample] { mServices.OpenFile(sample); });
    }
    steps->SetSizer(row);
    steps->Hide();
    column.Add(steps, wxSizerFlags().Border(wxLEFT | wxBOTTOM, FromDIP(kGap)));
}

void BrowseFrame::ShowFirstSteps() {
    wxWindow& steps = *FindWindow(kFirstStepsId);
    const bool show = mpDatabase != nullptr && mpCardList->IsStoreEmpty();
    if (show != steps.IsShown()) {
        if (!show && steps.IsDescendant(FindFocus())) {
            mpCardList->SetFocus();
        }
        steps.Show(show);
        Layout();
    }
}

void BrowseFrame::BindCommands() {
    Bind(wxEVT_ACTIVATE, &BrowseFrame::OnActivate, this);
    Bind(wxEVT_CHILD_FOCUS, &BrowseFrame::OnChildFocus, this);
    Bind(wxEVT_CLOSE_WINDOW, &BrowseFrame::OnClose, this);
    Bind(wxEVT_CHAR_HOOK, &BrowseFrame::OnCharHook, this);
    // The button opens the drop-down itself; the event must not reach the application.
    Bind(
        wxEVT_BUTTON, [](wxCommandEvent&) {}, kDropDownId);
    Bind(
        wxEVT_LIST_ITEM_ACTIVATED,
        [this](wxListEvent&) {
            mpButton->GetPopup()->Dismiss();
            GiveKeysTo(*mpCardList);
        },
        kCategoryListId);
    Bind(
        wxEVT_MENU, [this](wxCommandEvent&) { mpCardList->EditSelected(); }, wxID_OPEN);
    Bind(
        wxEVT_UPDATE_UI, [this](wxUpdateUIEvent& event) { event.Enable(mpCardList->HasTarget()); },
        wxID_OPEN);
    Bind(
        wxEVT_MENU,
        [this](wxCommandEvent&) {
            std::vector<int64_t> rowIds;
            mpCardList->CollectSelection(rowIds, false);
            // One row is selected by almost any press or key, and is rarely meant.
            mServices.ExportCards(*this, rowIds,
                                  rowIds.size() > 1 ? AppServices::OfferFirst::kSelection
                                                    : AppServices::OfferFirst::kCategory);
        },
        ID_EXPORT);
    Bind(
        wxEVT_UPDATE_UI,
        [this](wxUpdateUIEvent& event) { event.Enable(!mpCardList->IsStoreEmpty()); }, ID_EXPORT);
    BindPrinting();
    Bind(
        wxEVT_MENU, [this](wxCommandEvent&) { Close(false); }, wxID_CLOSE);
    BindViewCommands();
    Bind(
        wxEVT_UPDATE_UI, [](wxUpdateUIEvent& event) { event.Check(true); }, ID_WINDOW_LIST);
}

void BrowseFrame::BindPrinting() {
    Bind(
        wxEVT_MENU, [this](wxCommandEvent&) { Print(); }, wxID_PRINT);
    Bind(
        wxEVT_UPDATE_UI,
        [this](wxUpdateUIEvent& event) { event.Enable(mpCardList->GetCardCount() > 0); },
        wxID_PRINT);
}

// Prints the cards in view, or the selected ones: one row is selected by almost any press or key,
// and is rarely meant.
void BrowseFrame::Print() {
    if (mpDatabase == nullptr || mpCardList->GetCardCount() == 0) {
        return;
    }
    std::vector<int64_t> rowIds;
    mpCardList->CollectSelection(rowIds, false);
    if (rowIds.size() < 2) {
        rowIds = mpCardList->GetRowIds();
    }
    const wxString search = mpSearchCtrl->GetValue();
    const wxString heading = mSearchAll && !search.empty() ? search : mpButton->GetLabelText();
    mpPreview = PrintCards(*this, *mpDatabase, rowIds, heading);
}

void BrowseFrame::ClosePreview() {
    if (mpPreview != nullptr) {
        mpPreview->Close(true);
    }
}

void BrowseFrame::BindViewCommands() {
    // The current category is the focused row of the categories, whether they are open or not.
    Bind(
        wxEVT_MENU, [this](wxCommandEvent&) { mpCategoryList->Rename(); }, ID_RENAME);
    Bind(
        wxEVT_UPDATE_UI,
        [this](wxUpdateUIEvent& event) { event.Enable(mpCategoryList->HasFocusedRow()); },
        ID_RENAME);
    wxMenu* view = nullptr;
    GetMenuBar()->FindItem(ID_WINDOW_LIST, &view);
    view->AppendSeparator();
    view->AppendCheckItem(ID_FOLLOW_SAVED, _("Follow Saved Cards"));
    Bind(
        wxEVT_MENU,
        [](wxCommandEvent& event) {
            WriteBooleanSetting(kSettingFollowSavedCards, event.IsChecked());
        },
        ID_FOLLOW_SAVED);
    BindSortMenu(*view);
    Bind(
        wxEVT_UPDATE_UI,
        [](wxUpdateUIEvent& event) { event.Check(ReadBooleanSetting(kSettingFollowSavedCards)); },
        ID_FOLLOW_SAVED);
}

// The entries serve the menu bar and the menu of the headings.
void BrowseFrame::BindSortMenu(wxMenu& view) {
    view.AppendSubMenu(BuildSortMenu().release(), _("Sort by"));
    for (const ListColumnTraits& traits : AllListColumns()) {
        const int id = ID_SORT_FIRST + static_cast<int>(traits.Column);
        Bind(
            wxEVT_MENU,
            [this, &traits](wxCommandEvent&) {
                mpCardList->SortBy({traits.Column, mpCardList->GetOrder().IsDescending});
            },
            id);
        Bind(
            wxEVT_UPDATE_UI,
            [this, &traits](wxUpdateUIEvent& event) {
                event.Enable(mpCardList->CanSortBy(traits.Column));
                event.Check(mpCardList->GetOrder().Column == traits.Column);
            },
            id);
    }
    for (const bool isDescending : {false, true}) {
        const int id = isDescending ? ID_SORT_DESCENDING : ID_SORT_ASCENDING;
        Bind(
            wxEVT_MENU,
            [this, isDescending](wxCommandEvent&) {
                mpCardList->SortBy({mpCardList->GetOrder().Column, isDescending});
            },
            id);
        Bind(
            wxEVT_UPDATE_UI,
            [this, isDescending](wxUpdateUIEvent& event) {
                event.Check(mpCardList->GetOrder().IsDescending == isDescending);
            },
            id);
    }
}

void BrowseFrame::BindListCommands() {
    const auto hasTarget = [this] { return mpCardList->HasTarget(); };
    AddListCommand(wxID_CUT, {}, {[this] { mpCardList->Cut(); }, hasTarget});
    AddListCommand(wxID_COPY, {}, {[this] { mpCardList->Copy(); }, hasTarget});
    AddListCommand(
        wxID_PASTE,
        {[this] { mpCategoryList->Paste(); }, [this] { return mpCategoryList->CanPaste(); }},
        {[this] { mpCardList->Paste(); }, [this] { return mpCardList->CanPaste(); }});
    AddListCommand(wxID_DELETE,
                   {[this] { mpCategoryList->DeleteFocused(); },
                    [this] { return mpCategoryList->HasFocusedCategory(); }},
                   {[this] { mpCardList->DeleteSelected(); }, hasTarget});
    const auto bind = [this](int id, auto&& run) {
        Bind(
            wxEVT_MENU, [run](wxCommandEvent&) { run(); }, id);
        Bind(
            wxEVT_UPDATE_UI,
            [this](wxUpdateUIEvent& event) {
                event.Enable(mpDatabase != nullptr && !mpCardList->IsStoreEmpty());
            },
            id);
    };
    // The keys go to the cards then: in the search field, Undo would take back what was typed
    // there.
    bind(ID_REPLACE, [this] {
        mpCardList->ReplaceTexts();
        GiveKeysTo(*mpCardList);
    });
    bind(ID_DUPLICATES, [this] {
        mServices.ShowDuplicates(*this);
        GiveKeysTo(*mpCardList);
    });
    BindOrderMenu();
    // In the list of categories it selects all cards of the chosen category.
    const ListCommand selectAll{[this] { mpCardList->SelectAll(); }, [] { return true; }};
    AddListCommand(wxID_SELECTALL, selectAll, selectAll);
    Bind(
        wxEVT_MENU,
        [this](wxCommandEvent& event) { OnUndo(event, &UndoHistory::UndoLast, _("Undo")); },
        wxID_UNDO);
    Bind(
        wxEVT_MENU,
        [this](wxCommandEvent& event) { OnUndo(event, &UndoHistory::RedoLast, _("Redo")); },
        wxID_REDO);
    for (const int id : {wxID_UNDO, wxID_REDO}) {
        Bind(wxEVT_UPDATE_UI, &BrowseFrame::OnUpdateUndo, this, id);
    }
}

void BrowseFrame::BindOrderMenu() {
    auto* const order = new wxMenu;
    order->Append(ID_MOVE_UP, _("Move Up\tAlt+Up"));
    order->Append(ID_MOVE_DOWN, _("Move Down\tAlt+Down"));
    order->AppendSeparator();
    order->Append(ID_RENUMBER, _("Renumber from..."));
    order->Append(ID_RANDOM_ORDER, _("New Cards in Random Order"));
    wxMenu* edit = nullptr;
    size_t place = 0;
    const wxMenuItem* const rename = GetMenuBar()->FindItem(ID_RENAME, &edit);
    edit->FindChildItem(rename->GetId(), &place);
    edit->Insert(place + 1, wxID_ANY, _("Order of Introduction"), order);
    const auto hasTarget = [this] { return mpCardList->HasTarget(); };
    AddListCommand(ID_MOVE_UP, {}, {[this] { mpCardList->MoveSelected(false); }, hasTarget});
    AddListCommand(ID_MOVE_DOWN, {}, {[this] { mpCardList->MoveSelected(true); }, hasTarget});
    AddListCommand(ID_RENUMBER, {}, {[this] { mpCardList->RenumberSelected(); }, hasTarget});
    Bind(
        wxEVT_MENU, [this](wxCommandEvent&) { mpCardList->DealNewCards(); }, ID_RANDOM_ORDER);
    Bind(
        wxEVT_UPDATE_UI,
        [this](wxUpdateUIEvent& event) { event.Enable(!mpCardList->IsStoreEmpty()); },
        ID_RANDOM_ORDER);
}

void BrowseFrame::AddListCommand(int id, const ListCommand& inCategories,
                                 const ListCommand& inCards) {
    Bind(
        wxEVT_MENU,
        [this, inCategories, inCards](wxCommandEvent& event) {
            if (const ListCommand* const command = FindListCommand(inCategories, inCards)) {
                command->Run();
            } else {
                event.Skip();
            }
        },
        id);
    Bind(
        wxEVT_UPDATE_UI,
        [this, inCategories, inCards](wxUpdateUIEvent& event) {
            if (const ListCommand* const command = FindListCommand(inCategories, inCards)) {
                event.Enable(command->IsEnabled());
            } else {
                event.Skip();
            }
        },
        id);
}

// Returns null when neither list has the focus. The command then goes on to the next handler, such
// as a text field that has the focus.
const BrowseFrame::ListCommand* BrowseFrame::FindListCommand(const ListCommand& inCategories,
                                                             const ListCommand& inCards) const {
    if (inCategories.Run && HasFocusIn(*mpCategoryList)) {
        return &inCategories;
    }
    return inCards.Run && HasFocusIn(*mpCardList) ? &inCards : nullptr;
}

// Gives the child the focus now, or when the window comes back to the front if it is behind others.
void BrowseFrame::GiveKeysTo(wxWindow& child) {
    mpChildFocus = &child;
    child.SetFocus();
}

void BrowseFrame::UseFont() {
    const wxFont font = ReadFontSetting(kSettingBrowseFont);
    mpSearchCtrl->SetFont(font);
    mpButton->SetFont(font);
    mpStudyButton->SetFont(font);
    wxClientDC dc(mpSearchCtrl);
    dc.SetFont(font);
    const int width = kSearchCharacters * dc.GetCharWidth();
    mpSearchCtrl->SetMinSize(wxSize(width, -1));
    mpSearchCtrl->SetMaxSize(wxSize(std::max(width, kWidestSearch), -1));
    Layout();
}

void BrowseFrame::ShowCategory() {
    const int32_t id = mServices.GetCurrentCategoryId(*mpDatabase);
    // SetLabelText, because a name may contain "&", which marks a mnemonic in a label.
    mpButton->SetLabelText(ShownName(GetCategoryName(*mpDatabase, id)));
    SetAccessibleName(*mpButton, wxString::Format(_("Category: %s"), mpButton->GetLabelText()));
    ShowUndoSteps();
    ShowReadyCount();
    ShowFirstSteps();
}

// Shows how many cards of the current category are ready in the direction of study.
void BrowseFrame::ShowReadyCount() {
    const CategoryChoice choice = mServices.GetCurrentChoice(*mpDatabase);
    const wxDateTime now = mServices.GetClock().Now();
    const bool isReverse = mServices.IsReverseStudy();
    mReadyShown = {now, isReverse};
    int32_t ready = 0;
    const ReviewDirection direction = isReverse ? kReviewReverse : kReviewForward;
    const bool isKnown = mpDatabase->CountReady(direction, choice, now, ready) >= 0 && ready > 0;
    mpStudyButton->SetLabel(isKnown ? wxString::Format(_("Study (%i)"), ready) : _("Study"));
    mpStudyButton->SetToolTip(wxString::Format(
        wxPLURAL("%i card is ready", "%i cards are ready", static_cast<unsigned>(ready)), ready));
    Layout();
}

void BrowseFrame::AddRecentSearch(const wxString& text) {
    if (mRecentSearches.Add(text)) {
        mRecentSearches.Write();
        RebuildSearchMenu();
    }
}

void BrowseFrame::RebuildSearchMenu() {
    auto* const menu = new wxMenu;
    menu->Append(wxID_ANY, _("Recent Searches"))->Enable(false);
    int id = kFirstRecentId;
    for (const wxString& text : mRecentSearches.GetTexts()) {
        menu->Append(id++, wxControl::EscapeMnemonics(ShownName(text)));
    }
    menu->AppendSeparator();
    id = kFirstStateId;
    for (const char* const name : kStateNames) {
        menu->AppendCheckItem(id++, wxGetTranslation(name));
    }
    menu->AppendSeparator();
    menu->AppendCheckItem(kExactSearchId, _("Exact Search"));
    menu->AppendCheckItem(kSearchAllId, _("Search in All Categories"))->Check(mSearchAll);
    mpSearchCtrl->SetMenu(menu);
    ShowStates();
}

// Ticks the mode and the states that the text in the field asks for.
void BrowseFrame::ShowStates() {
    mpSearchCtrl->GetMenu()->Check(kExactSearchId, mIsSearchExact);
    const SearchQuery query = SearchQuery::Words(mpSearchCtrl->GetValue());
    for (int id = kFirstStateId; id <= kLastStateId; ++id) {
        wxMenuItem& item = *mpSearchCtrl->GetMenu()->FindItem(id);
        const auto state = static_cast<CardState>(id - kFirstStateId);
        item.Check(!mIsSearchExact && query.Requires(state));
        item.Enable(!mIsSearchExact);
    }
}

// Says below the field which word means nothing. Returns false then: the list stays as it is.
bool BrowseFrame::CheckSearch(const wxString& text) {
    const wxString problem = mIsSearchExact ? wxString() : SearchQuery::Words(text).GetProblem();
    if (problem != mpSearchProblem->GetLabelText()) {
        mpSearchProblem->SetLabelText(problem);
        mpSearchProblem->Wrap(GetClientSize().GetWidth() - 2 * FromDIP(kGap));
        mpSearchProblem->Show(!problem.empty());
        Layout();
    }
    return problem.empty();
}

bool BrowseFrame::Search(const wxString& text) {
    mTyping.Stop();
    mpSearchCtrl->SelectAll();
    const bool isGood = CheckSearch(text);
    if (isGood) {
        mpCardList->SetSearch(text, mIsSearchExact);
    }
    return isGood;
}

void BrowseFrame::ClearSearch() {
    const wxBusyCursor busy;
    mpSearchCtrl->Clear();
    mTyping.Stop();
    CheckSearch(wxString());
    mpCardList->SetSearch(wxString(), mIsSearchExact);
}

// Called when the window closes: the object is destroyed later, when the store may be gone.
void BrowseFrame::LetGoOfStore() {
    mTyping.Stop();
    ClosePreview();
    mSettingsAttachment.Detach();
    mStoreAttachment.Detach();
    mpDatabase = nullptr;
    mpCardList->SetDatabase(nullptr);
    mpCategoryList->SetDatabase(nullptr);
}

void BrowseFrame::OnActivate(wxActivateEvent& event) {
    event.Skip();
    if (event.GetActive()) {
        mServices.FrameActivated(*this);
        if (mpDatabase != nullptr) {
            // The time and the direction of study may have changed. A start has just counted.
            if (mReadyShown != std::pair(mServices.GetClock().Now(), mServices.IsReverseStudy())) {
                ShowReadyCount();
            }
            mpCardList->FollowDirection();
        }
        // The drop-down, which may have had the focus, is closed while another window is active.
        (mpChildFocus->IsShownOnScreen() ? mpChildFocus : mpCardList)->SetFocus();
    }
}

// Remembers the focus only while this window is active. While it is hidden or behind others, the
// toolkit moves the focus without the user.
void BrowseFrame::OnChildFocus(wxChildFocusEvent& event) {
    event.Skip();
    ShowUndoSteps();
    if (IsActive() && wxGetTopLevelParent(event.GetWindow()) == this) {
        mpChildFocus = event.GetWindow();
    }
}

void BrowseFrame::OnClose(wxCloseEvent& event) {
    event.Skip();
    SaveWindowPosition(kSettingBrowseFramePosition, kApplicationName, *this);
    WriteStringSetting(kSettingLastWindow, "Browse");
    LetGoOfStore();
    mServices.FrameClosed(*this);
}

// Handles the keys of the search field: Down goes to the cards, Alt+Down opens the recent searches,
// and Escape clears the search or, when there is none, leaves the field. Up from the first card
// goes back to the field. Alt+Down in the list of cards opens the categories, and Ctrl+Shift+C
// anywhere the menu of the columns.
void BrowseFrame::OnCharHook(wxKeyEvent& event) {
    const int key = event.GetKeyCode();
    if ((key == 'I' || key == 'i') && event.GetModifiers() == wxMOD_CONTROL) {
        // Ctrl+I has the character code of Tab, which the list would take as a step to the next
        // control. In locales with a dotted capital I the key arrives as a small letter.
        ProcessCommand(ID_IMPORT);
        return;
    }
    if (key == 'C' && event.GetModifiers() == (wxMOD_CONTROL | wxMOD_SHIFT)) {
        mpCardList->OpenColumnMenu();
        return;
    }
    const bool isUp = key == WXK_UP || key == WXK_NUMPAD_UP;
    if (isUp && !event.HasAnyModifiers() && HasFocusIn(*mpCardList) && mpCardList->IsAtTop()) {
        FocusSearch();
        return;
    }
    const bool isDown = key == WXK_DOWN || key == WXK_NUMPAD_DOWN;
    if ((isUp || isDown) && event.GetModifiers() == wxMOD_ALT && HasFocusIn(*mpCardList)) {
        ProcessCommand(isUp ? ID_MOVE_UP : ID_MOVE_DOWN);
    } else if (key == WXK_F4 && !event.HasAnyModifiers() && !HasFocusIn(*mpCategoryList)) {
        mpButton->GetPopup()->Popup();
    } else if (!HasFocusIn(*mpSearchCtrl) || (!isDown && key != WXK_ESCAPE)) {
        event.Skip();
    } else if (isDown && event.AltDown()) {
        mpSearchCtrl->PopupSearchMenu();
    } else if (isDown || mpSearchCtrl->IsEmpty()) {
        mpCardList->SetFocus();
    } else {
        ClearSearch();
    }
}

void BrowseFrame::OnSearchText(wxCommandEvent& event) {
    event.Skip();
    mpSearchCtrl->ShowCancelButton(!mpSearchCtrl->IsEmpty());
    mEntered.clear();
    ShowStates();
    mTyping.StartOnce(kTypingPause);
}

// Breaks a search off that takes long when the user goes on, and begins it again after the next
// pause. The text stays as it is and is not kept among the recent ones.
void BrowseFrame::OnSearchPause(wxTimerEvent&) {
    const wxLongLong begin = wxGetUTCTimeMillis();
    const auto isStopped = [begin] {
        return wxGetUTCTimeMillis() - begin > kShortSearch && HasInputWaiting();
    };
    const wxString text = mpSearchCtrl->GetValue();
    if (CheckSearch(text) && !mpCardList->TrySearch(text, mIsSearchExact, isStopped)) {
        mTyping.StartOnce(kTypingPause);
    }
}

void BrowseFrame::OnSearchEnter(wxCommandEvent&) {
    const wxBusyCursor busy;
    const wxString text = mpSearchCtrl->GetValue();
    if (!text.empty() && text == mEntered && mpCardList->GetCardCount() == 1) {
        mpCardList->EditSelected();
        return;
    }
    const bool isGood = Search(text);
    mEntered = isGood ? text : wxString();
    if (isGood && !text.empty()) {
        AddRecentSearch(text);
    }
}

void BrowseFrame::OnRecentSearch(wxCommandEvent& event) {
    const auto position = static_cast<size_t>(event.GetId() - kFirstRecentId);
    const std::vector<wxString>& texts = mRecentSearches.GetTexts();
    if (position < texts.size()) {
        const wxBusyCursor busy;
        mpSearchCtrl->SetValue(texts[position]);
        Search(texts[position]);
    }
}

void BrowseFrame::OnSearchAll(wxCommandEvent& event) {
    const wxBusyCursor busy;
    mSearchAll = event.IsChecked();
    mpSearchCtrl->SetDescriptiveText(mSearchAll ? _("Search in All Categories") : _("Search"));
    mpCardList->SetSearchAll(mSearchAll);
    // The pointer had left the keys with the button that opens the menu.
    GiveKeysTo(*mpSearchCtrl);
}

void BrowseFrame::OnExactSearch(wxCommandEvent& event) {
    const wxBusyCursor busy;
    mIsSearchExact = event.IsChecked();
    WriteBooleanSetting(kSettingExactSearch, mIsSearchExact);
    ShowStates();
    Search(mpSearchCtrl->GetValue());
}

// A tick in the menu is a word in the field.
void BrowseFrame::OnState(wxCommandEvent& event) {
    const wxBusyCursor busy;
    const auto state = static_cast<CardState>(event.GetId() - kFirstStateId);
    mpSearchCtrl->SetValue(
        SearchQuery::Words(mpSearchCtrl->GetValue()).WithState(state, event.IsChecked()));
    Search(mpSearchCtrl->GetValue());
}

// A text field with the focus takes back what was typed into it; else the last step in the store is
// taken back or done again, wherever it was done.
void BrowseFrame::OnUndo(wxCommandEvent& event, TakeStep take, const wxString& caption) {
    if (TextUndo::Find(FindFocus()) != nullptr) {
        event.Skip();
        return;
    }
    UndoOutcome outcome;
    {
        const wxBusyCursor busy;
        const int32_t category = mServices.GetCurrentCategoryId(*mpDatabase);
        (mServices.GetUndoHistory().*take)(*mpDatabase, outcome);
        if (category != -1 && category == outcome.GoneId) {
            // The current category follows its cards, as it did in the merge.
            mServices.SetCurrentCategoryId(*mpDatabase, outcome.IntoId);
        }
        // Notifies after a failure too, so that the list shows what was done.
        mpDatabase->Notify();
        mpCardList->SelectCards(std::move(outcome.RowIds));
    }
    const wxString leftAlone = DescribeLeftAlone(outcome);
    if (!leftAlone.empty()) {
        ShowMessageBox(leftAlone, caption, wxOK | wxCENTRE, this);
    }
}

void BrowseFrame::OnUpdateUndo(wxUpdateUIEvent& event) {
    ShowUndoSteps();
    const UndoHistory& history = mServices.GetUndoHistory();
    event.Enable(event.GetId() == wxID_UNDO ? !history.IsEmpty() : history.CanRedo());
    // Only the field itself knows whether it has something to take back.
    event.Skip(TextUndo::Find(FindFocus()) != nullptr);
}

// Names the steps in the menu. Runs before the menu opens, which fixes the menu's width.
void BrowseFrame::ShowUndoSteps() {
    const UndoHistory& history = mServices.GetUndoHistory();
    const bool isText = TextUndo::Find(FindFocus()) != nullptr;
    const auto show = [&](int id, const wxString& step, const wxString& plain) {
        const wxString text = isText || step.empty() ? plain
                                                     : wxControl::EscapeMnemonics(step) + "\t" +
                                                           plain.AfterFirst('\t');
        wxMenuItem* const item = GetMenuBar()->FindItem(id);
        if (item->GetItemLabel() != text) {
            item->SetItemLabel(text);
        }
    };
    show(wxID_UNDO, history.GetUndoLabel(), _("&Undo\tCtrl+Z"));
    show(wxID_REDO, history.GetRedoLabel(), _("R&edo\tCtrl+Shift+Z"));
}
