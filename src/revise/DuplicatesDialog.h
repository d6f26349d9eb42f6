#pragma once

#include <wx/dialog.h>

#include <memory>
#include <vector>

#include "store/FlashCard.h"

class AppServices;
class Database;
class DuplicateList;
class wxButton;
class wxChoice;
class wxStaticText;
struct DuplicateSearch;

// Shows cards that a person takes for the same, by groups, and merges two of a group in the merge
// window. A worker looks for them. Main thread only.
class DuplicatesDialog : public wxDialog {
  public:
    enum ControlId : int {
        kDialogId = 10230,
        kSameById = 10231,
        kScopeId = 10232,
        kStatusId = 10233,
        kListId = 10234,
        kMergeId = 10235
    };

    // The services and the store are not owned.
    DuplicatesDialog(wxWindow* parent, AppServices& services, Database& database);
    ~DuplicatesDialog() override;

  private:
    void CreateControls();
    void Search();
    void ShowFound();
    void ShowCount();
    void Merge();
    bool ReadPair(FlashCard& first, FlashCard& second);
    bool Unite(const FlashCard& kept, const FlashCard& other, const FlashCard& chosen);

    AppServices& mServices;
    Database& mDatabase;
    wxChoice* mpSameBy = nullptr;
    wxChoice* mpScope = nullptr;
    wxStaticText* mpStatus = nullptr;
    DuplicateList* mpList = nullptr;
    wxButton* mpMerge = nullptr;
    // The search that runs, or null.
    std::unique_ptr<DuplicateSearch> mpSearch;
};
