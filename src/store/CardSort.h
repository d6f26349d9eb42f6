#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <list>
#include <string>
#include <string_view>
#include <vector>

#include "store/Database.h"

// The orders of texts that people sort by (base/Collator.h). The engine has none: it compares the
// bytes of its texts, which in UTF-16 is no order that anyone knows.

// Returns true for a column of texts.
bool IsTextColumn(CardColumn column);

// Puts row ids, given in the order of introduction, into that order of a column of texts. Cards of
// the same text stay in the order of introduction; those that are gone from the store are left out.
// Reads the store in small portions, between which others can use it, and makes its keys and sorts
// them meanwhile: for any thread. Returns false, with the row ids as they were, when it was
// cancelled, when the store fails, which is not reported, and where there is no Collator. The
// engine's own order then remains.
bool SortByText(Database& database, CardOrder order, const std::atomic<bool>& isCancelled,
                std::vector<int64_t>& rowIds);

// The same for an order that the store does not know. Sorts by the keys that the function makes of
// the column's texts: bytes that compare (strcmp) as they should stand, and a NUL.
using MakeKey = std::function<void(std::u16string_view text, std::string& keys)>;
bool SortByKey(Database& database, CardOrder order, const MakeKey& makeKey,
               const std::atomic<bool>& isCancelled, std::vector<int64_t>& rowIds);

// Sorts categories by their names.
void SortByName(std::list<Category>& categories);
