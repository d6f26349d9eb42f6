#pragma once

#include <wx/thread.h>

#include <atomic>
#include <cstdint>
#include <vector>

#include "exchange/ProgressSource.h"

class Database;

// Brings cards into a category on a thread of its own: copies become new cards with the schedule of
// the old, the others move. A card that is gone is passed over. Lives on the main thread, which
// must keep it until the worker has ended; its end cancels what still runs. What was done before a
// cancel stays.
class PasteThread : public wxThread, public ProgressSource {
  public:
    // The database and the row ids are not owned.
    PasteThread(Database& database, const std::vector<int64_t>& rowIds, bool copy,
                int32_t categoryId);
    ~PasteThread() override;

    // Starts the worker, or gives false.
    bool Start();
    // Waits for the worker's end.
    void Join();

    int32_t GetMinimum() const override { return 0; }
    int32_t GetMaximum() const override;
    int32_t GetPosition() const override { return mPosition; }
    bool IsFinished() const override { return mFinished; }
    void Cancel() override;
    void OnTimer(wxWindow* /*dialog*/) override {}

  protected:
    ExitCode Entry() override;

  private:
    void PasteAll();
    void CopyCard(int64_t rowId);

    Database& mDatabase;
    const std::vector<int64_t>& mRowIds;
    bool mCopy;
    int32_t mCategoryId;
    // Index of the present card. Written by the worker.
    std::atomic<int32_t> mPosition{0};
    // Written by the main thread.
    std::atomic<bool> mCancelled{false};
    // Written by the worker, as the last thing it does.
    std::atomic<bool> mFinished{false};
    // The worker was started and not yet waited for.
    bool mStarted = false;
};
