#pragma once

#include <cstdint>

#include "scheduler/MaintenancePrompt.h"
#include "scheduler/ReviewDirection.h"
#include "scheduler/ReviewRandom.h"
#include "store/Database.h"

// The ERC number of a card puts the introduced cards of a category into blocks of 4096: the upper
// bits count the blocks, and the low 12 bits are random, so that the cards of a block have a
// shuffled order. Early review takes the lowest number, a card that has waited for the most blocks.
//
// Gives the card the number that it gets at a score in that direction; the caller stores it. When
// the numbers are used up, all cards of the store go back to block 0, this one in both directions,
// while the prompt keeps the person informed.
void RenumberCard(Database& database, int32_t categoryId, FlashCard& card,
                  ReviewDirection direction, MaintenancePrompt& prompt, ReviewRandom& random);
