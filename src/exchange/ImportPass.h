#pragma once

#include <wx/string.h>

#include <cstdint>
#include <map>
#include <set>
#include <vector>

#include "exchange/CardAttributes.h"
#include "exchange/ImportJob.h"

class Database;
struct ImportResult;

// The categories of one pass, by the names as the file gives them. A name that was not met before
// is looked up in the store too, which sees names more loosely than the file spells them.
class ImportCategories {
  public:
    ImportCategories(Database& database, ImportResult& result)
        : mDatabase(database), mResult(result) {}

    // Takes in the store's categories; false when they cannot be read.
    bool Load();
    // Gives the id of a category and creates it where it is missing. False on a failure.
    bool FindOrCreate(const wxString& name, int32_t& id);
    // Gives the id of a category, or -1 where it is missing. A missing one is asked about if
    // wanted, and each only once. False on a failure and when the answer was a cancel.
    bool FindOrAsk(const wxString& name, bool ask, int32_t line, int32_t& id);

  private:
    enum class Search { kFound, kMissing, kFailed };
    Search Find(const wxString& name, int32_t& id);
    Search FindInStore(const wxString& name, int32_t& id);

    Database& mDatabase;
    ImportResult& mResult;
    std::map<wxString, int32_t> mIds;
};

// Numbers the new cards of an import, so that they come behind the cards of their category in the
// order of the file. Asks the store once for each category.
class IntroductionOrders {
  public:
    explicit IntroductionOrders(Database& database) : mDatabase(database) {}

    // A record gave its order itself; further numbers lie behind it.
    void Note(int32_t categoryId, int32_t order);
    // The order of the next new card.
    int32_t Take(int32_t categoryId);

  private:
    Database& mDatabase;
    // Category id to the next order, for categories that were asked for.
    std::map<int32_t, int32_t> mNext;
};

// One pass over a file.
struct ImportPassOptions {
    // Look for faults and write nothing.
    bool ValidateOnly = false;
    // Ask before a category is created that the file names and the store lacks.
    bool AskCategories = false;
    // Gets the ids of the categories that cards went into; may be null.
    std::set<int32_t>* TouchedCategories = nullptr;
    // Gets the attributes of the first record, with which the pass then ends; may be null.
    std::vector<CardAttribute>* PreviewAttributes = nullptr;
};

// Returns 0, or -1 with the reason in the result. A reason without a text, as for a file that
// cannot be opened, is told by others.
int ImportPass(const ImportInput& input, Database& database, ImportResult& result,
               const ImportPassOptions& options);

// Imports a file: a pass that finds any fault before something is written, then the pass that
// writes. Every card is written by itself: a failure or a cancel leaves what was written before.
// Returns 0, or -1 with the reason in the result.
int ImportCards(const ImportInput& input, Database& database, ImportResult& result,
                bool askCategories, std::set<int32_t>* touchedCategories);

// Shows what the first record holds, or no attribute for a file without records. Writes and asks
// nothing. True on a failure, which the result then tells.
bool ImportPreview(const ImportInput& input, Database& database, ImportResult& result,
                   std::vector<CardAttribute>& attributes);
