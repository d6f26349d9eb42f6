#include "transfer/MergeDialog.h"

#include <wx/button.h>
#include <wx/checkbox.h>
#include <wx/display.h>
#include <wx/intl.h>
#include <wx/sizer.h>
#include <wx/stattext.h>
#include <wx/textctrl.h>

#include <algorithm>

#include "base/Text.h"
#include "base/Time.h"
#include "scheduler/ReviewArithmetic.h"
#include "shell/Forms.h"
#include "shell/MessageBox.h"
#include "shell/TextUndo.h"
#include "shell/Toolkit.h"

namespace {

constexpr int kSideHeight = 60;
constexpr int kOthersHeight = 80;
constexpr int kLeastHeight = 36;
constexpr int kLongLabel = 125;

// Sets the text's colour with the background's, as red would make the light text of a dark theme
// hard to read.
void Mark(wxWindow& control) {
    control.SetForegroundColour(*wxBLACK);
    control.SetBackgroundColour(wxColour(255, 0, 0));
}

void Refuse(wxTextCtrl& control, const wxString& text) {
    ShowValidationMessage(text);
    control.SetFocus();
    control.SelectAll();
}

wxString NumberText(int32_t number) {
    return wxString::Format("%i", number);
}

wxString DescribeSchedule(const CardSchedule& schedule) {
    if (!schedule.Introduced) {
        return _("not introduced");
    }
    const IntervalInUnits interval = SplitInterval(schedule.ReviewInterval);
    return wxString::Format(_("reviewed %s, interval %.2f %s, difficulty %u"),
                            FormatDate(schedule.LastReview, _("%d %b %Y")),
                            static_cast<double>(interval.Value), IntervalUnitName(interval.Unit),
                            unsigned{schedule.Difficulty});
}

// Returns what differs between two versions in fields without a column, one a line, and which of
// two schedules the merged version gets.
wxString DescribeOthers(const FlashCard& stored, const FlashCard& imported,
                        const FlashCard& suggested, bool isImport, const wxString& storedCategory,
                        const wxString& importedCategory) {
    wxString text;
    const auto add = [&text](const wxString& name, const wxString& before, const wxString& after) {
        if (before != after) {
            text += text.empty() ? "" : "\n";
            text += name + ": " + before + wxString(L" \u2192 ") + after;
        }
    };
    add(_("Category"), storedCategory, importedCategory);
    add(_("Chapter"), stored.Chapter, imported.Chapter);
    add(_("Notes"), stored.Notes, imported.Notes);
    for (const ReviewDirection direction : kEachDirection) {
        const wxString before = DescribeSchedule(ScheduleOf(stored, direction));
        const wxString after = DescribeSchedule(ScheduleOf(imported, direction));
        add(direction == kReviewForward ? _("Forward schedule") : _("Reverse schedule"), before,
            after);
        if (before != after) {
            const bool isFirst = DescribeSchedule(ScheduleOf(suggested, direction)) == before;
            text += "\n" + (isImport  ? _("The merged version gets the schedule of the import.")
                            : isFirst ? _("The merged card gets the schedule of the first card.")
                                      : _("The merged card gets the schedule of the second card."));
        }
    }
    return text;
}

// Puts the second half of a label into a second line.
void BreakLabel(wxControl& control) {
    wxString label = control.GetLabel();
    const size_t middle = label.length() / 2;
    size_t place = label.find(' ', middle);
    const size_t before = label.rfind(' ', middle);
    const bool isNearer =
        place == wxString::npos || (before != wxString::npos && middle - before < place - middle);
    place = isNearer ? before : place;
    if (place != wxString::npos) {
        label[place] = '\n';
        control.SetLabel(label);
    }
}

}  // namespace

MergeDialog::MergeDialog(wxWindow* parent, const FlashCard& databaseCard,
                         const FlashCard& importedCard, const wxString& databaseCategory,
                         const wxString& importedCategory)
    : MergeDialog(parent, Purpose::kImport, databaseCard, importedCard, importedCard,
                  databaseCategory, importedCategory) {}

MergeDialog::MergeDialog(wxWindow* parent, const FlashCard& firstCard, const FlashCard& secondCard,
                         const FlashCard& suggested, const wxString& firstCategory,
                         const wxString& secondCategory)
    : MergeDialog(parent, Purpose::kTwoCards, firstCard, secondCard, suggested, firstCategory,
                  secondCategory) {}

MergeDialog::MergeDialog(wxWindow* parent, Purpose purpose, const FlashCard& databaseCard,
                         const FlashCard& importedCard, const FlashCard& suggested,
                         const wxString& databaseCategory, const wxString& importedCategory)
    : wxDialog(parent, kDialogId, _("Merge"), wxDefaultPosition, wxDefaultSize,
               wxDEFAULT_DIALOG_STYLE | wxRESIZE_BORDER),
      mPurpose(purpose),
      mDatabaseCard(databaseCard),
      mImportedCard(importedCard),
      mSuggestedCard(suggested) {
    CreateControls();
    AddOthers(*GetSizer()->GetItem(size_t{0})->GetSizer(),
              DescribeOthers(mDatabaseCard, mImportedCard, mSuggestedCard,
                             purpose == Purpose::kImport, databaseCategory, importedCategory));
    FitScreen();
    FillColumn(mDatabase, mDatabaseCard);
    FillColumn(mImported, mImportedCard);
    FillColumn(mMerged, mSuggestedCard);
    TextUndo::AttachTo(*this);
    MarkDifferences();
    // Escape and the title bar ask whether to stop.
    SetEscapeId(kStopId);
}

wxString MergeDialog::VersionName(int column) const {
    const wxString imported[] = {_("Database Version"), _("Imported Version"), _("Merged Version")};
    const wxString cards[] = {_("First Card"), _("Second Card"), _("Merged Card")};
    return mPurpose == Purpose::kImport ? imported[column] : cards[column];
}

void MergeDialog::CreateControls() {
    auto* const grid = new wxFlexGridSizer(4, FromDIP(wxSize(kFormGap, kFormGap)));
    for (size_t column = 1; column <= 3; ++column) {
        grid->AddGrowableCol(column, 1);
    }
    AddHead(*grid);
    AddTextRow(*grid, _("Front"), &Column::Front, kFrontIds, true);
    grid->AddGrowableRow(1, 1);
    AddTextRow(*grid, _("Back"), &Column::Back, kBackIds, true);
    grid->AddGrowableRow(2, 1);
    AddTextRow(*grid, _("Author"), &Column::Author, kAuthorIds, false);
    AddTextRow(*grid, _("Introduction Order"), &Column::IntroductionOrder, kOrderIds, false);
    mDatabase.IntroductionOrder->SetToolTip(
        _("This value controls the order that new cards are introduced.\nCards with a higher "
          "Introduction Order are introduced after cards with a lower Introduction Order.\nLeave "
          "this value blank to introduce this card after all of the other cards in its "
          "category."));
    AddCheckRow(*grid, _("Exclude from forward review"), &Column::ForwardX, kForwardIds,
                _("This card cannot be reviewed from front to back."));
    AddCheckRow(*grid, _("Exclude from reverse review"), &Column::ReverseX, kReverseIds,
                _("This card cannot be reviewed from back to front."));
    AddButtons(*grid);

    MakeFormColumn(*this)->Add(grid, wxSizerFlags(1).Expand());
}

// Lists below the columns what else differs, if anything does.
void MergeDialog::AddOthers(wxSizer& rows, const wxString& others) {
    if (others.empty()) {
        return;
    }
    auto* const text =
        new wxTextCtrl(this, kOthersId, others, wxDefaultPosition,
                       FromDIP(wxSize(-1, kOthersHeight)), wxTE_MULTILINE | wxTE_READONLY);
    rows.Add(MakeFormLabel(_("What else differs"), *text), FormRow(*this));
    rows.Add(text, FormRow(*this));
}

// Sizes the dialog. Where the screen is narrower than the longest labels, they get two lines.
void MergeDialog::FitScreen() {
    FitTextHeights(*this);
    const int index = wxDisplay::GetFromWindow(this);
    const int width = wxDisplay(static_cast<unsigned>(std::max(index, 0))).GetClientArea().width;
    // The library would answer the question for the fitting size with the size of the screen.
    if (GetSizer()->CalcMin().GetWidth() > width) {
        for (wxWindow* const child : GetChildren()) {
            if (auto* const text = dynamic_cast<wxTextCtrl*>(child); text != nullptr) {
                if (text->HasFlag(wxTE_MULTILINE)) {
                    // A narrow screen is not high either.
                    text->SetMinSize(FromDIP(wxSize(-1, kLeastHeight)));
                }
                continue;
            }
            auto* const control = dynamic_cast<wxControl*>(child);
            if (control != nullptr && control->GetBestSize().GetWidth() > FromDIP(kLongLabel)) {
                BreakLabel(*control);
            }
        }
    }
    GetSizer()->SetSizeHints(this);
    CentreOnParent();
}

void MergeDialog::AddHead(wxFlexGridSizer& grid) {
    grid.AddSpacer(0);
    for (int column = 0; column < 3; ++column) {
        auto* const heading = new wxStaticText(this, wxID_ANY, VersionName(column));
        heading->SetFont(heading->GetFont().Bold());
        grid.Add(heading);
    }
}

void MergeDialog::AddTextRow(wxFlexGridSizer& grid, const wxString& label,
                             wxTextCtrl* Column::*control, const int (&ids)[3], bool isMultiLine) {
    Column* const columns[] = {&mDatabase, &mImported, &mMerged};
    for (int column = 0; column < 3; ++column) {
        const long style =
            (isMultiLine ? wxTE_MULTILINE : 0) | (column == kMergedColumn ? 0 : wxTE_READONLY);
        const wxSize size = isMultiLine ? FromDIP(wxSize(-1, kSideHeight)) : wxDefaultSize;
        auto* const text =
            new wxTextCtrl(this, ids[column], wxString(), wxDefaultPosition, size, style);
        const wxString spokenName = label + ", " + VersionName(column);
        if (column == 0) {
            // The label of a long text stands beside its first line.
            grid.Add(MakeFormLabel(label, *text, spokenName),
                     isMultiLine ? wxSizerFlags().Border(wxTOP, FromDIP(kFormGap) / 2)
                                 : wxSizerFlags().CentreVertical());
        } else {
            SetAccessibleName(*text, spokenName);
        }
        columns[column]->*control = text;
        grid.Add(text, wxSizerFlags().Expand());
    }
}

void MergeDialog::AddCheckRow(wxFlexGridSizer& grid, const wxString& label,
                              wxCheckBox* Column::*control, const int (&ids)[3],
                              const wxString& toolTip) {
    grid.AddSpacer(0);
    Column* const columns[] = {&mDatabase, &mImported, &mMerged};
    for (int column = 0; column < 3; ++column) {
        auto* const box = new wxCheckBox(this, ids[column], label);
        box->SetToolTip(toolTip);
        SetAccessibleName(*box, label + ", " + VersionName(column));
        // The boxes of the other two versions only show what they hold.
        box->Enable(column == kMergedColumn);
        columns[column]->*control = box;
        grid.Add(box, wxSizerFlags().Expand());
    }
}

void MergeDialog::AddButtons(wxFlexGridSizer& grid) {
    const auto add = [&](int id, const wxString& label, auto onPress) {
        auto* const button = new wxButton(this, id, label);
        button->Bind(wxEVT_BUTTON, [onPress](wxCommandEvent&) { onPress(); });
        grid.Add(button, wxSizerFlags().Expand());
        return button;
    };
    grid.AddSpacer(0);
    if (mPurpose == Purpose::kTwoCards) {
        add(kKeepDatabaseId, _("Keep First Card"), [this] { Keep(mDatabaseCard, kThisCard); });
        add(kKeepImportedId, _("Keep Second Card"), [this] { Keep(mImportedCard, kThisCard); });
        add(kKeepMergedId, _("Keep Merged Card"), [this] { OnKeepMerged(); })->SetFocus();
        grid.AddSpacer(0);
        grid.AddSpacer(0);
        grid.AddSpacer(0);
        add(kStopId, _("Cancel"), [this] { EndModal(wxCANCEL); });
        return;
    }
    add(kKeepDatabaseId, _("Keep Database Version"), [this] { Keep(mDatabaseCard, kThisCard); });
    wxButton* const imported = add(kKeepImportedId, _("Keep Imported Version"),
                                   [this] { Keep(mImportedCard, kThisCard); });
    add(kKeepMergedId, _("Keep Merged Version"), [this] { OnKeepMerged(); });
    grid.AddSpacer(0);
    add(kAlwaysDatabaseId, _("Always Keep Database Version"),
        [this] { Keep(mDatabaseCard, kAlwaysDatabase); });
    add(kAlwaysImportedId, _("Always Keep Imported Version"),
        [this] { Keep(mImportedCard, kAlwaysImported); });
    add(kStopId, _("Stop Import"), [this] { OnStop(); });
    // Enter takes the version that an import without questions takes.
    imported->SetFocus();
}

void MergeDialog::FillColumn(const Column& column, const FlashCard& card) {
    column.Front->ChangeValue(card.Front);
    column.Back->ChangeValue(card.Back);
    column.Author->ChangeValue(card.Author);
    column.IntroductionOrder->ChangeValue(NumberText(card.IntroductionOrder));
    column.ForwardX->SetValue(card.ForwardX);
    column.ReverseX->SetValue(card.ReverseX);
}

void MergeDialog::MarkDifferences() {
    const FlashCard& stored = mDatabaseCard;
    const FlashCard& imported = mImportedCard;
    const struct {
        bool Differs;
        wxWindow* Control;
    } fields[] = {
        {stored.Front != imported.Front, mMerged.Front},
        {stored.Back != imported.Back, mMerged.Back},
        {stored.Author != imported.Author, mMerged.Author},
        {stored.IntroductionOrder != imported.IntroductionOrder, mMerged.IntroductionOrder},
        {stored.ForwardX != imported.ForwardX, mMerged.ForwardX},
        {stored.ReverseX != imported.ReverseX, mMerged.ReverseX}};
    for (const auto& field : fields) {
        if (field.Differs) {
            Mark(*field.Control);
        }
    }
}

void MergeDialog::Keep(const FlashCard& card, Choice choice) {
    mMergedCard = card;
    mChoice = choice;
    EndModal(wxOK);
}

// Reads the merged column into the card. Returns false after telling the user why it makes no card.
bool MergeDialog::ReadMerged(FlashCard& card) {
    card.Front = TrimWide(mMerged.Front->GetValue());
    if (card.Front.empty()) {
        Refuse(*mMerged.Front, _("Flash cards cannot have a blank front"));
        return false;
    }
    card.Back = TrimWide(mMerged.Back->GetValue());
    if (card.Back.empty()) {
        Refuse(*mMerged.Back, _("Flash cards cannot have a blank back"));
        return false;
    }
    card.Author = TrimWide(mMerged.Author->GetValue());
    const wxString order = TrimWide(mMerged.IntroductionOrder->GetValue());
    if (!ParseWholeNumber(order, card.IntroductionOrder)) {
        Refuse(*mMerged.IntroductionOrder, _("Introduction Order must be a whole number"));
        return false;
    }
    card.ForwardX = mMerged.ForwardX->GetValue();
    card.ReverseX = mMerged.ReverseX->GetValue();
    return true;
}

void MergeDialog::OnKeepMerged() {
    // Fields without a column, such as the schedules, come from the imported version.
    FlashCard card = mSuggestedCard;
    if (ReadMerged(card)) {
        Keep(card, kThisCard);
    }
}

void MergeDialog::OnStop() {
    if (ShowMessageBox(_("Do you want to stop importing cards now?"), _("Stop Import?"),
                       wxOK | wxCANCEL | wxCENTRE, this) == wxOK) {
        EndModal(wxCANCEL);
    }
}
