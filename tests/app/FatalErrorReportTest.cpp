#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "app/AppReports.h"

namespace {

// Keeps the text where the program would end.
struct SurvivingReport : AppFatalErrorReport {
    std::vector<wxString> Shown;
    void ShowAndEnd(const wxString& text) override {
        Shown.push_back(text);
        // The windows behind the box may fail again; that opens no second one.
        Report("behind");
    }
};

TEST(FatalErrorReport, AWorkerLeavesItsFirstTextToTheMainThread) {
    SurvivingReport report;
    std::thread([&report] {
        report.Report("first");
        report.Report("second");
    }).join();
    EXPECT_TRUE(report.Shown.empty());
    report.DeliverPending();
    report.DeliverPending();
    EXPECT_EQ(report.Shown, std::vector<wxString>{"first"});
}

}  // namespace
