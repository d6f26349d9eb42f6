#pragma once

#include <cstddef>
#include <deque>

#include "exchange/CardAttribute.h"

// The attributes of the record that a reader stands on. Entries keep their memory from one record
// to the next, so that reading does not allocate once the longest record was seen.
class AttributeList {
  public:
    size_t Count() const { return mCount; }
    CardAttribute& operator[](size_t index) { return mEntries[index]; }
    const CardAttribute& operator[](size_t index) const { return mEntries[index]; }

    void Clear() { mCount = 0; }
    // The new last entry; it still holds what an earlier record left in it.
    CardAttribute& Append() {
        if (mCount == mEntries.size()) {
            mEntries.emplace_back();
        }
        return mEntries[mCount++];
    }

  private:
    // Grows without copying what is in it.
    std::deque<CardAttribute> mEntries;
    size_t mCount = 0;
};
