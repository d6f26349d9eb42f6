#pragma once

#include <wx/string.h>

#include <vector>

class AppServices;
class Database;
class FatalErrorReport;
class wxWindow;

// Whether the file, by whatever name or link, is the open store or one of the engine's files beside
// it.
bool BelongsToStore(Database& database, const wxString& path);

// The command "Import": offers a store of version 1.0 that lies at one of the places, and otherwise
// lets the person choose a file and say how it is to be read. The first category that cards went
// into becomes the current one.
void RunImportCommand(wxWindow* parent, AppServices& services, Database& database,
                      FatalErrorReport& report, const std::vector<wxString>& version1Places);
