#pragma once

#include <wx/string.h>

#include <cstdint>

// A named group of cards. Ids are the smallest unused numbers from 0.
struct Category {
    int32_t Id = -1;
    wxString Name;
};
