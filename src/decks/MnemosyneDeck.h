#pragma once

#include <wx/string.h>

#include <memory>

#include "decks/Deck.h"

// Opens the cards of Mnemosyne: the list that is in a package, and the database of the program.
// Null and the reason when it is none. The facts of a deck are kept in memory. The format's facts
// are in docs/DECKS.md.
std::unique_ptr<Deck> OpenMnemosyneXml(const wxString& path, const wxString& name,
                                       const DeckOptions& options, wxString& message);
std::unique_ptr<Deck> OpenMnemosyneStore(const wxString& path, const wxString& name,
                                         const DeckOptions& options, wxString& message);
