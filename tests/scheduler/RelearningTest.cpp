#include <atomic>
#include <filesystem>
#include <map>
#include <sstream>

#include "files/StoreFiles.h"
#include "scheduler/Relearning.h"
#include "scheduler/Scheduler.h"
#include "support/StoreFixture.h"

namespace {

std::atomic<bool> gHoldsWorker{false};

// One card under study, told by a script: a digit scores it, "<" and a digit scores it anew, "%"
// and a number sets the share; the other words are those of mWords. Beside it stands a plain list
// of the scores that count, from which what a pass keeps is calculated anew each time.
struct RelearningTest : StoreFixture {
    struct Given {
        CardSchedule Before;
        int Score;
        bool IsLogged;
    };

    ~RelearningTest() override {
        Release();
        mpScheduler.reset();
        gTraceHook = [](const wxString&) {};
    }
    // As a start of the program does.
    void Start(bool holdsWorker = false) {
        Release();
        gHoldsWorker = holdsWorker;
        gTraceHook = [](const wxString&) {
            while (gHoldsWorker && !wxThread::IsMain()) {
                wxMilliSleep(1);
            }
        };
        ReviewLog* const log = mHasLog ? &mLog : nullptr;
        mpScheduler = std::make_unique<Scheduler>(
            mDatabase, Scheduler::Sources{mCategory, mMaintenance, mClock, mRandom, log});
        mpScheduler->SetDirections(mDirection);
        mpScheduler->SetRelearnShare(mShare);
    }
    void Release() {
        gHoldsWorker = false;
        while (mpScheduler != nullptr && !mpScheduler->IsLogRead()) {
            wxMilliSleep(1);
        }
    }
    void StartWithLog(bool hasLog) {
        mHasLog = hasLog;
        Start();
    }
    void DeleteLog() {
        std::filesystem::remove(ReviewLogPath(mDatabase.GetPath()).utf8_string());
        for (Given& given : mGiven) {
            given.IsLogged = false;
        }
        Start();
    }
    // Puts a card of 16 days into the store, last scored 20 days ago, or makes it a new one.
    void PutCard(bool isNew) {
        FlashCard card = mCard;
        CardSchedule& schedule = ScheduleOf(card, mDirection);
        schedule.Introduced = !isNew;
        schedule.LastScore = isNew ? 0 : 4;
        schedule.LastReview = mClock.Now() - wxTimeSpan::Days(20);
        schedule.ReviewInterval = isNew ? 5.0f : 16 * 86400.0f;
        mDatabase.UpdateFlashCard(card);
        mGiven.clear();
    }
    // Puts one store in the place of another, whose path may be the same.
    void Replace(const wxString& path, int (*put)(const wxString&, const wxString&),
                 const wxString& from, const wxString& to) {
        mDatabase.Close();
        ASSERT_TRUE(put(from, to) == 0 && mDatabase.Open(path, mWait) == 0);
        mpScheduler->Initialise();
    }
    void Score(int score, bool anew) {
        CardSchedule before = ScheduleOf(Stored(mCard.CardId), mDirection);
        if (anew) {
            before = mGiven.back().Before;
            mGiven.pop_back();
            mpScheduler->SetHistoryIndex(0);
        }
        float lost = 0;
        for (auto given = mGiven.rbegin();
             given != mGiven.rend() && given->Score < 3 && given->IsLogged && mHasLog; ++given) {
            lost = std::max(given->Before.ReviewInterval, 1.0f);
        }
        float expected = Review(before, score, mClock.Now(), mRandom).NewInterval;
        if (mShare > 0 && score > 2 && lost > 0) {
            const float hours = score == 3 ? 1 : score == 4 ? 4 : 16;
            expected = std::max({expected, hours * 3600, lost * static_cast<float>(mShare) / 100});
        }
        const IntervalRange told = mpScheduler->PredictInterval(score);
        mpScheduler->ScoreCard(score);
        mpScheduler->SetHistoryIndex(-1);
        mGiven.push_back({before, score, mHasLog});
        EXPECT_EQ(ScheduleOf(Stored(mCard.CardId), mDirection).ReviewInterval, expected);
        EXPECT_TRUE(told.Least <= expected && expected <= told.Greatest) << told.Greatest;
        mClock.Advance(mStep);
    }
    void Do(const std::string& word) {
        const auto found = mWords.find(word);
        if (found != mWords.end()) {
            found->second();
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
    FlashCard mCard;
    ReviewDirection mDirection = kReviewForward;
    int mShare = 25;
    bool mHasLog = true;
    int mStep = 2;
    std::vector<Given> mGiven;
    std::vector<Given> mKept;
    wxString mOther = mDirectory.Path("other.vlm");
    const std::map<std::string, std::function<void()>> mWords{
        {"start", [this] { Start(); }},
        {"held", [this] { Start(true); }},
        {"released", [this] { Release(); }},
        {"without-log", [this] { StartWithLog(false); }},
        {"with-log", [this] { StartWithLog(true); }},
        {"delete-log", [this] { DeleteLog(); }},
        {"week", [this] { mClock.Advance(int64_t{7} * 86400); }},
        {"back", [this] { mClock.Advance(-86400); }},
        {"at-once", [this] { mStep = 0; }},
        {"reset", [this] { PutCard(true), mpScheduler->Refresh(); }},
        {"move", [this] { Replace(mOther, MoveStoreFile, StorePath(), mOther); }},
        {"keep", [this] { mKept = mGiven, CopyStoreFile(StorePath(), mOther); }},
        {"restore",
         [this] { mGiven = mKept, Replace(StorePath(), CopyStoreFile, mOther, StorePath()); }},
    };
};

TEST_F(RelearningTest, TheFirstPassAfterAFailureKeepsTheShare) {
    std::istringstream scripts(R"(
0 4 # 2 0 1 0 5 # %50 1 3 # %50 2 week week week 4 # 0 3 week week week 4 # 0 4 week 0 5
reset 0 0 4 # 0 reset 4 0 3 # %0 0 4 0 5 # 0 %0 0 %50 4 # 0 %0 4
0 <4 # 0 <2 4 # 0 4 <0 4 # 0 4 <0 <3 # %50 0 3 <4 # at-once 0 4 <5
0 start 0 start released 3 # 0 <1 4 <0 start released 4 # 0 4 start released week 0 3
0 held 4 # 0 held 0 released 4 # 0 held 4 week 0 released 3
without-log 0 4 0 3 # 0 without-log 4 with-log 0 start released 4
0 delete-log 4 # 0 delete-log 0 start released 4 # 0 back 0 start released 4
0 move 0 released 4 # 0 keep 4 0 restore released 4)");
    for (std::string script; std::getline(scripts, script, '#');) {
        for (const ReviewDirection direction : kEachDirection) {
            SCOPED_TRACE(script);
            mDirection = direction;
            mShare = 25;
            mHasLog = true;
            mStep = 2;
            if (mDatabase.GetPath() != StorePath()) {
                Replace(StorePath(), MoveStoreFile, mOther, StorePath());
            }
            mDatabase.Execute("DELETE FROM Cards");
            mCard = MakeCard("front", "back");
            (direction == kReviewForward ? mCard.ReverseX : mCard.ForwardX) = true;
            mCard = Insert(mCard);
            PutCard(false);
            DeleteLog();
            std::istringstream words(script);
            for (std::string word; words >> word;) {
                SCOPED_TRACE(word);
                Do(word);
            }
        }
    }
}

}  // namespace
