#pragma once

class wxScrolledWindow;

// Lets a form that is higher than its window follow the keyboard and the wheel: whatever gets the
// focus comes into view together with its label, and the wheel scrolls the form by lines of text
// wherever in it the mouse is. Called once all controls stand in the form, which scrolls by single
// pixels.
void LetFormScroll(wxScrolledWindow& form);
