#include "scheduler/CardHistory.h"

#include <algorithm>
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

const HistoryEntry* CardHistory::Find(const CardUuid& id) const {
    const auto entry = std::find_if(mEntries.begin(), mEntries.end(),
                                    [&id](const HistoryEntry& each) { return each.CardId == id; });
    return entry == mEntries.end() ? nullptr : &*entry;
}

void CardHistory::EraseAt(int index) {
    mEntries.erase(std::next(mEntries.begin(), index));
}
