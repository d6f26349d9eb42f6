#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "base/TextPattern.h"
#include "base/Worker.h"
#include "store/CardTexts.h"

class Database;

// Finds what to replace in which cards, without changing them, and then writes it.

// What to look for.
struct ReplacementQuery {
    wxString Wanted;
    wxString Replacement;
    TextPattern::Options Options;
    // The texts to look in, by CardText.
    std::array<bool, kCardTextCount> Texts{};
    // The cards to look in.
    std::vector<int64_t> RowIds;
};

struct ReplacementsFound {
    // The cards that would change, in the order of the row ids. The new texts have no white space
    // at their ends, as those that the editor saves.
    std::vector<CardTextChange> Cards;
    // Cards left out because no card may have a blank front or back.
    int32_t Blank = 0;
    // A fault ends the search, with the card whose text showed it, if one did.
    TextPattern::Fault Fault;
    wxString FaultyFront;
    // True when the store could not be read to the end.
    bool IsStoreFailed = false;
};

// Looks for what to replace. Any thread. Stops when cancelled becomes true. A failure of the store,
// such as a lock of another program, is a result and not reported.
ReplacementsFound FindReplacements(Database& database, const ReplacementQuery& query,
                                   const std::atomic<bool>& cancelled);

// Writes changed texts on a thread of its own: those cards that still have the texts that were
// found. A cancel, which the destructor does too, keeps what was done before it.
class ReplacementThread : public Worker {
  public:
    ReplacementThread(Database& database, std::vector<CardTextChange> changes);
    ~ReplacementThread() override;

    int32_t GetMaximum() const override { return static_cast<int32_t>(mChanges.size()); }
    int32_t GetPosition() const override { return mPosition; }

    // Hands over the changes that were written. Call it once the worker has ended.
    std::vector<CardTextChange> TakeWritten();
    // Returns the number of cards that were tried and have other texts by now, or are gone.
    int32_t CountLeftAlone() const;

  protected:
    void Work() override;

  private:
    Database& mDatabase;
    std::vector<CardTextChange> mChanges;
    // Written by the worker and read once it has ended.
    std::vector<int64_t> mWritten;
    // The changes tried so far. Written by the worker.
    std::atomic<int32_t> mPosition{0};
};
