#pragma once

#include <wx/string.h>

// What is shown of a text that may be of any length and have line breaks in it, on one line and
// bounded, so that drawing is quick and a dialog keeps its size. The store has the whole text.

// For a cell of a list, which cuts what does not fit.
wxString CellText(const wxString& text);

// For a name in a row, a menu or a message; what is left out shows as an ellipsis.
wxString ShownName(const wxString& name);
