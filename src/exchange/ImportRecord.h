#pragma once

#include <wx/string.h>

#include <cstdint>
#include <list>
#include <map>

#include "exchange/CardRecord.h"
#include "store/FlashCard.h"

class Database;
struct ImportResult;

// The card that one record of a file becomes. Lives for that record, on the import's thread.
class ImportRecord {
  public:
    // Takes the attributes of the reader's current record in order. When the store has a card with
    // the record's id, the further attributes change that card. Returns false on the first wrong
    // attribute; the result then says what is wrong and on which line.
    bool Read(const CardRecordReader& reader, Database& database, ImportResult& result);
    // Puts the second texts into the sides of the card. Called once, after Read.
    void JoinSecondTexts();

    bool Has(CardAttributeCode code) const {
        return (Mask & AttributeMask(false, false, code)) != 0;
    }
    bool IsStored() const { return !Stored.empty(); }
    // Returns whether the card equals the stored one. Chapter and notes are not compared.
    bool IsDuplicate() const;

    FlashCard Card;
    // The store's card with the record's id; at most one.
    std::list<FlashCard> Stored;
    // The attributes that the record gave.
    uint32_t Mask = 0;
    wxString CategoryName = L"Default";
    // False while the name is only the default.
    bool NamesCategory = false;

  private:
    bool Add(const CardAttribute& attribute, Database& database, ImportResult& result);
    wxString SetValue(int code, const CardAttribute& attribute);
    bool SetId(const CardAttribute& attribute, Database& database, ImportResult& result);

    wxString mFront2;
    wxString mBack2;
};

// The ids of categories, by their names as the file spells them. A name seen for the first time is
// looked up in the store too, which compares names more loosely: to the store "007" is "7".
class ImportCategories {
  public:
    ImportCategories(Database& database, ImportResult& result)
        : mDatabase(database), mResult(result) {}

    // Takes in the store's categories. Returns false when they cannot be read.
    bool Load();
    // Finds the id of a category, and creates the category when it is missing. Returns false on a
    // failure.
    bool FindOrCreate(const wxString& name, int32_t& id);
    // Finds the id of a category, or -1 when it is missing. With ask, the user is asked about each
    // missing one once. Returns false on a failure, and when the answer was a cancel.
    bool FindOrAsk(const wxString& name, bool ask, int32_t line, int32_t& id);

  private:
    enum class Search { kFound, kMissing, kFailed };
    Search Find(const wxString& name, int32_t& id);
    Search FindInStore(const wxString& name, int32_t& id);

    Database& mDatabase;
    ImportResult& mResult;
    std::map<wxString, int32_t> mIds;
};

// Numbers the new cards of an import, so that they are introduced after the cards of their category
// and in the order of the file. Asks the store once for each category.
class IntroductionOrders {
  public:
    explicit IntroductionOrders(Database& database) : mDatabase(database) {}

    // Takes note of an order that a record gave itself; the next numbers come after it.
    void Note(int32_t categoryId, int32_t order);
    // Returns the order of the next new card.
    int32_t Take(int32_t categoryId);

  private:
    Database& mDatabase;
    // The next order by category id, for the categories that were asked for.
    std::map<int32_t, int32_t> mNext;
};
