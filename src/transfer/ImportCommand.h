#pragma once

#include <wx/dialog.h>
#include <wx/string.h>

#include <vector>

#include "exchange/LegacyRowSource.h"

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

// Where version 1.0 of the program may have left its store, in the order in which to look.
std::vector<wxString> GetVersion1StorePlaces();

// Offers to import the store of version 1.0 from the first of the places that has one, and deletes
// it once it was imported whole. False when there is none or the offer was declined; true when it
// was taken, even if the engine that it needs was not to be had or the import failed.
bool OfferVersion1Import(wxWindow* parent, Database& database, FatalErrorReport& report,
                         const std::vector<wxString>& places,
                         const LegacyRowSourceMaker& makeRowSource = &MakeLegacyRowSource);

// Tells how to get the database engine that reads stores of version 1.0. Ends with wxOK when the
// person wants to try again, and with wxCANCEL otherwise, however it was left.
class SqlCeRequired : public wxDialog {
  public:
    SqlCeRequired(wxWindow* parent, const wxString& caption, const wxSize& size);
};
