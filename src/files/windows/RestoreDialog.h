#pragma once

#include <wx/dialog.h>
#include <wx/string.h>
#include <wx/timer.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "files/StoreBackup.h"

class StoreFileActions;
class wxButton;
class wxDataViewEvent;
class wxDataViewListCtrl;
class wxTextCtrl;
struct BackupReader;

// Lists the backups of a store and how each differs from it. The dialog opens at once; a worker
// reads one backup after the other, the selected one first. Ends with wxID_OK when the user wants
// to go back to the chosen one. Cards deleted since can be brought back singly. Main thread only.
class RestoreDialog : public wxDialog {
  public:
    // Takes the open store of that path, or null when it cannot be opened.
    RestoreDialog(wxWindow* parent, const wxString& storePath, Database* database);
    ~RestoreDialog() override;

    const StoreBackup& GetChosen() const { return mRows[mChosen].Backup; }

  private:
    struct Row {
        StoreBackup Backup;
        // Chosen as a file, which may be anything.
        bool IsFile = false;
        bool IsRead = false;
        bool IsReadable = true;
        // True once the worker has tried to compare it.
        bool IsCompared = false;
        StoreDifference Difference;
    };

    void CreateControls(bool hasOthers);
    void AddBackup(const StoreBackup& backup, bool isFile);
    wxString DescribeSource(const Row& row) const;
    wxString DescribeDifference(const Row& row) const;
    int SelectedRow() const;
    void TakeResult();
    void ReadNext();
    void ShowSelected();
    void BringBack();

    void OnTimer(wxTimerEvent& event);
    void OnSelection(wxDataViewEvent& event);
    void OnRestore(wxCommandEvent& event);
    void OnOtherFile(wxCommandEvent& event);

    const wxString mStorePath;
    Database* mpDatabase;
    std::vector<Row> mRows;
    size_t mChosen = 0;
    // The row that the worker reads.
    size_t mReading = 0;
    std::unique_ptr<BackupReader> mpReader;
    wxDataViewListCtrl* mpList = nullptr;
    wxTextCtrl* mpDifference = nullptr;
    wxButton* mpRestore = nullptr;
    wxButton* mpBringBack = nullptr;
    wxTimer mTimer;
};

// Lets the user go back to a backup of the open store, which is backed up first. Leaves the
// Database open and tells the windows.
void RestoreStore(StoreFileActions& actions, wxWindow* parent, Database& database);

// The same for a backup that the user has chosen already.
void RestoreStore(StoreFileActions& actions, wxWindow* parent, Database& database,
                  const wxString& backup);

// What the user wants of a file that is to be opened as the store.
enum class OpenedBackup { kOpen, kRestore, kCancel };
// Asks it for a file that is a backup, which is none any more once somebody goes on in it. Any
// other file is opened.
OpenedBackup AskAboutBackup(wxWindow* parent, const wxString& path, const wxString& storePath);

// Lets the user replace a store file that cannot be opened by a backup, and keeps the file under
// another name. Returns true when a backup is in its place.
bool RestoreUnreadableStore(wxWindow* parent, const wxString& storePath);
bool RestoreUnreadableStore(wxWindow* parent, const wxString& storePath, const wxString& backup);

// Puts the readable rows of a damaged store file into a new one beside it and reports it. Returns
// true and the path of the new one.
bool RepairUnreadableStore(wxWindow* parent, const wxString& storePath, wxString& repaired);
