#pragma once

#include <wx/string.h>

// A stored card side may hold a second text, such as a reading, behind the main text: on a line of
// its own in the brackets U+3010 and U+3011.

bool HasSecondText(const wxString& text);
// Without a second text, main becomes the whole text and second becomes empty.
void SplitSecondText(const wxString& text, wxString& main, wxString& second);
// An empty second text leaves no trace.
wxString JoinSecondText(const wxString& main, const wxString& second);
