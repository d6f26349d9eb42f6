#pragma once

#include <wx/string.h>

#include <cstdint>
#include <list>

#include "exchange/CardAttributes.h"
#include "store/FlashCard.h"

class CardRecordReader;
struct CardAttribute;
class Database;
struct ImportResult;

// The card that one record of a file becomes.
class ImportRecord {
  public:
    // Takes every attribute of the reader's current record, in order. An id that the store knows
    // makes the stored card the one that the further attributes change. False on the first wrong
    // attribute; the result then says what is wrong and on which line.
    bool Read(const CardRecordReader& reader, Database& database, ImportResult& result);
    // Puts the second texts into the sides of the card; once, when all else was read.
    void JoinSecondTexts();

    bool Has(CardAttributeCode code) const {
        return (Mask & AttributeMask(false, false, code)) != 0;
    }
    bool IsStored() const { return !Stored.empty(); }
    // The card equals the stored one; chapter and notes are not compared.
    bool IsDuplicate() const;

    FlashCard Card;
    // The store's card with the record's id; at most one.
    std::list<FlashCard> Stored;
    // The attributes that the record gave.
    uint32_t Mask = 0;
    wxString CategoryName = L"Default";
    // The record names its category.
    bool NamesCategory = false;

  private:
    bool Add(const CardAttribute& attribute, Database& database, ImportResult& result);
    wxString SetValue(int code, const CardAttribute& attribute);
    bool SetId(const CardAttribute& attribute, Database& database, ImportResult& result);

    wxString mFront2;
    wxString mBack2;
};
