#pragma once

#include <wx/dialog.h>

#include "store/FlashCard.h"

class wxCheckBox;
class wxFlexGridSizer;
class wxSizer;
class wxTextCtrl;

// Puts a stored card and its imported version side by side, with a merged version to edit, and lets
// the user settle which one to keep. ShowModal returns wxOK after that, and wxCANCEL when the
// import is to stop; closing the dialog asks whether to stop. Main thread only. It opens only in a
// run that asks: by default an import takes the imported version without a question
// (ImportResult::MergePolicy). Two stored cards that are to become one stand there likewise: the
// first card in the place of the stored one, and closing only cancels.
class MergeDialog : public wxDialog {
  public:
    // The cards of the run that the answer applies to.
    enum Choice : int32_t { kThisCard = 0, kAlwaysImported = 1, kAlwaysDatabase = 2 };

    enum ControlId : int {
        kDialogId = 10072,
        kKeepDatabaseId = 10078,
        kKeepImportedId = 10015,
        kKeepMergedId = 10014,
        kAlwaysDatabaseId = 10016,
        kAlwaysImportedId = 10017,
        kStopId = 10018,
        kOthersId = 10021
    };
    // The fields of the database, the imported and the merged version, in this order. Some ids
    // repeat, so handlers have to bind to the controls themselves.
    static constexpr int kFrontIds[] = {10001, 10002, 10000};
    static constexpr int kBackIds[] = {10003, 10005, 10003};
    static constexpr int kAuthorIds[] = {10006, 10007, 10004};
    static constexpr int kOrderIds[] = {10008, 10009, 10010};
    static constexpr int kForwardIds[] = {10011, 10012, 10013};
    static constexpr int kReverseIds[] = {10020, 10020, 10019};
    static constexpr int kMergedColumn = 2;

    // Fills the columns, marks what differs, and starts the merged version as the imported one. The
    // names are those of the cards' categories.
    MergeDialog(wxWindow* parent, const FlashCard& databaseCard, const FlashCard& importedCard,
                const wxString& databaseCategory = wxString(),
                const wxString& importedCategory = wxString());
    // The same for two stored cards. The merged version starts as the third one.
    MergeDialog(wxWindow* parent, const FlashCard& firstCard, const FlashCard& secondCard,
                const FlashCard& suggested, const wxString& firstCategory,
                const wxString& secondCategory);

    // Returns what the stored card becomes. Its fields that no column shows, such as the notes, are
    // those of the version that the user picked.
    const FlashCard& GetMergedCard() const { return mMergedCard; }
    Choice GetChoice() const { return mChoice; }

  private:
    enum class Purpose { kImport, kTwoCards };

    MergeDialog(wxWindow* parent, Purpose purpose, const FlashCard& databaseCard,
                const FlashCard& importedCard, const FlashCard& suggested,
                const wxString& databaseCategory, const wxString& importedCategory);

    // The controls of one version.
    struct Column {
        wxTextCtrl* Front = nullptr;
        wxTextCtrl* Back = nullptr;
        wxTextCtrl* Author = nullptr;
        wxTextCtrl* IntroductionOrder = nullptr;
        wxCheckBox* ForwardX = nullptr;
        wxCheckBox* ReverseX = nullptr;
    };

    void CreateControls();
    void AddHead(wxFlexGridSizer& grid);
    void AddTextRow(wxFlexGridSizer& grid, const wxString& label, wxTextCtrl* Column::*control,
                    const int (&ids)[3], bool isMultiLine);
    void AddCheckRow(wxFlexGridSizer& grid, const wxString& label, wxCheckBox* Column::*control,
                     const int (&ids)[3], const wxString& toolTip);
    void AddButtons(wxFlexGridSizer& grid);
    wxString VersionName(int column) const;
    void AddOthers(wxSizer& rows, const wxString& others);
    void FitScreen();

    static void FillColumn(const Column& column, const FlashCard& card);
    void MarkDifferences();
    void Keep(const FlashCard& card, Choice choice);
    bool ReadMerged(FlashCard& card);
    void OnKeepMerged();
    void OnStop();

    const Purpose mPurpose;
    Choice mChoice = kThisCard;
    const FlashCard mDatabaseCard;
    const FlashCard mImportedCard;
    // What the merged version starts as, and has where no column shows it.
    const FlashCard mSuggestedCard;
    FlashCard mMergedCard;
    Column mDatabase;
    Column mImported;
    Column mMerged;
};
