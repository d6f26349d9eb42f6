#pragma once

#include <sqlite3.h>
#include <wx/string.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "files/StoreRepair.h"

struct FinalizeStatement {
    void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};
using StatementHandle = std::unique_ptr<sqlite3_stmt, FinalizeStatement>;
struct CloseConnection {
    void operator()(sqlite3* connection) const { sqlite3_close(connection); }
};
using ConnectionHandle = std::unique_ptr<sqlite3, CloseConnection>;

// Returns null where the engine refuses the text.
StatementHandle PrepareStatement(const ConnectionHandle& connection, const std::string& sql);

// The places of the columns in the table of cards.
enum CardPlace : size_t {
    kCardId,
    kFront,
    kBack,
    kCategoryId,
    kAuthor,
    kChapter,
    kIntroductionOrder,
    kForwardX,
    kReverseX,
    kNotes,
    kFrontAudio,
    kBackImage = 13,
    kIntroduced,
    kReverseIntroduced = 21,
    kCardColumnCount = 28
};
// The name of each of them.
extern const char* const kCardColumnNames[kCardColumnCount];

// One value of a row that was found, with the number by which the engine knows its type. The bytes
// of a text or blob are borrowed.
struct Cell {
    int Type = SQLITE_NULL;
    int64_t Whole = 0;
    double Real = 0;
    std::string_view Bytes;
};

// A card that was found. What the damaged store does not have of it is NULL.
struct FoundCard {
    std::optional<int64_t> RowId;
    std::array<Cell, kCardColumnCount> Cells;
    // How the texts are encoded, as the engine's number.
    unsigned char Encoding = SQLITE_UTF8;
};

// Row ids, mostly one after the other: a million of them take less than a megabyte.
class RowIds {
  public:
    // Returns false for one that is there already.
    bool Add(int64_t rowId) {
        uint64_t& bits = mBits[rowId >> 6];
        const bool isNew = (bits & Bit(rowId)) == 0;
        bits |= Bit(rowId);
        return isNew;
    }
    bool Has(int64_t rowId) const {
        const auto found = mBits.find(rowId >> 6);
        return found != mBits.end() && (found->second & Bit(rowId)) != 0;
    }
    bool IsEmpty() const { return mBits.empty(); }

  private:
    static uint64_t Bit(int64_t rowId) {
        return uint64_t{1} << (static_cast<uint64_t>(rowId) & 63);
    }

    std::unordered_map<int64_t, uint64_t> mBits;
};

// The new store that a repair fills. Nothing of the rows stays in memory. It is made with no care
// for crashes, so it must get its name only after Finish. The first failure ends all that follows:
// GetError has it.
class RepairedStore {
  public:
    // The files are new ones in a directory that goes in the end; one of them is for what indexes
    // say of lost rows.
    RepairedStore(const wxString& path, const wxString& traces);

    // Returns 0 or the system's number of the first error.
    int GetError() const { return mError; }
    bool HasRow(int64_t rowId) const { return mRowIds.Has(rowId); }
    // Whether the card of that row has this identity, bytes for bytes.
    bool HasRow(int64_t rowId, std::string_view id, unsigned char encoding);

    // Keeps the row id, and gives a new identity to a card that has none. Where another card has
    // its identity the card is passed over, unless it is known to be of the store: it then gets a
    // new one, if it differs at all. Where another card has its row id a card with an identity of
    // its own gets a new row id in the end. Returns true when the card was added.
    bool AddCard(const FoundCard& card, bool isOfStore);
    // The first name of an id stays.
    void AddCategory(int64_t id, const Cell& name, unsigned char encoding);

    // What entries of indexes say of a card whose row is lost.
    void NoteIdentity(int64_t rowId, const wxString& id);
    void NoteTexts(int64_t rowId, const Cell& front, const Cell& back, unsigned char encoding);
    void NotePlace(int64_t rowId, int32_t categoryId, int32_t introductionOrder);

    // Makes cards of what the indexes say, and names for the categories of cards that have none,
    // and writes all of it to the disk. Adds to the report. Without a card or a category that was
    // found the error is EILSEQ.
    void Finish(RepairReport& report);

  private:
    bool Run(const char* sql);
    // Steps a statement and makes it ready for the next time. Returns true for a row.
    bool Step(const StatementHandle& statement);
    void Fail();
    bool Insert(const FoundCard& card);
    bool HasEqual(const FoundCard& card);
    bool PutAside(const FoundCard& card);
    void DropIndexes();
    void RemakeCards(RepairReport& report);
    void NameCategories(RepairReport& report);

    int mError = 0;
    wxString mPath;
    ConnectionHandle mConnection;
    // The texts of the indexes, which are made in the end: that is many times as fast.
    std::vector<std::string> mIndexes;
    RowIds mRowIds;
    StatementHandle mHasRow;
    StatementHandle mInsert;
    StatementHandle mHasEqual;
    StatementHandle mPutAside;
    StatementHandle mInsertCategory;
    StatementHandle mNoteIdentity;
    StatementHandle mNoteTexts;
    StatementHandle mNotePlace;
    int32_t mCards = 0;
    int32_t mCategories = 0;
    // The ids of categories whose names another one had already, with the id of that.
    std::vector<std::pair<int32_t, int32_t>> mMerged;
};
