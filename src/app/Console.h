#pragma once

#include <wx/string.h>

// A line on standard output or standard error, the latter with the program's name before it.
void PrintLine(const wxString& text);
void PrintError(const wxString& text);
