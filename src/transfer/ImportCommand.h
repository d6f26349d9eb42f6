#pragma once

#include <wx/string.h>

#include <vector>

#include "formats/LegacyRowSource.h"

class AppServices;
class Database;
class FatalErrorReport;
class wxWindow;

// Returns whether a file, by whatever name or link, is the open store or one of the engine's files
// beside it.
bool BelongsToStore(Database& database, const wxString& path);

// Runs the command "Import": offers the store that version 1.0 of the program may have left, else
// lets the user choose a file and say how to read it. The first category that cards went into
// becomes the current one. Main thread only.
void RunImportCommand(wxWindow* parent, AppServices& services, Database& database,
                      FatalErrorReport& report);

// Lets the user say how to read a file, and imports it as the command does.
void ImportFileByDialog(wxWindow* parent, AppServices& services, Database& database,
                        FatalErrorReport& report, const wxString& path);

// Returns where version 1.0 may have left its store, in the order in which to look.
std::vector<wxString> GetVersion1StorePlaces();

// Offers to import the store of version 1.0 from the first of the places that has one, and deletes
// it once it was imported whole. Returns false when there is none or the user declined; true when
// the user accepted, even if its database engine is not installed or the import failed. A test
// gives places and an engine of its own.
bool OfferVersion1Import(wxWindow* parent, AppServices& services, Database& database,
                         FatalErrorReport& report,
                         const std::vector<wxString>& places = GetVersion1StorePlaces(),
                         const LegacyRowSourceMaker& makeRowSource = &MakeLegacyRowSource);
