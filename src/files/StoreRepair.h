#pragma once

#include <wx/string.h>

#include <cstdint>

// What a repair could save. The numbers are of rows.
struct RepairReport {
    // Cards that were read.
    int32_t Cards = 0;
    // How many of those have lost the end of a text longer than a page, and what lies behind it:
    // the schedules.
    int32_t Shortened = 0;
    // Cards of which only indexes were left: their texts, category and place, as new cards.
    int32_t Remade = 0;
    // Cards that an index still names and of which no text was left.
    int32_t Lost = 0;
    int32_t Categories = 0;
    // Categories whose names are lost, while cards of theirs were saved. They are named by number.
    int32_t NamelessCategories = 0;
};

// Puts every row that can still be read of a damaged store into a new store at a path where nothing
// is. Works on a copy, which is taken first, so that the damaged file and what is beside it stay as
// they are; the copy is removed in the end. Returns 0 when the new store is there, even if it is
// without cards, or the system's number of the error with nothing left behind; EILSEQ when nothing
// of a store was found.
int RepairStore(const wxString& damaged, const wxString& target, RepairReport& report);

// Returns the report as whole sentences for the user.
wxString DescribeRepair(const RepairReport& report);
