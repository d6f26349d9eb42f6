#include "app/Exchanger.h"

#include <atomic>

#include "shell/ExchangeSettings.h"
#include "support/GuiTest.h"

namespace {

using testing::ElementsAre;

struct ExchangerTest : GuiStoreTest {
    ExchangerTest() {
        WriteExchangeSetUp(StorePath(), {"/folder", "here"});
        mNext.End = ExchangeEnd::kDone;
    }

    Exchanger::Surroundings Surround() {
        return {mDatabase,
                mClock,
                nullptr,
                [this] { return mIsDialogOpen; },
                [this](bool wasEmpty) { mChanges += wasEmpty ? 1 : 0; },
                [this](const wxString& text, bool) { mShown = text; },
                [this](const ExchangeReport&, ExchangeOptions& options) {
                    ++mQuestions;
                    options.Answer = ExchangeAnswer::kTakeMine;
                    return mAnswers;
                },
                [this] { return mLostTexts; },
                [this](const wxString& text) { mWarnings.push_back(text); },
                [this](const ExchangeOptions& options) {
                    ++mRuns;
                    while (mHangs || (mIsSlow && !*options.IsCancelled)) {
                        wxMilliSleep(1);
                    }
                    ExchangeReport report = mNext;
                    if (options.Answer != ExchangeAnswer::kAsk || *options.IsCancelled) {
                        report.End =
                            *options.IsCancelled ? ExchangeEnd::kFailed : ExchangeEnd::kDone;
                    }
                    return report;
                }};
    }
    // Returns how many exchanges there were, once none runs any more.
    int CountRuns() {
        EXPECT_TRUE(WaitFor([this] { return !mExchanger.IsRunning(); }));
        return mRuns;
    }
    int LookAfter(int64_t seconds) {
        mClock.Advance(seconds);
        mExchanger.Look();
        return CountRuns();
    }

    FakeClock mClock;
    ExchangeReport mNext;
    std::atomic<bool> mIsSlow{false};
    std::atomic<bool> mHangs{false};
    std::atomic<int> mRuns{0};
    bool mIsDialogOpen = false;
    bool mAnswers = true;
    int mChanges = 0;
    int mQuestions = 0;
    int mLostTexts = 0;
    wxString mShown;
    std::vector<wxString> mWarnings;
    Exchanger mExchanger{Surround()};
};

TEST_F(ExchangerTest, ExchangesAtTheStartInEachPauseAndWhenAsked) {
    mExchanger.StartLooking();
    EXPECT_EQ(CountRuns(), 1);
    EXPECT_EQ(LookAfter(3600), 1) << "nobody was here since";
    mExchanger.NoteUse();
    EXPECT_EQ(LookAfter(299), 1);
    EXPECT_EQ(LookAfter(1), 2);
    EXPECT_EQ(LookAfter(3600), 2);
    mExchanger.NoteUse();
    EXPECT_EQ(LookAfter(-86400), 2) << "the clock was set back";
    EXPECT_EQ(LookAfter(300), 3);
    mExchanger.NoteUse();
    mIsDialogOpen = true;
    EXPECT_EQ(LookAfter(300), 3);
    mIsDialogOpen = false;
    EXPECT_EQ(LookAfter(0), 4);
    mExchanger.ExchangeNow();
    EXPECT_EQ(CountRuns(), 5);
    EXPECT_TRUE(mExchanger.Finish(5000));
    EXPECT_EQ(mRuns, 6);
    WriteExchangeSetUp(StorePath(), {wxString(), "here"});
    mExchanger.ExchangeNow();
    EXPECT_EQ(CountRuns(), 6) << "the store takes part no more";
}

TEST_F(ExchangerTest, WhatStopsItLetsItBeginAgain) {
    mIsSlow = true;
    mExchanger.StartLooking();
    EXPECT_TRUE(mExchanger.IsRunning());
    mExchanger.Stop();
    EXPECT_FALSE(mExchanger.IsRunning());
    EXPECT_EQ(mShown, "") << "a stop is no failure";
    mIsSlow = false;
    mNext.HasChanged = true;
    EXPECT_EQ(LookAfter(0), 2);
    EXPECT_EQ(mChanges, 1);
    mHangs = true;
    mExchanger.ExchangeNow();
    mExchanger.Stop(10);
    EXPECT_TRUE(mExchanger.IsRunning()) << "the folder does not answer";
    mHangs = false;
    EXPECT_EQ(CountRuns(), 3);
    EXPECT_EQ(LookAfter(0), 4);
    mIsSlow = true;
    mExchanger.ExchangeNow();
    EXPECT_TRUE(mExchanger.Finish(300)) << "an exchange that hears of the end";
    EXPECT_EQ(mRuns, 5);
}

TEST_F(ExchangerTest, AsksAndWarnsWhoHasAskedAndNobodyElse) {
    mNext.End = ExchangeEnd::kAsks;
    mExchanger.StartLooking();
    EXPECT_EQ(CountRuns(), 1);
    EXPECT_EQ(mShown, "The exchange has a question: press F9");
    EXPECT_EQ(mQuestions, 0);
    mAnswers = false;
    mExchanger.ExchangeNow();
    EXPECT_EQ(mShown, "Exchanging...");
    EXPECT_EQ(CountRuns(), 2);
    EXPECT_EQ(mShown, "The exchange has a question: press F9");
    mAnswers = true;
    mExchanger.ExchangeNow();
    EXPECT_EQ(CountRuns(), 4);
    EXPECT_EQ(mQuestions, 2);
    EXPECT_EQ(mShown, "Exchanged; no other computer takes part yet");
    for (const auto& [count, text] : {std::pair(1, ". 1 text changed on both (Tools)"),
                                      std::pair(0, "no other computer takes part yet")}) {
        mLostTexts = count;
        mExchanger.CountLostTexts();
        EXPECT_TRUE(mShown.EndsWith(text)) << mShown;
    }

    mNext.End = ExchangeEnd::kNoFolder;
    mNext.Message = "The folder is gone.";
    mExchanger.BeginAnew();
    EXPECT_EQ(LookAfter(0), 5);
    EXPECT_EQ(mShown, "The folder is gone.");
    EXPECT_TRUE(mWarnings.empty());
    mExchanger.ExchangeNow();
    EXPECT_EQ(CountRuns(), 6);
    EXPECT_THAT(mWarnings, ElementsAre("The folder is gone."));
}

TEST_F(ExchangerTest, TellsWhenAndWithWhomTheLastExchangeWas) {
    std::vector<ExchangeMachine> machines;
    for (const char* const name : {"old", "laptop", "phone", "desk", "desk", "silent"}) {
        machines.push_back({1, name, static_cast<int64_t>(machines.size() + 1), 0, {}});
    }
    constexpr int64_t kDay = 86400000;
    machines.back().LastNews = 0;
    const struct {
        int64_t Seconds;
        int Machines;
        const char* Text;
        int64_t Now = 0;
    } cases[] = {{5, 0, "Exchanged; no other computer takes part yet"},
                 {-5, 1, "Exchanged just now with old"},
                 {59, 1, "Exchanged just now with old", 2 * kDay},
                 {5, 2, "Exchanged just now with laptop, old (no news for 2 days)", 2 * kDay + 1},
                 {60, 2, "Exchanged 1 minute ago with laptop, old"},
                 {3599, 1, "Exchanged 59 minutes ago with old"},
                 {7200, 6, "Exchanged 2 hours ago with desk, phone, laptop, ..."}};
    for (const auto& c : cases) {
        EXPECT_EQ(
            ExchangedText(c.Seconds, {machines.begin(), machines.begin() + c.Machines}, c.Now),
            c.Text);
    }
}

}  // namespace
