#pragma once

#include <cstdint>
#include <list>
#include <vector>

#include "store/CardRow.h"
#include "store/Category.h"
#include "store/FlashCard.h"

// How records become parameters and how result rows become records.

// Read the rows of a run whose parameters are bound: 0, or -1 on any failure. The lists are cleared
// first; with all false only the first row is read. The vector is appended to.
int ReadFlashCardRows(StatementRun& run, std::list<FlashCard>& cards, bool all);
int ReadCategoryRows(StatementRun& run, std::list<Category>& categories, bool all);
int ReadInt64Rows(StatementRun& run, std::vector<int64_t>& numbers);

// Binds every field of a card but its id from a running index on, which then lies behind the last
// one. Gives 0 or -1.
int BindCardFields(StatementRun& run, int& index, const FlashCard& card);
