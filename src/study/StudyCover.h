#pragma once

#include <wx/bitmap.h>
#include <wx/colour.h>

// The picture that hides the back of a card: one pixel wide and 256 high, from the first colour at
// the top to the second at the bottom, to be stretched over whatever it covers.
wxBitmap MakeStudyCover(const wxColour& top, const wxColour& bottom);
