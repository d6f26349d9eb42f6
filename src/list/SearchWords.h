#pragma once

#include <wx/string.h>

#include "store/SearchQuery.h"

// How a search reads in the texts of the list window. A pair of its own, as the menu of the search
// field and the heading of a print share it.

// Returns what the menu of the search calls a state, such as "Due Cards".
wxString NameOfState(CardState state);

// Returns what a search asks for in words a reader knows who does not know those of the field:
//
//     ecole -notes:x due<7d     "ecole", not Notes: "x", Next Review < 7 days
//
// Empty for a search that finds every card.
wxString SearchInWords(const SearchQuery& query);
