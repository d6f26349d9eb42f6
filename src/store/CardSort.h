#pragma once

#include <atomic>
#include <cstdint>
#include <list>
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

// Sorts categories by their names.
void SortByName(std::list<Category>& categories);
