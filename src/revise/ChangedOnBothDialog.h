#pragma once

#include <wx/dialog.h>

#include <vector>

#include "sync/Exchange.h"

class AppServices;
class Database;
class wxButton;
class wxListCtrl;
class wxStaticText;
class wxTextCtrl;

// Lists the fields that two computers changed, each with the text that stands and the one that
// lost, until the user has looked at them. The lost one can be taken, as an edit like any other.
// Main thread only.
class ChangedOnBothDialog : public wxDialog {
  public:
    enum ControlId : int {
        kDialogId = 10250,
        kStatusId = 10251,
        kListId = 10252,
        kStandsId = 10253,
        kLostId = 10254,
        kTakeId = 10255,
        kLookedAtId = 10256
    };

    // The services and the store are not owned. No exchange may run until the dialog is shown.
    ChangedOnBothDialog(wxWindow* parent, AppServices& services, Database& database);

  private:
    // A lost text, and what the store has instead.
    struct Row {
        LostText Lost;
        bool IsGone = false;
        wxString Front;
        wxString Stands;
        wxString LostValue;
    };

    void CreateControls();
    void Read();
    Row MakeRow(const LostText& text);
    void ShowRow();
    void Take();
    void LookedAt();
    void Close(const Row& row);

    AppServices& mServices;
    Database& mDatabase;
    std::vector<Row> mRows;
    wxStaticText* mpStatus = nullptr;
    wxListCtrl* mpList = nullptr;
    wxTextCtrl* mpStands = nullptr;
    wxTextCtrl* mpLost = nullptr;
    wxButton* mpTake = nullptr;
    wxButton* mpLookedAt = nullptr;
};
