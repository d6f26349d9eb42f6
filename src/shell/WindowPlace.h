#pragma once

#include <wx/gdicmn.h>
#include <wx/string.h>

#include <vector>

class wxTopLevelWindow;

// The place of a window is its rectangle on the screen, frame included and in pixels, while it is
// neither maximised nor minimised. Windows write theirs to the settings when they close and take it
// back at the next start:
//
//     WatchPlace(*this);
//     if (ParsePlace(stored, place)) MoveToPlace(*this, ClampPlace(place, ScreenAreas()));
//     ...
//     stored = FormatPlace(GetNormalPlace(*this));
//
// A window that closes while it is maximised still has a place: the one it would return to.
// WatchPlace notes it in time. Main thread only.

// Returns the stored form, "x,y,w,h"; a study window may have "120,90,640,480".
wxString FormatPlace(const wxRect& place);
// Reads the stored form. Returns false, with place unchanged, unless the text is four whole numbers
// that a screen can have.
bool ParsePlace(const wxString& text, wxRect& place);

// Returns the place moved, and made smaller where it must be, so that it lies within the screen
// that shows most of it, or within the first when none shows any. Returns it unchanged when there
// is no screen.
wxRect ClampPlace(const wxRect& place, const std::vector<wxRect>& screens);

// Returns the areas that the screens of this moment leave to windows.
std::vector<wxRect> ScreenAreas();

// Follows the place of a window from now on until its end, for GetNormalPlace. Harmless when called
// again.
void WatchPlace(wxTopLevelWindow& window);
// Moves a watched window. One that is not shown yet comes up at the place, even if the window
// manager would put it elsewhere.
void MoveToPlace(wxTopLevelWindow& window, const wxRect& place);
// Returns the last place at which the window was neither maximised nor minimised. Returns the
// present place of a window that is not watched.
wxRect GetNormalPlace(const wxTopLevelWindow& window);
