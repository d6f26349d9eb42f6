#pragma once

#include <string>

struct wl_display;

// Requests an activation token of the desktop, for a window that is called by a start without one.
// The toolkit asks in the name of the last key or press that it saw. A program that lies behind
// others has none to name, and the desktop then takes the token for a forged one and shows nothing.
// This token names none. With it the desktop decides by its own rules: it lets the window come to
// the front, or shows that the window wants to. Returns an empty text where the desktop knows no
// tokens. Apart from Toolkit.cpp, because it speaks to the desktop itself. Main thread only.
std::string RequestWaylandToken(wl_display* display);
