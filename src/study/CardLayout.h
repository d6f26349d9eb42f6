#pragma once

#include <wx/gdicmn.h>

#include <cstdint>

// Where the two sides of a card stand on their common scrolling surface. A line of one pixel
// divides them.
struct CardLayout {
    int32_t VirtualHeight = 0;
    wxRect First;
    wxRect Second;
};

// Width at which the text of a side is wrapped in a window of that width.
int32_t CardColumnWidth(wxOrientation orientation, int32_t width);

// Height that the texts of both sides take together.
int32_t CardHeightNeeded(wxOrientation orientation, int32_t firstHeight, int32_t secondHeight);

// Places the sides. wxVERTICAL: the first above the second, each with half of the window while the
// texts are short; wxHORIZONTAL: the first left of the second. Client is what the scroll bar leaves
// of the window; the heights are those of the texts.
CardLayout ArrangeCard(wxOrientation orientation, const wxSize& client, int32_t firstHeight,
                       int32_t secondHeight);
