#pragma once

#include <wx/string.h>

#include <memory>

class wxContextMenuEvent;
class wxFrame;
class wxMenu;
class wxMenuBar;
class wxWindow;

// Builds the whole menu structure that all windows share. The caller owns the bar until a frame
// takes it.
wxMenuBar* BuildMenuBar();

// Builds the pop-up menu of a card, for the viewer and the list.
std::unique_ptr<wxMenu> BuildCardMenu();

// Builds the pop-up menu of the list of categories.
std::unique_ptr<wxMenu> BuildCategoryMenu();

// Shows a context menu at the mouse, or in the corner of the window if a key asked for it.
void PopUpMenu(wxWindow& window, wxMenu& menu, const wxContextMenuEvent& event);

// Adds the entries that only the study window has, to the menu that changes between the windows.
void AddStudyEntries(wxMenuBar& bar);

// Sets up a top-level window; call it first in the constructor. Gives it the font, the menu bar
// without the entries that no window offers, the icons and the background. The topic is the name of
// the window in a help system, which no build has yet.
void InitFrame(wxFrame& frame, const wxString& topic);

// Deletes a menu entry, and a separator that the deletion leaves first, last or doubled. Does
// nothing if the bar has no such entry.
void RemoveMenuItem(wxMenuBar& bar, int id);

// Deletes the whole menu that holds an entry, if there is one.
void RemoveMenuOf(wxMenuBar& bar, int id);
