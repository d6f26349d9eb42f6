#include "transfer/ProgressDialog.h"

#include "base/Worker.h"
#include "support/GuiTest.h"

namespace {

// A job that does one step a tick. A job of no steps has a range of 0.
struct FakeJob : ProgressSource {
    int32_t GetMinimum() const override { return 100; }
    int32_t GetMaximum() const override { return 100 + 10 * Length; }
    int32_t GetPosition() const override { return Length == 0 ? 100 : 100 + Ticks; }
    bool IsFinished() const override { return Ticks >= Length || Cancelled; }
    void Cancel() override { Cancelled = true; }
    void OnTimer(wxWindow* dialog) override {
        ++Ticks;
        AtTick(*dialog);
    }

    int Length = 10;
    int Ticks = 0;
    bool Cancelled = false;
    std::function<void(wxWindow&)> AtTick = [](wxWindow&) {};
};

TEST(ProgressDialogTest, AJobWithoutLengthEndsAtTheFirstTick) {
    FakeJob job;
    job.Length = 0;
    EXPECT_EQ(ProgressDialog(nullptr, job).ShowModal(), wxID_OK);
    EXPECT_EQ(job.Ticks, 1);
}

TEST(ProgressDialogTest, OnlyTheButtonCancels) {
    FakeJob job;
    int gauge = 0;
    job.AtTick = [&](wxWindow& dialog) {
        gauge = Find<wxGauge>(dialog, ProgressDialog::kGaugeId).GetValue();
        dialog.Close();
        if (job.Ticks == 5) {
            EXPECT_FALSE(job.Cancelled);
            Send(*FindById(dialog, ProgressDialog::kCancelId));
        }
    };
    EXPECT_EQ(ProgressDialog(nullptr, job).ShowModal(), wxID_CANCEL);
    EXPECT_TRUE(job.Cancelled);
    EXPECT_EQ(job.Ticks, 5);
    EXPECT_EQ(gauge, 4);
}

TEST(ProgressDialogTest, AQuestionOfTheJobHoldsItsTicks) {
    FakeJob job;
    job.Length = 2;
    job.AtTick = [&](wxWindow&) {
        const int ticks = job.Ticks;
        EXPECT_FALSE(WaitFor([&] { return job.Ticks != ticks; }, 100));
    };
    EXPECT_EQ(ProgressDialog(nullptr, job).ShowModal(), wxID_OK);
}

}  // namespace
