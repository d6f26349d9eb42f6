#pragma once

#include <sqlite3.h>

// Gives a connection functions LOWER and LIKE of exactly the meaning of the engine's own,
// ill-formed texts and limits included, that work on UTF-16, as the store has its texts. The
// engine's turn each text into UTF-8 and back, several times for each card of a search. Returns the
// engine's result.
int RegisterSearchFunctions(sqlite3* handle);
