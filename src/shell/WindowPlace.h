#pragma once

#include <wx/gdicmn.h>
#include <wx/string.h>

#include <vector>

class wxTopLevelWindow;

// The place of a window, in pixels. Windows write theirs to the settings when they close and take
// it back at the next start (RestoreWindowPosition in Settings.h):
//
//     WatchPlace(*this);
//     MoveToPlace(*this, {ClampPlace(stored, ScreenAreas()), storedMaximised});
//     ...
//     const WindowPlace place = GetPlace(*this);
//
// A window that closes while it is maximised, or fitted to half of the screen by the desktop, still
// has a place: the one it would return to. WatchPlace notes it in time. Main thread only.
struct WindowPlace {
    // The corner of the frame and the size inside it while the window is free. The corner is 0,0 on
    // a desktop that keeps the places of windows to itself.
    wxRect Free;
    // The user left the window maximised.
    bool Maximised = false;
};

// Returns the stored form of a corner and a size, "x,y,w,h"; a study window may have
// "120,90,640,480".
wxString FormatPlace(const wxRect& place);
// Reads that form. Returns false, with place unchanged, unless the text is four whole numbers that
// a screen can have.
bool ParsePlace(const wxString& text, wxRect& place);

// Returns the stored form of what needs no corner, "640,480" or "640,480,maximised". It has a key
// of its own because earlier versions read exactly four numbers under the other.
wxString FormatSize(const WindowPlace& place);
// Reads that form. Returns false, with place unchanged, when the text is another one.
bool ParseSize(const wxString& text, WindowPlace& place);

// Returns the place moved, and made smaller where it must be, so that it lies within the screen
// that shows most of it, or else within the first. Returns it unchanged when there is no screen.
wxRect ClampPlace(const wxRect& place, const std::vector<wxRect>& screens);

// Returns the areas that the screens of this moment leave to windows.
std::vector<wxRect> ScreenAreas();

// Follows the place of a window from now on until its end, for GetPlace, and keeps the size it was
// made with free of frame and shadows. Harmless when called again.
void WatchPlace(wxTopLevelWindow& window);
// Moves a watched window. A window not shown yet comes up at the place, even against the window
// manager, and maximised if it was; one that is shown keeps that state.
void MoveToPlace(wxTopLevelWindow& window, const WindowPlace& place);
// Returns the present place of a window, or the last one at which it was free.
WindowPlace GetPlace(const wxTopLevelWindow& window);

// Gives a watched, hidden window the size of the shown one that it replaces, and maximises it
// alike. Does nothing where windows have places of their own.
void TakeTurnOf(const wxTopLevelWindow& shown, wxTopLevelWindow& window);
