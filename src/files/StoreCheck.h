#pragma once

#include <wx/string.h>

#include <vector>

// Finds everything that is wrong with a store file: pages and indexes that the engine finds
// damaged, missing tables and columns, and rows that mean nothing. Only reads, under the engine's
// own lock, so it can check a store in use too. Returns each fault as a text for the user; none for
// a good store.
std::vector<wxString> CheckStoreFile(const wxString& path);
