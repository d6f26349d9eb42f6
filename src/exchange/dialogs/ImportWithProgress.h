#pragma once

#include <cstdint>
#include <set>

class Database;
class FatalErrorReport;
struct ImportInput;
class wxWindow;

// Imports a file on a worker thread behind a progress window and tells the outcome: a success only
// where there is a parent, a failure always. The ids of the categories that cards went into are
// added to the set, which may be null. True when the whole file was imported. The caller tells the
// listeners of the database.
bool ImportWithProgress(wxWindow* parent, const ImportInput& input, Database& database,
                        FatalErrorReport& report, bool askCategories,
                        std::set<int32_t>* touchedCategories);
