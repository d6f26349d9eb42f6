#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <unordered_set>
#include <vector>

#include "store/FlashCard.h"

class Database;

// New cards on their way into the store, from an import or a paste.
//
// A statement that inserts one card waits for the disk four times; one that inserts 1,000 cards
// does not wait longer. So new cards are collected here and written in groups. A group is one
// statement: after a power cut the store has all of its cards or none. The size of a group follows
// the time that the last one took, so that a Cancel takes effect within a tenth of a second, on
// slow and fast disks.
//
// The owner writes the group before it asks the store anything that a card of the group may answer.
class NewCards {
  public:
    // The database is not owned.
    explicit NewCards(Database& database) : mDatabase(database) {}

    // Takes a card and its line, which is reported if the store refuses the card.
    void Add(FlashCard&& card, int32_t line = -1);
    // Returns whether it is time to write the group.
    bool IsFull() const { return mCards.size() >= mSize || mCharacters >= kMostCharacters; }
    bool IsEmpty() const { return mCards.empty(); }
    void Clear() { DropFirst(mCards.size()); }
    bool HasCard(const CardUuid& id) const { return mIds.count(id) != 0; }
    bool HasCategory(int32_t categoryId) const;

    struct Outcome {
        // The number of cards that the store has taken.
        int32_t Written = 0;
        // True when the store refused the next card; its last error has the reason.
        bool HasFailed = false;
        // The line of that card.
        int32_t Line = -1;
    };
    // Writes the cards in their order. When the store refuses one, that card is dropped, the cards
    // after it stay in the group, and the caller decides about them.
    Outcome Write();

  private:
    // A group of long cards is written sooner, so that it does not fill the memory.
    static constexpr size_t kMostCharacters = size_t{1} << 21;

    struct IdHash {
        size_t operator()(const CardUuid& id) const;
    };

    size_t WriteCards();
    size_t WritePart(size_t first, size_t count);
    void DropFirst(size_t count);
    void Resize(size_t count, double seconds);

    Database& mDatabase;
    std::vector<FlashCard> mCards;
    std::vector<int32_t> mLines;
    std::unordered_set<CardUuid, IdHash> mIds;
    size_t mCharacters = 0;
    // The number of cards in a group.
    size_t mSize = 1024;
    // The time of the last group that was too large.
    double mSecondsOfLarger = std::numeric_limits<double>::infinity();
};
