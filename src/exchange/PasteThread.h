#pragma once

#include <atomic>
#include <cstdint>
#include <vector>

#include "exchange/Worker.h"

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
    void Cancel() override;

  protected:
    void Work() override;

  private:
    void CopyCard(int64_t rowId);

    Database& mDatabase;
    const std::vector<int64_t>& mRowIds;
    bool mCopy;
    int32_t mCategoryId;
    // The number of cards done so far. Written by the worker.
    std::atomic<int32_t> mPosition{0};
    // Written by the main thread.
    std::atomic<bool> mCancelled{false};
};
