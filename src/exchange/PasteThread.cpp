#include "exchange/PasteThread.h"

#include <algorithm>

#include "exchange/NewCards.h"
#include "store/CardRow.h"
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
        // A copy has an identity of its own, and so may have what it is made of none.
        FlashCard card;
        bool isRead = false;
        const auto read = [&](const CardRow& row) {
            row.Read(card);
            isRead = true;
        };
        if (mDatabase.VisitCardsByRowId({rowId}, read) == 0 && isRead &&
            GenerateUuid(card.CardId) == 0) {
            card.CategoryId = mCategoryId;
            NoteCopy(card, mChange);
            copies.Add(std::move(card));
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
