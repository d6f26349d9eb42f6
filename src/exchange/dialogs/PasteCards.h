#pragma once

#include <cstdint>
#include <vector>

class Database;
class FatalErrorReport;

// Brings cards into a category, as new cards or by moving them, on a worker thread behind a
// progress window, and tells the listeners of the database.
void PasteCards(Database& database, FatalErrorReport& report, const std::vector<int64_t>& rowIds,
                bool copy, int32_t categoryId);
