#pragma once

#include <wx/string.h>

#include <cstdint>

class Database;

// What windows call a category: its name, "Deleted Items" for -1, "Error" for an id that the store
// does not have.
wxString GetCategoryName(Database& database, int32_t id);
