#pragma once

#include <wx/dialog.h>
#include <wx/string.h>
#include <wx/timer.h>

#include <functional>
#include <memory>

#include "store/Database.h"

class FatalErrorReport;
class wxGauge;
class wxTextCtrl;
class wxThread;
class wxWindow;

// Both take the path of a store, in whose directory the person begins, and give true and the path
// that was chosen, or false with path unchanged.
bool ChooseStoreFileToOpen(wxWindow* parent, wxString& path);
bool ChooseStoreFileToSave(wxWindow* parent, const wxString& title, bool askBeforeOverwriting,
                           wxString& path);

// How the program comes to an open store file. Main thread only.

// A new Database with the stored choice of file open, or the default file where none is stored.
// If none can be opened the program ends.
std::unique_ptr<Database> OpenAtStart(FatalErrorReport& report);

// Opens the file, and asks the person for another as long as that fails; the program ends when they
// give up. The path that opened is stored as the choice. The Database must be closed.
void OpenStoreFile(wxWindow* parent, Database& database, const wxString& path, bool mustExist);

// The same, but gives false, with the Database closed, when the person gives up.
bool TryOpenStoreFile(wxWindow* parent, Database& database, const wxString& path, bool mustExist);

// Runs the questions that a window asks of the open store before it is seen. Where the store fails
// at one of them the person chooses another, which is then asked the same; the program ends when
// they give up.
void AskBeforeWindows(Database& database, const std::function<void()>& ask);

// What the person is asked when the store file cannot be opened. It ends with kTryAgain and a path,
// or with kGiveUp; closing it by the title bar or Esc is giving up.
class DatabaseOpenFailed : public wxDialog {
  public:
    enum Answer : int { kTryAgain = 4, kGiveUp = 16 };

    DatabaseOpenFailed(wxWindow* parent, const wxString& path, bool mustExist);

    wxString GetPath() const;
    bool MustExist() const { return mMustExist; }

  private:
    void OnRetry(wxCommandEvent& event);
    void OnOpen(wxCommandEvent& event);
    void OnNew(wxCommandEvent& event);
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
    void WaitFor(wxThread& worker) override;

  private:
    wxWindow* mpParent;
};

// Asks for patience while a worker thread lives and ends by itself with wxID_OK when the worker has
// ended. The gauge only shows that the program lives: it fills once in two minutes and starts over.
class ThreadWaitDialog : public wxDialog {
  public:
    ThreadWaitDialog(wxWindow* parent, wxWindowID id, const wxString& title,
                     const wxPoint& position, const wxSize& size, long style);

    // The thread to wait for, a joinable one that already runs; call it before ShowModal.
    void Watch(const wxThread& thread) { mpThread = &thread; }

  private:
    void OnTimer(wxTimerEvent& event);
    void OnClose(wxCloseEvent& event);

    const wxThread* mpThread = nullptr;
    wxGauge* mpGauge = nullptr;
    wxTimer mTimer;
    wxLongLong mCreated;
};
