#pragma once

#include <wx/string.h>

#include <cstdint>
#include <memory>

#include "formats/decks/AnkiCollection.h"
#include "formats/decks/Deck.h"

// The decks that DeckFile opens. Each function opens a file of its program, which must not change
// meanwhile, or returns null and the reason. The facts of the formats are in docs/DECKS.md.

// The collection of an Anki package.
std::unique_ptr<Deck> OpenAnkiDeck(const wxString& path, const DeckOptions& options,
                                   wxString& message);

// The list of cards in a package of Mnemosyne, and the database of that program. Both keep a deck's
// facts in memory. The name is for a deck that does not name itself.
std::unique_ptr<Deck> OpenMnemosyneXml(const wxString& path, const wxString& name,
                                       const DeckOptions& options, wxString& message);
std::unique_ptr<Deck> OpenMnemosyneStore(const wxString& path, const wxString& name,
                                         const DeckOptions& options, wxString& message);

// Returns the schedule of a card of Anki; the times are seconds since 1970. Sets clamped when its
// interval had to be shortened.
CardSchedule MakeAnkiSchedule(const AnkiCard& card, int64_t created, int64_t now, bool& clamped);
