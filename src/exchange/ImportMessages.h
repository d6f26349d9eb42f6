#pragma once

#include <wx/string.h>

class Database;

// Texts of a failed import that more than one step has to say. A name from the file fills its
// place in a text and is never a format itself; one of absurd length is cut.
wxString NamedMessage(const wxString& format, const wxString& name);
wxString UnknownAttributeMessage(const wxString& name);
wxString RepeatedAttributeMessage();
wxString UnreadableFileMessage(const wxString& fileName);
// The file is a store, or the engine keeps it beside one.
wxString DatabaseFileMessage(const wxString& fileName);

// A text with places for the number and the text of the store's last error.
wxString StoreMessage(const wxString& format, Database& database);
wxString StoreReadMessage(Database& database);
