#include "list/RowJob.h"

#include <utility>

void RowJob::Start(Job::Task task, std::function<void()> atEnd) {
    Cancel();
    mAtEnd = std::move(atEnd);
    const int number = ++mNumber;
    const auto finish = [this, number] { CallAfter([this, number] { Finish(number); }); };
    mpJob = std::make_unique<Job>(std::move(task), finish);
    if (!mpJob->Start()) {
        finish();
    }
}

void RowJob::Cancel() {
    mpJob.reset();
    mAtEnd = nullptr;
}

void RowJob::Finish(int number) {
    if (number == mNumber && mpJob != nullptr) {
        mpJob->Join();
        mpJob.reset();
        // The function may start the next task.
        std::exchange(mAtEnd, nullptr)();
    }
}
