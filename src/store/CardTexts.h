#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "store/CardUuid.h"

// The texts of a card that a command can change in many cards at once.
enum class CardText : uint8_t { kFront, kBack, kNotes, kAuthor, kChapter };
constexpr size_t kCardTextCount = 5;

// What a command does to the texts of one card. The texts are the engine's own, so that even one
// with a broken part is told from another.
struct CardTextChange {
    struct Text {
        CardText Which = CardText::kFront;
        std::u16string Before;
        std::u16string After;
    };

    int64_t RowId = 0;
    // Zero for a card of a damaged store that has no identity.
    CardUuid CardId;
    // In the order of CardText, each once.
    std::vector<Text> Texts;
};
