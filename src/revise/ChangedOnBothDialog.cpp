#include "revise/ChangedOnBothDialog.h"

#include <wx/button.h>
#include <wx/datetime.h>
#include <wx/intl.h>
#include <wx/listctrl.h>
#include <wx/sizer.h>
#include <wx/stattext.h>
#include <wx/textctrl.h>

#include <algorithm>
#include <list>
#include <utility>

#include "base/Text.h"
#include "base/Unicode.h"
#include "media/MediaLines.h"
#include "shell/AppServices.h"
#include "shell/Forms.h"
#include "shell/MessageBox.h"
#include "store/Database.h"
#include "store/UndoHistory.h"

namespace {

const wxSize kListSize(720, 200);
const wxSize kTextSize(320, 80);
constexpr int kTextWidth = 150;
constexpr int kFieldWidth = 120;
constexpr int kTimeWidth = 130;
constexpr int kStandsColumn = 2;
constexpr int kLostColumn = 3;

// In the order of CardField.
constexpr const char* kFieldNames[kCardFieldCount] = {wxTRANSLATE("Front"),
                                                      wxTRANSLATE("Back"),
                                                      wxTRANSLATE("Category"),
                                                      wxTRANSLATE("Author"),
                                                      wxTRANSLATE("Chapter"),
                                                      wxTRANSLATE("Introduction Order"),
                                                      wxTRANSLATE("Exclude from forward review"),
                                                      wxTRANSLATE("Exclude from reverse review"),
                                                      wxTRANSLATE("Notes")};

wxString YesNo(bool value) {
    return value ? _("Yes") : _("No");
}

// Returns the value of an exchange as a person reads it.
wxString ShownValue(CardField field, const std::string& value) {
    switch (field) {
        case CardField::kCategory:
            return !value.empty() && value.front() == kNamedCategory ? FromUtf8(value.substr(1))
                                                                     : wxString();
        case CardField::kForwardX:
        case CardField::kReverseX:
            return YesNo(value != "0");
        default:
            return FromUtf8(value);
    }
}

wxString NameOfCategory(Database& database, int32_t id) {
    std::list<Category> found;
    // The store itself reports a failure.
    return database.SelectCategoryById(id, found) < 0 || found.empty() ? wxString()
                                                                       : found.front().Name;
}

wxString ShownField(Database& database, const FlashCard& card, CardField field) {
    switch (field) {
        case CardField::kFront:
            return card.Front;
        case CardField::kBack:
            return card.Back;
        case CardField::kCategory:
            return NameOfCategory(database, card.CategoryId);
        case CardField::kAuthor:
            return card.Author;
        case CardField::kChapter:
            return card.Chapter;
        case CardField::kOrder:
            return wxString::Format("%i", card.IntroductionOrder);
        case CardField::kForwardX:
            return YesNo(card.ForwardX);
        case CardField::kReverseX:
            return YesNo(card.ReverseX);
        case CardField::kNotes:
            return card.Notes;
    }
    return wxString();
}

// Puts a value into a card. Returns false for one that no card can have.
bool TakeValue(Database& database, CardField field, const std::string& value, FlashCard& card) {
    const wxString text = ShownValue(field, value);
    int64_t number = 0;
    switch (field) {
        case CardField::kFront:
            card.Front = text;
            return true;
        case CardField::kBack:
            card.Back = text;
            return true;
        case CardField::kCategory:
            card.CategoryId = -1;
            return text.empty() || database.FindOrInsertCategory(text, card.CategoryId) >= 0;
        case CardField::kAuthor:
            card.Author = text;
            return true;
        case CardField::kChapter:
            card.Chapter = text;
            return true;
        case CardField::kOrder:
            if (!ParseInt64(value, number) || number != static_cast<int32_t>(number)) {
                return false;
            }
            card.IntroductionOrder = static_cast<int32_t>(number);
            return true;
        case CardField::kForwardX:
            card.ForwardX = value != "0";
            return true;
        case CardField::kReverseX:
            card.ReverseX = value != "0";
            return true;
        case CardField::kNotes:
            card.Notes = text;
            return true;
    }
    return false;
}

wxString ShownTime(const Stamp& stamp) {
    const wxDateTime time(static_cast<time_t>(stamp.Time / 1000));
    return time.Format("%Y-%m-%d %H:%M");
}

}  // namespace

ChangedOnBothDialog::ChangedOnBothDialog(wxWindow* parent, AppServices& services,
                                         Database& database)
    : wxDialog(parent, kDialogId, _("Changed on Both"), wxDefaultPosition, wxDefaultSize,
               wxDEFAULT_DIALOG_STYLE | wxRESIZE_BORDER),
      mServices(services),
      mDatabase(database) {
    CreateControls();
    Read();
    mpList->SetFocus();
}

void ChangedOnBothDialog::CreateControls() {
    wxBoxSizer* const column = MakeFormColumn(*this);
    mpStatus = new wxStaticText(this, kStatusId, wxString());
    column->Add(mpStatus, wxSizerFlags().Expand());
    mpList = new wxListCtrl(this, kListId, wxDefaultPosition, FromDIP(kListSize),
                            wxLC_REPORT | wxLC_SINGLE_SEL);
    const std::pair<wxString, int> columns[] = {{_("Card"), kTextWidth},
                                                {_("Field"), kFieldWidth},
                                                {_("Stands"), kTextWidth},
                                                {_("Lost"), kTextWidth},
                                                {_("Changed"), kTimeWidth}};
    for (const auto& [title, width] : columns) {
        mpList->AppendColumn(title, wxLIST_FORMAT_LEFT, FromDIP(width));
    }
    LetColumnsFill(*mpList, kStandsColumn, kLostColumn);
    column->Add(mpList, wxSizerFlags(1).Expand().Border(wxTOP, FromDIP(kFormGap)));

    auto* const texts = new wxBoxSizer(wxHORIZONTAL);
    const auto addText = [&](int id, const wxString& label) {
        auto* const side = new wxBoxSizer(wxVERTICAL);
        auto* const text = new wxTextCtrl(this, id, wxString(), wxDefaultPosition,
                                          FromDIP(kTextSize), wxTE_MULTILINE | wxTE_READONLY);
        side->Add(MakeFormLabel(label, *text));
        side->Add(text, wxSizerFlags(1).Expand());
        texts->Add(side, wxSizerFlags(1).Expand().Border(
                             wxLEFT, texts->IsEmpty() ? 0 : FromDIP(kFormEdge)));
        return text;
    };
    mpStands = addText(kStandsId, _("The text that stands:"));
    mpLost = addText(kLostId, _("The text that lost:"));
    column->Add(texts, wxSizerFlags().Expand().Border(wxTOP, FromDIP(kFormEdge)));

    mpLookedAt = new wxButton(this, kLookedAtId, _("&Looked At"));
    mpTake = new wxButton(this, kTakeId, _("&Take This One"));
    auto* const close = new wxButton(this, wxID_CANCEL, _("&Close"));
    // Each button stands below the text that it is about.
    auto* const buttons = new wxBoxSizer(wxHORIZONTAL);
    auto* const ofStands = new wxBoxSizer(wxHORIZONTAL);
    ofStands->Add(mpLookedAt);
    auto* const ofLost = new wxBoxSizer(wxHORIZONTAL);
    ofLost->Add(mpTake);
    ofLost->AddStretchSpacer();
    ofLost->Add(close);
    buttons->Add(ofStands, wxSizerFlags(1).Expand());
    buttons->Add(ofLost, wxSizerFlags(1).Expand().Border(wxLEFT, FromDIP(kFormEdge)));
    column->Add(buttons, wxSizerFlags().Expand().Border(wxTOP, FromDIP(kFormEdge)));
    close->SetDefault();

    mpList->Bind(wxEVT_LIST_ITEM_SELECTED, [this](wxListEvent&) { ShowRow(); });
    mpTake->Bind(wxEVT_BUTTON, [this](wxCommandEvent&) { Take(); });
    mpLookedAt->Bind(wxEVT_BUTTON, [this](wxCommandEvent&) { LookedAt(); });
    SetSizerAndFit(GetSizer());
    CentreOnParent();
}

ChangedOnBothDialog::Row ChangedOnBothDialog::MakeRow(const LostText& text) {
    Row row;
    row.Lost = text;
    row.LostValue = ShownValue(text.Field, text.Value);
    std::list<FlashCard> found;
    // The store itself reports a failure.
    row.IsGone = mDatabase.SelectCardById(text.Card, found) < 0 || found.empty();
    row.Front = row.IsGone ? _("The card was deleted") : found.front().Front;
    row.Stands = row.IsGone ? wxString() : ShownField(mDatabase, found.front(), text.Field);
    return row;
}

// Reads the list anew, and selects the row that is where the selected one was.
void ChangedOnBothDialog::Read() {
    const long selected = mpList->GetNextItem(-1, wxLIST_NEXT_ALL, wxLIST_STATE_SELECTED);
    mRows.clear();
    mpList->DeleteAllItems();
    for (const LostText& text : ReadLostTexts(mDatabase.GetPath())) {
        mRows.push_back(MakeRow(text));
        const Row& row = mRows.back();
        const long item =
            mpList->InsertItem(mpList->GetItemCount(), CellText(WithNamedMediaMarks(row.Front)));
        mpList->SetItem(item, 1, wxGetTranslation(kFieldNames[IndexOf(text.Field)]));
        mpList->SetItem(item, kStandsColumn, CellText(WithNamedMediaMarks(row.Stands)));
        mpList->SetItem(item, kLostColumn, CellText(WithNamedMediaMarks(row.LostValue)));
        mpList->SetItem(item, 4, ShownTime(text.Lost));
    }
    const auto count = static_cast<int>(mRows.size());
    mpStatus->SetLabelText(
        count == 0
            ? _("No text was changed on two computers.")
            : wxString::Format(
                  wxPLURAL("%i text was changed on two computers. The later change stands.",
                           "%i texts were changed on two computers. The later changes stand.",
                           static_cast<unsigned>(count)),
                  count));
    if (count > 0) {
        const long row = std::min<long>(std::max<long>(selected, 0), count - 1);
        mpList->SetItemState(row, wxLIST_STATE_SELECTED | wxLIST_STATE_FOCUSED,
                             wxLIST_STATE_SELECTED | wxLIST_STATE_FOCUSED);
    }
    ShowRow();
}

void ChangedOnBothDialog::ShowRow() {
    const long selected = mpList->GetNextItem(-1, wxLIST_NEXT_ALL, wxLIST_STATE_SELECTED);
    const bool isRow = selected >= 0 && selected < static_cast<long>(mRows.size());
    const Row row = isRow ? mRows[static_cast<size_t>(selected)] : Row();
    mpStands->ChangeValue(row.Stands);
    mpLost->ChangeValue(row.LostValue);
    mpTake->Enable(isRow && !row.IsGone);
    mpLookedAt->Enable(isRow);
}

void ChangedOnBothDialog::Take() {
    const long selected = mpList->GetNextItem(-1, wxLIST_NEXT_ALL, wxLIST_STATE_SELECTED);
    if (selected < 0) {
        return;
    }
    const Row row = mRows[static_cast<size_t>(selected)];
    mServices.BackUpDay(this);
    std::list<FlashCard> found;
    if (mDatabase.SelectCardById(row.Lost.Card, found) < 0 || found.empty()) {
        ShowMessageBox(_("The flash card is no longer in the store."), _("Changed on Both"),
                       wxOK | wxCENTRE, this);
        Read();
        return;
    }
    FlashCard card = found.front();
    // The store itself reports a failure.
    if (!TakeValue(mDatabase, row.Lost.Field, row.Lost.Value, card) ||
        mDatabase.UpdateDifferences(found.front(), card) < 0) {
        return;
    }
    mServices.GetUndoHistory().Add(NoteEdit(found.front(), card));
    mDatabase.Notify();
    Close(row);
}

void ChangedOnBothDialog::LookedAt() {
    const long selected = mpList->GetNextItem(-1, wxLIST_NEXT_ALL, wxLIST_STATE_SELECTED);
    if (selected >= 0) {
        Close(mRows[static_cast<size_t>(selected)]);
    }
}

void ChangedOnBothDialog::Close(const Row& row) {
    const Row closed = row;
    if (CloseLostText(mDatabase.GetPath(), closed.Lost) != 0) {
        ShowMessageBox(_("The list could not be written. Another program may be using it."),
                       _("Changed on Both"), wxOK | wxCENTRE, this);
    }
    Read();
    mpList->SetFocus();
}
