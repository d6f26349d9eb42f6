#pragma once

#include <wx/string.h>

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

// A text or a regular expression, and what takes its place. The expressions are those of the
// windowing library, which uses the same engine (PCRE2). They are asked of the engine itself:
// through the library, a search that goes on within a text sees nothing of what stands before it,
// so that \b and look-behind find too much; the library tells no place of a fault, and no limit
// ends an expression that runs away.
//
// The texts are the database engine's own UTF-16. A broken part of one matches nothing and stays.
class TextPattern {
  public:
    struct Options {
        // What is looked for is a regular expression, and what takes its place may hold groups
        // ($1, \1, ${name}) and the line break \n. Else both are plain texts.
        bool IsExpression = false;
        bool MatchCase = false;
        // Letters, digits and _ may stand neither before nor after a hit.
        bool WholeWords = false;
        // What takes the place of a capital letter, or of several, begins with one or has only
        // such. Means nothing for an expression, or where the case has to match.
        bool KeepCapitals = false;
    };

    // What is wrong with an expression or what takes its place.
    struct Fault {
        // The engine's words; empty for no fault.
        wxString Message;
        bool IsInReplacement = false;
        // The characters before the faulty place.
        size_t Place = 0;
    };

    enum class Outcome { kNoHit, kReplaced, kFault };

    TextPattern();
    ~TextPattern();
    TextPattern(const TextPattern&) = delete;
    TextPattern& operator=(const TextPattern&) = delete;

    // Takes what to look for, which is not empty. Returns false with a fault.
    bool Set(const wxString& wanted, const wxString& replacement, const Options& options,
             Fault& fault);

    // Replaces each hit in the text. Returns kFault when the expression takes too long, or when
    // what takes its place is wrong, which only a hit shows. One thread at a time.
    Outcome Replace(std::u16string_view text, std::u16string& result, Fault& fault) const;

  private:
    struct Engine;

    std::unique_ptr<Engine> mpEngine;
    std::u16string mReplacement;
    // True where what takes the place of a hit is more than a plain text.
    bool mIsTemplate = false;
};
