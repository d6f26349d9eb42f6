#pragma once

#include <wx/dialog.h>
#include <wx/timer.h>

#include <array>
#include <memory>
#include <vector>

#include "exchange/Replacement.h"

class AppServices;
class ChangeList;
class Database;
class FatalErrorReport;
class wxCheckBox;
class wxChoice;
class wxSizer;
class wxStaticText;
class wxTextCtrl;
struct ReplacementSearch;

// Finds and replaces in the texts of many cards. After a short pause in typing a worker looks for
// what would change; the list shows it with a tick for each card, and only ticked cards are
// written. ShowModal returns wxID_OK once that is done. Main thread only.
class ReplaceDialog : public wxDialog {
  public:
    enum ControlId : int {
        kDialogId = 10200,
        kWantedId = 10201,
        kReplacementId = 10202,
        kMatchCaseId = 10203,
        kWholeWordsId = 10204,
        kExpressionId = 10205,
        // One id for each CardText.
        kFirstTextId = 10206,
        kScopeId = 10211,
        kStatusId = 10212,
        kListId = 10213,
        kAllId = 10214,
        kKeepCapitalsId = 10215
    };

    // The row ids of the selected cards, of which there may be none, and of all in the list. The
    // services, the store and the report are not owned.
    ReplaceDialog(wxWindow* parent, AppServices& services, Database& database,
                  FatalErrorReport& report, const std::vector<int64_t>& selected,
                  const std::vector<int64_t>& shown);
    ~ReplaceDialog() override;

  private:
    void CreateControls();
    void AddTexts(wxSizer& column);
    void AddChecks(wxSizer& column);
    void AddScope(wxSizer& column);
    void AddList(wxSizer& column);

    // Returns the cards to look in.
    const std::vector<int64_t>& GetScope();
    void WaitForMore();
    void Search();
    void ShowFound();
    void ShowFault(const ReplacementsFound& found);
    void ShowStatus(const wxString& text);
    void ShowCount();
    void Replace();

    AppServices& mServices;
    Database& mDatabase;
    FatalErrorReport& mReport;
    const std::vector<int64_t>& mSelected;
    const std::vector<int64_t>& mShown;
    // All cards of the store, read when they are first asked for.
    std::vector<int64_t> mAll;
    wxTextCtrl* mpWanted = nullptr;
    wxTextCtrl* mpReplacement = nullptr;
    wxCheckBox* mpMatchCase = nullptr;
    wxCheckBox* mpKeepCapitals = nullptr;
    wxCheckBox* mpWholeWords = nullptr;
    wxCheckBox* mpExpression = nullptr;
    std::array<wxCheckBox*, kCardTextCount> mTexts{};
    wxChoice* mpScope = nullptr;
    wxStaticText* mpStatus = nullptr;
    ChangeList* mpList = nullptr;
    wxCheckBox* mpAll = nullptr;
    // Cards that the last search left out.
    int32_t mBlank = 0;
    wxTimer mPause;
    // The search that runs, or null.
    std::unique_ptr<ReplacementSearch> mpSearch;
};
