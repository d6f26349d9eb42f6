#pragma once

#include <wx/gdicmn.h>
#include <wx/string.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

// Cutting a text into lines, piece by piece.
//
// The text "one two\n\nextraordinary" in a width of seven letters gives the lines
//
//     one two        cut at the line end; the empty line after it is dropped
//     extraor        a word that is wider than a line is cut inside
//     dinary
//
// A card may hold megabytes, so the cutting can stop and go on later: WrappedText remembers where
// it stands, and each call of WrapText takes as much as its limits allow.

// Returns the extent of a text drawn on one line, in pixels.
using TextMeasure = std::function<wxSize(const wxString& text)>;

// One line: its place in the text, in characters, and its width in pixels.
struct TextLine {
    uint32_t Begin = 0;
    uint32_t Length = 0;
    int32_t Width = 0;
};

// The lines of a text as far as it has been cut. The text itself belongs to the caller, who passes
// the same one to each call.
struct WrappedText {
    // Pixels; set by the caller before the first call. -1 is no width.
    int32_t MaxWidth = -1;
    std::vector<TextLine> Lines;
    // Height of the highest line in pixels; 0 while there are no lines.
    int32_t LineHeight = 0;
    // In characters: where the next line begins, where the piece between two line ends that is
    // being cut ends (without white space at its end), and where the piece after it begins.
    size_t Next = 0;
    size_t PieceEnd = 0;
    size_t NextPiece = 0;
    // True when nothing is left to cut.
    bool IsWhole = false;

    int64_t Height() const { return static_cast<int64_t>(Lines.size()) * LineHeight; }
};

// Where a call of WrapText stops. Its cost grows with the characters taken, not with those left.
struct WrapLimits {
    // Stops once the lines are higher than these pixels: enough for a caller who asks whether they
    // fit.
    int64_t Height = INT64_MAX;
    // Stops once as many characters of the text have been taken.
    size_t Characters = SIZE_MAX;
};

// Continues where the last call stopped. Cuts at line ends, between words, and inside a word that
// alone is wider than MaxWidth. Each line takes at least one character, however wide. Empty lines
// are dropped, and so is a text of white space only. The text has at most 4 billion characters.
void WrapText(const wxString& text, const TextMeasure& measure, const WrapLimits& limits,
              WrappedText& wrapped);

// Returns the characters of a line as they are drawn: separators inside it are spaces.
wxString LineText(const wxString& text, const TextLine& line);
