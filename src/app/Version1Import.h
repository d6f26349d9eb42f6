#pragma once

#include <wx/string.h>

#include <vector>

#include "exchange/LegacyRowSource.h"

class Database;
class FatalErrorReport;
class wxWindow;

// Where version 1.0 of the program may have left its store, in the order in which to look.
std::vector<wxString> GetVersion1StorePlaces();

// Offers to import the store of version 1.0 from the first of the places that has one, and deletes
// it once it was imported whole. False when there is none or the offer was declined; true when it
// was taken, even if the engine that it needs was not to be had or the import failed.
bool OfferVersion1Import(wxWindow* parent, Database& database, FatalErrorReport& report,
                         const std::vector<wxString>& places,
                         const LegacyRowSourceMaker& makeRowSource = &MakeLegacyRowSource);
