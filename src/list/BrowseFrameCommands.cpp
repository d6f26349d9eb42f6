#include "list/BrowseFrame.h"

#include <wx/menu.h>
#include <wx/srchctrl.h>
#include <wx/utils.h>

#include "categories/CategoryList.h"
#include "categories/DropDown.h"
#include "list/PrintCards.h"
#include "list/SearchWords.h"
#include "shell/AppServices.h"
#include "shell/CommandIds.h"
#include "shell/MessageBox.h"
#include "shell/Settings.h"
#include "shell/TextUndo.h"
#include "store/Database.h"
#include "store/UndoHistory.h"

// What the menus and their keys do in the list window.

namespace {

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

}  // namespace

bool BrowseFrame::HasFocusIn(const wxWindow& control) {
    const wxWindow* window = wxWindow::FindFocus();
    while (window != nullptr && window != &control) {
        window = window->IsTopLevel() ? nullptr : window->GetParent();
    }
    return window != nullptr;
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
    const wxString search = SearchInWords(mpCardList->GetSearch());
    const wxString heading = (mSearchAll ? _("All Categories") : mpButton->GetLabelText()) +
                             (search.empty() ? wxString() : L" \u2013 " + search);
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
