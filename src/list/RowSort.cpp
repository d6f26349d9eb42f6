#include "list/RowSort.h"

#include <utility>

#include "store/CardSort.h"

void RowSort::Start(Database& database, CardOrder order, std::vector<int64_t> rowIds, Done done) {
    Cancel();
    mRowIds = std::move(rowIds);
    mIsSorted = false;
    mDone = std::move(done);
    const int number = ++mNumber;
    mpJob = std::make_unique<Job>(
        [this, &database, order](const std::atomic<bool>& isCancelled) {
            mIsSorted = SortByText(database, order, isCancelled, mRowIds);
        },
        [this, number] { CallAfter([this, number] { Finish(number); }); });
    if (!mpJob->Start()) {
        CallAfter([this, number] { Finish(number); });
    }
}

void RowSort::Cancel() {
    mpJob.reset();
    mDone = nullptr;
}

void RowSort::Finish(int number) {
    if (number == mNumber && mpJob != nullptr) {
        mpJob->Join();
        mpJob.reset();
        // The callee may start the next sort.
        std::exchange(mDone, nullptr)(std::move(mRowIds), mIsSorted);
    }
}
