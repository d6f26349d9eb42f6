#pragma once

#include <wx/string.h>

class wxListCtrl;
class wxWindow;

// The child of a list control that draws the rows and has the keyboard focus; it covers whatever
// else stands in the control.
wxWindow& GetRowsWindow(wxListCtrl& list);

// Gives the headings of the columns the desktop's own font again, to which their height is bound,
// after the list was given another one.
void KeepHeadingFont(wxListCtrl& list);

// Lets a screen reader say the row that the keys act on, or what the list is of when that is empty.
void TellRow(wxListCtrl& list, const wxString& row, const wxString& whole);
