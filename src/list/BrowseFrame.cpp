#include "list/BrowseFrame.h"

#include <wx/button.h>
#include <wx/dnd.h>
#include <wx/sizer.h>
#include <wx/srchctrl.h>
#include <wx/statline.h>
#include <wx/stattext.h>
#include <wx/statusbr.h>
#include <wx/utils.h>

#include <list>

#include "base/Text.h"
#include "categories/CategoryList.h"
#include "categories/CurrentCategory.h"
#include "categories/DropDown.h"
#include "files/windows/StoreOpening.h"
#include "shell/AppServices.h"
#include "shell/CommandIds.h"
#include "shell/MenuBar.h"
#include "shell/ProgramInfo.h"
#include "shell/Settings.h"
#include "shell/Toolkit.h"
#include "store/Database.h"

namespace {

const wxSize kFirstSize(640, 480);
// In a smaller window the search field leaves no room for the category's name.
const wxSize kSmallestSize(480, 320);

constexpr int kLineId = 11138;
constexpr int kDropDownId = 13245;

constexpr int kForeignCommands[] = {ID_SAVE_CLOSE, ID_SAVE_NEW, ID_STUDY_FORWARD, ID_STUDY_REVERSE,
                                    ID_CUSTOMIZE_MENU};

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
    const std::tuple counts(shown, selected, mpCardList->IsSorting(), mExchangeState);
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
    if (!mExchangeState.empty()) {
        text << "   " << mExchangeState;
    }
    SetStatusText(text);
    SetAccessibleName(*GetStatusBar(), text);
}

void BrowseFrame::ShowExchangeState(const wxString& text) {
    mExchangeState = text;
    ShowCounts();
}

void BrowseFrame::BuildDropDown() {
    auto* const window = new wxDropDownWindow(this, mpButton);
    mpCategoryList = new CategoryList(mServices, window, kCategoryListId);
    window->SetContent(mpCategoryList);
    window->StayOpenWhile([this] { return mpCategoryList->IsAsking(); });
    mpButton->SetPopup(window);
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
            ShowChosenCategory();
            GiveKeysTo(*mpCardList);
        },
        kCategoryListId);
    Bind(
        wxEVT_LIST_ITEM_FOCUSED, [this](wxListEvent&) { ShowChosenCategory(); }, kCategoryListId);
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

// Gives the child the focus now, or when the window comes back to the front if it is behind others.
void BrowseFrame::GiveKeysTo(wxWindow& child) {
    mpChildFocus = &child;
    child.SetFocus();
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
