#include "exchange/PasteThread.h"

#include <algorithm>
#include <list>

#include "exchange/NewCards.h"
#include "store/Database.h"
#include "store/Statement.h"

namespace {

// The number of cards that one statement moves.
constexpr size_t kMovedAtOnce = 256;

}  // namespace

PasteThread::PasteThread(Database& database, const std::vector<int64_t>& rowIds, bool copy,
                         int32_t categoryId)
    : mDatabase(database), mRowIds(rowIds), mCopy(copy), mCategoryId(categoryId) {}

PasteThread::~PasteThread() {
    PasteThread::Cancel();
}

int32_t PasteThread::GetMaximum() const {
    return static_cast<int32_t>(mRowIds.size());
}

void PasteThread::Work() {
    const StoreReadLock lock(mDatabase);
    if (mCopy) {
        CopyCards();
    } else {
        MoveCards();
    }
}

// The store reports each card that it cannot read or refuses; the others are still copied.
void PasteThread::CopyCards() {
    NewCards copies(mDatabase);
    for (const int64_t rowId : mRowIds) {
        if (IsCancelled()) {
            break;
        }
        std::list<FlashCard> cards;
        if (mDatabase.SelectCardByRowId(rowId, cards) == 0 && !cards.empty() &&
            GenerateUuid(cards.front().CardId) == 0) {
            cards.front().CategoryId = mCategoryId;
            NoteCopy(cards.front(), mChange);
            copies.Add(std::move(cards.front()));
        }
        while (copies.IsFull()) {
            copies.Write();
        }
        ++mPosition;
    }
    while (!copies.IsEmpty()) {
        copies.Write();
    }
}

// The store reports each card that it cannot move; the others are still moved.
void PasteThread::MoveCards() {
    for (auto card = mRowIds.begin(); card != mRowIds.end() && !IsCancelled();) {
        const auto left = static_cast<size_t>(mRowIds.end() - card);
        const auto count = static_cast<std::ptrdiff_t>(std::min(left, kMovedAtOnce));
        const std::vector<int64_t> group(card, card + count);
        if (NoteMove(mDatabase, group, mCategoryId, mChange) == 0) {
            mDatabase.CardsUpdateCategory(group, mCategoryId);
        }
        card += count;
        mPosition += static_cast<int32_t>(count);
    }
}
