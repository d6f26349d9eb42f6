#pragma once

#include <wx/string.h>

#include <cstdint>

class Database;
class TextQuestion;
class wxWindow;

// The category under study and shown in the list: a setting that is repaired against the store
// whenever it is read. The settings file is parsed once for each Notify of the store, however many
// windows ask. Main thread only.

// Returns the stored choice, or the first category when none was stored or the store does not have
// it. A store without any category gets "Default". Returns -1 when that is the choice, or when
// there is no category.
int32_t GetCurrentCategoryId(Database& database);

// Stores the choice if the store has that category; -1 is always taken.
void SetCurrentCategoryId(Database& database, int32_t id);

// Returns what windows call a category: its name, "Deleted Items" for -1, "Error" for an id that
// the store does not have.
wxString GetCategoryName(Database& database, int32_t id);

// Asks for a name of a category, and again after a message while the answer is blank. Returns false
// if the user cancels; else the question has the name.
bool AskCategoryName(TextQuestion& question);

// Asks for the name of a new category and puts it into the store.
void AddCategory(wxWindow* parent, Database& database);
