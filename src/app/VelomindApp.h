#pragma once

#include <wx/app.h>
#include <wx/frame.h>
#include <wx/weakref.h>

#include <deque>
#include <memory>

#include "app/AppReports.h"
#include "app/CommandLine.h"
#include "app/Exchanger.h"
#include "app/MainWindows.h"
#include "app/Reminder.h"
#include "base/SingleInstance.h"
#include "base/Time.h"
#include "files/windows/Backups.h"
#include "files/windows/StoreFileChange.h"
#include "reviews/EditNotes.h"
#include "scheduler/Scheduler.h"
#include "shell/AppServices.h"
#include "store/Subject.h"
#include "store/UndoHistory.h"
#include "transfer/CardClipboard.h"

class Database;
class StatisticsFrame;

// The application: owns what lasts from the start of the program to its end (the open store, the
// clipboard, the lock against a second process), creates the top-level windows, and takes the
// commands that no window takes. Main thread only.
class VelomindApp : public wxApp, public AppServices, private CommandLineActions {
  public:
    VelomindApp();
    ~VelomindApp() override;

    bool OnInit() override;
    int OnRun() override;
    int OnExit() override;
    void OnInitCmdLine(wxCmdLineParser& parser) override;
    bool OnCmdLineParsed(wxCmdLineParser& parser) override;

    // AppServices
    Subject& GetSettingsNotifier() override { return mSettingsNotifier; }
    int32_t GetCurrentCategoryId(Database& database) override;
    void SetCurrentCategoryId(Database& database, int32_t id) override;
    const Clock& GetClock() override { return mClock; }
    ReviewRandom& GetReviewRandom() override { return mRandom; }
    MaintenancePrompt& GetMaintenancePrompt() override { return mMaintenancePrompt; }
    void FrameActivated(wxFrame& frame) override;
    void FrameClosed(wxFrame& frame) override;
    void OpenFile(const wxString& path) override;
    void OpenEditor(const FlashCard& card) override { mEditors.Open(card, *mpDatabase); }
    void OpenEditorOfMany(const std::vector<int64_t>& rowIds) override {
        mEditors.OpenMany(rowIds, *mpDatabase);
    }
    bool FindNeighbour(const CardUuid& id, int step, FlashCard& card) override;
    void ImportText(wxWindow& parent, const wxString& text) override;
    void CardSaved(const CardUuid& id) override;
    void ExportCards(wxWindow& parent, const std::vector<int64_t>& rowIds,
                     OfferFirst first) override;
    void ReplaceInCards(wxWindow& parent, const std::vector<int64_t>& selected,
                        const std::vector<int64_t>& shown) override;
    void ShowDuplicates(wxWindow& parent) override;
    void PutCardsOnClipboard(const std::vector<int64_t>& rowIds, bool cut) override {
        mClipboard.Put(*mpDatabase, rowIds, !cut);
    }
    bool CanPasteCards() const override { return mClipboard.HasCards(); }
    void PasteCards(int32_t categoryId, EmptyCut empty) override {
        mClipboard.Paste(*mpDatabase, categoryId, empty);
    }
    UndoHistory& GetUndoHistory() override { return mUndoHistory; }
    int BackUpStore(wxWindow* parent, BackupCause cause) override {
        return mpBackupKeeper->BackUp(parent, cause);
    }
    void ExpectChange(BackupCause cause, uint64_t bytes) override {
        mpBackupKeeper->ExpectChange(cause, bytes);
    }
    void BackUpDay(wxWindow* parent) override { mpBackupKeeper->BackUpDay(parent); }
    bool IsReverseStudy() const override { return mReverseStudy; }
    void SetReverseStudy(bool reverse) override { mReverseStudy = reverse; }
    void SetStudyMessage(const wxString& text) override { mStudyMessage = text; }

  private:
    // CommandLineActions
    bool ImportFile(const wxString& path, bool mayAsk) override;
    void ShowMessage(const wxString& text) override;
    void OpenAddress(const wxString& address) override;

    void BindCommands();
    wxFrame* MakeListWindow();
    wxFrame* MakeStudyWindow();
    void ListenToOthers();
    void ComeToFront(const wxString& token);
    void OpenNextFile();
    void OpenStore();
    void CloseStore();
    AppStoreFileActions MakeStoreFileActions();

    void OnWindowCommand(wxCommandEvent& event);
    void OnRecentStore(wxCommandEvent& event);
    void Find();
    void EditCardBehind();
    void ShowLearningProgress();
    void ShowStatistics();
    void ShowPreferences(bool isForExchange = false);
    void Restore();
    void MakeExchanger();
    void FollowExchange(bool wasEmpty);
    void Exchange();
    void ShowChangedOnBoth();
    void ShowExchangeState(const wxString& text, bool isForStudy);
    void OpenStoreByDialog();
    void OpenOtherStore(const wxString& path);
    void CloseWindows();

    AppFatalErrorReport mFatalErrorReport;
    AppMaintenancePrompt mMaintenancePrompt{
        [this] { BackUpStore(mWindows.GetShown(), BackupCause::kMaintenance); }};
    Clock mClock;
    SequenceRandom mRandom;
    Subject mSettingsNotifier;
    SingleInstance mInstance;
    std::unique_ptr<Database> mpDatabase;
    std::unique_ptr<BackupKeeper> mpBackupKeeper;
    // Live while the store is open.
    std::unique_ptr<Reminder> mpReminder;
    std::unique_ptr<Exchanger> mpExchanger;
    // What the windows tell of the last exchange.
    wxString mExchangeState;
    StepNotes mStepNotes;
    UndoHistory mUndoHistory;
    CardClipboard mClipboard{mFatalErrorReport, mUndoHistory};
    MainWindows mWindows;
    Editors mEditors{*this};
    // The frame that was activated last, or null once that is gone.
    wxWeakRef<wxFrame> mLastActive;
    // Files to open as soon as no dialog is open, in order.
    std::deque<wxString> mFilesToOpen;
    OpenDialogs mOpenDialogs;
    // The open window of statistics, or null.
    wxWeakRef<StatisticsFrame> mpStatistics;
    bool mReverseStudy = false;
    wxString mStudyMessage;
    // True when the command line did all the work of this run, so that no window opens.
    bool mAllDone = false;
};
