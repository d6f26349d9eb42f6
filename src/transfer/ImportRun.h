#pragma once

#include <wx/dialog.h>

#include <cstdint>
#include <set>

#include "exchange/ImportJob.h"

class Database;
class FatalErrorReport;
struct ImportInput;
class wxWindow;

// Asks whether a category that a file names may be created. Ends with wxID_YES or wxID_CANCEL.
class ImportNewCategoryMessageBox : public wxDialog {
  public:
    ImportNewCategoryMessageBox(wxWindow* parent, const wxString& categoryName);

    // The answer holds for every further category of the file.
    bool IsYesToAll() const { return mYesToAll; }

  private:
    bool mYesToAll = false;
};

// Puts the questions of an import as modal dialogs.
class ImportQuestionDialogs : public ImportQuestions {
  public:
    CategoryAnswer AskNewCategory(wxWindow* parent, const wxString& name) override;
    MergeAnswer AskMerge(wxWindow* parent, const FlashCard& stored, const FlashCard& imported,
                         uint32_t attributeMask) override;
};

// Imports a file on a worker thread behind a progress window and tells the outcome: a success only
// where there is a parent, a failure always. The ids of the categories that cards went into are
// added to the set, which may be null. True when the whole file was imported. The caller tells the
// listeners of the database.
bool ImportWithProgress(wxWindow* parent, const ImportInput& input, Database& database,
                        FatalErrorReport& report, bool askCategories,
                        std::set<int32_t>* touchedCategories);
