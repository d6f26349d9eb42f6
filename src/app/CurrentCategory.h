#pragma once

#include <cstdint>

class Database;

// The category under study and shown in the list: a setting that is repaired against the store
// whenever it is read. Main thread only.

// The stored choice, or the first category when none was stored or the store does not have it. A
// store without any category gets "Default". -1 when -1 is the choice, or when no category could be
// had.
int32_t GetCurrentCategoryId(Database& database);

// Stores the choice if the store has that category; -1 is always taken.
void SetCurrentCategoryId(Database& database, int32_t id);
