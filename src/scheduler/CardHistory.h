#pragma once

#include <cstddef>
#include <list>

#include "scheduler/ReviewDirection.h"
#include "store/CardSchedule.h"
#include "store/CardUuid.h"

// A card that was scored, with its schedule from just before the score, so that another score can
// be applied to it as though the first had never been given.
struct HistoryEntry {
    CardUuid CardId;
    CardSchedule Schedule;
    ReviewDirection Direction = kReviewNone;
};

// The cards scored last, newest first: at most 20, each card once.
class CardHistory {
  public:
    static constexpr std::size_t kMaximum = 20;

    void Add(const HistoryEntry& entry);
    void Clear() { mEntries.clear(); }
    int GetCount() const { return static_cast<int>(mEntries.size()); }
    // The index must lie in 0 to GetCount() - 1.
    const HistoryEntry& At(int index) const;
    // The entry of that card; null when it has none.
    const HistoryEntry* Find(const CardUuid& id) const;
    void EraseAt(int index);

  private:
    std::list<HistoryEntry> mEntries;
};
