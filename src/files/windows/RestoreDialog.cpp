#include "files/windows/RestoreDialog.h"

#include <wx/button.h>
#include <wx/dataview.h>
#include <wx/filename.h>
#include <wx/intl.h>
#include <wx/log.h>
#include <wx/sizer.h>
#include <wx/stattext.h>
#include <wx/textctrl.h>
#include <wx/utils.h>

#include <algorithm>
#include <list>

#include "base/Files.h"
#include "base/Job.h"
#include "base/Text.h"
#include "base/Time.h"
#include "files/StoreFiles.h"
#include "files/StoreRepair.h"
#include "files/windows/Backups.h"
#include "files/windows/StoreFileChange.h"
#include "files/windows/StoreOpening.h"
#include "media/MediaLines.h"
#include "shell/Forms.h"
#include "shell/MessageBox.h"
#include "shell/Settings.h"
#include "shell/Toolkit.h"

// Reads one backup and, if wanted, compares it with the store. Opens both itself, so that the
// windows' store does not wait.
struct BackupReader {
    // With an empty store path it does not compare.
    BackupReader(const wxString& backupPath, const wxString& storePath)
        : BackupPath(backupPath),
          StorePath(storePath),
          Reading([this](const std::atomic<bool>&) { Read(); }) {}

    bool IsComparison() const { return !StorePath.empty(); }
    void Read() {
        QuietDatabase backup;
        QuietDatabase store;
        if (!wxFileName::FileExists(BackupPath) || backup.OpenToRead(BackupPath) < 0) {
            return;
        }
        Result = backup.CountAllCards(Difference.BackupCards);
        if (IsComparison() && store.OpenToRead(StorePath) >= 0) {
            Result = CompareStores(store, backup, Difference);
        }
    }

    const wxString BackupPath;
    const wxString StorePath;
    // Written by the worker before it ends.
    int Result = -1;
    StoreDifference Difference;
    Job Reading;
};

namespace {

enum : int { ID_DIALOG = 10160, ID_LIST, ID_BRING_BACK, ID_OTHER_FILE, ID_CARD_DIALOG, ID_CARDS };

constexpr int kTickMilliseconds = 30;
constexpr int kCardsColumn = 2;

wxString FormatTime(const wxDateTime& time) {
    return FormatDate(time, _("%a %d %b %Y %H:%M"));
}

// Lists the cards of a backup that the store no longer has, all of them selected.
class BringBackDialog : public wxDialog {
  public:
    BringBackDialog(wxWindow* parent, Database& backup, const std::vector<int64_t>& rowIds);
    std::vector<int64_t> GetChosen() const;

  private:
    const std::vector<int64_t>& mRowIds;
    wxDataViewListCtrl* mpCards = nullptr;
};

BringBackDialog::BringBackDialog(wxWindow* parent, Database& backup,
                                 const std::vector<int64_t>& rowIds)
    : wxDialog(parent, ID_CARD_DIALOG, _("Bring Back Cards"), wxDefaultPosition, wxDefaultSize,
               wxDEFAULT_DIALOG_STYLE | wxRESIZE_BORDER),
      mRowIds(rowIds) {
    auto* const text = new wxStaticText(
        this, wxID_ANY, _("These cards of the backup are not in the store file any more:"));
    mpCards = new wxDataViewListCtrl(this, ID_CARDS, wxDefaultPosition, FromDIP(wxSize(520, 260)),
                                     wxDV_MULTIPLE | wxDV_ROW_LINES);
    SetAccessibleName(*mpCards, text->GetLabelText());
    mpCards->AppendTextColumn(_("Front"), wxDATAVIEW_CELL_INERT, FromDIP(250));
    mpCards->AppendTextColumn(_("Back"), wxDATAVIEW_CELL_INERT, FromDIP(250));
    for (const int64_t rowId : rowIds) {
        std::list<FlashCard> cards;
        backup.SelectCardByRowId(rowId, cards);
        const FlashCard card = cards.empty() ? FlashCard() : cards.front();
        wxVector<wxVariant> values;
        values.push_back(ShownName(WithNamedMediaMarks(card.Front)));
        values.push_back(ShownName(WithNamedMediaMarks(card.Back)));
        mpCards->AppendItem(values);
    }
    // The keys start at the first card.
    mpCards->SetCurrentItem(mpCards->RowToItem(0));
    mpCards->SelectAll();

    wxBoxSizer* const rows = MakeFormColumn(*this);
    rows->Add(text);
    rows->Add(mpCards, wxSizerFlags(1).Expand().Border(wxTOP, FromDIP(kFormGap)));
    rows->Add(MakeOkCancel(*this), wxSizerFlags().Expand().Border(wxTOP, FromDIP(kFormEdge)));
    FindWindow(wxID_OK)->SetLabel(_("Bring Back"));
    GetSizer()->SetSizeHints(this);
    CentreOnParent();
    // The list would deselect all rows but one.
    LetReturnPressDefault(*this);
    mpCards->SetFocus();
}

std::vector<int64_t> BringBackDialog::GetChosen() const {
    std::vector<int64_t> chosen;
    for (unsigned row = 0; row < mRowIds.size(); ++row) {
        if (mpCards->IsRowSelected(row)) {
            chosen.push_back(mRowIds[row]);
        }
    }
    return chosen;
}

}  // namespace

RestoreDialog::RestoreDialog(wxWindow* parent, const wxString& storePath, Database* database)
    : wxDialog(parent, ID_DIALOG, _("Restore"), wxDefaultPosition, wxDefaultSize,
               wxDEFAULT_DIALOG_STYLE | wxRESIZE_BORDER),
      mStorePath(storePath),
      mpDatabase(database),
      mTimer(this) {
    const std::vector<StoreBackup> backups =
        ListBackups(GetBackupDirectory(ReadBackupSettings()), storePath);
    // Those of other stores stand at the end.
    CreateControls(!backups.empty() && backups.back().Of == StoreBackup::Owner::kOtherStore);
    for (const StoreBackup& backup : backups) {
        AddBackup(backup, false);
    }
    if (!mRows.empty()) {
        mpList->SelectRow(0);
    }
    ShowSelected();
    mpList->SetFocus();

    Bind(wxEVT_TIMER, &RestoreDialog::OnTimer, this);
    Bind(wxEVT_DATAVIEW_SELECTION_CHANGED, &RestoreDialog::OnSelection, this, ID_LIST);
    Bind(wxEVT_BUTTON, &RestoreDialog::OnRestore, this, wxID_OK);
    Bind(wxEVT_BUTTON, &RestoreDialog::OnOtherFile, this, ID_OTHER_FILE);
    Bind(
        wxEVT_BUTTON, [this](wxCommandEvent&) { BringBack(); }, ID_BRING_BACK);
    mTimer.Start(kTickMilliseconds);
}

RestoreDialog::~RestoreDialog() = default;

void RestoreDialog::CreateControls(bool hasOthers) {
    auto* const text = new wxStaticText(this, wxID_ANY, _("Backups of the store file:"));
    mpList = new wxDataViewListCtrl(this, ID_LIST, wxDefaultPosition, wxDefaultSize,
                                    wxDV_SINGLE | wxDV_ROW_LINES);
    SetAccessibleName(*mpList, text->GetLabelText());
    // A heading that is longer in another language, or in a larger font, has room too.
    int wholeWidth = FromDIP(2 * kFormEdge);
    const auto addColumn = [this, &wholeWidth](const wxString& title,
                                               const std::vector<wxString>& longest,
                                               wxAlignment alignment) {
        int width = GetTextExtent(title).x;
        for (const wxString& value : longest) {
            width = std::max(width, GetTextExtent(value).x);
        }
        width += FromDIP(2 * kFormEdge);
        wholeWidth += width;
        mpList->AppendTextColumn(title, wxDATAVIEW_CELL_INERT, width, alignment);
    };
    const wxDateTime aWideDate(30, wxDateTime::Sep, 2026, 20, 0);
    addColumn(_("Date"), {FormatTime(aWideDate)}, wxALIGN_LEFT);
    addColumn(_("Cause"), {NameOfCause(BackupCause::kRestore), NameOfCause(BackupCause::kDamaged)},
              wxALIGN_LEFT);
    addColumn(_("Cards"), {_("Unreadable")}, wxALIGN_RIGHT);
    addColumn(_("Size"), {wxFileName::GetHumanReadableSize(wxULongLong(1000000))}, wxALIGN_RIGHT);
    if (hasOthers) {
        mpList->AppendTextColumn(_("Other Store File"), wxDATAVIEW_CELL_INERT, FromDIP(260));
    }
    mpList->SetMinSize(wxSize(std::max(wholeWidth, FromDIP(620)), FromDIP(220)));

    // Has room for five lines, so that the window keeps its size.
    mpDifference = new wxTextCtrl(this, wxID_ANY, "\n\n\n\n", wxDefaultPosition,
                                  wxSize(-1, 6 * GetCharHeight() + FromDIP(2 * kFormGap)),
                                  wxTE_MULTILINE | wxTE_READONLY);
    SetAccessibleName(*mpDifference, _("What differs from now"));

    mpRestore = new wxButton(this, wxID_OK, _("&Restore"));
    mpBringBack = new wxButton(this, ID_BRING_BACK, _("&Bring Back Cards..."));
    auto* const other = new wxButton(this, ID_OTHER_FILE, _("&Other File..."));
    auto* const close = new wxButton(this, wxID_CANCEL, _("Close"));
    auto* const buttons = new wxBoxSizer(wxHORIZONTAL);
    for (wxButton* const button : {mpRestore, mpBringBack, other, close}) {
        buttons->Add(button, wxSizerFlags().Border(wxLEFT, FromDIP(kFormGap)));
    }
    mpBringBack->Show(mpDatabase != nullptr);

    wxBoxSizer* const rows = MakeFormColumn(*this);
    rows->Add(text);
    rows->Add(mpList, wxSizerFlags(1).Expand().Border(wxTOP, FromDIP(kFormGap)));
    rows->Add(mpDifference, FormRow(*this));
    rows->Add(buttons, wxSizerFlags().Right().Border(wxTOP, FromDIP(kFormEdge)));
    GetSizer()->SetSizeHints(this);
    CentreOnParent();
}

void RestoreDialog::AddBackup(const StoreBackup& backup, bool isFile) {
    mRows.push_back(Row());
    mRows.back().Backup = backup;
    mRows.back().IsFile = isFile;
    wxVector<wxVariant> values;
    values.push_back(FormatTime(backup.Time));
    values.push_back(isFile ? wxFileName(backup.Path).GetFullName() : NameOfCause(backup.Cause));
    values.push_back(wxString());
    values.push_back(wxFileName::GetHumanReadableSize(wxULongLong(backup.Bytes)));
    if (mpList->GetColumnCount() > values.size()) {
        const bool isNameless =
            backup.Of == StoreBackup::Owner::kOtherStore && backup.OtherPath.empty();
        values.push_back(isNameless ? wxString(_("Another store file")) : backup.OtherPath);
    }
    mpList->AppendItem(values);
}

int RestoreDialog::SelectedRow() const {
    return mpList->GetSelectedRow();
}

void RestoreDialog::OnTimer(wxTimerEvent&) {
    if (mpReader != nullptr && !mpReader->Reading.IsFinished()) {
        return;
    }
    if (mpReader != nullptr) {
        TakeResult();
    }
    ReadNext();
}

void RestoreDialog::TakeResult() {
    mpReader->Reading.Join();
    const bool hasFailed = !mpReader->Reading.TakeFailure().empty();
    Row& row = mRows[mReading];
    row.IsRead = true;
    row.IsCompared = row.IsCompared || mpReader->IsComparison();
    row.IsReadable = mpReader->Result >= 0 && !hasFailed;
    row.Difference = mpReader->Difference;
    mpReader.reset();
    mpList->SetTextValue(row.IsReadable ? wxString::Format("%i", row.Difference.BackupCards)
                                        : wxString(_("Unreadable")),
                         static_cast<unsigned>(mReading), kCardsColumn);
    ShowSelected();
}

// The selected backup is compared first; the others are only counted.
void RestoreDialog::ReadNext() {
    const int selected = SelectedRow();
    const bool compare = mpDatabase != nullptr && selected != wxNOT_FOUND &&
                         !mRows[static_cast<size_t>(selected)].IsCompared;
    const auto unread =
        std::find_if(mRows.begin(), mRows.end(), [](const Row& row) { return !row.IsRead; });
    if (!compare && unread == mRows.end()) {
        return;
    }
    mReading = compare ? static_cast<size_t>(selected)
                       : static_cast<size_t>(std::distance(mRows.begin(), unread));
    mpReader = std::make_unique<BackupReader>(mRows[mReading].Backup.Path,
                                              compare ? mStorePath : wxString());
    mpReader->Reading.Start();
}

void RestoreDialog::ShowSelected() {
    const int selected = SelectedRow();
    const Row* const row =
        selected == wxNOT_FOUND ? nullptr : &mRows[static_cast<size_t>(selected)];
    wxString text = row == nullptr ? wxString() : DescribeSource(*row);
    if (row == nullptr) {
        text = mRows.empty() ? _("There is no backup yet.") : wxString();
    } else {
        text += DescribeDifference(*row);
    }
    if (mpDifference->GetValue() != text) {
        mpDifference->ChangeValue(text);
    }
    mpRestore->Enable(row != nullptr && row->IsRead && row->IsReadable);
    mpBringBack->Enable(row != nullptr && row->IsReadable &&
                        !row->Difference.MissingRowIds.empty());
}

// A backup of this store needs no further words.
wxString RestoreDialog::DescribeSource(const Row& row) const {
    if (row.IsFile || mpDatabase == nullptr) {
        return row.Backup.Path + "\n";
    }
    return row.Backup.OtherPath.empty()
               ? wxString()
               : wxString::Format(_("A backup of the store file \"%s\""), row.Backup.OtherPath) +
                     "\n";
}

wxString RestoreDialog::DescribeDifference(const Row& row) const {
    if (!row.IsReadable) {
        return row.IsFile ? _("This file is no whole store of flash cards.")
                          : _("This backup cannot be read.");
    }
    if (mpDatabase == nullptr) {
        return wxString();
    }
    if (!row.IsCompared) {
        return _("Comparing with the store file...");
    }
    const StoreDifference& difference = row.Difference;
    return wxString::Format(
        _("Cards deleted since: %i\nCards added since: %i\nCards changed since: %i\n"
          "Cards scored since: %i"),
        static_cast<int>(difference.MissingRowIds.size()), difference.Added, difference.Changed,
        difference.Scored);
}

void RestoreDialog::OnSelection(wxDataViewEvent&) {
    ShowSelected();
}

void RestoreDialog::OnRestore(wxCommandEvent&) {
    const int selected = SelectedRow();
    if (selected == wxNOT_FOUND) {
        return;
    }
    mChosen = static_cast<size_t>(selected);
    const wxString question =
        mpDatabase != nullptr
            ? _("Do you want to go back to the backup of %s?\n"
                "The store file as it is now is backed up first.")
            : _("Do you want to put the backup of %s in the place of the store file?\n"
                "The file that cannot be opened is kept under another name.");
    const wxString source =
        GetChosen().OtherPath.empty() ? wxString() : DescribeSource(mRows[mChosen]) + "\n";
    if (ShowMessageBox(source + wxString::Format(question, FormatTime(GetChosen().Time)),
                       _("Restore"), wxYES_NO | wxNO_DEFAULT, this) == wxYES) {
        mTimer.Stop();
        // The store must not be open twice when it is replaced.
        mpReader.reset();
        EndModal(wxID_OK);
    }
}

void RestoreDialog::OnOtherFile(wxCommandEvent&) {
    wxString path = mStorePath;
    if (!ChooseStoreFileToOpen(this, path)) {
        return;
    }
    if (IsSameFile(path, mStorePath)) {
        ShowMessageBox(_("This is the store file itself. Please choose a backup of it."),
                       _("Restore"), wxOK | wxCENTRE, this);
        return;
    }
    StoreBackup backup;
    backup.Path = path;
    backup.Time = wxFileName(path).GetModificationTime();
    backup.Bytes = wxFileName::GetSize(path).GetValue();
    AddBackup(backup, true);
    mpList->SelectRow(static_cast<unsigned>(mRows.size() - 1));
    ShowSelected();
}

void RestoreDialog::BringBack() {
    Row& row = mRows[static_cast<size_t>(SelectedRow())];
    QuietDatabase backup;
    const wxBusyCursor busy;
    if (backup.OpenToRead(row.Backup.Path) < 0) {
        row.IsReadable = false;
        ShowSelected();
        return;
    }
    BringBackDialog dialog(this, backup, row.Difference.MissingRowIds);
    const wxBusyCursorSuspender ready;
    if (dialog.ShowModal() != wxID_OK) {
        return;
    }
    // The worker reads the store, which must be free to be written.
    if (mpReader != nullptr) {
        TakeResult();
    }
    const std::vector<int64_t> chosen = dialog.GetChosen();
    if (BringCardsBack(backup, *mpDatabase, chosen) < 0) {
        ShowMessageBox(_("Some of the cards could not be brought back."), _("Bring Back Cards"),
                       wxOK | wxCENTRE, this);
    }
    mpDatabase->Notify();
    for (Row& other : mRows) {
        other.IsCompared = false;
    }
    row.Difference.MissingRowIds.clear();
    // The button is about to be disabled, which would lose the keys.
    mpList->SetFocus();
    ShowSelected();
}

namespace {

void TellFailure(wxWindow* parent, const wxString& path, int error) {
    ShowMessageBox(wxString::Format(_("The backup \"%s\" could not be restored (%s). The store "
                                      "file is as it was."),
                                    path, SystemErrorText(error)),
                   _("Restore failed"), wxOK | wxCENTRE, parent);
}

}  // namespace

void RestoreStore(StoreFileActions& actions, wxWindow* parent, Database& database) {
    wxString backup;
    {
        RestoreDialog dialog(parent, database.GetPath(), &database);
        if (dialog.ShowModal() != wxID_OK) {
            return;
        }
        backup = dialog.GetChosen().Path;
    }
    RestoreStore(actions, parent, database, backup);
}

void RestoreStore(StoreFileActions& actions, wxWindow* parent, Database& database,
                  const wxString& backup) {
    const wxString path = database.GetPath();
    const wxString stored = ReadStringSetting(kSettingDatabasePath);
    // The setting may name the file in the user's own words, such as a link.
    const wxString shown = database.IsStoreFile(stored) ? stored : path;
    if (!actions.DiscardEdits(parent)) {
        return;
    }
    const int kept = actions.BackUp(parent, BackupCause::kRestore);
    if (kept != 0 && !MayGoOnWithoutBackup(parent, kept, _("Restore"))) {
        return;
    }
    database.Close();
    int error = 0;
    {
        const wxBusyCursor busy;
        error = RestoreBackup(backup, path);
    }
    if (error != 0) {
        TellFailure(parent, backup, error);
    }
    actions.OpenStoreFile(parent, database, shown, true);
    database.Notify();
}

OpenedBackup AskAboutBackup(wxWindow* parent, const wxString& path, const wxString& storePath) {
    if (!IsBackup(GetBackupDirectory(ReadBackupSettings()), path)) {
        return OpenedBackup::kOpen;
    }
    const wxString question = wxString::Format(
        _("\"%s\" is a backup. Do you want to restore it, so that its cards are in "
          "the store file \"%s\" again?\nThe store file as it is now is kept.\n"
          "With No the backup itself is opened, and changes with what you do."),
        path, storePath);
    switch (ShowMessageBox(question, _("Restore"), wxYES_NO | wxCANCEL | wxNO_DEFAULT, parent)) {
        case wxYES:
            return OpenedBackup::kRestore;
        case wxNO:
            return OpenedBackup::kOpen;
        default:
            return OpenedBackup::kCancel;
    }
}

bool RestoreUnreadableStore(wxWindow* parent, const wxString& storePath) {
    RestoreDialog dialog(parent, storePath, nullptr);
    return dialog.ShowModal() == wxID_OK &&
           RestoreUnreadableStore(parent, storePath, dialog.GetChosen().Path);
}

bool RestoreUnreadableStore(wxWindow* parent, const wxString& storePath, const wxString& backup) {
    const wxBusyCursor busy;
    if (wxFileName::FileExists(storePath)) {
        const int kept = KeepStoreFile(storePath, FreePathBeside(storePath, _("damaged")));
        if (kept != 0 && !MayGoOnWithoutBackup(parent, kept, _("Restore"))) {
            return false;
        }
    }
    const int error = RestoreBackup(backup, storePath);
    if (error != 0) {
        TellFailure(parent, backup, error);
    }
    return error == 0;
}

bool RepairUnreadableStore(wxWindow* parent, const wxString& storePath, wxString& repaired) {
    const wxString target = FreePathBeside(storePath, _("repaired"));
    RepairReport report;
    const int error = RunBehindWait(parent, _("Repairing"),
                                    [&] { return RepairStore(storePath, target, report); });
    if (error != 0) {
        ShowMessageBox(wxString::Format(_("Nothing could be read of \"%s\" (%s)."), storePath,
                                        SystemErrorText(error)),
                       _("Repair"), wxOK | wxCENTRE, parent);
        return false;
    }
    repaired = target;
    ShowMessageBox(DescribeRepair(report) + "\n\n" +
                       wxString::Format(_("The new store file is \"%s\". The damaged file was "
                                          "left as it is."),
                                        target),
                   _("Repair"), wxOK | wxCENTRE, parent);
    return true;
}
