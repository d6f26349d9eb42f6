#pragma once

#include <wx/string.h>

#include <vector>

// Looks through a store file for everything that is wrong with it: pages and indexes that the
// engine finds damaged, tables and columns that are missing, and rows that mean nothing. Reads
// only, under the engine's own lock, so that a store in use can be looked at too. Returns each
// fault as a text for the user; none for a good store.
std::vector<wxString> CheckStoreFile(const wxString& path);
