#pragma once

#include <wx/gdicmn.h>
#include <wx/string.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

// The extent of a text on one line, in pixels.
using TextMeasure = std::function<wxSize(const wxString& text)>;

// A text cut into lines. LineWidths has one entry for each line.
struct WrappedText {
    std::vector<wxString> Lines;
    std::vector<int32_t> LineWidths;
    // Of the highest line; 0 without lines.
    int32_t LineHeight = 0;
};

// Cuts a text at its line ends and between words, and a word that alone is wider than maxWidth
// inside the word. Each line takes at least one character, whatever its width. Empty lines are
// dropped, and so is a text of white space only. Once more than lineLimit lines are found the rest
// of the text is left out: for a caller who only asks whether the lines are that many.
WrappedText WrapText(const wxString& text, int32_t maxWidth, const TextMeasure& measure,
                     size_t lineLimit = SIZE_MAX);
