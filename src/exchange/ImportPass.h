#pragma once

#include <wx/string.h>

#include <cstddef>
#include <cstdint>
#include <limits>
#include <set>
#include <vector>

#include "exchange/ImportJob.h"
#include "formats/CardRecord.h"

class Database;
struct ImportResult;
struct TableSurvey;

// A fault in a file to import, with its line or row from 1, or -1 when it has none.
struct ImportFault {
    wxString Message;
    int32_t Line = -1;
};

// What a pass over a file does.
struct ImportPassOptions {
    // Looks for faults and writes nothing.
    bool ValidateOnly = false;
    // Asks before a category is created that the file names and the store lacks.
    bool AskCategories = false;
    // Receives the ids of the categories that cards went into; may be null.
    std::set<int32_t>* TouchedCategories = nullptr;
    // Receives the attributes of the first record, after which the pass ends; may be null.
    std::vector<CardAttribute>* PreviewAttributes = nullptr;
    // Receives every fault of the file, one for each record, in a pass that only validates. When
    // null, the first fault ends the pass.
    std::vector<ImportFault>* Faults = nullptr;
    // The pass ends at the fault after this many.
    size_t MostFaults = std::numeric_limits<size_t>::max();
};

// Reads a file once. Returns 0, or -1 with the reason in the result. Without a text, the library's
// log says why the file could not be opened.
int ImportPass(const ImportInput& input, Database& database, ImportResult& result,
               const ImportPassOptions& options);

// Imports a file: a first pass finds any fault before the second writes. New cards are written in
// groups. A failure or a cancel leaves the cards before it. Returns 0, or -1 with the reason in the
// result.
int ImportCards(const ImportInput& input, Database& database, ImportResult& result,
                bool askCategories, std::set<int32_t>* touchedCategories);

// Finds the first fault of each record of a file. Writes nothing. Returns no fault for a file that
// can be imported.
std::vector<ImportFault> FindFaults(const ImportInput& input, Database& database);
// Finds no more than that many. The result shows the progress and can cancel.
std::vector<ImportFault> FindFaults(const ImportInput& input, Database& database,
                                    ImportResult& result, size_t most);

// Sets how a text is most likely to be read: as a table when all of its columns are attributes of
// cards, in the program's own form when its first record fits, and else as a table with the layout
// that the survey of its first rows found. Returns false when nothing fits; the program's own form
// is set then.
bool GuessFormat(ImportInput& input, Database& database);
bool GuessFormat(ImportInput& input, Database& database, const TableSurvey& survey);

// Reads the attributes of the first record, or none from a file without records. Writes and asks
// nothing. Returns true on a failure, which the result then tells.
bool ImportPreview(const ImportInput& input, Database& database, ImportResult& result,
                   std::vector<CardAttribute>& attributes);
