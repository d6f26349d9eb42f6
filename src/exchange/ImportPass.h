#pragma once

#include <set>
#include <vector>

#include "exchange/CardAttribute.h"
#include "exchange/ImportInput.h"
#include "exchange/ImportResult.h"

class Database;

// One pass over a file.
struct ImportPassOptions {
    // Look for faults and write nothing.
    bool ValidateOnly = false;
    // Ask before a category is created that the file names and the store lacks.
    bool AskCategories = false;
    // Gets the ids of the categories that cards went into; may be null.
    std::set<int32_t>* TouchedCategories = nullptr;
    // Gets the attributes of the first record, with which the pass then ends; may be null.
    std::vector<CardAttribute>* PreviewAttributes = nullptr;
};

// Returns 0, or -1 with the reason in the result. A reason without a text, as for a file that
// cannot be opened, is told by others.
int ImportPass(const ImportInput& input, Database& database, ImportResult& result,
               const ImportPassOptions& options);

// Imports a file: a pass that finds any fault before something is written, then the pass that
// writes. Every card is written by itself: a failure or a cancel leaves what was written before.
// Returns 0, or -1 with the reason in the result.
int ImportCards(const ImportInput& input, Database& database, ImportResult& result,
                bool askCategories, std::set<int32_t>* touchedCategories);

// Shows what the first record holds, or no attribute for a file without records. Writes and asks
// nothing. True on a failure, which the result then tells.
bool ImportPreview(const ImportInput& input, Database& database, ImportResult& result,
                   std::vector<CardAttribute>& attributes);
