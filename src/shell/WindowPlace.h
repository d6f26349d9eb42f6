#pragma once

#include <wx/gdicmn.h>
#include <wx/string.h>

#include <vector>

class wxTopLevelWindow;

// Where a window lies on the screen when it is neither maximised nor minimised.

// The text form, "x,y,w,h".
wxString FormatPlace(const wxRect& place);
// Returns false, with place unchanged, unless the text is four whole numbers that a screen can
// have.
bool ParsePlace(const wxString& text, wxRect& place);

// The place moved, and made smaller where it must be, until it lies within one of the screens: the
// one that shows most of it, or the first when none does. Unchanged when there is no screen.
wxRect ClampPlace(const wxRect& place, const std::vector<wxRect>& screens);

// The work areas of the screens that exist now.
std::vector<wxRect> ScreenAreas();

// Notes the place of a window from now on until its end, for GetNormalPlace.
void WatchPlace(wxTopLevelWindow& window);
// Puts a watched window at a place; one that is not shown yet comes up there.
void MoveToPlace(wxTopLevelWindow& window, const wxRect& place);
// The last place at which the window was neither maximised nor minimised; of a window that is not
// watched the present one.
wxRect GetNormalPlace(const wxTopLevelWindow& window);
