#include "scheduler/ReviewBlocks.h"

namespace {

constexpr int32_t kBlockSize = 4096;
// From here on no further block is opened, far enough below the end of the range.
constexpr int32_t kLastBlock = 0x7FFF0000;

int32_t LowBits(ReviewRandom& random) {
    return static_cast<int32_t>(random.Next() * static_cast<float>(kBlockSize - 1));
}

void StartAgain(Database& database, FlashCard& card, MaintenancePrompt& prompt) {
    prompt.ConfirmStart();
    // Should it fail, the old numbers stand, and the card at hand gets its low number all the same.
    if (database.Execute("UPDATE Cards SET ERC=0,RERC=0") >= 0) {
        card.Forward.ERC = card.Reverse.ERC = 0;
    }
    prompt.TellComplete();
}

}  // namespace

void RenumberCard(Database& database, int32_t categoryId, FlashCard& card,
                  ReviewDirection direction, MaintenancePrompt& prompt, ReviewRandom& random) {
    int32_t greatest = 0;
    if (database.SelectMaxErc(categoryId, greatest) < 0) {
        greatest = 0;
    }
    int32_t block = greatest - greatest % kBlockSize;
    int32_t& erc = ScheduleOf(card, direction).ERC;
    // A card from an older block joins the newest; one that is there already opens the next.
    if (erc >= block && block < kLastBlock) {
        block += kBlockSize;
    } else if (erc >= block) {
        StartAgain(database, card, prompt);
        block = 0;
    }
    erc = block + LowBits(random);
}
