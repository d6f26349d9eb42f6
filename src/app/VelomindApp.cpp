#include "app/VelomindApp.h"

#include <unistd.h>
#include <wx/cmdline.h>
#include <wx/cshelp.h>
#include <wx/dialog.h>
#include <wx/file.h>
#include <wx/filename.h>
#include <wx/image.h>
#include <wx/log.h>
#include <wx/sysopt.h>
#include <wx/time.h>
#include <wx/utils.h>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <list>
#include <utility>
#include <vector>

#include "app/Commands.h"
#include "base/Files.h"
#include "base/Process.h"
#include "base/Text.h"
#include "categories/CurrentCategory.h"
#include "exchange/ImportJob.h"
#include "files/StoreFiles.h"
#include "files/windows/RestoreDialog.h"
#include "files/windows/StoreOpening.h"
#include "list/BrowseFrame.h"
#include "media/MediaLines.h"
#include "preferences/PreferencesDialog.h"
#include "revise/ChangedOnBothDialog.h"
#include "revise/DuplicatesDialog.h"
#include "revise/MediaDialog.h"
#include "revise/ReplaceDialog.h"
#include "shell/CommandIds.h"
#include "shell/ExchangeSettings.h"
#include "shell/MessageBox.h"
#include "shell/ProgramInfo.h"
#include "shell/Settings.h"
#include "shell/Toolkit.h"
#include "statistics/StatisticsFrame.h"
#include "store/Database.h"
#include "study/LearningProgress.h"
#include "study/StudyFrame.h"
#include "transfer/ExportOptionsDialog.h"
#include "transfer/ImportCommand.h"
#include "transfer/ImportRun.h"

namespace {

// Commands that the application disables, since only some windows have them.
constexpr int kMissingCommands[] = {ID_EXPORT,  ID_RENAME,    ID_QUICK_HELP,
                                    ID_MOVE_UP, ID_MOVE_DOWN, ID_RENUMBER};

// The end of the program does not wait longer for other computers.
constexpr unsigned long kLastExchangeMilliseconds = 2000;

// Makes the first category that has cards current, so that what came into an empty store is seen.
void TurnToFirstCards(Database& database) {
    std::list<Category> categories;
    // The store itself reports a failure.
    database.SelectAllCategories(categories);
    for (const Category& category : categories) {
        int32_t count = 0;
        if (database.SelectCategoryIdCount(category.Id, count) >= 0 && count > 0) {
            SetCurrentCategoryId(database, category.Id);
            return;
        }
    }
}

bool IsAnyWindowShown() {
    return std::any_of(wxTopLevelWindows.begin(), wxTopLevelWindows.end(),
                       [](const wxWindow* window) { return window->IsShown(); });
}

}  // namespace

VelomindApp::VelomindApp()
    : mInstance(FindRuntimeDirectory(), TakeActivationToken()),
      mWindows([this] { return MakeListWindow(); }, [this] { return MakeStudyWindow(); }) {}

VelomindApp::~VelomindApp() = default;

bool VelomindApp::OnInit() {
    const wxBusyCursor busy;
    SetUpTranslations();
    wxHelpProvider::Set(new wxSimpleHelpProvider);
    mAllDone = false;
    SetVendorName(kMakerName);
    SetAppName(kApplicationName);
    if (!wxApp::OnInit()) {
        return false;
    }
    if (!mAllDone) {
        mInstance.SetFile(mFilesToOpen.empty() ? wxString() : mFilesToOpen.front());
        const auto standing = mInstance.BecomeFirst(SingleInstance::Greeting::CallToFront);
        if (standing == SingleInstance::Standing::Unclear) {
            PrintError(mInstance.GetProblem());
            return false;
        }
        mAllDone = standing == SingleInstance::Standing::Second;
        if (mAllDone && !mFilesToOpen.empty() && !mInstance.WasCallTaken()) {
            PrintError(
                wxString::Format(_("Velomind runs already and did not take the file \"%s\"."),
                                 mFilesToOpen.front()));
            return false;
        }
    }
    if (mAllDone) {
        return true;
    }
    wxImage::AddHandler(new wxPNGHandler);
    wxSystemOptions::SetOption("msw.remap", 2);
    ListenToOthers();
    BindHelpCommands(*this);
    OpenStore();
    BindCommands();
    mpReminder = std::make_unique<Reminder>(*mpDatabase, mClock, mOpenDialogs);
    mpReminder->Start();
    MakeExchanger();
    WatchDesktop([this](wxTopLevelWindow& window) {
        TakeDesktopStyle(window);
        // The windows treat a new text size like a new font of the cards.
        mSettingsNotifier.Notify();
    });
    wxFrame& list = mWindows.ShowList();
    BringToFront(list);
    // Asks from the event loop, when the window that the question stands over is on the screen.
    list.CallAfter(
        [this, &list] { OfferVersion1Import(&list, *this, *mpDatabase, mFatalErrorReport); });
    // Study does not wait for the other computers, and the first page of the list neither.
    list.CallAfter([this] { mpExchanger->StartLooking(); });
    return true;
}

int VelomindApp::OnRun() {
    return mAllDone ? 0 : wxApp::OnRun();
}

int VelomindApp::OnExit() {
    // No window is left to come to the front. The lock is held until the store is closed.
    mInstance.StopListening();
    mClipboard.TakeBack();
    while (!wxTopLevelWindows.empty()) {
        delete wxTopLevelWindows.front();
    }
    if (mpExchanger != nullptr && !mpExchanger->Finish(kLastExchangeMilliseconds)) {
        // The exchange is as good as killed; the next one goes on. All else is stored.
        std::fflush(nullptr);
        _exit(0);
    }
    CloseStore();
    return wxApp::OnExit();
}

void VelomindApp::OnInitCmdLine(wxCmdLineParser& parser) {
    wxApp::OnInitCmdLine(parser);
    DescribeCommandLine(parser);
}

bool VelomindApp::OnCmdLineParsed(wxCmdLineParser& parser) {
    const CommandLineOutcome outcome = RunCommandLine(parser, *this);
    if (outcome == CommandLineOutcome::Refused) {
        return false;
    }
    mAllDone = outcome == CommandLineOutcome::AllDone;
    return wxApp::OnCmdLineParsed(parser);
}

namespace {

// Opens the store for a moment, as the windows that help where that fails would wait for somebody.
bool CanOpenStore(FatalErrorReport& report) {
    class NoWait : public UpgradeWait {
      public:
        void WaitFor(const Job& /*worker*/) override {}
    } wait;
    bool isStored = false;
    const wxString path = MakeStorePathFull(GetChosenStorePath(isStored));
    Database database(report);
    if (!wxFileName::FileExists(path) || database.Open(path, wait) == 0) {
        return true;
    }
    PrintError(wxString::Format(_("The store \"%s\" cannot be opened: %s"), path,
                                database.GetLastError()));
    return false;
}

}  // namespace

bool VelomindApp::ImportFile(const wxString& path, bool mayAsk) {
    if (!mayAsk) {
        delete wxLog::SetActiveTarget(new wxLogStderr);
        mFatalErrorReport.ShowNoWindow();
    }
    const wxString file = FullPath(path);
    if (!wxFileName::FileExists(file) || !wxFileName::IsFileReadable(file)) {
        PrintError(wxString::Format(_("The file \"%s\" cannot be read."), path));
        return false;
    }
    // Checked before the store is opened: opening would roll back the journal that may lie beside
    // it, and the file to be imported may be that very journal.
    if (IsDatabaseFile(file)) {
        PrintError(DatabaseFileMessage(path));
        return false;
    }
    switch (mInstance.BecomeFirst(SingleInstance::Greeting::None)) {
        case SingleInstance::Standing::First:
            break;
        case SingleInstance::Standing::Second:
            PrintError(_("Velomind runs already. Nothing was imported."));
            return false;
        case SingleInstance::Standing::Unclear:
            PrintError(mInstance.GetProblem());
            return false;
    }
    ListenToOthers();
    if (!mayAsk && !CanOpenStore(mFatalErrorReport)) {
        return false;
    }
    OpenStore();
    if (BelongsToStore(*mpDatabase, file)) {
        PrintError(DatabaseFileMessage(path));
        CloseStore();
        return false;
    }
    ImportInput input;
    input.FileName = file;
    input.Format = ImportFormat::kDelimited;
    input.Delimiter = L'\t';
    wxString failure;
    const bool isImported =
        ImportWithProgress(nullptr, *this, input, *mpDatabase, mFatalErrorReport, nullptr,
                           mayAsk ? nullptr : &failure);
    if (!mayAsk && !isImported) {
        PrintError(failure);
        CloseStore();
        return false;
    }
    // The file was made to be imported once, so it is removed whatever became of the import.
    // The log tells when it cannot be.
    wxRemoveFile(file);
    CloseStore();
    return true;
}

void VelomindApp::OpenStore() {
    BeginSettings();
    mpDatabase = OpenAtStart(mFatalErrorReport);
    mpBackupKeeper = std::make_unique<BackupKeeper>(*mpDatabase, mSettingsNotifier);
    mUndoHistory.SetListener([this](const StoreChange& step) {
        mStepNotes.Take(mpDatabase->GetPath(), step, wxGetUTCTimeMillis().GetValue());
    });
    mUndoHistory.SetCardNaming(WithNamedMediaMarks);
}

void VelomindApp::CloseStore() {
    mOpenDialogs.SetBeforeDialog(nullptr);
    mpExchanger.reset();
    mpReminder.reset();
    mpBackupKeeper.reset();
    mpDatabase.reset();
}

void VelomindApp::ShowMessage(const wxString& text) {
    const wxBusyCursorSuspender ready;
    ShowMessageBox(text, _("Message"));
}

void VelomindApp::OpenAddress(const wxString& address) {
    wxLaunchDefaultBrowser(address);
}

int32_t VelomindApp::GetCurrentCategoryId(Database& database) {
    return ::GetCurrentCategoryId(database);
}

void VelomindApp::SetCurrentCategoryId(Database& database, int32_t id) {
    ::SetCurrentCategoryId(database, id);
}

void VelomindApp::FrameActivated(wxFrame& frame) {
    mLastActive = &frame;
    SetTopWindow(&frame);
}

void VelomindApp::FrameClosed(wxFrame& frame) {
    const bool isEditor = mEditors.Forget(frame);
    mWindows.Forget(frame);
    wxFrame* const shown = mWindows.GetShown();
    if (isEditor && shown != nullptr) {
        BringToFront(*shown);
    }
}

void VelomindApp::BindCommands() {
    Bind(wxEVT_MENU, &VelomindApp::OnWindowCommand, this, ID_WINDOW_FIRST, ID_WINDOW_LAST);
    const std::pair<int, std::function<void()>> commands[] = {
        {wxID_NEW, [this] { mEditors.OpenNew(*mpDatabase); }},
        {ID_NEW_CATEGORY, [this] { AddCategory(mLastActive.get(), *mpDatabase); }},
        {ID_IMPORT,
         [this] { RunImportCommand(mLastActive.get(), *this, *mpDatabase, mFatalErrorReport); }},
        {ID_BACK_UP, [this] { BackUpWhereWanted(mLastActive.get(), *mpDatabase); }},
        {ID_RESTORE, [this] { Restore(); }},
        {ID_OPEN_STORE, [this] { OpenStoreByDialog(); }},
        {ID_EXCHANGE, [this] { Exchange(); }},
        {ID_CHANGED_ON_BOTH, [this] { ShowChangedOnBoth(); }},
        {wxID_FIND, [this] { Find(); }},
        {wxID_OPEN, [this] { EditCardBehind(); }},
        {wxID_EXIT, [this] { CloseWindows(); }},
        {ID_LEARNING_PROGRESS, [this] { ShowLearningProgress(); }},
        {ID_STATISTICS, [this] { ShowStatistics(); }},
        {ID_MEDIA, [this] { MediaDialog(mLastActive.get(), *mpDatabase).ShowModal(); }},
        {wxID_PREFERENCES, [this] { ShowPreferences(); }}};
    for (const auto& [id, run] : commands) {
        Bind(
            wxEVT_MENU, [run = run](wxCommandEvent&) { run(); }, id);
    }
    Bind(wxEVT_MENU, &VelomindApp::OnRecentStore, this, ID_RECENT_STORE_FIRST,
         ID_RECENT_STORE_LAST);
    Bind(wxEVT_IDLE, [this](wxIdleEvent& event) {
        event.Skip();
        OpenNextFile();
    });
    BindTextCommands(*this);
    Bind(
        wxEVT_UPDATE_UI,
        [this](wxUpdateUIEvent& event) { event.Enable(TakesPart(mpDatabase->GetPath())); },
        ID_CHANGED_ON_BOTH);
    for (const int id : kMissingCommands) {
        Bind(
            wxEVT_UPDATE_UI, [](wxUpdateUIEvent& event) { event.Enable(false); }, id);
    }
}

wxFrame* VelomindApp::MakeListWindow() {
    auto* const frame = new BrowseFrame(*this);
    // At the start the user may still choose another store. Later, other windows show its cards,
    // and a failure is as fatal as any other.
    if (IsAnyWindowShown()) {
        frame->SetDatabase(mpDatabase.get());
    } else {
        AskBeforeWindows(*mpDatabase, [this, frame] { frame->ShowAtStart(*mpDatabase); });
    }
    frame->ShowExchangeState(mExchangeState);
    return frame;
}

wxFrame* VelomindApp::MakeStudyWindow() {
    auto* const frame = new StudyFrame(*this, nullptr, ID_WINDOW_STUDY, _("Study - Velomind"),
                                       wxDefaultPosition, wxSize(640, 480));
    frame->SetDatabase(mpDatabase.get());
    return frame;
}

void VelomindApp::ListenToOthers() {
    mInstance.Listen([this](const wxString& token, const wxString& file) {
        ComeToFront(token);
        if (!file.empty()) {
            OpenFile(file);
        }
    });
}

void VelomindApp::OpenFile(const wxString& path) {
    mFilesToOpen.push_back(FullPath(path));
    wxWakeUpIdle();
}

// Called whenever the event loop has nothing to do.
void VelomindApp::OpenNextFile() {
    if (mFilesToOpen.empty() || mOpenDialogs.IsAnyOpen() || mWindows.GetShown() == nullptr) {
        return;
    }
    const wxString path = mFilesToOpen.front();
    mFilesToOpen.pop_front();
    wxFrame& list = mWindows.ShowList();
    if (!wxFileName::FileExists(path) || !wxFileName::IsFileReadable(path)) {
        ShowMessageBox(wxString::Format(_("The file \"%s\" cannot be read."), path), _("Import"),
                       wxOK | wxCENTRE, &list);
    } else if (mpDatabase->IsStoreFile(path)) {
        // It is open already.
    } else if (!BelongsToStore(*mpDatabase, path) && IsStoreOfCards(path)) {
        OpenOtherStore(path);
    } else {
        ImportFileByDialog(&list, *this, *mpDatabase, mFatalErrorReport, path);
    }
    // Another may be waiting.
    wxWakeUpIdle();
}

// Called when a second process was started, with its activation token if it got one.
void VelomindApp::ComeToFront(const wxString& token) {
    std::vector<wxTopLevelWindow*> wanted;
    wxFrame* const frame =
        mLastActive != nullptr && mLastActive->IsShown() ? mLastActive.get() : mWindows.GetShown();
    if (frame != nullptr) {
        wanted.push_back(frame);
    }
    // An open dialog must not end up behind its window.
    for (wxWindow* const window : wxTopLevelWindows) {
        auto* const dialog = dynamic_cast<wxDialog*>(window);
        if (dialog != nullptr && dialog->IsShown()) {
            wanted.push_back(dialog);
        }
    }
    // The token lets one window come to the front, and a dialog brings the windows behind it along.
    const wxString own = token.empty() ? MakeActivationToken() : token;
    if (!wanted.empty() && !own.empty()) {
        UseActivationToken(*wanted.back(), own);
    }
    for (wxTopLevelWindow* const window : wanted) {
        BringToFront(*window);
    }
}

void VelomindApp::OnWindowCommand(wxCommandEvent& event) {
    if (event.GetId() == ID_WINDOW_STUDY) {
        mWindows.ShowStudy();
    } else if (event.GetId() == ID_WINDOW_LIST) {
        mWindows.ShowList();
    }
    for (wxWindow* const window : wxTopLevelWindows) {
        auto* const frame = dynamic_cast<wxFrame*>(window);
        if (frame != nullptr && frame->GetId() == event.GetId()) {
            BringToFront(*frame);
            return;
        }
    }
}

// Only an editor leaves this command to the application: it means the card of the window behind.
void VelomindApp::EditCardBehind() {
    wxFrame* const shown = mWindows.GetShown();
    if (shown != nullptr && mLastActive != shown) {
        wxCommandEvent edit(wxEVT_MENU, wxID_OPEN);
        // Looks at the window's own handlers alone, or the event would come back here.
        shown->GetEventHandler()->ProcessEventLocally(edit);
    }
}

void VelomindApp::Find() {
    if (auto* const list = dynamic_cast<BrowseFrame*>(&mWindows.ShowList())) {
        list->FocusSearch();
    }
}

void VelomindApp::ShowLearningProgress() {
    const int32_t category = GetCurrentCategoryId(*mpDatabase);
    LearningProgress dialog(
        {*mpDatabase, mClock, {category, GetCategoryName(*mpDatabase, category)}},
        mLastActive.get(), 10039, _("Learning Progress"));
    dialog.ShowModal();
}

void VelomindApp::ShowStatistics() {
    if (mpStatistics == nullptr) {
        const wxBusyCursor busy;
        mpStatistics = new StatisticsFrame(*this);
        mpStatistics->SetDatabase(mpDatabase.get());
        mpStatistics->Show();
    }
    BringToFront(*mpStatistics);
}

AppStoreFileActions VelomindApp::MakeStoreFileActions() {
    // Cards on the clipboard are known by their row ids, which mean other cards in another store,
    // and the steps that can be taken back were done in the store that was open, as were the scores
    // that can be given again.
    return AppStoreFileActions(
        *mpBackupKeeper,
        [this](wxWindow* parent) {
            mpExchanger->Stop();
            return mEditors.DiscardAll(parent);
        },
        [this] {
            mpExchanger->BeginAnew();
            mClipboard.TakeBack();
            mUndoHistory.Clear();
            if (auto* const study = dynamic_cast<StudyFrame*>(mWindows.GetStudy())) {
                study->ForgetStore();
            }
        });
}

void VelomindApp::ShowPreferences(bool isForExchange) {
    AppStoreFileActions actions = MakeStoreFileActions();
    const wxString path = mpDatabase->GetPath();
    const ExchangeSetUp former = ReadExchangeSetUp(path);
    PreferencesDialog dialog(mLastActive.get(), mSettingsNotifier, actions);
    dialog.SetDatabase(mpDatabase.get());
    if (isForExchange) {
        dialog.TurnToExchange();
    }
    dialog.ShowModal();
    FollowMovedStore(path, mpDatabase->GetPath());
    FollowMovedExchange(path, mpDatabase->GetPath());
    const ExchangeSetUp present = ReadExchangeSetUp(mpDatabase->GetPath());
    if (present.Folder != former.Folder || present.Name != former.Name) {
        mpExchanger->BeginAnew();
    }
}

void VelomindApp::MakeExchanger() {
    mpExchanger = std::make_unique<Exchanger>(Exchanger::Surroundings{
        *mpDatabase, mClock,
        [this] { return mpBackupKeeper->BackUpOnWorker(BackupCause::kExchange); },
        [this] { return mOpenDialogs.IsAnyOpen(); },
        [this](bool wasEmpty) { FollowExchange(wasEmpty); },
        [this](const wxString& text, bool isForStudy) { ShowExchangeState(text, isForStudy); },
        [this](const ExchangeReport& report, ExchangeOptions& options) {
            return AskExchangeQuestion(mLastActive.get(), report, options);
        },
        [this] { return static_cast<int>(ReadLostTexts(mpDatabase->GetPath()).size()); },
        [this](const wxString& text) {
            ShowMessageBox(text, _("Exchange"), wxOK | wxCENTRE, mLastActive.get());
        }});
    mOpenDialogs.SetBeforeDialog([this] { mpExchanger->Stop(); });
}

void VelomindApp::FollowExchange(bool wasEmpty) {
    if (wasEmpty) {
        TurnToFirstCards(*mpDatabase);
    }
    mEditors.KeepUnsaved();
    if (auto* const study = dynamic_cast<StudyFrame*>(mWindows.GetStudy())) {
        study->ReadLogAgain();
    }
    mpDatabase->Notify();
}

// Without a folder the user is led to where one is chosen.
void VelomindApp::Exchange() {
    if (ReadExchangeSetUp(mpDatabase->GetPath()).Folder.empty()) {
        ShowPreferences(true);
    } else {
        mpExchanger->ExchangeNow();
    }
}

void VelomindApp::ShowChangedOnBoth() {
    mpExchanger->Stop();
    ChangedOnBothDialog(mLastActive.get(), *this, *mpDatabase).ShowModal();
    mpExchanger->CountLostTexts();
}

void VelomindApp::ShowExchangeState(const wxString& text, bool isForStudy) {
    if (text == mExchangeState) {
        return;
    }
    mExchangeState = text;
    if (auto* const list = dynamic_cast<BrowseFrame*>(mWindows.GetList())) {
        list->ShowExchangeState(text);
    }
    auto* const study = dynamic_cast<StudyFrame*>(mWindows.GetShown());
    if (study != nullptr && isForStudy) {
        study->ShowNote(text);
    }
}

// The editors close before the store does, so none of them can be the parent.
void VelomindApp::Restore() {
    AppStoreFileActions actions = MakeStoreFileActions();
    RestoreStore(actions, mWindows.GetShown(), *mpDatabase);
}

void VelomindApp::OpenStoreByDialog() {
    wxString path = mpDatabase->GetPath();
    if (ChooseStoreFileToOpen(mWindows.GetShown(), path)) {
        OpenOtherStore(path);
    }
}

void VelomindApp::OnRecentStore(wxCommandEvent& event) {
    const std::vector<wxString> paths = ReadRecentTexts(kSettingRecentStore);
    // The first one is the open store, which the menu leaves out.
    const auto place = static_cast<size_t>(event.GetId() - ID_RECENT_STORE_FIRST + 1);
    if (place < paths.size()) {
        OpenOtherStore(paths[place]);
    }
}

void VelomindApp::OpenOtherStore(const wxString& path) {
    AppStoreFileActions actions = MakeStoreFileActions();
    ChangeStoreFile(actions, mWindows.GetShown(), *mpDatabase, StoreFileChoice::kOpen,
                    mpDatabase->GetPath(), path);
}

void VelomindApp::CloseWindows() {
    if (mEditors.CloseAll()) {
        if (mpStatistics != nullptr) {
            mpStatistics->Close();
        }
        mWindows.CloseAll();
    }
}

bool VelomindApp::FindNeighbour(const CardUuid& id, int step, FlashCard& card) {
    const auto* const list = dynamic_cast<BrowseFrame*>(mWindows.GetList());
    return list != nullptr && list->FindNeighbour(id, step, card) && !mEditors.Raise(card.CardId);
}

void VelomindApp::ImportText(wxWindow& parent, const wxString& text) {
    const TemporaryDirectory place;
    const wxString path = place.Path("pasted.txt");
    if (place.GetError() != 0 || !wxFile(path, wxFile::write).Write(text, wxConvUTF8)) {
        ShowMessageBox(wxString::Format(_("The file \"%s\" cannot be written."), path), _("Paste"),
                       wxOK | wxCENTRE, &parent);
        return;
    }
    ImportFileByDialog(&parent, *this, *mpDatabase, mFatalErrorReport, path);
}

void VelomindApp::CardSaved(const CardUuid& id) {
    if (auto* const list = dynamic_cast<BrowseFrame*>(mWindows.GetShown())) {
        list->ShowCard(id);
    }
}

void VelomindApp::ReplaceInCards(wxWindow& parent, const std::vector<int64_t>& selected,
                                 const std::vector<int64_t>& shown) {
    ReplaceDialog(&parent, *this, *mpDatabase, mFatalErrorReport, selected, shown).ShowModal();
}

void VelomindApp::ShowDuplicates(wxWindow& parent) {
    DuplicatesDialog(&parent, *this, *mpDatabase, mFatalErrorReport).ShowModal();
}

void VelomindApp::ExportCards(wxWindow& parent, const std::vector<int64_t>& rowIds,
                              OfferFirst first) {
    ExportOptionsDialog(&parent, *mpDatabase, *this, mFatalErrorReport, rowIds, first).ShowModal();
}
