#pragma once

#include <cstdint>
#include <set>
#include <vector>

#include "formats/decks/AnkiCollection.h"
#include "formats/decks/AnkiTemplate.h"
#include "formats/decks/Deck.h"

// How the templates of a kind of note become cards. Found out once for each kind.

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

// What becomes of the notes of a kind.
struct TypePlan {
    std::vector<TemplatePair> Pairs;
    // What somebody has chosen for the fields; empty for none.
    std::vector<FieldRole> Chosen;
    size_t ClozeField = 0;
    // Some template shows the field with its readings.
    std::set<size_t> WithReadings;
    // Fields that only switch others on, such as one that asks for a reverse card.
    std::set<size_t> Switches;
    int64_t Hints = 0;
};

TypePlan MakeTypePlan(const AnkiNoteType& type);

std::set<size_t> FieldSet(const std::vector<ShownField>& shown);
