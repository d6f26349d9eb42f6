#pragma once

#include <wx/string.h>

#include <string_view>

// A stored card side may hold a second text, such as a reading, behind the main text: on a line of
// its own in the brackets U+3010 and U+3011.

// The two texts of a side, which are parts of it.
struct SplitSide {
    std::u16string_view Main;
    std::u16string_view Second;
};

bool HasSecondText(std::u16string_view side);
// Without a second text, the main text is the whole side and the second is empty.
SplitSide SplitSecondText(std::u16string_view side);
// An empty second text leaves no trace.
wxString JoinSecondText(const wxString& main, const wxString& second);
