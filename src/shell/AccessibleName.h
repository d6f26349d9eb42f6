#pragma once

#include <wx/string.h>

class wxWindow;

// What a screen reader says of a window that has no words of its own to give: one that paints
// itself, or a control whose label stands beside it. Does nothing where the platform offers no such
// name.
void SetAccessibleName(const wxWindow& window, const wxString& name);

// What kind of control a screen reader says that a window is which paints itself. One of the
// toolkit's own needs no such word.
enum class AccessibleRole { Button, List, Label };
void SetAccessibleRole(const wxWindow& window, AccessibleRole role);
