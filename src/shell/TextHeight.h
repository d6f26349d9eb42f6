#pragma once

class wxWindow;

// Makes every field of one line in a window as high as the platform draws it with its font; the
// toolkit takes too little room, the less the larger the font is. Called before the window is laid
// out, and after a change of the fields' font.
void FitTextHeights(wxWindow& window);
