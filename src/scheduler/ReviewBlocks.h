#pragma once

#include <cstdint>

#include "scheduler/MaintenancePrompt.h"
#include "scheduler/ReviewRandom.h"
#include "store/Database.h"

// The ERC number of a card puts the introduced cards of a category into blocks of 4096: the upper
// bits count the blocks, and the low 12 bits are random, so that the cards of a block have a
// shuffled order. Early review takes the lowest number, a card that has waited for the most blocks.
//
// Gives the number that a card with the number erc gets at a score. When the numbers are used up,
// all cards of the store go back to block 0, while the prompt keeps the person informed.
int32_t NextErc(Database& database, int32_t categoryId, int32_t erc, MaintenancePrompt& prompt,
                ReviewRandom& random);
