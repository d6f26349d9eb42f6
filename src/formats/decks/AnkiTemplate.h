#pragma once

#include <wx/string.h>

#include <cstddef>
#include <memory>
#include <set>
#include <vector>

#include "formats/decks/DeckBounds.h"

// Reads what Anki's card templates say about the fields of a note. A template is a page of HTML
// with names in double braces, such as
//
//   {{#Hint}}<i>{{hint:Hint}}</i>{{/Hint}} {{furigana:Word}}
//
// which shows the field Word with its readings, and before it, where the note has one, the field
// Hint shown after a click. Only the fields count here; the page around them does not.

// A field that a template shows.
struct ShownField {
    enum class Filter { kNone, kFurigana, kKana, kKanji, kCloze };
    // The field shows only where these other fields are filled, and those empty.
    struct Conditions {
        FieldBits Filled;
        FieldBits Empty;
    };

    size_t Field = 0;
    Filter How = Filter::kNone;
    // True when shown after a click, or for a box to type in.
    bool IsHint = false;
    bool IsTyped = false;
    // Shared with its neighbours; null for none.
    std::shared_ptr<const Conditions> Within;
};

// The fields of a template in their order. Names that no field has are left out. There are no more
// names than kMostFields.
std::vector<ShownField> ParseTemplate(const wxString& source,
                                      const std::vector<wxString>& fieldNames);

// A text with readings in brackets after their bases, such as "漢字[かんじ]": once without the
// readings, once with the readings alone. The reading is empty where the text has none.
struct FuriganaText {
    wxString Base;
    wxString Reading;
};
FuriganaText ReadFurigana(const wxString& text);

// One card of a text with deletions, such as "{{c1::Paris}} is in {{c2::France::land}}", as HTML:
// the question with "[...]" or a hint in place of the deletions of that number, the hidden parts,
// and the whole text.
struct ClozeCard {
    wxString Question;
    std::vector<wxString> Hidden;
    wxString Whole;
};
ClozeCard MakeClozeCard(const wxString& text, int number);
// Returns the numbers that the deletions of a text have.
std::set<int> FindClozeNumbers(const wxString& text);
