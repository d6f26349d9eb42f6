#pragma once

#include <wx/bmpbndl.h>
#include <wx/iconbndl.h>
#include <wx/string.h>

// The picture of a command, by its path ("icons/back_tool.png"), from the resources in the program:
// "tool" reads as "menu", and directory, extension and case do not count, so that a tool and its
// menu entry show the same picture. 16 and 32 pixels square. An unknown name gives an invalid
// bundle and no message.
wxBitmapBundle LoadResourceBitmap(const wxString& path);

// The program's own icon in the sizes that window managers ask for, 16 to 128 pixels.
wxIconBundle LoadApplicationIcon();
