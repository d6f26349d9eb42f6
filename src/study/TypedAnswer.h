#pragma once

#include <wx/string.h>

#include <vector>

// Compares an answer that the user typed with the side of the card that it stands for. Only texts,
// no window.
//
// Letters are those that a reader sees: a letter with its marks is one, composed or not. White
// space counts as one space, and typographic apostrophes, quotes and dashes count as the plain
// ones, which keyboards have. A side such as "hello, good day" offers several answers: it is
// compared as a whole and piece by piece, and the nearest counts.

// A run of letters of one kind.
struct AnswerPart {
    enum Kind {
        Same,
        // Differs in accents, case or width only, such as "e" for "é".
        Near,
        Wrong,
        // Not typed.
        Missing,
        // Typed, but not in the answer.
        Extra
    };
    Kind What = Same;
    // Empty for Missing.
    wxString Typed;
    // Empty for Extra.
    wxString Right;
};

struct AnswerCheck {
    std::vector<AnswerPart> Parts;
    // Letters of the answer, of which so many are wrong, missing or too much.
    int Letters = 0;
    int Errors = 0;
    bool IsNear = false;

    // The score that the cursor stands on, which the user may still change: 4 for the right answer,
    // 3 when only accents or case differ, 2 when at most a quarter of the letters are wrong, 1 when
    // at most half are, and else 0. Never 5: whether there was hesitation only the user knows.
    int ProposedScore() const;
    // Says the differences for those who do not see the marks.
    wxString InWords() const;
};

// Texts of many thousand letters are compared at their beginning only, which keeps the time short.
AnswerCheck CheckAnswer(const wxString& typed, const wxString& side);
