#pragma once

#include <atomic>
#include <cstdint>
#include <utility>
#include <vector>

#include "base/Worker.h"
#include "store/UndoHistory.h"

class Database;

// Pastes cards into a category on a thread of its own. Copied cards become new ones with the
// schedules of the old ones; cut cards move. Cards that are gone are skipped. A cancel, which the
// destructor does too, keeps what was done before it.
class PasteThread : public Worker {
  public:
    // The database and the row ids are not owned.
    PasteThread(Database& database, const std::vector<int64_t>& rowIds, bool copy,
                int32_t categoryId);
    ~PasteThread() override;

    int32_t GetMaximum() const override;
    int32_t GetPosition() const override { return mPosition; }

    // Hands over what was done, for an undo. Call it once the worker has ended.
    StoreChange TakeChange() { return std::move(mChange); }

  protected:
    void Work() override;

  private:
    void CopyCards();
    void MoveCards();

    Database& mDatabase;
    const std::vector<int64_t>& mRowIds;
    bool mCopy;
    int32_t mCategoryId;
    // Belongs to the worker until it has ended.
    StoreChange mChange;
    // The number of cards that were copied or moved so far; the last copies may still be on their
    // way into the store. Written by the worker.
    std::atomic<int32_t> mPosition{0};
};
