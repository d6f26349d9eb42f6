#pragma once

#include <bitset>
#include <cstddef>
#include <cstdint>

#include "store/FlashCard.h"

class StatementRun;

// A part of a card that an edit can change by itself. The texts and the order stand first, in the
// order of the editor's fields; the parts of both schedules have the same order.
enum class CardPart : size_t {
    kFront,
    kBack,
    kCategory,
    kAuthor,
    kChapter,
    kNotes,
    kIntroductionOrder,
    kForwardX,
    kReverseX,
    kIntroduced,
    kReviewInterval,
    kDifficulty,
    kLastScore,
    kLastReview,
    kErc,
    kReverseIntroduced,
    kReverseReviewInterval,
    kReverseDifficulty,
    kReverseLastScore,
    kReverseLastReview,
    kReverseErc
};
constexpr size_t kCardPartCount = static_cast<size_t>(CardPart::kReverseErc) + 1;
using CardParts = std::bitset<kCardPartCount>;

inline bool HasPart(const CardParts& parts, CardPart part) {
    return parts.test(static_cast<size_t>(part));
}
inline void AddPart(CardParts& parts, CardPart part) {
    parts.set(static_cast<size_t>(part));
}

// What many cards have in common.
struct CommonCard {
    // The cards that were found.
    int32_t Count = 0;
    // Has a value in each part that is the same in all of them. It has no identity.
    FlashCard Card;
    // The parts that differ.
    CardParts Several;
};

// Returns the column of the part, and whether it is a text.
const char* ColumnOfPart(CardPart part);
bool IsTextPart(CardPart part);

// Returns the parts in which two cards differ.
CardParts FindDifferences(const FlashCard& one, const FlashCard& other);
void CopyParts(const FlashCard& from, const CardParts& parts, FlashCard& to);

// Binds a part to the next parameter of a run. Returns 0 or -1.
int BindPart(StatementRun& run, CardPart part, const FlashCard& card);
// Reads a part from a column of the present row.
void ReadPart(const StatementRun& run, int column, CardPart part, FlashCard& card);
