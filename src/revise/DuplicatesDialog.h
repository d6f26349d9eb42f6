#pragma once

#include <wx/dialog.h>

#include <memory>
#include <vector>

#include "store/FlashCard.h"

class AppServices;
class Database;
class DuplicateList;
class FatalErrorReport;
class wxButton;
class wxCheckBox;
class wxChoice;
class wxStaticText;
struct DuplicateSearch;

// Shows cards that a person takes for the same, by groups. Merges two of a group in the merge
// window, or the cards of all ticked groups at once and as one step of the undo; groups in which
// nothing gets lost by that are ticked at first. A worker looks for them. Main thread only.
class DuplicatesDialog : public wxDialog {
  public:
    enum ControlId : int {
        kDialogId = 10230,
        kSameById = 10231,
        kScopeId = 10232,
        kStatusId = 10233,
        kListId = 10234,
        kMergeId = 10235,
        kAllId = 10236,
        kMergeTickedId = 10237
    };

    // The services, the store and the report are not owned.
    DuplicatesDialog(wxWindow* parent, AppServices& services, Database& database,
                     FatalErrorReport& report);
    ~DuplicatesDialog() override;

  private:
    void CreateControls();
    void Search();
    void ShowFound();
    void ShowCount();
    void Merge();
    void MergeTicked();
    bool ReadPair(FlashCard& first, FlashCard& second);
    bool Unite(const FlashCard& kept, const FlashCard& other, const FlashCard& chosen);

    AppServices& mServices;
    Database& mDatabase;
    FatalErrorReport& mReport;
    wxChoice* mpSameBy = nullptr;
    wxChoice* mpScope = nullptr;
    wxStaticText* mpStatus = nullptr;
    DuplicateList* mpList = nullptr;
    wxCheckBox* mpAll = nullptr;
    wxButton* mpMerge = nullptr;
    wxButton* mpMergeTicked = nullptr;
    // The search that runs, or null.
    std::unique_ptr<DuplicateSearch> mpSearch;
};
