#pragma once

#include <wx/bitmap.h>
#include <wx/colour.h>

#include <cstdint>

// A square picture of a button with round corners: a gradient from top to bottom, with a drop
// shadow, or pressed in when sunk. The size is in logical pixels; the bitmap has scale times as
// many.
wxBitmap MakeButtonBitmap(int32_t size, const wxColour& background, const wxColour& top,
                          const wxColour& bottom, bool sunk, double scale = 1.0);
