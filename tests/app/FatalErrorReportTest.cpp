#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "app/AppFatalErrorReport.h"

using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

// Keeps the text where the program would end.
class SurvivingReport : public AppFatalErrorReport {
  public:
    std::vector<wxString> Shown;

  protected:
    void ShowAndEnd(const wxString& text) override {
        Shown.push_back(text);
        // The windows behind the box may fail again; that opens no second one.
        Report("behind");
    }
};

TEST(FatalErrorReport, AWorkerLeavesItsFirstTextToTheMainThread) {
    SurvivingReport report;
    std::thread worker([&report] {
        report.Report("first");
        report.Report("second");
    });
    worker.join();
    EXPECT_THAT(report.Shown, IsEmpty());
    report.DeliverPending();
    report.DeliverPending();
    EXPECT_THAT(report.Shown, ElementsAre("first"));
}

}  // namespace
