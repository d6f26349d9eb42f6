#pragma once

class Database;
class wxWindow;

// Asks for the name of a new category and puts it into the store.
void AddCategory(wxWindow* parent, Database& database);
