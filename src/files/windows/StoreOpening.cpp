#include "files/windows/StoreOpening.h"

#include <wx/button.h>
#include <wx/confbase.h>
#include <wx/filedlg.h>
#include <wx/filefn.h>
#include <wx/filename.h>
#include <wx/gauge.h>
#include <wx/intl.h>
#include <wx/log.h>
#include <wx/sizer.h>
#include <wx/stattext.h>
#include <wx/textctrl.h>
#include <wx/utils.h>

#include <algorithm>
#include <cerrno>
#include <vector>

#include "base/Job.h"
#include "base/Process.h"
#include "base/Text.h"
#include "files/StoreFiles.h"
#include "files/windows/Backups.h"
#include "files/windows/RestoreDialog.h"
#include "shell/Forms.h"
#include "shell/Settings.h"
#include "shell/Toolkit.h"
#include "store/Database.h"

namespace {

wxString StoreFileFilter() {
    return _("Flash Card Store Files (*.vlm)|*.vlm|All files (*.*)|*.*");
}

// Returns the directory of a path, or nothing where it does not exist; the toolkit then chooses.
wxString DirectoryOf(const wxString& path) {
    const wxString directory = wxFileName(path).GetPath();
    return wxFileName::DirExists(directory) ? directory : wxString();
}

bool Ask(wxFileDialog& dialog, wxString& path) {
    if (dialog.ShowModal() != wxID_OK) {
        return false;
    }
    path = dialog.GetPath();
    return true;
}

}  // namespace

bool ChooseStoreFileToOpen(wxWindow* parent, wxString& path) {
    wxFileDialog dialog(parent, _("Open Store File"), DirectoryOf(path), wxString(),
                        StoreFileFilter(), wxFD_OPEN);
    return Ask(dialog, path);
}

bool ChooseStoreFileToSave(wxWindow* parent, const wxString& title, bool askBeforeOverwriting,
                           wxString& path) {
    const long style = wxFD_SAVE | (askBeforeOverwriting ? wxFD_OVERWRITE_PROMPT : 0);
    wxFileDialog dialog(parent, title, DirectoryOf(path), kDefaultStoreName, StoreFileFilter(),
                        style);
    return Ask(dialog, path);
}

namespace {

// The recovery dialog of one opening, which is shown again after each try that fails. It stays
// where the user saw it last.
class Recovery {
  public:
    explicit Recovery(wxWindow* parent) : mpParent(parent) {}

    // Asks what to open in place of a path that failed. Returns false when the user gives up.
    bool ChooseAnother(OpenFault fault, wxString& path, bool& mustExist);
    // Opens the file, and asks as long as that fails. Returns false when the user gives up.
    bool Open(Database& database, const wxString& path, bool mustExist);

  private:
    wxWindow* mpParent;
    wxPoint mPlace = wxDefaultPosition;
};

bool Recovery::ChooseAnother(OpenFault fault, wxString& path, bool& mustExist) {
    // The pointer must not say "wait" while the user is to choose.
    const wxBusyCursorSuspender ready;
    DatabaseOpenFailed dialog(mpParent, path, mustExist, fault);
    if (mPlace != wxDefaultPosition) {
        dialog.Move(mPlace);
    }
    const int answer = dialog.ShowModal();
    mPlace = dialog.GetPosition();
    if (answer != DatabaseOpenFailed::kTryAgain) {
        return false;
    }
    path = MakeStorePathFull(dialog.GetPath());
    mustExist = dialog.MustExist();
    return true;
}

bool Recovery::Open(Database& database, const wxString& path, bool mustExist) {
    wxString choice = MakeStorePathFull(path);
    while (!OpenChosenStore(mpParent, database, choice, mustExist)) {
        if (!ChooseAnother(FindOpenFault(choice, database), choice, mustExist)) {
            return false;
        }
    }
    return true;
}

}  // namespace

namespace {

void NoteRecentStore(const wxString& path) {
    std::vector<wxString> paths = ReadRecentTexts(kSettingRecentStore);
    paths.erase(std::remove(paths.begin(), paths.end(), path), paths.end());
    paths.insert(paths.begin(), path);
    WriteRecentTexts(kSettingRecentStore, paths);
}

}  // namespace

std::unique_ptr<Database> OpenAtStart(FatalErrorReport& report) {
    auto database = std::make_unique<Database>(report);
    bool isStored = false;
    const wxString path = GetChosenStorePath(isStored);
    OpenStoreFile(nullptr, *database, path, isStored);
    return database;
}

bool OpenChosenStore(wxWindow* parent, Database& database, const wxString& path, bool mustExist) {
    // A stored choice must mean the same file when the program starts in another directory.
    const wxString choice = MakeStorePathFull(path);
    AppUpgradeWait wait(parent);
    if ((mustExist && !wxFileName::FileExists(choice)) || database.Open(choice, wait) != 0) {
        return false;
    }
    OpenSettings()->Write(kSettingDatabasePath, choice);
    NoteRecentStore(choice);
    return true;
}

bool TryOpenStoreFile(wxWindow* parent, Database& database, const wxString& path, bool mustExist) {
    return Recovery(parent).Open(database, path, mustExist);
}

void OpenStoreFile(wxWindow* parent, Database& database, const wxString& path, bool mustExist) {
    if (!TryOpenStoreFile(parent, database, path, mustExist)) {
        EndProcess(kExitFromRecovery);
    }
}

bool TryQuietly(Database& database, const std::function<void()>& ask) {
    const wxLogNull silence;
    return database.Try(ask);
}

void AskBeforeWindows(Database& database, const std::function<void()>& ask) {
    Recovery recovery(nullptr);
    for (;;) {
        wxString path = database.GetPath();
        if (TryQuietly(database, ask)) {
            return;
        }
        const OpenFault fault = FindOpenFault(path, database);
        database.Close();
        bool mustExist = true;
        if (!recovery.ChooseAnother(fault, path, mustExist) ||
            !recovery.Open(database, path, mustExist)) {
            EndProcess(kExitFromRecovery);
        }
    }
}

namespace {

// The width at which the texts of the recovery dialog break into lines.
constexpr int kRecoveryWidth = 420;

struct RecoveryRow {
    int Id;
    const char* Label;
    const char* Line;
};

constexpr RecoveryRow kRecoveryRows[] = {
    {DatabaseOpenFailed::ID_RETRY, wxTRANSLATE("&Retry"),
     wxTRANSLATE("Tries once more to open this file.")},
    {DatabaseOpenFailed::ID_OPEN, wxTRANSLATE("&Open"),
     wxTRANSLATE("Opens another store file, or this one where it is now.")},
    {DatabaseOpenFailed::ID_NEW, wxTRANSLATE("&New"),
     wxTRANSLATE("Begins a new store file without cards.")},
    {DatabaseOpenFailed::ID_RESTORE_BACKUP, wxTRANSLATE("Re&store..."),
     wxTRANSLATE("Puts a backup in the place of this file.")},
    {DatabaseOpenFailed::ID_REPAIR, wxTRANSLATE("Re&pair..."),
     wxTRANSLATE("Puts what can be read of this file into a new one.")},
    {DatabaseOpenFailed::ID_EXIT, wxTRANSLATE("E&xit"), wxTRANSLATE("Ends Velomind.")}};

bool HasBackup(const wxString& path) {
    const std::vector<StoreBackup> backups =
        ListBackups(GetBackupDirectory(ReadBackupSettings()), path);
    return std::any_of(backups.begin(), backups.end(), [](const StoreBackup& backup) {
        return backup.Of != StoreBackup::Owner::kOtherStore;
    });
}

// Returns the button of what most likely helps.
int FindAdvice(OpenFault fault, const wxString& path) {
    switch (fault) {
        case OpenFault::kMissing:
        case OpenFault::kNoFile:
        case OpenFault::kUnknown:
            return DatabaseOpenFailed::ID_OPEN;
        case OpenFault::kForeign:
            return HasBackup(path) ? DatabaseOpenFailed::ID_RESTORE_BACKUP
                                   : DatabaseOpenFailed::ID_OPEN;
        case OpenFault::kDamaged:
            return HasBackup(path) ? DatabaseOpenFailed::ID_RESTORE_BACKUP
                                   : DatabaseOpenFailed::ID_REPAIR;
        default:
            return DatabaseOpenFailed::ID_RETRY;
    }
}

}  // namespace

DatabaseOpenFailed::DatabaseOpenFailed(wxWindow* parent, const wxString& path, bool mustExist,
                                       OpenFault fault)
    : wxDialog(parent, ID_DIALOG, "Velomind", wxDefaultPosition, wxSize(400, 300),
               wxDEFAULT_DIALOG_STYLE | wxRESIZE_BORDER),
      mMustExist(mustExist) {
    CreateControls(path, fault);
    Bind(wxEVT_BUTTON, &DatabaseOpenFailed::OnRetry, this, ID_RETRY);
    Bind(wxEVT_BUTTON, &DatabaseOpenFailed::OnOpen, this, ID_OPEN);
    Bind(wxEVT_BUTTON, &DatabaseOpenFailed::OnNew, this, ID_NEW);
    Bind(wxEVT_BUTTON, &DatabaseOpenFailed::OnRestore, this, ID_RESTORE_BACKUP);
    Bind(wxEVT_BUTTON, &DatabaseOpenFailed::OnRepair, this, ID_REPAIR);
    Bind(wxEVT_BUTTON, &DatabaseOpenFailed::OnExit, this, ID_EXIT);
    Bind(wxEVT_CLOSE_WINDOW, &DatabaseOpenFailed::OnClose, this);
    SetEscapeId(ID_EXIT);
}

void DatabaseOpenFailed::CreateControls(const wxString& path, OpenFault fault) {
    wxBoxSizer* const rows = MakeFormColumn(*this);
    auto* const message =
        new wxStaticText(this, wxID_ANY, _("Unable to open the flash card store file."));
    rows->Add(message);
    mpPath = new wxTextCtrl(this, ID_PATH, path, wxDefaultPosition,
                            FromDIP(wxSize(kRecoveryWidth, -1)), wxTE_READONLY);
    SetAccessibleName(*mpPath, message->GetLabelText());
    rows->Add(mpPath, FormRow(*this));
    auto* const reason = new wxStaticText(this, ID_REASON, DescribeOpenFault(fault));
    reason->Wrap(FromDIP(kRecoveryWidth));
    rows->Add(reason, FormRow(*this));

    auto* const grid = new wxFlexGridSizer(2, FromDIP(wxSize(kFormEdge, kFormGap)));
    for (const RecoveryRow& row : kRecoveryRows) {
        auto* const button = new wxButton(this, row.Id, wxGetTranslation(row.Label));
        grid->Add(button, wxSizerFlags().Expand());
        grid->Add(new wxStaticText(this, wxID_ANY, wxGetTranslation(row.Line)),
                  wxSizerFlags().CentreVertical());
        button->SetHelpText(wxGetTranslation(row.Line));
    }
    rows->Add(grid, wxSizerFlags().Border(wxTOP, FromDIP(kFormEdge)));
    FindWindow(ID_REPAIR)->Enable(wxFileExists(path));
    FitTextHeights(*this);
    GetSizer()->SetSizeHints(this);
    Centre();
    auto* const advised = dynamic_cast<wxButton*>(FindWindow(FindAdvice(fault, path)));
    advised->SetDefault();
    advised->SetFocus();
}

wxString DatabaseOpenFailed::GetPath() const {
    return mpPath->GetValue();
}

void DatabaseOpenFailed::OnRetry(wxCommandEvent&) {
    mMustExist = true;
    EndModal(kTryAgain);
}

void DatabaseOpenFailed::OnOpen(wxCommandEvent&) {
    wxString path = GetPath();
    if (!ChooseStoreFileToOpen(this, path)) {
        return;
    }
    const OpenedBackup answer = AskAboutBackup(this, path, GetPath());
    if (answer == OpenedBackup::kRestore ? RestoreUnreadableStore(this, GetPath(), path)
                                         : answer == OpenedBackup::kOpen) {
        mpPath->SetValue(answer == OpenedBackup::kOpen ? path : GetPath());
        mMustExist = true;
        EndModal(kTryAgain);
    }
}

void DatabaseOpenFailed::OnNew(wxCommandEvent&) {
    wxString path = GetPath();
    if (!ChooseStoreFileToSave(this, _("New Store File"), true, path)) {
        return;
    }
    if (wxFileExists(path)) {
        // Any other failure to replace the file shows when the store is opened.
        if (ReplaceByNewStore(this, path) == ECANCELED) {
            return;
        }
    }
    mpPath->SetValue(path);
    mMustExist = false;
    EndModal(kTryAgain);
}

void DatabaseOpenFailed::OnRestore(wxCommandEvent&) {
    if (RestoreUnreadableStore(this, GetPath())) {
        mMustExist = true;
        EndModal(kTryAgain);
    }
}

void DatabaseOpenFailed::OnRepair(wxCommandEvent&) {
    wxString repaired;
    if (RepairUnreadableStore(this, GetPath(), repaired)) {
        mpPath->SetValue(repaired);
        mMustExist = true;
        EndModal(kTryAgain);
    }
}

void DatabaseOpenFailed::OnExit(wxCommandEvent&) {
    EndModal(kGiveUp);
}

void DatabaseOpenFailed::OnClose(wxCloseEvent&) {
    EndModal(kGiveUp);
}

namespace {

constexpr int kDialogId = 10120;

void WaitFor(wxWindow* parent, const wxString& title, const Job& worker) {
    ThreadWaitDialog dialog(parent, kDialogId, wxString(), wxDefaultPosition, wxSize(400, 300),
                            wxDEFAULT_DIALOG_STYLE);
    dialog.Watch(worker);
    dialog.SetTitle(title);
    dialog.ShowModal();
}

}  // namespace

int RunBehindWait(wxWindow* parent, const wxString& title, const std::function<int()>& task) {
    int result = 0;
    Job job([&](const std::atomic<bool>&) { result = task(); });
    if (job.Start()) {
        const wxBusyCursorSuspender ready;
        WaitFor(parent, title, job);
        job.Join();
    } else {
        const wxBusyCursor busy;
        job.RunHere();
    }
    const wxString failure = job.TakeFailure();
    if (failure.empty()) {
        return result;
    }
    wxLogError("%s", failure);
    return ECANCELED;
}

void AppUpgradeWait::WaitFor(const Job& worker) {
    ::WaitFor(mpParent, _("Upgrading Database"), worker);
}

namespace {

constexpr int kTimerId = 1138;
constexpr int kTickMilliseconds = 16;
constexpr int kFullGaugeMilliseconds = 120000;

}  // namespace

ThreadWaitDialog::ThreadWaitDialog(wxWindow* parent, wxWindowID id, const wxString& title,
                                   const wxPoint& position, const wxSize& size, long style)
    : wxDialog(parent, id, title, position, size, style),
      mTimer(this, kTimerId),
      mCreated(wxGetUTCTimeMillis()) {
    SetExtraStyle(GetExtraStyle() | wxWS_EX_BLOCK_EVENTS);

    wxBoxSizer* const rows = MakeFormColumn(*this);
    rows->Add(new wxStaticText(this, wxID_ANY, _("This may take a few minutes.")),
              wxSizerFlags().Centre());
    mpGauge = new wxGauge(this, wxID_ANY, 100, wxDefaultPosition, wxSize(220, -1),
                          wxGA_HORIZONTAL | wxGA_SMOOTH);
    rows->Add(mpGauge, wxSizerFlags().Centre().Border(wxTOP, FromDIP(kFormGap)));
    GetSizer()->SetSizeHints(this);
    Centre();

    Bind(wxEVT_TIMER, &ThreadWaitDialog::OnTimer, this, kTimerId);
    Bind(wxEVT_CLOSE_WINDOW, &ThreadWaitDialog::OnClose, this);
    mTimer.Start(kTickMilliseconds);
}

void ThreadWaitDialog::OnTimer(wxTimerEvent&) {
    const wxLongLong elapsed = wxGetUTCTimeMillis() - mCreated;
    mpGauge->SetRange(kFullGaugeMilliseconds);
    mpGauge->SetValue(static_cast<int>((elapsed % kFullGaugeMilliseconds).ToLong()));
    if (mpJob != nullptr && !mpJob->IsFinished()) {
        return;
    }
    mTimer.Stop();
    EndModal(wxID_OK);
}

// Nothing but the end of the job ends the wait.
void ThreadWaitDialog::OnClose(wxCloseEvent& event) {
    if (event.CanVeto()) {
        event.Veto();
    }
}
