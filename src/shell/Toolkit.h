#pragma once

#include <wx/string.h>

class wxListCtrl;
class wxWindow;

#ifdef __WXGTK__

#include <wx/dynlib.h>

// A function of the platform's own toolkit, or null. It is in the process already, since our
// windows stand on it; the few functions that we call are looked up there, so that the build needs
// none of its headers.
template <class Function>
Function FindToolkitFunction(const char* name) {
    return reinterpret_cast<Function>(
        wxDynamicLibrary::RawGetSymbol(wxDynamicLibrary::GetProgramHandle(), name));
}

#endif

// What a screen reader says of a window that has no words of its own to give: one that paints
// itself, or a control whose label stands beside it. Does nothing where the platform offers no such
// name.
void SetAccessibleName(const wxWindow& window, const wxString& name);

// What kind of control a screen reader says that a window is which paints itself. One of the
// toolkit's own needs no such word.
enum class AccessibleRole { Button, List, Label };
void SetAccessibleRole(const wxWindow& window, AccessibleRole role);

// Makes every field of one line in a window as high as the platform draws it with its font; the
// toolkit takes too little room, the less the larger the font is. Called before the window is laid
// out, and after a change of the fields' font.
void FitTextHeights(wxWindow& window);

// Asks the desktop's toolkit to draw the pictures of menu entries, which some hide by default.
// Harmless when called again; does nothing where the toolkit has no such setting.
void ShowMenuPictures();

// The child of a list control that draws the rows and has the keyboard focus; it covers whatever
// else stands in the control.
wxWindow& GetRowsWindow(wxListCtrl& list);

// Gives the headings of the columns the desktop's own font again, to which their height is bound,
// after the list was given another one.
void KeepHeadingFont(wxListCtrl& list);

// Lets a screen reader say the row that the keys act on, or what the list is of when that is empty.
void TellRow(wxListCtrl& list, const wxString& row, const wxString& whole);
