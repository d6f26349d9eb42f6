#pragma once

#include <wx/string.h>

// The name, edition and number of the program, "Velomind Mobile 2.5.7.1625".
wxString GetVersionText();
