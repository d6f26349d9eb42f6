#pragma once

#include <cstdint>
#include <set>

#include "exchange/ImportJob.h"

class AppServices;
class Database;
class FatalErrorReport;
class wxWindow;

// Puts the questions of an import to the user as modal dialogs over the progress window. Main
// thread only.
class ImportQuestionDialogs : public ImportQuestions {
  public:
    // The database, which is not owned, has the names of categories; null when they do not matter.
    // It is asked only while the worker waits for an answer.
    explicit ImportQuestionDialogs(Database* database = nullptr) : mpDatabase(database) {}

    CategoryAnswer AskNewCategories(wxWindow* parent, const std::vector<wxString>& names) override;
    CategoryAnswer AskLongField(wxWindow* parent, int32_t line, int32_t lines) override;
    MergeAnswer AskMerge(wxWindow* parent, const FlashCard& stored, const FlashCard& imported,
                         uint32_t attributeMask) override;

  private:
    wxString NameOfCategory(int32_t id) const;

    Database* mpDatabase;
};

// Backs up the store, and imports a file on a worker thread behind a progress window; the import
// dialog, the command line and the offer of an old store all come through here. Returns true when
// the whole file was imported. A cancel and a failure leave the cards that were written before.
//
// With a parent, asks before it creates a category and tells a success. Without one, as on the
// command line, creates categories unasked and tells only a failure. Adds the ids of the categories
// that cards went into to the set, which may be null. The caller notifies the database's observers.
// A failure goes to pFailure, instead of to a message box, unless that is null.
bool ImportWithProgress(wxWindow* parent, AppServices& services, const ImportInput& input,
                        Database& database, FatalErrorReport& report,
                        std::set<int32_t>* touchedCategories = nullptr,
                        wxString* pFailure = nullptr);
