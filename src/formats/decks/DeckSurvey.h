#pragma once

#include <wx/string.h>

#include <atomic>
#include <cstdint>
#include <memory>
#include <vector>

#include "formats/CardRecord.h"
#include "formats/decks/Deck.h"

class Database;

// What a deck holds and what of it is lost. The user sees it before anything is written.
struct DeckSurvey {
    int64_t Notes = 0;
    int64_t Cards = 0;
    // The pictures and sounds that come along.
    int64_t Files = 0;
    int64_t FileBytes = 0;
    DeckLosses Losses{};
    std::vector<DeckNoteType> Types;
    // The first card as the import would take it; empty for a deck without cards.
    std::vector<CardAttribute> FirstRecord;
    // Says in a sentence why the deck cannot be read; else empty.
    wxString Failure;
    // Whether the failure is that the deck goes beyond a bound that a person is asked about.
    bool IsTooLarge = false;
};

// The progress of a survey. The main thread may cancel; the reading thread writes the position.
struct SurveyProgress {
    std::atomic<bool> IsCancelled{false};
    // Thousandths.
    std::atomic<int32_t> Position{0};
};

// Reads the whole deck and writes nothing. The database is asked for the first card only.
DeckSurvey SurveyDeck(const std::shared_ptr<DeckFile>& file, DeckOptions options,
                      Database& database, SurveyProgress& progress);

// Returns lines for the user: the numbers of notes and cards, then each loss with its number.
std::vector<wxString> DescribeSurvey(const DeckSurvey& survey);
