#pragma once

#include <wx/string.h>

#include <cstdint>

// One attribute of a record as a reader delivers it.
struct CardAttribute {
    // As spelled in the file.
    wxString Name;
    wxString Value;
    // Where it stands in the file, from 1.
    int32_t Line = 0;
};
