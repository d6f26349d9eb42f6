#include "scheduler/Relearning.h"

#include <atomic>
#include <filesystem>
#include <memory>
#include <sstream>
#include <string>

#include "files/StoreFiles.h"
#include "scheduler/Scheduler.h"
#include "support/StoreFixture.h"

namespace {

std::atomic<bool> gHoldsWorker{false};

// One card under study, told by a script: a digit scores it, "<" and a digit scores it anew, "%"
// and a number sets the share; the other words are those of Do. Beside it stands a plain list of
// the scores that count, from which each interval is calculated anew.
struct RelearningTest : StoreFixture {
    struct Given {
        CardSchedule Before;
        int Score;
        bool IsLogged;
    };

    RelearningTest() {
        gTraceHook = [](const wxString&) {
            while (gHoldsWorker && !wxThread::IsMain()) {
                wxMilliSleep(1);
            }
        };
    }
    ~RelearningTest() override {
        Release();
        mpScheduler.reset();
        gTraceHook = [](const wxString&) {};
    }

    void Begin(ReviewDirection direction, int share, float days) {
        Release();
        mDirection = direction;
        mShare = share;
        mHasLog = true;
        mStep = 2;
        mGiven.clear();
        mDatabase.Execute("DELETE FROM Cards");
        DeleteLog();
        FlashCard card = MakeCard("front", "back");
        card.ForwardX = direction == kReviewReverse;
        card.ReverseX = direction == kReviewForward;
        CardSchedule& schedule = ScheduleOf(card, direction);
        schedule.Introduced = true;
        schedule.LastScore = 4;
        schedule.LastReview = mClock.Now() - wxTimeSpan::Days(20);
        schedule.ReviewInterval = days * 86400.0f;
        mCard = Insert(card).CardId;
        Restart();
    }
    void DeleteLog() { std::filesystem::remove(ReviewLogPath(mDatabase.GetPath()).utf8_string()); }
    // As a start of the program does.
    void Restart() {
        mpScheduler = std::make_unique<Scheduler>(
            mDatabase, Scheduler::Sources{mCategory, mMaintenance, mClock, mRandom,
                                          mHasLog ? &mLog : nullptr});
        mpScheduler->SetDirections(mDirection);
        mpScheduler->SetRelearnShare(mShare);
    }
    void Release() {
        gHoldsWorker = false;
        while (mpScheduler != nullptr && !mpScheduler->IsLogRead()) {
            wxMilliSleep(1);
        }
    }
    CardSchedule Schedule() { return ScheduleOf(Stored(mCard), mDirection); }

    // What a card was worth when its last failures began; 0 when the last score was a pass.
    float Lost() const {
        float lost = 0;
        for (auto given = mGiven.rbegin();
             given != mGiven.rend() && given->Score < 3 && given->IsLogged; ++given) {
            lost = std::max(given->Before.ReviewInterval, 1.0f);
        }
        return lost;
    }
    void Score(int score, bool anew) {
        CardSchedule before = Schedule();
        if (anew) {
            before = mGiven.back().Before;
            mGiven.pop_back();
            mpScheduler->SetHistoryIndex(0);
        }
        float expected = Review(before, score, mClock.Now(), mRandom).NewInterval;
        if (mHasLog && mShare > 0 && score > 2 && Lost() > 0) {
            const float hours = score == 3 ? 1 : score == 4 ? 4 : 16;
            expected =
                std::max({expected, hours * 3600, Lost() * static_cast<float>(mShare) / 100});
        }
        const IntervalRange told = mpScheduler->PredictInterval(score);
        mpScheduler->ScoreCard(score);
        mpScheduler->SetHistoryIndex(-1);
        mGiven.push_back({before, score, mHasLog});
        EXPECT_EQ(Schedule().ReviewInterval, expected);
        EXPECT_LE(told.Least, expected);
        EXPECT_GE(told.Greatest, expected);
        mClock.Advance(mStep);
    }
    void OpenStore(const wxString& path) {
        ASSERT_EQ(mDatabase.Open(path, mWait), 0);
        mpScheduler->Initialise();
    }
    void Do(const std::string& word) {
        if (word == "start" || word == "held") {
            Release();
            gHoldsWorker = word == "held";
            Restart();
        } else if (word == "released") {
            Release();
        } else if (word == "without-log" || word == "with-log") {
            mHasLog = word == "with-log";
            Restart();
        } else if (word == "delete-log") {
            DeleteLog();
            for (Given& given : mGiven) {
                given.IsLogged = false;
            }
            Restart();
        } else if (word == "week") {
            mClock.Advance(int64_t{7} * 86400);
        } else if (word == "back") {
            mClock.Advance(-86400);
        } else if (word == "at-once") {
            mStep = 0;
        } else if (word == "reset") {
            FlashCard card = Stored(mCard);
            ScheduleOf(card, mDirection) = CardSchedule();
            mDatabase.UpdateFlashCard(card);
            mGiven.clear();
            mpScheduler->Refresh();
        } else if (word == "move") {
            const wxString from = mDatabase.GetPath();
            mDatabase.Close();
            const wxString to = from == StorePath() ? mDirectory.Path("moved.vlm") : StorePath();
            ASSERT_EQ(MoveStoreFile(from, to), 0);
            OpenStore(to);
        } else if (word == "keep") {
            ASSERT_EQ(CopyStoreFile(mDatabase.GetPath(), mDirectory.Path("kept.vlm")), 0);
            mKept = mGiven;
        } else if (word == "restore") {
            const wxString path = mDatabase.GetPath();
            mDatabase.Close();
            ASSERT_EQ(CopyStoreFile(mDirectory.Path("kept.vlm"), path), 0);
            mGiven = mKept;
            OpenStore(path);
        } else if (word[0] == '%') {
            mShare = std::stoi(word.substr(1));
            mpScheduler->SetRelearnShare(mShare);
        } else {
            Score(word.back() - '0', word[0] == '<');
        }
    }

    FakeClock mClock;
    FakeRandom mRandom;
    FakeCategorySource mCategory;
    SilentMaintenance mMaintenance;
    ReviewLog mLog{wxString()};
    std::unique_ptr<Scheduler> mpScheduler;
    CardUuid mCard;
    ReviewDirection mDirection = kReviewForward;
    int mShare = 0;
    bool mHasLog = true;
    int mStep = 2;
    std::vector<Given> mGiven;
    std::vector<Given> mKept;
};

TEST_F(RelearningTest, TheFirstPassAfterAFailureKeepsTheShare) {
    constexpr float kAny = -1;
    constexpr float kHour = 3600;
    constexpr float kDay = 24 * kHour;
    const struct {
        const char* Story;
        int Share;
        // Days; the interval at the beginning, when the card is asked after 20 days.
        float Interval;
        const char* Script;
        // Seconds; the interval in the end.
        float Last;
    } cases[] = {
        {"begins again", 0, 16, "0 4 0 5", kAny},
        {"a quarter", 25, 16, "0 4", 4 * kDay},
        {"half", 50, 16, "1 3", 8 * kDay},
        {"the first of the failures counts", 25, 16, "2 0 1 0 5", 4 * kDay},
        {"the first of the passes alone", 25, 16, "0 3 week week week 4", kAny},
        {"forgotten once more", 25, 16, "0 4 week 0 5", kDay},
        {"what the score gives is more", 50, 16, "2 week week week 4", kAny},
        {"no less than a first pass", 25, 0.01f, "0 5", 16 * kHour},
        {"a new card that was failed first", 25, 16, "reset 0 0 4", 4 * kHour},
        {"a failure taken back", 25, 16, "0 <4", kAny},
        {"a failure taken back for another", 25, 16, "0 <2 4", kAny},
        {"a pass taken back", 25, 16, "0 4 <0 4", 4 * kDay},
        {"a pass taken back for a failure and another pass", 25, 16, "0 4 <0 <3", 4 * kDay},
        {"a pass taken back for another", 50, 16, "0 3 <4", 8 * kDay},
        {"all in one second", 25, 16, "at-once 0 4 <5", 4 * kDay},
        {"turned off and on between", 25, 16, "0 %0 0 %50 4", 8 * kDay},
        {"turned off for the pass", 25, 16, "0 %0 4", kAny},
        {"a start between", 25, 16, "0 start 0 start released 3", 4 * kDay},
        {"a failure taken back before a start", 25, 16, "0 <1 4 <0 start released 4", 4 * kDay},
        {"a pass before a start", 25, 16, "0 4 start released week 0 3", kDay},
        {"the worker is not done", 25, 16, "0 held 4", 4 * kDay},
        {"the worker is done later", 25, 16, "0 held 0 released 4", 4 * kDay},
        {"passed before it was done", 25, 16, "0 held 4 week 0 released 3", kDay},
        {"no log", 25, 16, "without-log 0 4 0 3", kAny},
        {"a pass without its line", 25, 16, "0 without-log 4 with-log 0 start released 4",
         4 * kHour},
        {"a log that is gone", 25, 16, "0 delete-log 4", kAny},
        {"a log that begins within", 25, 16, "0 delete-log 0 start released 4", 4 * kHour},
        {"the clock set back", 25, 16, "0 back 0 start released 4", 4 * kDay},
        {"learnt anew", 25, 16, "0 reset 4 0 3", kAny},
        {"the store moved", 25, 16, "0 move 0 released 4", 4 * kDay},
        {"the store restored", 25, 16, "0 keep 4 0 restore released 4", 4 * kDay},
    };
    for (const auto& c : cases) {
        for (const ReviewDirection direction : kEachDirection) {
            SCOPED_TRACE(c.Story);
            Begin(direction, c.Share, c.Interval);
            std::istringstream script(c.Script);
            for (std::string word; script >> word;) {
                SCOPED_TRACE(word);
                Do(word);
            }
            if (c.Last != kAny) {
                EXPECT_EQ(Schedule().ReviewInterval, c.Last);
            }
        }
    }
}

}  // namespace
