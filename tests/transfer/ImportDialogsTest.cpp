// The faces of an import: progress, the question about a category, the outcome.

#include "exchange/ImportJob.h"
#include "exchange/Worker.h"
#include "transfer/DialogTest.h"
#include "transfer/ImportRun.h"
#include "transfer/ProgressDialog.h"

namespace {

// A job of some steps, one a tick; one of no step has no length.
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

int Show(FakeJob& job) {
    ProgressDialog dialog(nullptr, "Progress", wxSize(400, 300));
    dialog.SetSource(job);
    return dialog.ShowModal();
}

struct ImportDialogs : DialogTest {
    // Imports a file; the progress window runs its course, and each further dialog gets an answer.
    bool Import(const std::string& text, wxWindow* parent, std::initializer_list<int> answers) {
        const ImportInput input{mDirectory.Path("import.txt")};
        WriteBytes(input.FileName, text);
        mAnswers.Dialogs.clear();
        mAnswers.ThenWatch();
        mAnswers.Expect(answers);
        return ImportWithProgress(parent, input, mDatabase, mOrdered, true, nullptr);
    }
};

}  // namespace

TEST(ProgressDialogTest, EndsWithItsJobOrByItsButton) {
    FakeJob empty;
    empty.Length = 0;
    EXPECT_EQ(Show(empty), wxID_OK);
    EXPECT_EQ(empty.Ticks, 1);

    FakeJob job;
    int gauge = 0;
    job.AtTick = [&](wxWindow& dialog) {
        gauge = Find<wxGauge>(dialog, 10031).GetValue();
        dialog.Close();
        if (job.Ticks == 5) {
            EXPECT_FALSE(job.Cancelled);
            Send(*FindById(dialog, 10032));
        }
    };
    EXPECT_EQ(Show(job), wxID_CANCEL);
    EXPECT_TRUE(job.Cancelled);
    EXPECT_EQ(job.Ticks, 5);
    EXPECT_EQ(gauge, 4);
}

// The timer goes on while the job has a question open.
TEST(ProgressDialogTest, DoesNotTickInsideATick) {
    FakeJob job;
    job.Length = 2;
    job.AtTick = [&](wxWindow&) {
        const int ticks = job.Ticks;
        EXPECT_FALSE(WaitFor([&] { return job.Ticks != ticks; }, 100));
    };
    EXPECT_EQ(Show(job), wxID_OK);
}

TEST_F(ImportDialogs, AskForANewCategoryAndStopSilently) {
    auto* const frame = new wxFrame(nullptr, wxID_ANY, "parent");
    // Any code of a dialog but its own is no yes.
    for (const int answer : {wxID_CANCEL, wxID_OK}) {
        EXPECT_FALSE(Import("f: a\nb: b\nc: Words\n", frame, {answer}));
        EXPECT_EQ(mAnswers.Dialogs.back().Title, "New Category");
        EXPECT_TRUE(mDatabase.IsEmpty());
    }
    EXPECT_FALSE(Import("f: e\nb: f\n\nf: g\n", frame, {wxID_OK}));
    EXPECT_EQ(mOrdered.DialogsBefore, 1U) << "the store's own failure comes before any box";
}
