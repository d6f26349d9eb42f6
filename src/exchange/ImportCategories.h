#pragma once

#include <wx/string.h>

#include <cstdint>
#include <map>

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
