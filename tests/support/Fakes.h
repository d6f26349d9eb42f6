#pragma once

#include <wx/utils.h>

#include <utility>
#include <vector>

#include "base/Job.h"
#include "base/Process.h"
#include "base/Time.h"
#include "scheduler/Scheduler.h"
#include "store/Database.h"
#include "store/Subject.h"

// A clock that stands still until it is moved.
class FakeClock : public Clock {
  public:
    explicit FakeClock(int64_t seconds = 1700000000) : mSeconds(seconds) {}
    wxDateTime Now() const override { return wxDateTime(static_cast<time_t>(mSeconds)); }
    void Advance(int64_t seconds) { mSeconds += seconds; }
    void Set(int64_t seconds) { mSeconds = seconds; }

  private:
    int64_t mSeconds;
};

// Gives the number that it was fed, then one half.
class FakeRandom : public ReviewRandom {
  public:
    float Next() override { return std::exchange(mNumber, 0.5f); }
    void Feed(float number) { mNumber = number; }

  private:
    float mNumber = 0.5f;
};

// Keeps what was reported and lets the failing operation return.
struct RecordingReport : FatalErrorReport {
    void Report(const wxString& text) override { Texts.push_back(text); }
    void DeliverPending() override {}
    std::vector<wxString> Texts;
};

// Waits for the upgrade without a window.
struct SilentUpgradeWait : UpgradeWait {
    void WaitFor(const Job& worker) override {
        while (!worker.IsFinished()) {
            wxMilliSleep(1);
        }
        ++Waits;
    }
    int Waits = 0;
};

struct FakeCategorySource : CategorySource {
    int32_t GetCurrentCategoryId(Database&) override { return Current; }
    int32_t Current = 0;
};

struct SilentMaintenance : MaintenancePrompt {
    void ConfirmStart() override { ++Starts; }
    void TellComplete() override {}
    int Starts = 0;
};

// Counts what it is told of a subject.
class CountingObserver : public Observer {
  public:
    explicit CountingObserver(Subject& subject) : mAttachment(&subject, this) {}
    void Update(Subject*) override { ++Calls; }
    int Calls = 0;

  private:
    SubjectAttachment mAttachment;
};
