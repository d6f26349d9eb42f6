#pragma once

#include <wx/string.h>

#include <functional>
#include <memory>

class Database;
class FatalErrorReport;
class wxWindow;

// How the program comes to an open store file. Main thread only.

// The default file in the user's documents directory, which is made if it does not exist.
wxString GetDefaultStorePath();

// A new Database with the stored choice of file open, or the default file where none is stored.
// If none can be opened the program ends.
std::unique_ptr<Database> OpenAtStart(FatalErrorReport& report);

// Opens the file, and asks the person for another as long as that fails; the program ends when they
// give up. The path that opened is stored as the choice. The Database must be closed.
void OpenStoreFile(wxWindow* parent, Database& database, const wxString& path, bool mustExist);

// The same, but gives false, with the Database closed, when the person gives up.
bool TryOpenStoreFile(wxWindow* parent, Database& database, const wxString& path, bool mustExist);

// Runs the questions that a window asks of the open store before it is seen. Where the store fails
// at one of them the person chooses another, which is then asked the same; the program ends when
// they give up.
void AskBeforeWindows(Database& database, const std::function<void()>& ask);
