#pragma once

#include <wx/string.h>

#include <cstdint>
#include <memory>

#include "decks/Deck.h"

// Opens the collection of an Anki package, a database file that does not change meanwhile. Null and
// the reason when it is none or is too new. The format's facts are in docs/DECKS.md.
std::unique_ptr<Deck> OpenAnkiDeck(const wxString& path, const DeckOptions& options,
                                   wxString& message);

// A row of Anki's cards with the last answer that its log has. Times are seconds since 1970.
struct AnkiCard {
    int64_t RowId = 0;
    int64_t NoteId = 0;
    int64_t Deck = 0;
    int64_t HomeDeck = 0;
    int64_t Number = 0;
    int64_t Changed = 0;
    // 0 new, 1 learning, 2 review, 3 learning again.
    int64_t Type = 0;
    // -1 is suspended, -2 and -3 are buried.
    int64_t Queue = 0;
    // A place among the new, seconds, or days since the collection was made.
    int64_t Due = 0;
    int64_t HomeDue = 0;
    // Days, or negative seconds.
    int64_t Interval = 0;
    // Thousandths.
    int64_t Ease = 0;
    // -1 where no answer is known.
    int64_t LastReview = -1;
    // 1 to 4, or 0.
    int64_t LastAnswer = 0;
};

// The schedule that such a card has here. Sets clamped when its interval had to be shortened.
CardSchedule MakeAnkiSchedule(const AnkiCard& card, int64_t created, int64_t now, bool& clamped);
