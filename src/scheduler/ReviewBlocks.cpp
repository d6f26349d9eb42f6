#include "scheduler/ReviewBlocks.h"

namespace {

constexpr int32_t kBlockSize = 4096;
// From here on no further block is opened, far enough below the end of the range.
constexpr int32_t kLastBlock = 0x7FFF0000;

int32_t LowBits(ReviewRandom& random) {
    return static_cast<int32_t>(random.Next() * static_cast<float>(kBlockSize - 1));
}

void StartAgain(Database& database, MaintenancePrompt& prompt) {
    prompt.ConfirmStart();
    // Should it fail, the old numbers stand, and the card at hand gets its low number all the same.
    database.Execute("UPDATE Cards SET ERC=0,RERC=0");
    prompt.TellComplete();
}

}  // namespace

int32_t NextErc(Database& database, int32_t categoryId, int32_t erc, MaintenancePrompt& prompt,
                ReviewRandom& random) {
    int32_t greatest = 0;
    if (database.SelectMaxErc(categoryId, greatest) < 0) {
        greatest = 0;
    }
    const int32_t base = greatest - greatest % kBlockSize;
    if (erc < base) {
        // The card comes from an older block and joins the newest.
        return base + LowBits(random);
    }
    if (base < kLastBlock) {
        // It is in the newest block already and opens the next.
        return base + kBlockSize + LowBits(random);
    }
    StartAgain(database, prompt);
    return LowBits(random);
}
