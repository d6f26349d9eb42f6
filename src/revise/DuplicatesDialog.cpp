#include "revise/DuplicatesDialog.h"

#include <wx/button.h>
#include <wx/checkbox.h>
#include <wx/choice.h>
#include <wx/intl.h>
#include <wx/listctrl.h>
#include <wx/settings.h>
#include <wx/sizer.h>
#include <wx/stattext.h>

#include <algorithm>
#include <functional>
#include <list>
#include <optional>
#include <utility>

#include "base/Job.h"
#include "base/Text.h"
#include "exchange/Duplicates.h"
#include "media/MediaLines.h"
#include "shell/AppServices.h"
#include "shell/Forms.h"
#include "shell/MessageBox.h"
#include "shell/Toolkit.h"
#include "store/Database.h"
#include "store/UndoHistory.h"
#include "transfer/MergeDialog.h"
#include "transfer/ProgressDialog.h"

// One search. The worker writes what it found, and the main thread reads it once it has ended.
struct DuplicateSearch {
    DuplicateSearch(Database& database, SameBy by, const std::optional<CategoryChoice>& choice,
                    std::function<void()> atEnd)
        : Reading(
              [this, &database, by, choice](const std::atomic<bool>& isCancelled) {
                  Found = FindDuplicates(database, by, choice, isCancelled);
              },
              std::move(atEnd)) {}

    DuplicatesFound Found;
    Job Reading;
};

namespace {

const wxSize kListSize(600, 260);
constexpr int kSideWidth = 220;
constexpr int kCategoryWidth = 130;
constexpr int kTint = 12;
// A merge that is over sooner shows no progress window.
constexpr long kPatience = 500;

}  // namespace

// The cards of all groups, one a row. Every second group has a ground of its own. The rows of a
// group are ticked together.
class DuplicateList : public wxListCtrl {
  public:
    DuplicateList(wxWindow* parent, int id, const wxSize& size, Database& database,
                  std::function<void()> onTick)
        : wxListCtrl(parent, id, wxDefaultPosition, size,
                     wxLC_REPORT | wxLC_VIRTUAL | wxLC_SINGLE_SEL),
          mDatabase(database),
          mOnTick(std::move(onTick)) {
        EnableCheckBoxes();
        AppendColumn(_("Front"), wxLIST_FORMAT_LEFT, FromDIP(kSideWidth));
        AppendColumn(_("Back"), wxLIST_FORMAT_LEFT, FromDIP(kSideWidth));
        AppendColumn(_("Category"), wxLIST_FORMAT_LEFT, FromDIP(kCategoryWidth));
        LetColumnsFill(*this, 0, 1);
        std::list<Category> categories;
        // The store itself reports a failure.
        mDatabase.SelectAllCategories(categories);
        mCategories.assign(categories.begin(), categories.end());
        Bind(wxEVT_LIST_ITEM_FOCUSED, [this](wxListEvent& event) {
            event.Skip();
            TellFocused();
        });
        Bind(wxEVT_LIST_ITEM_CHECKED, [this](wxListEvent& event) { Tick(event.GetIndex(), true); });
        Bind(wxEVT_LIST_ITEM_UNCHECKED,
             [this](wxListEvent& event) { Tick(event.GetIndex(), false); });
        // The space bar would open the row.
        Bind(wxEVT_LIST_KEY_DOWN, [this](wxListEvent& event) {
            const long row = GetNextItem(-1, wxLIST_NEXT_ALL, wxLIST_STATE_FOCUSED);
            if (event.GetKeyCode() == WXK_SPACE && row >= 0 && row < GetItemCount()) {
                Tick(row, !OnGetItemIsChecked(row));
            } else {
                event.Skip();
            }
        });
    }

    // The base class asks for the rows once more when it loses the focus while it is destroyed.
    ~DuplicateList() override { SetItemCount(0); }

    void Show(const DuplicatesFound& found) {
        mRows.clear();
        mTicks = found.ArePlain;
        for (size_t group = 0; group < found.Groups.size(); ++group) {
            for (const int64_t rowId : found.Groups[group]) {
                mRows.push_back({rowId, group});
            }
        }
        SetItemCount(static_cast<long>(mRows.size()));
        Focus(0);
        Refresh();
    }

    size_t CountRows() const { return mRows.size(); }
    size_t CountGroups() const { return Count(false); }
    size_t CountTicked() const { return Count(true); }

    void TickAll(bool tick) {
        mTicks.assign(mTicks.size(), tick);
        Refresh();
        TellFocused();
        mOnTick();
    }

    // Returns the row ids of the ticked groups. More than one step can have are left out.
    std::vector<std::vector<int64_t>> GetTicked() const {
        std::vector<std::vector<int64_t>> groups;
        size_t gone = 0;
        for (size_t i = 0; i < mRows.size(); ++i) {
            const bool isFirst = IsFirst(i);
            gone += mTicks[mRows[i].Group] && !isFirst ? 1U : 0U;
            if (gone > UnionThread::kMostGone) {
                if (groups.back().size() < 2) {
                    groups.pop_back();
                }
                break;
            }
            if (mTicks[mRows[i].Group]) {
                groups.resize(groups.size() + (isFirst ? 1U : 0U));
                groups.back().push_back(mRows[i].RowId);
            }
        }
        return groups;
    }

    // Gives the row ids of the selected card and of the first other one of its group; the first of
    // the two stands first.
    bool GetPair(int64_t& first, int64_t& second) const {
        const long row = GetNextItem(-1, wxLIST_NEXT_ALL, wxLIST_STATE_SELECTED);
        if (row < 0 || static_cast<size_t>(row) >= mRows.size()) {
            return false;
        }
        const auto chosen = mRows.begin() + row;
        const auto head = std::find_if(mRows.begin(), mRows.end(), [&chosen](const Row& other) {
            return other.Group == chosen->Group;
        });
        first = head->RowId;
        second = (chosen == head ? head + 1 : chosen)->RowId;
        return true;
    }

    // Takes a card out, and its group with it when that has one card left.
    void Remove(int64_t rowId) {
        const auto isRow = [rowId](const Row& row) { return row.RowId == rowId; };
        const auto gone = std::find_if(mRows.begin(), mRows.end(), isRow);
        const size_t group = gone->Group;
        const auto place = static_cast<long>(gone - mRows.begin());
        mRows.erase(gone);
        const auto isInGroup = [group](const Row& row) { return row.Group == group; };
        if (std::count_if(mRows.begin(), mRows.end(), isInGroup) < 2) {
            mRows.erase(std::remove_if(mRows.begin(), mRows.end(), isInGroup), mRows.end());
        }
        SetItemCount(static_cast<long>(mRows.size()));
        Focus(std::min(place, GetItemCount() - 1L));
        Refresh();
    }

    wxString NameOfCategory(int32_t id) const {
        const auto found =
            std::find_if(mCategories.begin(), mCategories.end(),
                         [id](const Category& category) { return category.Id == id; });
        return found == mCategories.end() ? wxString() : found->Name;
    }

  private:
    struct Row {
        int64_t RowId;
        size_t Group;
    };

    void Focus(long row) {
        if (row >= 0 && row < GetItemCount()) {
            const long states = wxLIST_STATE_FOCUSED | wxLIST_STATE_SELECTED;
            SetItemState(row, states, states);
            EnsureVisible(row);
            // The row may have had the focus before, with another card.
            TellFocused();
        }
    }

    void TellFocused() {
        const long row = GetNextItem(-1, wxLIST_NEXT_ALL, wxLIST_STATE_FOCUSED);
        if (row >= 0 && row < GetItemCount()) {
            const wxString tick = OnGetItemIsChecked(row) ? _("ticked") : _("not ticked");
            TellRow(*this, OnGetItemText(row, 0) + "\n" + OnGetItemText(row, 1) + "\n" + tick,
                    _("Duplicates"));
        }
    }

    bool IsFirst(size_t row) const { return row == 0 || mRows[row].Group != mRows[row - 1].Group; }

    size_t Count(bool isTicked) const {
        size_t groups = 0;
        for (size_t i = 0; i < mRows.size(); ++i) {
            groups += IsFirst(i) && (!isTicked || mTicks[mRows[i].Group]) ? 1U : 0U;
        }
        return groups;
    }

    void Tick(long row, bool tick) {
        mTicks[mRows[static_cast<size_t>(row)].Group] = tick;
        Refresh();
        TellFocused();
        mOnTick();
    }

    bool OnGetItemIsChecked(long row) const override {
        return mTicks[mRows[static_cast<size_t>(row)].Group];
    }

    // Only the rows on the screen are read.
    wxString OnGetItemText(long row, long column) const override {
        std::list<FlashCard> cards;
        if (mDatabase.SelectCardByRowId(mRows[static_cast<size_t>(row)].RowId, cards) < 0 ||
            cards.empty()) {
            return wxString();
        }
        const FlashCard& card = cards.front();
        return CellText(column == 0   ? WithNamedMediaMarks(card.Front)
                        : column == 1 ? WithNamedMediaMarks(card.Back)
                                      : NameOfCategory(card.CategoryId));
    }

    wxItemAttr* OnGetItemAttr(long row) const override {
        const int tint = 100 - kTint;
        const wxColour ground = wxSystemSettings::GetColour(wxSYS_COLOUR_LISTBOX);
        const bool isDark = wxSystemSettings::GetAppearance().IsDark();
        mSecond.SetBackgroundColour(ground.ChangeLightness(isDark ? 100 + kTint : tint));
        return mRows[static_cast<size_t>(row)].Group % 2 == 0 ? nullptr : &mSecond;
    }

    Database& mDatabase;
    std::vector<Category> mCategories;
    std::vector<Row> mRows;
    // One for each group that was found.
    std::vector<bool> mTicks;
    std::function<void()> mOnTick;
    mutable wxItemAttr mSecond;
};

DuplicatesDialog::DuplicatesDialog(wxWindow* parent, AppServices& services, Database& database,
                                   FatalErrorReport& report)
    : wxDialog(parent, kDialogId, _("Duplicates"), wxDefaultPosition, wxDefaultSize,
               wxDEFAULT_DIALOG_STYLE | wxRESIZE_BORDER),
      mServices(services),
      mDatabase(database),
      mReport(report) {
    CreateControls();
    Bind(wxEVT_CHOICE, [this](wxCommandEvent&) { Search(); });
    Bind(
        wxEVT_BUTTON, [this](wxCommandEvent&) { Merge(); }, kMergeId);
    Bind(
        wxEVT_BUTTON, [this](wxCommandEvent&) { MergeTicked(); }, kMergeTickedId);
    Bind(
        wxEVT_CHECKBOX, [this](wxCommandEvent& event) { mpList->TickAll(event.IsChecked()); },
        kAllId);
    mpList->Bind(wxEVT_LIST_ITEM_ACTIVATED, [this](wxListEvent&) { Merge(); });
    SetEscapeId(wxID_CLOSE);
    GetSizer()->SetSizeHints(this);
    CentreOnParent();
    Search();
    mpList->SetFocus();
}

DuplicatesDialog::~DuplicatesDialog() = default;

void DuplicatesDialog::CreateControls() {
    wxBoxSizer* const column = MakeFormColumn(*this);
    auto* const row = new wxBoxSizer(wxHORIZONTAL);
    const auto add = [this, row](int id, const wxString& label, const wxArrayString& entries) {
        wxChoice* const choice = MakeChoice(*this, id, entries);
        row->Add(MakeFormLabel(label, *choice, wxControl::RemoveMnemonics(label)),
                 wxSizerFlags().CentreVertical().Border(wxRIGHT, FromDIP(kFormGap)));
        row->Add(choice, wxSizerFlags().Border(wxRIGHT, FromDIP(kFormEdge)));
        return choice;
    };
    wxArrayString by;
    by.Add(_("the same front"));
    by.Add(_("the same front and back"));
    mpSameBy = add(kSameById, _("&Cards with"), by);
    wxArrayString scopes;
    scopes.Add(_("all categories"));
    scopes.Add(_("the current category"));
    mpScope = add(kScopeId, _("&in"), scopes);
    column->Add(row, FormRow(*this));
    mpStatus = new wxStaticText(this, kStatusId, wxString(), wxDefaultPosition, wxDefaultSize,
                                wxST_NO_AUTORESIZE | wxST_ELLIPSIZE_END);
    column->Add(mpStatus, FormRow(*this));
    mpList =
        new DuplicateList(this, kListId, FromDIP(kListSize), mDatabase, [this] { ShowCount(); });
    SetAccessibleName(*mpList, _("Duplicates"));
    column->Add(mpList, FormRow(*this).Proportion(1));
    mpAll = new wxCheckBox(this, kAllId, _("&Tick all"));
    column->Add(mpAll, FormRow(*this));
    auto* const buttons = new wxBoxSizer(wxHORIZONTAL);
    mpMerge = new wxButton(this, kMergeId, _("&Merge..."));
    buttons->Add(mpMerge, wxSizerFlags().Border(wxRIGHT, FromDIP(kFormGap)));
    mpMergeTicked = new wxButton(this, kMergeTickedId, _("Merge Tic&ked..."));
    buttons->Add(mpMergeTicked);
    buttons->AddStretchSpacer();
    buttons->Add(new wxButton(this, wxID_CLOSE));
    column->Add(buttons, FormRow(*this));
}

void DuplicatesDialog::Search() {
    mpSearch.reset();
    mpList->Show(DuplicatesFound());
    ShowCount();
    mpStatus->SetLabelText(_("Looking..."));
    std::optional<CategoryChoice> choice;
    if (mpScope->GetSelection() == 1) {
        choice = mServices.GetCurrentChoice(mDatabase);
    }
    const SameBy by = mpSameBy->GetSelection() == 1 ? SameBy::kFrontAndBack : SameBy::kFront;
    mpSearch = std::make_unique<DuplicateSearch>(
        mDatabase, by, choice, [this] { CallAfter(&DuplicatesDialog::ShowFound); });
    if (!mpSearch->Reading.Start()) {
        mpSearch->Reading.RunHere();
    }
}

void DuplicatesDialog::ShowFound() {
    // A notice may come late, when another search runs already.
    if (mpSearch == nullptr || !mpSearch->Reading.IsFinished()) {
        return;
    }
    mpSearch->Reading.Join();
    const DuplicatesFound found = std::move(mpSearch->Found);
    const wxString failure = mpSearch->Reading.TakeFailure();
    mpSearch.reset();
    mpList->Show(failure.empty() && !found.IsStoreFailed ? found : DuplicatesFound());
    ShowCount();
    if (found.IsStoreFailed) {
        mpStatus->SetLabelText(_("The store could not be read. Another program may be using it."));
    } else if (!failure.empty()) {
        mpStatus->SetLabelText(failure);
    }
}

void DuplicatesDialog::ShowCount() {
    const auto groups = static_cast<int>(mpList->CountGroups());
    const auto cards = static_cast<int>(mpList->CountRows());
    const auto ticked = static_cast<int>(mpList->CountTicked());
    mpMerge->Enable(groups > 0);
    mpMergeTicked->Enable(ticked > 0);
    mpAll->Enable(groups > 0);
    mpAll->SetValue(groups > 0 && ticked == groups);
    mpStatus->SetLabelText(
        groups == 0 ? _("No two cards are the same.")
                    : wxString::Format(wxPLURAL("%i group with %i cards", "%i groups with %i cards",
                                                static_cast<unsigned>(groups)),
                                       groups, cards) +
                          ", " + wxString::Format(_("%i ticked"), ticked));
}

// Reads the two cards, the one with the latest review first, which is kept.
bool DuplicatesDialog::ReadPair(FlashCard& first, FlashCard& second) {
    int64_t rowIds[2] = {};
    if (!mpList->GetPair(rowIds[0], rowIds[1])) {
        return false;
    }
    std::list<FlashCard> cards[2];
    for (int i = 0; i < 2; ++i) {
        // The store itself reports a failure.
        if (mDatabase.SelectCardByRowId(rowIds[i], cards[i]) < 0) {
            return false;
        }
    }
    const auto isFit = [](const std::list<FlashCard>& card) {
        return !card.empty() && !card.front().CardId.IsZero();
    };
    if (!isFit(cards[0]) || !isFit(cards[1])) {
        ShowMessageBox(_("One of these cards is gone or damaged, so they cannot be merged."),
                       _("Duplicates"), wxOK | wxCENTRE, this);
        return false;
    }
    first = cards[0].front();
    second = cards[1].front();
    if (IsReviewedLater(first, second)) {
        std::swap(first, second);
    }
    return true;
}

void DuplicatesDialog::Merge() {
    FlashCard kept;
    FlashCard other;
    if (!ReadPair(kept, other)) {
        return;
    }
    FlashCard chosen;
    {
        MergeDialog dialog(this, kept, other, SuggestUnion(kept, other),
                           mpList->NameOfCategory(kept.CategoryId),
                           mpList->NameOfCategory(other.CategoryId));
        if (dialog.ShowModal() != wxOK) {
            return;
        }
        chosen = dialog.GetMergedCard();
    }
    if (!Unite(kept, other, chosen)) {
        Search();
    }
}

// Makes one card of each ticked group, by what the merge window would offer.
void DuplicatesDialog::MergeTicked() {
    const std::vector<std::vector<int64_t>> groups = mpList->GetTicked();
    const auto count = static_cast<int>(groups.size());
    const wxString question =
        wxString::Format(wxPLURAL("Merge the cards of %i group?", "Merge the cards of %i groups?",
                                  static_cast<unsigned>(count)),
                         count) +
        "\n\n" +
        _("The card that was reviewed last stays, with its texts. It takes what it lacks of "
          "author, "
          "chapter and notes from the others, and the later review in each direction. The others "
          "are deleted.");
    if (groups.empty() ||
        ShowMessageBox(question, _("Duplicates"), wxOK | wxCANCEL | wxCENTRE, this) != wxOK) {
        return;
    }
    mServices.BackUpDay(this);
    const SameBy by = mpSameBy->GetSelection() == 1 ? SameBy::kFrontAndBack : SameBy::kFront;
    UnionThread thread(mDatabase, by, groups);
    if (!RunWithProgress(this, thread, mReport, _("Unable to start a thread for the merge."),
                         kPatience)) {
        return;
    }
    StoreChange change = NoteUnions(thread.TakeDone());
    const wxString notice = DescribeWithoutUndo(change);
    mServices.GetUndoHistory().Add(std::move(change));
    mDatabase.Notify();
    Search();
    mpList->SetFocus();
    if (!notice.empty()) {
        ShowMessageBox(notice, _("Duplicates"), wxOK | wxCENTRE, this);
    }
    const int32_t left = thread.CountLeftAlone();
    if (left > 0) {
        ShowMessageBox(
            wxString::Format(
                wxPLURAL("%i card stays as it is, because it was changed meanwhile.",
                         "%i cards stay as they are, because they were changed meanwhile.",
                         static_cast<unsigned>(left)),
                left),
            _("Duplicates"), wxOK | wxCENTRE, this);
    }
}

// Returns false when the cards have to be read anew.
bool DuplicatesDialog::Unite(const FlashCard& kept, const FlashCard& other,
                             const FlashCard& chosen) {
    FlashCard merged = chosen;
    TakeLaterReviews(kept, merged);
    TakeLaterReviews(other, merged);
    mServices.BackUpDay(this);
    std::vector<int64_t> gone;
    StoreChange change;
    if (mDatabase.SelectRowIdById(other.CardId, gone) < 0) {
        return false;
    }
    const UnionOutcome outcome = UniteCards(mDatabase, kept, other, merged, change);
    if (outcome == UnionOutcome::kChangedMeanwhile) {
        ShowMessageBox(_("One of these cards was changed or deleted meanwhile."), _("Duplicates"),
                       wxOK | wxCENTRE, this);
    }
    if (outcome != UnionOutcome::kDone || gone.empty()) {
        return false;
    }
    const wxString notice = DescribeWithoutUndo(change);
    mServices.GetUndoHistory().Add(std::move(change));
    mDatabase.Notify();
    mpList->Remove(gone.front());
    ShowCount();
    if (!notice.empty()) {
        ShowMessageBox(notice, _("Duplicates"), wxOK | wxCENTRE, this);
    }
    return true;
}
