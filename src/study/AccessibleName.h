#pragma once

#include <wx/string.h>

class wxWindow;

// What a screen reader says of a window that paints itself and so has no words of its own to give.
// Does nothing where the platform offers no such name.
void SetAccessibleName(const wxWindow& window, const wxString& name);
