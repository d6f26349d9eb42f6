#pragma once

#include <wx/string.h>

#include <cstdint>
#include <list>
#include <map>
#include <vector>

#include "exchange/NewCards.h"
#include "formats/CardRecord.h"
#include "store/FlashCard.h"

class Database;
struct ImportResult;

// The new cards of an import that are not in the store yet, with their counters and messages. Every
// question to the store comes here first, so that a record sees the cards of earlier records,
// written or not.
class ImportGroup {
  public:
    ImportGroup(Database& database, ImportResult& result)
        : mDatabase(database), mResult(result), mCards(database) {}

    // Each writes the group if it must: when a card fills it, or when the question is about its
    // cards. Returns false when the store refuses a card, which the result then tells.
    bool Add(FlashCard&& card);
    bool Settle(const CardUuid& id);
    bool Settle(int32_t categoryId);
    bool Write();
    // Counts a record that changes nothing. The counter, one of the result, is taken back when the
    // store refuses a card that stands before the record in the file.
    void CountIgnored(int32_t& counter);

  private:
    // A count that a card of the group may still undo.
    struct Ignored {
        int32_t* pCounter;
        int32_t Line;
    };

    Database& mDatabase;
    ImportResult& mResult;
    NewCards mCards;
    std::vector<Ignored> mIgnored;
};

// The card that a record of a file becomes. Lives for that record, on the import's thread.
class ImportRecord {
  public:
    // Takes the attributes of the reader's current record in order. When the store has a card with
    // the record's id, the further attributes change that card. Returns false on the first wrong
    // attribute; the result then says what is wrong and on which line.
    bool Read(const CardRecordReader& reader, Database& database, ImportResult& result,
              ImportGroup& group);
    // Puts the second texts into the sides of the card, after Read. A second call does nothing.
    void JoinSecondTexts();
    // Starts from a stored card with the same pair of texts, which the attributes then change. Call
    // it before Read.
    void StartFromPair(const FlashCard& stored);

    bool Has(CardAttributeCode code) const {
        return (Mask & AttributeMask(false, false, code)) != 0;
    }
    bool IsStored() const { return !Stored.empty(); }
    // Returns whether the card equals the stored one. Chapter and notes are compared only when the
    // record has found the card by its pair of texts, or has come from another program.
    bool IsDuplicate() const;

    FlashCard Card;
    // The store's card with the record's id; at most one.
    std::list<FlashCard> Stored;
    // The attributes that the record gave.
    uint32_t Mask = 0;
    wxString CategoryName = L"Default";
    // False while the category is only the default.
    bool NamesCategory = false;
    // True when the stored card was found by its pair of texts.
    bool IsPair = false;
    // The record comes from a deck, or a table that is not of this program's own form.
    bool IsForeign = false;

  private:
    bool Add(const CardAttribute& attribute, Database& database, ImportResult& result,
             ImportGroup& group);
    wxString SetValue(int code, const CardAttribute& attribute);
    bool SetId(const CardAttribute& attribute, Database& database, ImportResult& result,
               ImportGroup& group);

    wxString mFront2;
    wxString mBack2;
};

// The ids of categories, by their names as the file spells them. A name seen for the first time is
// looked up in the store too, which compares names more loosely: to the store "007" is "7".
class ImportCategories {
  public:
    ImportCategories(Database& database, ImportResult& result, ImportGroup& group)
        : mDatabase(database), mResult(result), mGroup(group) {}

    // Reads the store's categories. Returns false when they cannot be read.
    bool Load();
    // Finds the id of a category, and creates the category when it is missing. Returns false on a
    // failure.
    bool FindOrCreate(const wxString& name, int32_t& id);
    // Finds the id of a category, or -1 when it is missing. With ask, the user is to be asked about
    // a missing one, by AskForMissing. Returns false on a failure.
    bool FindOrNote(const wxString& name, bool ask, int32_t& id);
    // Asks once whether the missing categories may be created, if there are any. Returns false on a
    // failure, and when the answer was a cancel.
    bool AskForMissing(int32_t line);

  private:
    enum class Search { kFound, kMissing, kFailed };
    Search Find(const wxString& name, int32_t& id);
    Search FindInStore(const wxString& name, int32_t& id);

    Database& mDatabase;
    ImportResult& mResult;
    ImportGroup& mGroup;
    std::map<wxString, int32_t> mIds;
};

// Numbers the new cards of an import, so that they are introduced after the cards of their category
// and in the order of the file. Asks the store once for each category.
class IntroductionOrders {
  public:
    IntroductionOrders(Database& database, ImportGroup& group)
        : mDatabase(database), mGroup(group) {}

    // Notes an order that a record gave; the next numbers come after it.
    void Note(int32_t categoryId, int32_t order);
    // Gives the order of the next new card. Returns false when the group could not be written.
    bool Take(int32_t categoryId, int32_t& order);

  private:
    Database& mDatabase;
    ImportGroup& mGroup;
    // The next order by category id, for the categories that were asked for.
    std::map<int32_t, int32_t> mNext;
};
