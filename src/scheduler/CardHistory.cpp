#include "scheduler/CardHistory.h"

#include <iterator>

void CardHistory::Add(const HistoryEntry& entry) {
    mEntries.remove_if([&entry](const HistoryEntry& old) { return old.CardId == entry.CardId; });
    mEntries.push_front(entry);
    while (mEntries.size() > kMaximum) {
        mEntries.pop_back();
    }
}

const HistoryEntry& CardHistory::At(int index) const {
    return *std::next(mEntries.begin(), index);
}

void CardHistory::EraseAt(int index) {
    mEntries.erase(std::next(mEntries.begin(), index));
}
