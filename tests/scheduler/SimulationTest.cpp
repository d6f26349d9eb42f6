#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <deque>
#include <filesystem>
#include <random>

#include "scheduler/Scheduler.h"
#include "support/StoreFixture.h"

// Years of study on a real store beside a second, plain telling of the rules over structs: after
// each step both must show the same card and have left the same bits.
namespace {

constexpr int32_t kTop = 0x7FFF0000;
constexpr int32_t kGone = -99;

int64_t Seconds(const wxDateTime& time) {
    return time.GetValue().GetValue() / 1000;
}
int64_t Next(const CardSchedule& s) {
    return Seconds(s.LastReview) + static_cast<int64_t>(s.ReviewInterval);
}
int64_t StoredNext(const CardSchedule& s) {
    return Next(s) < 253402300800 ? Next(s) : -1;
}

// A card and the side from which it is asked: 0 forward, 1 reverse.
struct Pick {
    FlashCard* Card = nullptr;
    int Side = -1;

    CardSchedule& Schedule() const { return Side == 0 ? Card->Forward : Card->Reverse; }
    bool IsExcluded() const { return Side == 0 ? Card->ForwardX : Card->ReverseX; }
};

class Model {
  public:
    explicit Model(const Clock& clock) : mClock(clock) {}

    std::deque<FlashCard> Cards;
    std::deque<std::pair<Pick, CardSchedule>> History;
    Pick Live;
    Pick Shown;
    int Position = -1;
    int Mask = 1;
    int Category = 0;
    bool Early = false;
    int Horizon = 180;
    int Maintained = 0;

    void Load() {
        for (; Position >= 0; --Position) {
            if (Position < Count()) {
                if (TryShow(At())) {
                    return;
                }
                History.erase(History.begin() + Position);
            }
        }
        if (!TryShow(Live)) {
            const Pick pick = Select();
            Shown.Card = pick.Card;  // Without a card the side stays, for the next TryShow.
            if (pick.Card != nullptr) {
                Live = Shown = pick;
            }
        }
    }

    void Refresh() {
        Live = Live.Card != nullptr && Live.Card->CategoryId == kGone ? Pick() : Live;
        Load();
        Live = Shown.Card != nullptr && Shown.Card->CategoryId != Category ? Pick() : Live;
        Load();
        int looked = 0;
        for (auto it = History.begin(); it != History.end(); ++looked) {
            const bool gone = it->first.Card->CategoryId == kGone;
            it = gone ? History.erase(it) : it + 1;
            Position -= gone && looked <= Position ? 1 : 0;
        }
    }

    void Score(int score) {
        CardSchedule s = Shown.Schedule();
        if (Position < 0) {
            const auto same = [this](const auto& entry) { return entry.first.Card == Shown.Card; };
            History.erase(std::remove_if(History.begin(), History.end(), same), History.end());
            History.emplace_front(Shown, s);
            History.resize(std::min<size_t>(History.size(), 20));
        } else if (score != s.LastScore) {
            for (const auto& [pick, before] : History) {
                s = pick.Card == Shown.Card ? before : s;
            }
        }
        Reschedule(s, score);
        s.LastScore = static_cast<uint8_t>(score);
        s.LastReview = mClock.Now();
        s.ERC = Renumber(s.ERC);
        s.Introduced = true;
        Shown.Schedule() = s;
        if (Position < 0) {
            Live.Card = nullptr;
            Load();
        }
    }

    int Count() const { return static_cast<int>(History.size()); }
    Pick At() const { return History[static_cast<size_t>(Position)].first; }
    int64_t Now() const { return Seconds(mClock.Now()); }
    int CountReady() {
        int count = 0;
        for (FlashCard& card : Cards) {
            for (const Pick pick : {Pick{&card, 0}, Pick{&card, 1}}) {
                count += MayAsk(pick, true) && StoredNext(pick.Schedule()) < Now() ? 1 : 0;
            }
        }
        return count;
    }

    int64_t NextDue() {
        int64_t next = -1;
        for (FlashCard& card : Cards) {
            for (const Pick pick : {Pick{&card, 0}, Pick{&card, 1}}) {
                const int64_t due = Next(pick.Schedule());
                next = MayAsk(pick, true) && (next == -1 || due < next) ? due : next;
            }
        }
        return next;
    }

  private:
    float Random() {
        mChance = mChance * 214013 + 2531011;
        return static_cast<float>(mChance >> 16 & 32767) * 0x1.0002p-15f;
    }

    bool TryShow(Pick pick) {
        const bool shows = pick.Card != nullptr && pick.Card->CategoryId != kGone &&
                           !(Shown.Side >= 0 && Pick{pick.Card, Shown.Side}.IsExcluded());
        Shown = shows ? pick : Shown;
        return shows;
    }

    bool MayAsk(Pick pick, bool introduced) const {
        return (Mask & (1 << pick.Side)) != 0 && pick.Card->CategoryId == Category &&
               !pick.IsExcluded() && pick.Schedule().Introduced == introduced;
    }

    // The cards of one side that may be asked, in the order of the key and then of insertion.
    template <typename Key>
    std::vector<Pick> Sorted(int side, bool introduced, Key key) {
        std::vector<Pick> picks;
        for (FlashCard& card : Cards) {
            if (MayAsk({&card, side}, introduced)) {
                picks.push_back({&card, side});
            }
        }
        const auto less = [&key](Pick a, Pick b) { return key(a) < key(b); };
        std::stable_sort(picks.begin(), picks.end(), less);
        return picks;
    }

    template <typename Key>
    Pick First(bool introduced, Key key) {
        const std::vector<Pick> f = Sorted(0, introduced, key);
        const std::vector<Pick> r = Sorted(1, introduced, key);
        if (f.empty() || r.empty()) {
            return !f.empty() ? f[0] : !r.empty() ? r[0] : Pick();
        }
        const bool chance = key(f[0]) == key(r[0]);
        return (chance ? Random() < 0.5f : key(f[0]) < key(r[0])) ? f[0] : r[0];
    }
    float Elapsed(const CardSchedule& s) {
        return static_cast<float>(Now() - Seconds(s.LastReview));
    }

    Pick Select() {
        Pick ready;
        float best = 0.0f;
        bool isQuiet = Early;
        for (const int side : {0, 1}) {
            const auto due = [](Pick p) { return StoredNext(p.Schedule()); };
            for (const Pick pick : Sorted(side, true, due)) {
                const CardSchedule& s = pick.Schedule();
                const float ratio = Elapsed(s) / s.ReviewInterval;
                if (Next(s) < Now() && (ready.Card == nullptr || ratio > best)) {
                    ready = pick;
                    best = ratio;
                }
                isQuiet = isQuiet && (StoredNext(s) >= Now() + Horizon ||
                                      s.ReviewInterval > static_cast<float>(Horizon));
            }
        }
        if (ready.Card == nullptr || isQuiet) {
            const Pick fresh = First(false, [](Pick p) { return p.Card->IntroductionOrder; });
            ready = fresh.Card != nullptr ? fresh : ready;
        }
        const auto block = [](Pick p) { return std::pair(p.Schedule().ERC, Next(p.Schedule())); };
        return ready.Card != nullptr ? ready : First(true, block);
    }

    void Reschedule(CardSchedule& s, int score) {
        const float old = std::max(s.ReviewInterval, 1.0f);
        const float elapsed = s.Introduced ? Elapsed(s) : 5.0f;
        int d = s.Difficulty;
        float factor = 1.0f;
        for (int i = std::abs(16 - d); i > 0; --i) {
            factor = factor * (d < 16 ? 1.1f : 0x1.d1745cp-1f);
        }
        const float multipliers[] = {0.0f, 0.25f, 0.5f, 1.0f, 1.0f + 0.5f * factor, 1.0f + factor};
        float next = multipliers[score] * elapsed;
        if ((score > 2 && next < old) || (score < 3 && next > old)) {
            next = old;
        } else {
            const int step = std::min(static_cast<int>(Random() * 31.0f), 30);
            next = static_cast<float>(std::exp2((step - 15) / 50.0)) * next;
        }
        const float floors[] = {1.0f, 1.0f, 1.0f, 3600.0f, 14400.0f, 57600.0f};
        next = std::max(next, s.Introduced ? 1.0f : floors[score]);
        if (score == 5 && !(elapsed < old)) {
            d = std::max(d - 1, 0);
        } else if (score < 3 && elapsed < old + old) {
            d = d < 16 ? 16 : std::min(d + 1, 32);
        }
        s.Difficulty = static_cast<uint8_t>(d);
        s.ReviewInterval = next;
    }

    int32_t Renumber(int32_t own) {
        int32_t block = 0;
        for (FlashCard& card : Cards) {
            for (const Pick pick : {Pick{&card, 0}, Pick{&card, 1}}) {
                const CardSchedule& s = pick.Schedule();
                if (card.CategoryId == Category && s.Introduced && !pick.IsExcluded()) {
                    block = std::max(block, s.ERC & ~4095);
                }
            }
        }
        if (own >= block && block >= kTop) {
            ++Maintained;
            for (FlashCard& card : Cards) {
                card.Forward.ERC = card.Reverse.ERC = 0;
            }
            block = 0;
        } else if (own >= block) {
            block += 4096;
        }
        return block + static_cast<int32_t>(Random() * 4095.0f);
    }

    const Clock& mClock;
    uint32_t mChance = 1;
};

struct SimulationTest : StoreFixture {
    // Thousands of commits: in memory where the system offers that.
    static void SetUpTestSuite() {
        if (std::filesystem::is_directory("/dev/shm")) {
            setenv("TMPDIR", "/dev/shm", 0);
        }
    }
    SimulationTest() {
        for (int i = 0; i < 120; ++i) {
            FlashCard card = MakeCard("front", "back", i == 0 ? 3 : i % 3);
            card.ForwardX = card.ReverseX = i == 0;
            card.IntroductionOrder = i / 2;
            card.Forward.LastReview = card.Reverse.LastReview = mClock.Now();
            // Near the end of the block numbers, so that they run out on the way.
            card.Forward.Introduced = i < 4;
            card.Forward.ERC = i < 4 ? kTop - 30 * 4096 : 0;
            mModel.Cards.push_back(Insert(card));
        }
    }

    void ChangeOptions() {
        mModel.Early = Draw(2) != 0;
        mModel.Horizon = Draw(4000);
        mScheduler.SetEarlyIntroduction(mModel.Early);
        mScheduler.SetEarlyIntroductionInterval(mModel.Horizon);
        mModel.Mask = 1 + Draw(3);
        if (mModel.Live.Side < 0 || (mModel.Mask & (1 << mModel.Live.Side)) == 0) {
            mModel.Live = Pick();
            mModel.Load();
        }
        mScheduler.SetDirections(static_cast<ReviewDirection>(mModel.Mask));
    }
    // Another category, about half of the history deleted, or one card excluded or no longer so.
    void ChangeStore() {
        FlashCard& card = mModel.Cards[static_cast<size_t>(Draw(120))];
        if (Draw(2) == 0 || card.CategoryId == kGone) {
            // Category 3 has one card, which is excluded at first, and 4 has none.
            const int category = Draw(11);
            mModel.Category = mCategory.Current = category < 9 ? category / 3 : category - 6;
        } else if (Draw(12) == 0) {
            MoveInHistory(Draw(24) - 2);
            for (const auto& entry : mModel.History) {
                if (Draw(2) == 0) {
                    entry.first.Card->CategoryId = kGone;
                    mDatabase.DeleteCard(entry.first.Card->CardId);
                }
            }
        } else {
            card.ForwardX = !card.ForwardX && Draw(4) == 0;
            card.ReverseX = !card.ReverseX && Draw(4) == 0;
            mDatabase.UpdateFlashCard(card);
        }
        mModel.Refresh();
        mScheduler.Refresh();
    }
    void MoveInHistory(int index) {
        mModel.Position = std::max(std::min(index, mModel.Count() - 1), -1);
        mModel.Load();
        mScheduler.SetHistoryIndex(index);
    }
    void Score() {
        const FlashCard& card = *mModel.Shown.Card;
        const int score = Draw(5) == 0 ? Draw(3) : 2 + Draw(4);
        const bool live = mModel.Position < 0;
        // Deletions can leave the position on the entry of another card than the one shown.
        mStrangers +=
            !live && mModel.Position < mModel.Count() && &card != mModel.At().Card ? 1 : 0;
        const Pick shown = mModel.Shown;
        // The window never gives a card of the history its recorded score again.
        const bool changes = live || score != shown.Schedule().LastScore;
        const IntervalRange told = mScheduler.PredictInterval(score);
        mModel.Score(score);
        mScheduler.ScoreCard(score);
        ExpectSame(Stored(card.CardId), card);
        const float interval = shown.Schedule().ReviewInterval;
        EXPECT_TRUE(!changes || (told.Least <= interval && interval <= told.Greatest))
            << told.Least << " to " << told.Greatest << ", was " << interval;
        if (!live) {
            MoveInHistory(mModel.Position - 1);  // Whoever scores in the history moves on.
            ++mRescores;
        }
    }
    void Compare() {
        EXPECT_EQ(mScheduler.GetHistoryIndex(), mModel.Position);
        EXPECT_EQ(mScheduler.GetHistoryCount(), mModel.Count());
        EXPECT_EQ(mScheduler.GetReadyCount(), mModel.CountReady());
        const wxDateTime due = mScheduler.GetNextDueTime();
        EXPECT_EQ(due.IsValid() ? Seconds(due) : -1, mModel.NextDue());
        const Pick shown = mModel.Shown;
        ASSERT_EQ(mScheduler.HasCard(), shown.Card != nullptr);
        if (mScheduler.HasCard()) {
            ExpectSame(mScheduler.GetCurrentCard(), *shown.Card);
            const CardSchedule& s = shown.Schedule();
            const bool live = mModel.Position < 0;
            EXPECT_EQ(mScheduler.GetShownScore(), live ? -1 : s.LastScore);
            EXPECT_EQ(mScheduler.IsBreakTime(), live && s.Introduced && Next(s) > mModel.Now());
            return;
        }
        const auto counts = [this](const FlashCard& card) {
            return card.CategoryId == mModel.Category;
        };
        const bool any = std::any_of(mModel.Cards.begin(), mModel.Cards.end(), counts);
        EXPECT_TRUE(mScheduler.IsCategoryEmpty() != any && mScheduler.IsAllExcluded() == any);
        ++(any ? mExcluded : mEmpty);
    }
    static void ExpectSame(const FlashCard& card, const FlashCard& ofModel) {
        EXPECT_EQ(FormatUuid(card.CardId), FormatUuid(ofModel.CardId));
        EXPECT_EQ(card.Forward, ofModel.Forward);
        EXPECT_EQ(card.Reverse, ofModel.Reverse);
    }
    int Draw(unsigned count) { return static_cast<int>(mDice() % count); }

    std::mt19937 mDice{20250101};
    // The end of 32 bits lies on the way.
    FakeClock mClock{2100000000};
    SequenceRandom mRandom;
    FakeCategorySource mCategory;
    SilentMaintenance mMaintenance;
    Model mModel{mClock};
    Scheduler mScheduler{mDatabase, {mCategory, mMaintenance, mClock, mRandom}};
    int mRescores = 0;
    int mStrangers = 0;
    int mEmpty = 0;
    int mExcluded = 0;
};

TEST_F(SimulationTest, TenThousandReviewsMatchThePlainRules) {
    mScheduler.SetDirections(kReviewForward);
    mModel.Load();
    for (int reviews = 0; reviews < 10000 && !HasFailure();) {
        const int span = Draw(100);
        mClock.Advance(span < 80 ? Draw(30) : span < 97 ? Draw(20000) : Draw(900000));
        const int action = Draw(100);
        if (action < 12) {
            MoveInHistory(Draw(24) - 2);
        } else if (action < 15) {
            ChangeOptions();
        } else if (action < 18) {
            ChangeStore();
        } else if (mModel.Shown.Card != nullptr) {
            Score();
            ++reviews;
        }
        Compare();
        ASSERT_FALSE(HasFailure()) << "after review " << reviews << ", action " << action;
    }
    EXPECT_TRUE(mRescores > 500 && mStrangers > 0 && mEmpty > 0 && mExcluded > 0);
    EXPECT_GT(mModel.Maintained, 0);
    EXPECT_EQ(mMaintenance.Starts, mModel.Maintained);
}

}  // namespace
