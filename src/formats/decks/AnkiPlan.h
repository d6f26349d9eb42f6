#pragma once

#include <cstdint>
#include <vector>

#include "formats/decks/AnkiCollection.h"
#include "formats/decks/AnkiTemplate.h"
#include "formats/decks/Deck.h"

// Decides, once for each kind of note, how its templates become cards.

constexpr size_t kNoField = static_cast<size_t>(-1);

// Which templates of a type are the two directions of one card.
struct TemplatePair {
    size_t Forward = 0;
    size_t Reverse = kNoField;
    // Templates that ask the same as the forward one.
    std::vector<size_t> Same;
    std::vector<ShownField> Front;
    std::vector<ShownField> Back;
    // A field that both answers show and no question asks.
    std::vector<size_t> Second;
};

struct TypePlan {
    std::vector<TemplatePair> Pairs;
    // The user's choices for the fields; may be empty.
    std::vector<FieldRole> Chosen;
    size_t ClozeField = 0;
    // Fields that some template shows with their readings.
    FieldBits WithReadings;
    // Fields that only switch others on, such as one that asks for a reverse card.
    FieldBits Switches;
    int64_t Hints = 0;
};

TypePlan MakeTypePlan(const AnkiNoteType& type);

// Returns the fields that are shown.
FieldBits FieldSet(const std::vector<ShownField>& shown);
