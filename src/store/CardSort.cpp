// Sorts a million cards by a text in seconds. Comparing two texts by the rules of a language takes
// long, and a sort compares each text twenty times; so each text is turned once into a key, whose
// bytes compare as the texts do. All keys lie one after the other in one block of memory, and what
// is sorted are small entries with eight bytes of the key in them, so that few comparisons have to
// go to the block. Keys often begin alike ("Unit 1 ...", "Unit 2 ..."); the eight bytes are taken
// after what all of them have in common.

#include "store/CardSort.h"

#include <algorithm>
#include <cstring>
#include <numeric>
#include <string>
#include <string_view>

#include "base/Collator.h"

namespace {

constexpr size_t kBlock = 65536;

struct Entry {
    // Bytes of the key, which compare as a number.
    uint64_t Part;
    // Where the key begins.
    size_t Key;
    // The card's place among the row ids.
    uint32_t Place;
};

class TextSort {
  public:
    explicit TextSort(const MakeKey& makeKey) : mMakeKey(makeKey) {}

    void Add(std::u16string_view text, uint32_t place) {
        const size_t key = mKeys.size();
        mMakeKey(text, mKeys);
        mEntries.push_back({0, key, place});
        const char* const first = mKeys.data();
        const char* const other = mKeys.data() + key;
        mCommon = mEntries.size() == 1 ? std::strlen(first) : std::min(mCommon, std::strlen(other));
        mCommon = static_cast<size_t>(std::mismatch(first, first + mCommon, other).first - first);
    }

    // Returns false when it was cancelled.
    bool Sort(bool descending, const std::atomic<bool>& isCancelled) {
        for (Entry& entry : mEntries) {
            entry.Part = ReadPart(entry.Key);
        }
        const auto isBefore = [this, descending](const Entry& a, const Entry& b) {
            return IsBefore(a, b, descending);
        };
        // In blocks, so that a cancel is soon heard.
        const size_t count = mEntries.size();
        for (size_t width = kBlock / 2; width < count || width < kBlock; width *= 2) {
            for (size_t begin = 0; begin < count; begin += 2 * width) {
                if (isCancelled) {
                    return false;
                }
                const auto at = [this](size_t index) {
                    const size_t place = std::min(index, mEntries.size());
                    return mEntries.begin() + static_cast<std::ptrdiff_t>(place);
                };
                if (2 * width == kBlock) {
                    std::sort(at(begin), at(begin + kBlock), isBefore);
                } else {
                    std::inplace_merge(at(begin), at(begin + width), at(begin + 2 * width),
                                       isBefore);
                }
            }
        }
        return true;
    }

    const std::vector<Entry>& GetEntries() const { return mEntries; }

  private:
    uint64_t ReadPart(size_t key) const {
        uint64_t part = 0;
        const char* at = mKeys.data() + key + mCommon;
        for (size_t i = 0; i < sizeof part; ++i) {
            part = part << 8 | static_cast<unsigned char>(*at);
            at += *at == '\0' ? 0 : 1;
        }
        return part;
    }

    bool IsBefore(const Entry& a, const Entry& b, bool descending) const {
        if (a.Part != b.Part) {
            return (a.Part < b.Part) != descending;
        }
        const int order = (a.Part & 0xFF) == 0 ? 0
                                               : std::strcmp(mKeys.data() + a.Key + mCommon,
                                                             mKeys.data() + b.Key + mCommon);
        return order == 0 ? a.Place < b.Place : (order < 0) != descending;
    }

    const MakeKey& mMakeKey;
    std::string mKeys;
    std::vector<Entry> mEntries;
    // How many bytes all keys begin with alike.
    size_t mCommon = 0;
};

// Returns the places of the row ids in ascending order of the row ids.
std::vector<uint32_t> PlacesByRowId(const std::vector<int64_t>& rowIds) {
    std::vector<uint32_t> places(rowIds.size());
    std::iota(places.begin(), places.end(), 0U);
    if (!std::is_sorted(rowIds.begin(), rowIds.end())) {
        std::sort(places.begin(), places.end(),
                  [&](uint32_t a, uint32_t b) { return rowIds[a] < rowIds[b]; });
    }
    return places;
}

// Reads the texts of all cards into the sort, some neighbours in the file at a time.
bool ReadTexts(Database& database, CardColumn column, const std::vector<int64_t>& rowIds,
               const std::atomic<bool>& isCancelled, TextSort& sort) {
    constexpr size_t kMostCards = 1000;
    // Reading a few other cards takes less time than a search for the next one.
    constexpr int64_t kFarAway = 8;
    const std::vector<uint32_t> places = PlacesByRowId(rowIds);
    size_t begin = 0;
    while (begin < places.size()) {
        size_t end = begin + 1;
        while (end < places.size() && end - begin < kMostCards &&
               rowIds[places[end]] - rowIds[places[end - 1]] <= kFarAway) {
            ++end;
        }
        size_t next = begin;
        const auto take = [&](int64_t rowId, std::u16string_view text) {
            while (next < end && rowIds[places[next]] < rowId) {
                ++next;
            }
            if (next < end && rowIds[places[next]] == rowId) {
                sort.Add(text, places[next]);
            }
        };
        if (isCancelled ||
            database.VisitTexts(column, rowIds[places[begin]], rowIds[places[end - 1]], take) < 0) {
            return false;
        }
        begin = end;
    }
    return true;
}

}  // namespace

bool IsTextColumn(CardColumn column) {
    switch (column) {
        case CardColumn::kFront:
        case CardColumn::kBack:
        case CardColumn::kCategoryName:
        case CardColumn::kAuthor:
        case CardColumn::kChapter:
        case CardColumn::kNotes:
            return true;
        default:
            return false;
    }
}

bool SortByText(Database& database, CardOrder order, const std::atomic<bool>& isCancelled,
                std::vector<int64_t>& rowIds) {
    const Collator collator;
    const auto makeKey = [&collator](std::u16string_view text, std::string& keys) {
        collator.AppendKey(text, keys);
    };
    return collator.IsLoaded() && SortByKey(database, order, makeKey, isCancelled, rowIds);
}

bool SortByKey(Database& database, CardOrder order, const MakeKey& makeKey,
               const std::atomic<bool>& isCancelled, std::vector<int64_t>& rowIds) {
    TextSort sort(makeKey);
    if (!ReadTexts(database, order.Column, rowIds, isCancelled, sort) ||
        !sort.Sort(order.Descending, isCancelled)) {
        return false;
    }
    std::vector<int64_t> sorted;
    sorted.reserve(rowIds.size());
    for (const Entry& entry : sort.GetEntries()) {
        sorted.push_back(rowIds[entry.Place]);
    }
    rowIds = std::move(sorted);
    return true;
}

void SortByName(std::list<Category>& categories) {
    if (categories.size() > 1) {
        const Collator collator;
        categories.sort([&collator](const Category& a, const Category& b) {
            return collator.IsLess(a.Name, b.Name);
        });
    }
}
