#include "base/Job.h"

#include <gmock/gmock.h>

#include <new>
#include <stdexcept>
#include <vector>

#include "base/Worker.h"

namespace {

// A task that threw never counted as ended, and the window that waited for it stayed for ever.
TEST(Job, ATaskThatThrowsEndsWithAMessageAndTheProgramGoesOn) {
    const struct {
        void (*Throw)();
        const char* Message;
    } kRows[] = {
        {[] { throw std::bad_alloc(); }, "There is not enough memory."},
        {[] { std::vector<char>().reserve(SIZE_MAX); }, "There is not enough memory."},
        {[] { throw std::runtime_error("the moon"); }, "Unexpected Error (the moon)"},
        {[] { throw 1; }, "Unexpected Error"},
        {[] {}, ""},
    };
    for (const auto& row : kRows) {
        bool hasEnded = false;
        Job job([&row](const std::atomic<bool>&) { row.Throw(); }, [&] { hasEnded = true; });
        ASSERT_TRUE(job.Start());
        job.Join();
        EXPECT_TRUE(job.IsFinished()) << row.Message;
        EXPECT_TRUE(hasEnded) << row.Message;
        EXPECT_EQ(job.TakeFailure(), row.Message);
        EXPECT_EQ(job.TakeFailure(), "") << row.Message;
    }
}

TEST(Job, ATaskThatWaitsForAnotherFailsWithIt) {
    Job outer([](const std::atomic<bool>&) {
        Job inner([](const std::atomic<bool>&) { throw std::bad_alloc(); });
        inner.RunHere();
        inner.RethrowFailure();
    });
    outer.RunHere();
    EXPECT_TRUE(outer.IsFinished());
    EXPECT_EQ(outer.TakeFailure(), "There is not enough memory.");
}

TEST(Job, TheEndOfTheObjectStopsTheTaskAndWaitsForIt) {
    bool isStopped = false;
    {
        Job job([&isStopped](const std::atomic<bool>& isCancelled) {
            while (!isCancelled) {
                wxThread::Yield();
            }
            isStopped = true;
        });
        ASSERT_TRUE(job.Start());
        EXPECT_FALSE(job.IsFinished());
    }
    EXPECT_TRUE(isStopped);
}

struct TestWorker : Worker {
    explicit TestWorker(std::function<void()> task = [] {}) : Task(std::move(task)) {}
    ~TestWorker() override { Cancel(); }
    int32_t GetMaximum() const override { return 1; }
    int32_t GetPosition() const override { return 0; }
    void Work() override { Task(); }
    void OnFailure(const wxString& message) override { Failures.push_back(message); }
    std::function<void()> Task;
    std::vector<wxString> Failures;
};

TEST(Worker, AFailureIsToldOnce) {
    TestWorker worker([] { throw std::bad_alloc(); });
    ASSERT_TRUE(worker.Start());
    worker.Join();
    worker.Join();
    worker.Cancel();
    EXPECT_THAT(worker.Failures, ::testing::ElementsAre("There is not enough memory."));
}

// A worker that ended while it was being started left its window open for ever.
TEST(Worker, AWorkerThatEndsAtOnceIsFinished) {
    for (int i = 0; i < 5000; ++i) {
        TestWorker worker;
        ASSERT_TRUE(worker.Start());
        worker.Join();
        ASSERT_TRUE(worker.IsFinished()) << i;
    }
}

}  // namespace
