#pragma once

#include <wx/string.h>

#include <cstdint>

// What a repair could save, in numbers of rows.
struct RepairReport {
    // Cards that were read.
    int32_t Cards = 0;
    // Those of them that have lost the end of a text longer than a page, and the schedules after
    // it.
    int32_t Shortened = 0;
    // Cards that only indexes still had: their texts, category and place, as new cards.
    int32_t Remade = 0;
    // Cards that an index still names, but without any text left.
    int32_t Lost = 0;
    int32_t Categories = 0;
    // Categories with lost names but saved cards. They are named by number.
    int32_t NamelessCategories = 0;
    // Why the pictures and sounds could not be copied, and where they are; 0 if they were.
    int MediaError = 0;
    wxString MediaLeft;
};

// Puts every row of a damaged store that can still be read into a new store at a free path, with
// the log of reviews and the pictures and sounds. Works on a copy, so that the damaged file and the
// files beside it stay as they are. Returns 0 when the new store is there, even if it is without
// cards, or the system's number of the error with nothing left behind; EILSEQ when nothing of a
// store was found.
int RepairStore(const wxString& damaged, const wxString& target, RepairReport& report);

// Returns the report as whole sentences for the user.
wxString DescribeRepair(const RepairReport& report);
