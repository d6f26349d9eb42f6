#pragma once

#include <wx/event.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

#include "base/Job.h"
#include "store/Database.h"

// Sorts the rows of a long list by a text, on a worker, while the list shows them in another order.
// The object belongs to the main thread; its destructor ends the worker.
class RowSort : private wxEvtHandler {
  public:
    // Gets the sorted row ids; isSorted is false, with the row ids as they were given, where they
    // could not be sorted.
    using Done = std::function<void(std::vector<int64_t> rowIds, bool isSorted)>;

    RowSort() = default;
    ~RowSort() override { Cancel(); }

    // Starts to sort and calls back from the event loop, unless another sort or a cancel comes
    // before. The store must stay until then.
    void Start(Database& database, CardOrder order, std::vector<int64_t> rowIds, Done done);
    // Returns soon; there is no call back then.
    void Cancel();
    bool IsRunning() const { return mpJob != nullptr; }

  private:
    void Finish(int number);

    // The worker has them until it has ended.
    std::vector<int64_t> mRowIds;
    bool mIsSorted = false;
    Done mDone;
    // Counts the sorts, so that the late call of one that was cancelled is known.
    int mNumber = 0;
    std::unique_ptr<Job> mpJob;
};
