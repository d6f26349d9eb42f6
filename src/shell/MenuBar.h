#pragma once

#include <wx/string.h>

#include <memory>

class wxContextMenuEvent;
class wxFrame;
class wxMenu;
class wxMenuBar;
class wxWindow;

// The one menu structure that all windows share, in full.
wxMenuBar* BuildMenuBar();

// The pop-up menu of a card, for the viewer and the list.
std::unique_ptr<wxMenu> BuildCardMenu();

// Shows a context menu: where the mouse was pressed, or in the corner of the window when a key
// asked for it.
void PopUpMenu(wxWindow& window, wxMenu& menu, const wxContextMenuEvent& event);

// The shared setup of a top-level window, first in its constructor: font, menu bar less the entries
// that no window offers, background. The topic is the window's name in the help.
void InitFrame(wxFrame& frame, const wxString& topic);

// Deletes an entry, and a separator that the deletion has left first, last or doubled.
void RemoveMenuItem(wxMenuBar& bar, int id);

// Deletes the whole menu that holds an entry.
void RemoveMenuOf(wxMenuBar& bar, int id);
