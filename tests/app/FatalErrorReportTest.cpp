#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <thread>
#include <utility>
#include <vector>

#include "app/AppFatalErrorReport.h"

using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

// Keeps the text where the program would end.
class SurvivingReport : public AppFatalErrorReport {
  public:
    std::function<void()> WhileShown = [] {};
    std::vector<wxString> Shown;

  protected:
    void ShowAndEnd(const wxString& text) override {
        Shown.push_back(text);
        WhileShown();
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

TEST(FatalErrorReport, AFailureBehindTheBoxOpensNoSecondBox) {
    SurvivingReport report;
    report.WhileShown = [&report] { report.Report("behind"); };
    report.Report("first");
    EXPECT_THAT(report.Shown, ElementsAre("first"));
}

}  // namespace
