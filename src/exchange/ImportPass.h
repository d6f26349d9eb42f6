#pragma once

#include <wx/string.h>

#include <cstdint>
#include <set>
#include <vector>

#include "exchange/CardRecord.h"
#include "exchange/ImportJob.h"

class Database;
struct ImportResult;

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
};

// Reads a file once. Returns 0, or -1 with the reason in the result. A reason without a text was
// told already: the library's log says why a file could not be opened.
int ImportPass(const ImportInput& input, Database& database, ImportResult& result,
               const ImportPassOptions& options);

// Imports a file: a pass that finds any fault before something is written, then the pass that
// writes. Every card is written by itself: a failure or a cancel leaves what was written before.
// Returns 0, or -1 with the reason in the result.
int ImportCards(const ImportInput& input, Database& database, ImportResult& result,
                bool askCategories, std::set<int32_t>* touchedCategories);

// Reads the attributes of the first record; none for a file without records. Writes and asks
// nothing. Returns true on a failure, which the result then tells.
bool ImportPreview(const ImportInput& input, Database& database, ImportResult& result,
                   std::vector<CardAttribute>& attributes);
