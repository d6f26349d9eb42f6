#pragma once

#include <wx/string.h>

#include <cstdint>

class Database;
class TextQuestion;

// What windows call a category: its name, "Deleted Items" for -1, "Error" for an id that the store
// does not have.
wxString GetCategoryName(Database& database, int32_t id);

// Asks for a name of a category, and again after a message while the answer is blank. Returns false
// if the user cancels; else the question has the name.
bool AskCategoryName(TextQuestion& question);
