#include "exchange/PasteThread.h"

#include <list>

#include "exchange/NewCards.h"
#include "store/Database.h"
#include "store/Statement.h"

PasteThread::PasteThread(Database& database, const std::vector<int64_t>& rowIds, bool copy,
                         int32_t categoryId)
    : mDatabase(database), mRowIds(rowIds), mCopy(copy), mCategoryId(categoryId) {}

PasteThread::~PasteThread() {
    PasteThread::Cancel();
}

int32_t PasteThread::GetMaximum() const {
    return static_cast<int32_t>(mRowIds.size());
}

void PasteThread::Cancel() {
    mCancelled = true;
    Join();
}

void PasteThread::Work() {
    const StoreReadLock lock(mDatabase);
    NewCards copies(mDatabase);
    for (const int64_t rowId : mRowIds) {
        if (mCancelled) {
            break;
        }
        if (mCopy) {
            CopyCard(rowId, copies);
        } else {
            // A failure is reported by the store, and the others go on.
            mDatabase.CardUpdateCategory(rowId, mCategoryId);
        }
        ++mPosition;
    }
    WriteCopies(copies);
}

// The store reports each card that it refuses, and the others go on.
void PasteThread::WriteCopies(NewCards& copies) {
    while (!copies.IsEmpty()) {
        copies.Write();
    }
}

// The store reports a card that it cannot read.
void PasteThread::CopyCard(int64_t rowId, NewCards& copies) {
    std::list<FlashCard> cards;
    if (mDatabase.SelectCardByRowId(rowId, cards) < 0 || cards.empty()) {
        return;
    }
    FlashCard& card = cards.front();
    if (GenerateUuid(card.CardId) != 0) {
        return;
    }
    card.CategoryId = mCategoryId;
    copies.Add(std::move(card));
    if (copies.IsFull()) {
        WriteCopies(copies);
    }
}
