#pragma once

#include <wx/dialog.h>

#include "store/FlashCard.h"

class wxCheckBox;
class wxFlexGridSizer;
class wxTextCtrl;

// Puts a stored card and its imported version side by side, with a merged version to edit, and lets
// a person settle which one is kept. Ends with wxOK when that is done, and with wxCANCEL when the
// import is to stop; closing it asks whether to stop.
class MergeDialog : public wxDialog {
  public:
    // For which cards of the run the answer holds.
    enum Choice : int32_t { kThisCard = 0, kAlwaysImported = 1, kAlwaysDatabase = 2 };

    explicit MergeDialog(wxWindow* parent);

    // Fills the columns, marks what differs, and begins the merged version as the imported one.
    void SetCards(const FlashCard& databaseCard, const FlashCard& importedCard);
    // What the card becomes. What no column shows is that of the version that was picked.
    const FlashCard& GetMergedCard() const { return mMergedCard; }
    Choice GetChoice() const { return mChoice; }

  private:
    // The controls of one version.
    struct Column {
        wxTextCtrl* Front = nullptr;
        wxTextCtrl* Back = nullptr;
        wxTextCtrl* Author = nullptr;
        wxTextCtrl* IntroductionOrder = nullptr;
        wxCheckBox* ForwardX = nullptr;
        wxCheckBox* ReverseX = nullptr;
    };

    void AddHead(wxFlexGridSizer& grid);
    void AddTextRow(wxFlexGridSizer& grid, const wxString& label, wxTextCtrl* Column::*control,
                    const int (&ids)[3], bool isMultiLine);
    void AddCheckRow(wxFlexGridSizer& grid, const wxString& label, wxCheckBox* Column::*control,
                     const int (&ids)[3], const wxString& toolTip);
    void AddButtons(wxFlexGridSizer& grid);

    static void FillColumn(const Column& column, const FlashCard& card);
    void MarkDifferences();
    void Keep(const FlashCard& card, Choice choice);
    bool ReadMerged(FlashCard& card);
    void OnKeepMerged();
    void OnStop();

    Choice mChoice = kThisCard;
    FlashCard mDatabaseCard;
    FlashCard mImportedCard;
    FlashCard mMergedCard;
    Column mDatabase;
    Column mImported;
    Column mMerged;
};
