#pragma once

#include <wx/gdicmn.h>
#include <wx/string.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

// The extent of a text on one line, in pixels.
using TextMeasure = std::function<wxSize(const wxString& text)>;

// One line: where it stands in its text, in characters, and how wide it is in pixels.
struct TextLine {
    uint32_t Begin = 0;
    uint32_t Length = 0;
    int32_t Width = 0;
};

// A text cut into the lines of a width, as far as one has come. The text itself belongs to the
// caller, who hands over the same one each time.
struct WrappedText {
    // -1 before the first line was asked for.
    int32_t MaxWidth = -1;
    std::vector<TextLine> Lines;
    // The height of the highest line, in pixels; 0 without lines.
    int32_t LineHeight = 0;
    // Where to go on, where the piece in hand ends without the white space behind it, and where the
    // next one begins.
    size_t Next = 0;
    size_t PieceEnd = 0;
    size_t NextPiece = 0;
    // Nothing is left to cut.
    bool IsWhole = false;

    int64_t Height() const { return static_cast<int64_t>(Lines.size()) * LineHeight; }
};

// How far to go on. The cost grows with the characters taken and not with those left.
struct WrapLimits {
    // Stops once the lines are higher than these pixels: for a caller who only asks whether they
    // fit.
    int64_t Height = INT64_MAX;
    // Stops once as many characters of the text have been taken.
    size_t Characters = SIZE_MAX;
};

// Goes on cutting a text of at most 4 billion characters at its line ends and between words, and a
// word that alone is wider than MaxWidth inside the word. Each line takes at least one character,
// whatever its width. Empty lines are dropped, and so is a text of white space only.
void WrapText(const wxString& text, const TextMeasure& measure, const WrapLimits& limits,
              WrappedText& wrapped);

// The characters of a line as they are drawn.
wxString LineText(const wxString& text, const TextLine& line);
