#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "reviews/ScheduleEvents.h"
#include "store/CardUuid.h"
#include "sync/ExchangeFolder.h"
#include "sync/SqlFile.h"
#include "sync/Stamp.h"
#include "sync/SyncedCard.h"

// The file of an exchange, which lies beside the store ("Words.vlm.exchange") and never leaves its
// computer. It is a database with a copy of the cards as all computers have agreed on them, and
// with what this computer knows of the others:
//
//     Facts            this computer's identity, its clock, how far the store and its log were read
//     Copy             the cards, deleted ones included, with the stamps of their fields
//     CopyCategories   the categories of the store as of the last exchange
//     CategoryEvents   every category that was added, deleted or renamed, by name
//     Machines         the other computers: when they were heard of, what was taken of theirs, and
//                      what they have taken
//     Outbox           this computer's own files of changes, until all have taken them
//     Pending          lines that the log of reviews does not have yet
//     Conflicts        texts that lost against a change of another computer
//     Unions           cards that became one
//     Ahead            reviews by a clock that ran ahead
//
// The store and this file are written in one transaction of the engine, so that a kill or a power
// cut leaves both as before or both as after.

// Returns the path of the file; the store's path with a suffix.
wxString ExchangeStatePath(const wxString& storePath);

// A computer that takes part.
struct ExchangeMachine {
    uint64_t Id = 0;
    // UTF-8, as its person calls it.
    std::string Name;
    // Milliseconds since 1970, by this computer's clock.
    int64_t LastNews = 0;
    // The number of its last file that was taken here.
    int64_t Taken = 0;
    // The same for each machine, as it says itself.
    std::map<uint64_t, int64_t> Acknowledged;
};

// What became of the name of a category.
struct CategoryEvent {
    enum Kind : char { kAdded = 'a', kDeleted = 'd', kRenamed = 'r' };
    Kind What = kAdded;
    std::string Name;
    // The name after a renaming.
    std::string NewName;
    Stamp At;
};

// A text that lost against a change of another computer.
struct LostText {
    CardUuid Card;
    CardField Field = CardField::kFront;
    std::string Value;
    // The stamps of the lost change and of the one that stands.
    Stamp Lost;
    Stamp Stands;
    // True once somebody has looked at it, on whatever computer.
    bool IsLookedAt = false;
    // True when that was here, and the others do not know of it yet.
    bool IsToldNext = false;
};

// The store and the file of its exchange, opened together. Used by one thread.
class SyncState {
  public:
    // Opens both, and makes the file where there is none. Returns false on failure, as for a store
    // with a schema that no store has.
    bool Open(const wxString& storePath);
    // Opens the file beside the store alone, for a window. Of the operations below only those on
    // machines and lost texts work then.
    bool OpenAlone(const wxString& storePath);
    SqlFile& Sql() { return mSql; }

    // One transaction over both files. It takes the store's lock for writing at once.
    bool Begin();
    bool Commit();
    void RollBack();

    std::string GetFact(const char* key);
    int64_t GetNumber(const char* key, int64_t otherwise = 0);
    void SetFact(const char* key, const std::string& value);
    void SetNumber(const char* key, int64_t value);

    // The engine counts the changes of a file in its header. Returns the store's count, which each
    // commit raises; -1 where it cannot be read.
    int64_t ReadChangeCounter();

    // Returns a number that changes when another connection has changed the store.
    int64_t ReadDataVersion();

    // The computers, this one left out.
    std::vector<ExchangeMachine> ReadMachines();
    void SaveMachine(const ExchangeMachine& machine);

    // Fills a state with what the copy has of a card; one that is not known otherwise.
    void LoadCopy(const CardUuid& id, SyncedCard& state);
    void SaveCopy(const SyncedCard& state);
    // Counts the cards that exist.
    int64_t CountCopy();
    // Fills the values of a card as the store has them now. Returns false without such a card. The
    // store's own number of the order of early review comes with it.
    bool LoadLive(const CardUuid& id, SyncedCard& live);
    // Makes the copy's columns those of the store, whatever types they have there.
    void MirrorCard(const CardUuid& id);
    // The same for all cards, whatever is not sent yet.
    void MirrorAll();
    // Writes a card into the store, which may have it unless it is new.
    void WriteLive(const SyncedCard& state, bool isNew);
    void DeleteLive(const CardUuid& id);
    bool HasLiveCards();
    // Drops the indexes of the store's cards, and returns the statements that make them again. Many
    // cards of a store that had none are written in half the time then.
    std::vector<std::string> DropCardIndexes();

    // The categories of the store, by their ids.
    const std::map<int32_t, std::string>& Categories() const { return mCategories; }
    void ReadCategories();
    // Returns the id of a name by the store's own rule for equal names; -1 for none.
    int32_t FindCategory(const std::string& name);
    // Returns the id of the category, which is added where it is missing.
    int32_t FindOrAddCategory(const std::string& name);
    void RenameCategory(int32_t id, const std::string& name);
    void DeleteCategory(int32_t id);
    std::map<int32_t, std::string> ReadCopyCategories();
    // Makes those of the copy the store's.
    void MirrorCategories();
    // Returns true when a card of the copy has the category there and here.
    bool KeepsCards(int32_t categoryId);
    bool HasCards(int32_t categoryId);

    std::vector<CategoryEvent> ReadCategoryEvents();
    // Returns false when it is there already.
    bool AddCategoryEvent(const CategoryEvent& event);

    // Returns false when it is there already.
    bool AddUnion(const CardUuid& one, const CardUuid& other);
    std::vector<std::pair<CardUuid, CardUuid>> ReadUnions();

    void AddLostText(const LostText& text);
    // Marks one as looked at, and sees to it that none comes back.
    void CloseLostText(const CardUuid& card, CardField field, const Stamp& lost);
    // Marks one as looked at here.
    void CloseLostTextHere(const LostText& text);
    std::vector<LostText> ReadLostTexts(bool withClosed);

    // The files of changes that this computer has sent, or is about to.
    void AddSent(const ExchangeFileId& id, const std::string& bytes);
    std::vector<ExchangeFileId> ListSent();
    std::string ReadSent(const ExchangeFileId& id);
    void DropSent(const ExchangeFileId& id);

    // Reviews that the log does not have yet.
    bool HasPending();
    // The text is what FormatEvent gives.
    void AddPending(const std::string& text);
    // Returns the first of them with their numbers, and puts the number of the last one into last;
    // 0 where there is none.
    std::vector<std::pair<int64_t, ScheduleEvent>> ReadPending(int most, int64_t& last);
    void DropPending(int64_t number);
    // Drops all up to a number.
    void DropPendingTo(int64_t last);

    MachineNumbers& Numbers() { return mNumbers; }
    // The stamps of a card without changes of its own need the number of a machine: stores new
    // ones.
    void SaveNumbers();

  private:
    bool IsStore();
    bool Attach(const wxString& storePath);
    bool MakeTables();
    void ReadNumbers();
    void ReadCategory(int32_t id);

    SqlFile mSql;
    MachineNumbers mNumbers;
    int64_t mSavedNumbers = 0;
    std::map<int32_t, std::string> mCategories;
    // What FindCategory has found since the categories changed last.
    std::unordered_map<std::string, int32_t> mFoundCategories;
};
