#pragma once

#include <wx/dialog.h>
#include <wx/string.h>
#include <wx/timer.h>

#include <functional>
#include <memory>

#include "files/windows/OpenFault.h"
#include "store/Database.h"

class FatalErrorReport;
class Job;
class wxGauge;
class wxTextCtrl;
class wxWindow;

// Ask the user for a path, beginning in the directory of the given one. Return true and the chosen
// path, or false with path unchanged.
bool ChooseStoreFileToOpen(wxWindow* parent, wxString& path);
bool ChooseStoreFileToSave(wxWindow* parent, const wxString& title, bool askBeforeOverwriting,
                           wxString& path);

// Opens a store file for the program. Main thread only.

// Returns a new Database with the stored choice of file open, or the default file if none is
// stored. Ends the program when none can be opened.
std::unique_ptr<Database> OpenAtStart(FatalErrorReport& report);

// Opens the file, and asks the user for another as long as that fails; ends the program when they
// give up. Stores the path that opened as the choice. The Database must be closed.
void OpenStoreFile(wxWindow* parent, Database& database, const wxString& path, bool mustExist);

// The same, but returns false, with the Database closed, when the user gives up.
bool TryOpenStoreFile(wxWindow* parent, Database& database, const wxString& path, bool mustExist);

// Opens the file and stores its path as the choice. Returns false, with the Database closed, when
// it cannot be opened.
bool OpenChosenStore(wxWindow* parent, Database& database, const wxString& path, bool mustExist);

// Runs questions to the open store as Database::Try does, and keeps the log silent. Returns true
// when the store answered all. The caller tells the user of a failure.
bool TryQuietly(Database& database, const std::function<void()>& ask);

// Runs the questions that a window asks of the open store before it is shown. While the store fails
// at one of them, the user chooses another store, which is asked the same; ends the program when
// they give up.
void AskBeforeWindows(Database& database, const std::function<void()>& ask);

// The recovery dialog, shown when the store file cannot be opened. Tells why, and has the focus on
// what most likely helps. Ends with kTryAgain and a path, or with kGiveUp, which the title bar and
// Esc mean too.
class DatabaseOpenFailed : public wxDialog {
  public:
    enum ControlId : int {
        ID_EXIT = 10000,
        ID_DIALOG = 10066,
        ID_RETRY = 10068,
        ID_OPEN = 10070,
        ID_NEW = 10071,
        ID_RESTORE_BACKUP = 10072,
        ID_REPAIR = 10073,
        ID_REASON = 10074,
        ID_PATH = 10121
    };

    enum Answer : int { kTryAgain = 4, kGiveUp = 16 };

    DatabaseOpenFailed(wxWindow* parent, const wxString& path, bool mustExist, OpenFault fault);

    wxString GetPath() const;
    bool MustExist() const { return mMustExist; }

  private:
    void CreateControls(const wxString& path, OpenFault fault);
    void OnRetry(wxCommandEvent& event);
    void OnOpen(wxCommandEvent& event);
    void OnNew(wxCommandEvent& event);
    void OnRestore(wxCommandEvent& event);
    void OnRepair(wxCommandEvent& event);
    void OnExit(wxCommandEvent& event);
    void OnClose(wxCloseEvent& event);

    wxTextCtrl* mpPath = nullptr;
    bool mMustExist;
};

// Waits for the upgrade of a store behind a modal dialog.
class AppUpgradeWait : public UpgradeWait {
  public:
    // The parent of the dialog, or null.
    explicit AppUpgradeWait(wxWindow* parent) : mpParent(parent) {}
    void WaitFor(const Job& worker) override;

  private:
    wxWindow* mpParent;
};

// Runs a task on a thread of its own behind a modal dialog, and returns its result when it has
// ended. One that throws is told through the log, and the result then is ECANCELED.
int RunBehindWait(wxWindow* parent, const wxString& title, const std::function<int()>& task);

// Asks for patience while a worker runs and ends by itself with wxID_OK when the worker has ended.
// The gauge only shows that the program is alive: it fills once in two minutes and starts over.
class ThreadWaitDialog : public wxDialog {
  public:
    ThreadWaitDialog(wxWindow* parent, wxWindowID id, const wxString& title,
                     const wxPoint& position, const wxSize& size, long style);

    // The job to wait for, which already runs; call it before ShowModal.
    void Watch(const Job& job) { mpJob = &job; }

  private:
    void OnTimer(wxTimerEvent& event);
    void OnClose(wxCloseEvent& event);

    const Job* mpJob = nullptr;
    wxGauge* mpGauge = nullptr;
    wxTimer mTimer;
    wxLongLong mCreated;
};
