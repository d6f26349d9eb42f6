#pragma once

#include <wx/bmpbndl.h>
#include <wx/iconbndl.h>
#include <wx/string.h>

// Returns the picture of a command by its path, such as "icons/back_tool.png", in 16 and 32 pixels.
// The pictures are part of the program. Directory, extension and case do not count, and "tool"
// reads as "menu", so that a tool and its menu entry show the same picture. Returns an invalid
// bundle for an unknown name, with no message.
wxBitmapBundle LoadResourceBitmap(const wxString& path);

// Returns the program's own icon in the sizes that window managers ask for, 16 to 128 pixels.
wxIconBundle LoadApplicationIcon();
