#pragma once

// Asks the desktop's toolkit to draw the pictures of menu entries, which some hide by default.
// Harmless when called again; does nothing where the toolkit has no such setting.
void ShowMenuPictures();
