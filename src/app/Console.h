#pragma once

#include <wx/string.h>

// Text on standard output, as it stands.
void PrintText(const wxString& text);

// A line on standard error, behind the program's name.
void PrintError(const wxString& text);
