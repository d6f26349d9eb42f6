#include "revise/ReplaceDialog.h"

#include <wx/button.h>
#include <wx/checkbox.h>
#include <wx/choice.h>
#include <wx/intl.h>
#include <wx/listctrl.h>
#include <wx/sizer.h>
#include <wx/stattext.h>
#include <wx/textctrl.h>
#include <wx/wrapsizer.h>

#include <algorithm>
#include <functional>
#include <utility>

#include "base/Job.h"
#include "base/Text.h"
#include "base/Unicode.h"
#include "media/MediaLines.h"
#include "shell/AppServices.h"
#include "shell/Forms.h"
#include "shell/MessageBox.h"
#include "shell/TextUndo.h"
#include "shell/Toolkit.h"
#include "store/Database.h"
#include "store/UndoHistory.h"
#include "transfer/ProgressDialog.h"

// One search. The worker writes what it found, and the main thread reads it once it has ended.
struct ReplacementSearch {
    ReplacementSearch(Database& database, ReplacementQuery query, std::function<void()> atEnd)
        : Query(std::move(query)),
          Reading(
              [this, &database](const std::atomic<bool>& isCancelled) {
                  Found = FindReplacements(database, Query, isCancelled);
              },
              std::move(atEnd)) {}

    const ReplacementQuery Query;
    ReplacementsFound Found;
    Job Reading;
};

namespace {

constexpr int kPause = 300;
// A write that is over sooner shows no progress window.
constexpr long kPatience = 500;
const wxSize kListSize(560, 220);
constexpr int kTextsWidth = 90;
constexpr int kSideWidth = 220;
// Characters before the first difference that a cell shows of a longer text.
constexpr size_t kShownBefore = 12;

constexpr const char* kTextNames[kCardTextCount] = {wxTRANSLATE("Front"), wxTRANSLATE("Back"),
                                                    wxTRANSLATE("Notes"), wxTRANSLATE("Author"),
                                                    wxTRANSLATE("Chapter")};

wxString NameOf(CardText text) {
    return wxGetTranslation(kTextNames[static_cast<size_t>(text)]);
}

// Returns a text as a cell shows it, from shortly before the place where the two differ.
wxString Excerpt(const wxString& whole, const wxString& wholeOther) {
    // The line of a picture or sound stays as it is only where it is what changes.
    const wxString text = WithSharedMediaMarks(whole, wholeOther);
    const wxString other = WithSharedMediaMarks(wholeOther, whole);
    const auto differing = std::mismatch(text.begin(), text.end(), other.begin(), other.end());
    const auto same = static_cast<size_t>(differing.first - text.begin());
    if (same <= 2 * kShownBefore) {
        return CellText(text);
    }
    return wxString(L"\u2026") + CellText(text.Mid(same - kShownBefore));
}

}  // namespace

// The cards that would change, one a row, each with a tick.
class ChangeList : public wxListCtrl {
  public:
    ChangeList(wxWindow* parent, int id, const wxSize& size, std::function<void()> onTick)
        : wxListCtrl(parent, id, wxDefaultPosition, size, wxLC_REPORT | wxLC_VIRTUAL),
          mOnTick(std::move(onTick)) {
        EnableCheckBoxes();
        AppendColumn(_("Texts"), wxLIST_FORMAT_LEFT, FromDIP(kTextsWidth));
        AppendColumn(_("Before"), wxLIST_FORMAT_LEFT, FromDIP(kSideWidth));
        AppendColumn(_("After"), wxLIST_FORMAT_LEFT, FromDIP(kSideWidth));
        LetColumnsFill(*this, 1, 2);
        Bind(wxEVT_LIST_ITEM_CHECKED,
             [this](wxListEvent& event) { OnTick(event.GetIndex(), true); });
        Bind(wxEVT_LIST_ITEM_UNCHECKED,
             [this](wxListEvent& event) { OnTick(event.GetIndex(), false); });
        Bind(wxEVT_LIST_KEY_DOWN, &ChangeList::OnKey, this);
        Bind(wxEVT_LIST_ITEM_FOCUSED, [this](wxListEvent& event) {
            event.Skip();
            TellFocused();
        });
    }

    // The base class asks for the rows once more when it loses the focus while it is destroyed.
    ~ChangeList() override { SetItemCount(0); }

    void Show(std::vector<CardTextChange> changes) {
        mChanges = std::move(changes);
        mTicks.assign(mChanges.size(), true);
        mTicked = mChanges.size();
        SetItemCount(static_cast<long>(mChanges.size()));
        Refresh();
    }

    size_t CountTicked() const { return mTicked; }
    size_t CountRows() const { return mChanges.size(); }

    void TickAll(bool tick) {
        mTicks.assign(mTicks.size(), tick);
        mTicked = tick ? mTicks.size() : 0;
        Refresh();
        mOnTick();
    }

    // Hands over the ticked changes and shows none any more.
    std::vector<CardTextChange> TakeTicked() {
        std::vector<CardTextChange> ticked;
        ticked.reserve(mTicked);
        for (size_t i = 0; i < mChanges.size(); ++i) {
            if (mTicks[i]) {
                ticked.push_back(std::move(mChanges[i]));
            }
        }
        Show({});
        return ticked;
    }

  private:
    wxString OnGetItemText(long row, long column) const override {
        const size_t index = static_cast<size_t>(row);
        wxString text;
        for (const CardTextChange::Text& change : mChanges[index].Texts) {
            text += text.empty() ? "" : (column == 0 ? ", " : " | ");
            const wxString before = FromUtf16(change.Before);
            const wxString after = FromUtf16(change.After);
            text += column == 0   ? NameOf(change.Which)
                    : column == 1 ? Excerpt(before, after)
                                  : Excerpt(after, before);
        }
        return text;
    }

    bool OnGetItemIsChecked(long row) const override { return mTicks[static_cast<size_t>(row)]; }

    void Tick(long row, bool tick) {
        const auto place = mTicks.begin() + row;
        if (*place != tick) {
            *place = tick;
            mTicked += tick ? 1 : static_cast<size_t>(-1);
        }
    }

    void OnTick(long row, bool tick) {
        Tick(row, tick);
        RefreshItem(row);
        TellFocused();
        mOnTick();
    }

    // The space bar turns the ticks of the selected rows to the opposite of the focused one's.
    void OnKey(wxListEvent& event) {
        const long focused = GetNextItem(-1, wxLIST_NEXT_ALL, wxLIST_STATE_FOCUSED);
        if (event.GetKeyCode() != WXK_SPACE || focused < 0) {
            event.Skip();
            return;
        }
        const bool tick = !mTicks[static_cast<size_t>(focused)];
        if (GetSelectedItemCount() == GetItemCount()) {
            TickAll(tick);
            return;
        }
        OnTick(focused, tick);
        for (int left = GetSelectedItemCount(), row = -1; left > 0; --left) {
            row = static_cast<int>(GetNextItem(row, wxLIST_NEXT_ALL, wxLIST_STATE_SELECTED));
            Tick(row, tick);
        }
        Refresh();
        mOnTick();
    }

    void TellFocused() {
        const long row = GetNextItem(-1, wxLIST_NEXT_ALL, wxLIST_STATE_FOCUSED);
        if (row >= 0 && row < GetItemCount()) {
            const wxString tick = mTicks[static_cast<size_t>(row)] ? _("ticked") : _("not ticked");
            TellRow(*this, OnGetItemText(row, 1) + "\n" + OnGetItemText(row, 2) + "\n" + tick,
                    _("Changes"));
        }
    }

    std::function<void()> mOnTick;
    std::vector<CardTextChange> mChanges;
    std::vector<bool> mTicks;
    size_t mTicked = 0;
};

ReplaceDialog::ReplaceDialog(wxWindow* parent, AppServices& services, Database& database,
                             FatalErrorReport& report, const std::vector<int64_t>& selected,
                             const std::vector<int64_t>& shown)
    : wxDialog(parent, kDialogId, _("Find and Replace"), wxDefaultPosition, wxDefaultSize,
               wxDEFAULT_DIALOG_STYLE | wxRESIZE_BORDER),
      mServices(services),
      mDatabase(database),
      mReport(report),
      mSelected(selected),
      mShown(shown) {
    CreateControls();
    TextUndo::AttachTo(*this);
    mPause.Bind(wxEVT_TIMER, [this](wxTimerEvent&) { Search(); });
    Bind(wxEVT_TEXT, [this](wxCommandEvent&) { WaitForMore(); });
    Bind(wxEVT_TEXT_ENTER, [this](wxCommandEvent&) { Search(); });
    Bind(wxEVT_CHOICE, [this](wxCommandEvent&) { WaitForMore(); });
    Bind(wxEVT_CHECKBOX, [this](wxCommandEvent& event) {
        if (event.GetId() == kAllId) {
            mpList->TickAll(event.IsChecked());
        } else {
            mpKeepCapitals->Enable(!mpMatchCase->GetValue() && !mpExpression->GetValue());
            WaitForMore();
        }
    });
    Bind(
        wxEVT_BUTTON, [this](wxCommandEvent&) { Replace(); }, wxID_OK);
    GetSizer()->SetSizeHints(this);
    CentreOnParent();
    ShowFound();
    mpWanted->SetFocus();
}

ReplaceDialog::~ReplaceDialog() = default;

void ReplaceDialog::CreateControls() {
    wxBoxSizer* const column = MakeFormColumn(*this);
    AddTexts(*column);
    AddChecks(*column);
    AddScope(*column);
    AddList(*column);
    column->Add(MakeOkCancel(*this), FormRow(*this));
    FindWindow(wxID_OK)->SetLabel(_("&Replace"));
}

void ReplaceDialog::AddTexts(wxSizer& column) {
    auto* const grid = new wxFlexGridSizer(2, FromDIP(wxSize(kFormEdge, kFormGap)));
    grid->AddGrowableCol(1, 1);
    const auto add = [this, grid](int id, const wxString& label) {
        auto* const text = new wxTextCtrl(this, id, wxString(), wxDefaultPosition, wxDefaultSize,
                                          wxTE_PROCESS_ENTER);
        grid->Add(MakeFormLabel(label, *text, wxControl::RemoveMnemonics(label)),
                  wxSizerFlags().CentreVertical());
        grid->Add(text, wxSizerFlags().Expand());
        return text;
    };
    mpWanted = add(kWantedId, _("&Find"));
    mpReplacement = add(kReplacementId, _("Replace &with"));
    column.Add(grid, FormRow(*this));
}

void ReplaceDialog::AddChecks(wxSizer& column) {
    auto* const how = new wxWrapSizer(wxHORIZONTAL);
    const auto add = [this](wxSizer& row, int id, const wxString& label) {
        auto* const box = new wxCheckBox(this, id, label);
        row.Add(box, wxSizerFlags().Border(wxRIGHT, FromDIP(kFormEdge)));
        return box;
    };
    mpMatchCase = add(*how, kMatchCaseId, _("&Match case"));
    mpKeepCapitals = add(*how, kKeepCapitalsId, _("Kee&p capitals"));
    mpKeepCapitals->SetToolTip(_("What takes the place of \"House\" begins with a capital too."));
    mpKeepCapitals->SetValue(true);
    mpWholeWords = add(*how, kWholeWordsId, _("W&hole words"));
    mpExpression = add(*how, kExpressionId, _("Regular e&xpression"));
    mpExpression->SetToolTip(
        _("In the second field, $1 is what the first group in parentheses has "
          "found, and \\n a new line."));
    column.Add(how, FormRow(*this));
    auto* const where = new wxWrapSizer(wxHORIZONTAL);
    for (size_t i = 0; i < kCardTextCount; ++i) {
        mTexts[i] =
            add(*where, kFirstTextId + static_cast<int>(i), NameOf(static_cast<CardText>(i)));
        mTexts[i]->SetValue(i <= static_cast<size_t>(CardText::kBack));
    }
    column.Add(where, FormRow(*this));
}

void ReplaceDialog::AddScope(wxSizer& column) {
    const auto count = [](const std::vector<int64_t>& rowIds) {
        return static_cast<int>(rowIds.size());
    };
    wxArrayString scopes;
    scopes.Add(wxString::Format(_("Cards in the list (%i)"), count(mShown)));
    if (!mSelected.empty()) {
        scopes.Add(wxString::Format(_("Selected cards (%i)"), count(mSelected)));
    }
    int32_t all = 0;
    // The store itself reports a failure.
    mDatabase.CountAllCards(all);
    scopes.Add(wxString::Format(_("All cards (%i)"), all));
    mpScope = MakeChoice(*this, kScopeId, scopes);
    // One row is selected by chance.
    mpScope->SetSelection(mSelected.size() > 1 ? 1 : 0);
    auto* const row = new wxBoxSizer(wxHORIZONTAL);
    row->Add(MakeFormLabel(_("Loo&k in"), *mpScope, _("Look in")),
             wxSizerFlags().CentreVertical().Border(wxRIGHT, FromDIP(kFormEdge)));
    row->Add(mpScope);
    column.Add(row, FormRow(*this));
}

void ReplaceDialog::AddList(wxSizer& column) {
    mpStatus = new wxStaticText(this, kStatusId, wxString(), wxDefaultPosition, wxDefaultSize,
                                wxST_NO_AUTORESIZE | wxST_ELLIPSIZE_END);
    column.Add(mpStatus, FormRow(*this));
    mpList = new ChangeList(this, kListId, FromDIP(kListSize), [this] { ShowCount(); });
    SetAccessibleName(*mpList, _("Changes"));
    column.Add(mpList, FormRow(*this).Proportion(1));
    mpAll = new wxCheckBox(this, kAllId, _("&Tick all"));
    column.Add(mpAll, FormRow(*this));
}

void ReplaceDialog::WaitForMore() {
    FindWindow(wxID_OK)->Disable();
    mpSearch.reset();
    mPause.StartOnce(kPause);
}

const std::vector<int64_t>& ReplaceDialog::GetScope() {
    const auto scope = static_cast<unsigned>(mpScope->GetSelection());
    if (scope + 1 < mpScope->GetCount()) {
        return scope == 1 ? mSelected : mShown;
    }
    if (mAll.empty()) {
        // The store itself reports a failure.
        mDatabase.CardSelectRowIdsOrder(CardColumn::kCategory, mAll);
    }
    return mAll;
}

void ReplaceDialog::Search() {
    mPause.Stop();
    mpSearch.reset();
    ReplacementQuery query;
    query.Wanted = mpWanted->GetValue();
    query.Replacement = mpReplacement->GetValue();
    query.Options = {mpExpression->GetValue(), mpMatchCase->GetValue(), mpWholeWords->GetValue(),
                     mpKeepCapitals->GetValue()};
    for (size_t i = 0; i < kCardTextCount; ++i) {
        query.Texts[i] = mTexts[i]->GetValue();
    }
    if (query.Wanted.empty()) {
        ShowFound();
        return;
    }
    query.RowIds = GetScope();
    ShowStatus(_("Looking..."));
    mpSearch = std::make_unique<ReplacementSearch>(
        mDatabase, std::move(query), [this] { CallAfter(&ReplaceDialog::ShowFound); });
    if (!mpSearch->Reading.Start()) {
        mpSearch->Reading.RunHere();
    }
}

// Shows what the search found, or nothing where there was none.
void ReplaceDialog::ShowFound() {
    // A notice may come late, when another search runs already.
    if (mpSearch != nullptr && !mpSearch->Reading.IsFinished()) {
        return;
    }
    ReplacementsFound found;
    if (mpSearch != nullptr) {
        mpSearch->Reading.Join();
        found = std::move(mpSearch->Found);
        const wxString failure = mpSearch->Reading.TakeFailure();
        mpSearch.reset();
        if (!failure.empty()) {
            mpList->Show({});
            ShowStatus(failure);
            return;
        }
    } else if (!mpWanted->IsEmpty()) {
        return;
    }
    const bool isFaulty = found.IsStoreFailed || !found.Fault.Message.empty();
    mBlank = found.Blank;
    mpList->Show(isFaulty ? std::vector<CardTextChange>() : std::move(found.Cards));
    ShowCount();
    if (isFaulty) {
        ShowFault(found);
    }
}

void ReplaceDialog::ShowFault(const ReplacementsFound& found) {
    if (found.IsStoreFailed) {
        ShowStatus(_("The store could not be read. Another program may be using it."));
        return;
    }
    const TextPattern::Fault& fault = found.Fault;
    if (!found.FaultyFront.empty() && !fault.IsInReplacement) {
        ShowStatus(wxString::Format(_("%s It stopped at the card \"%s\"."), fault.Message,
                                    ShownName(WithNamedMediaMarks(found.FaultyFront))));
        return;
    }
    const wxTextCtrl& field = fault.IsInReplacement ? *mpReplacement : *mpWanted;
    ShowStatus(wxString::Format(_("\"%s\" is wrong at character %i: %s"), field.GetValue(),
                                static_cast<int>(fault.Place) + 1, fault.Message));
}

void ReplaceDialog::ShowStatus(const wxString& text) {
    mpStatus->SetLabelText(text);
    mpStatus->SetToolTip(text);
    FindWindow(wxID_OK)->Enable(mpList->CountTicked() > 0 && mpSearch == nullptr);
    mpAll->Enable(mpList->CountRows() > 0);
    mpAll->SetValue(mpList->CountRows() > 0 && mpList->CountTicked() == mpList->CountRows());
}

void ReplaceDialog::ShowCount() {
    if (mpWanted->IsEmpty()) {
        ShowStatus(wxString());
        return;
    }
    const auto rows = static_cast<int>(mpList->CountRows());
    wxString text = wxString::Format(
        wxPLURAL("%i card would change", "%i cards would change", static_cast<unsigned>(rows)),
        rows);
    text += ", " + wxString::Format(_("%i ticked"), static_cast<int>(mpList->CountTicked()));
    if (mBlank > 0) {
        text += ". " + wxString::Format(wxPLURAL("%i card is left out, as a side would be blank.",
                                                 "%i cards are left out, as a side would be blank.",
                                                 static_cast<unsigned>(mBlank)),
                                        mBlank);
    }
    ShowStatus(text);
}

void ReplaceDialog::Replace() {
    if (mPause.IsRunning() || mpSearch != nullptr || mpList->CountTicked() == 0) {
        return;
    }
    if (mpList->CountTicked() > UndoHistory::kMostCards &&
        ShowMessageBox(
            wxString::Format(_("Undo keeps at most %i cards, so it will not take back this "
                               "replacement.  Continue?"),
                             static_cast<int>(UndoHistory::kMostCards)),
            _("Find and Replace"), wxOK | wxCANCEL | wxCENTRE, this) != wxOK) {
        return;
    }
    mServices.BackUpDay(this);
    ReplacementThread thread(mDatabase, mpList->TakeTicked());
    if (!RunWithProgress(this, thread, mReport, _("Unable to start a thread for the replacement."),
                         kPatience)) {
        return;
    }
    const int32_t left = thread.CountLeftAlone();
    StoreChange change = NoteTexts(thread.TakeWritten());
    wxString notice = DescribeWithoutUndo(change);
    mServices.GetUndoHistory().Add(std::move(change));
    mDatabase.Notify();
    if (left > 0) {
        notice += (notice.empty() ? "" : "\n") +
                  wxString::Format(
                      wxPLURAL("%i card stays as it is, because it was changed meanwhile.",
                               "%i cards stay as they are, because they were changed meanwhile.",
                               static_cast<unsigned>(left)),
                      left);
    }
    if (!notice.empty()) {
        ShowMessageBox(notice, _("Find and Replace"), wxOK | wxCENTRE, this);
    }
    EndModal(wxID_OK);
}
