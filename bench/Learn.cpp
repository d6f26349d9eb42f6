#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <random>
#include <utility>
#include <vector>

#include "scheduler/ReviewArithmetic.h"

// What an hour of study teaches. A learner who forgets as a published model of memory says
// (a stability and a difficulty for each card, 21 weights) studies 10,000 cards for five years, ten
// new ones a day in one session a day, by the rules of this program and by those of others.
//
// What a score does is the program's own code (scheduler/ReviewArithmetic.h) under a clock. Only
// the choice of the next card is told again here, over an array: the Scheduler with its store would
// take hours for the half a million answers of each row.
//
// A card counts as memorised by the probability that it would be recalled now; the figure for an
// hour is the mean of their sum over the days, divided by the mean of the hours studied so far. A
// first table compares four rules with their published rows, where one answer stands for all of a
// day.
namespace {

constexpr int kAgain = 1;
constexpr int kHard = 2;
constexpr int kGood = 3;
constexpr int kEasy = 4;

constexpr int64_t kDay = 86400;
constexpr int kDays = 1825;
constexpr size_t kCards = 10000;
constexpr int kNewADay = 10;
// A session begins in the morning; what falls due after so many seconds is not asked for that day.
constexpr int64_t kMorning = int64_t{6} * 3600;
constexpr int64_t kLongestSession = int64_t{8} * 3600;

// A figure for each rating.
using Ratings = std::array<double, 4>;

double Of(const Ratings& figures, int rating) {
    return figures.at(static_cast<size_t>(rating - 1));
}

// The same numbers in each run.
class Dice {
  public:
    double Next() { return static_cast<double>(mEngine() >> 11) * 0x1p-53; }
    int Rate(const Ratings& shares) {
        double left = Next() * (shares[0] + shares[1] + shares[2] + shares[3]);
        int rating = kAgain;
        while (rating < kEasy && left >= Of(shares, rating)) {
            left -= Of(shares, rating++);
        }
        return rating;
    }

  private:
    std::mt19937_64 mEngine{20260101};
};

// How well the learner knows a card.
class Memory {
  public:
    // Returns the probability of a recall.
    double Recall(double days) const {
        return std::pow(1.0 + Factor() * days / mStability, -W(20));
    }
    // Returns the days after which a recall has that probability.
    double DaysTo(double recall) const {
        return mStability / Factor() * (std::pow(recall, -1.0 / W(20)) - 1.0);
    }

    void AnswerFirst(int rating) {
        mStability = W(rating - 1);
        mDifficulty = Limit(W(4) - std::exp(W(5) * (rating - 1)) + 1.0);
    }
    void AnswerLater(int rating, double days) {
        const double recall = Recall(days);
        if (rating == kAgain) {
            const double left = W(11) * std::pow(mDifficulty, -W(12)) *
                                (std::pow(mStability + 1.0, W(13)) - 1.0) *
                                std::exp((1.0 - recall) * W(14));
            mStability = std::min(left, mStability / std::exp(W(17) * W(18)));
        } else {
            const double ease = rating == kHard ? W(15) : rating == kEasy ? W(16) : 1.0;
            mStability *= 1.0 + std::exp(W(8)) * (11.0 - mDifficulty) *
                                    std::pow(mStability, -W(9)) *
                                    (std::exp((1.0 - recall) * W(10)) - 1.0) * ease;
        }
        ChangeDifficulty(rating);
    }
    void AnswerOnSameDay(int rating) {
        const double factor =
            std::exp(W(17) * (rating - kGood + W(18))) * std::pow(mStability, -W(19));
        mStability *= rating >= kGood ? std::max(factor, 1.0) : factor;
        ChangeDifficulty(rating);
    }

  private:
    static double W(int i) {
        constexpr std::array<double, 21> kWeights{
            0.4002, 0.1813, 0.6958, 3.1337, 6.6154, 0.565, 2.999,  0.0759, 1.568,  0.248, 0.4816,
            1.7469, 0.0247, 0.5986, 1.8441, 0.4189, 1.81,  0.5784, 0.1924, 0.0658, 0.4444};
        return kWeights.at(static_cast<size_t>(i));
    }
    static double Factor() {
        static const double kFactor = std::pow(0.9, -1.0 / W(20)) - 1.0;
        return kFactor;
    }
    static double Limit(double difficulty) { return std::min(std::max(difficulty, 1.0), 10.0); }
    void ChangeDifficulty(int rating) {
        const double changed = mDifficulty - W(6) * (rating - kGood) * (10.0 - mDifficulty) / 9.0;
        const double usual = W(4) - std::exp(3.0 * W(5)) + 1.0;
        mDifficulty = Limit(W(7) * usual + (1.0 - W(7)) * changed);
    }

    double mStability = 0;
    double mDifficulty = 0;
};

constexpr Ratings kFirstRatings{0.24, 0.094, 0.495, 0.171};
constexpr Ratings kPasses{0.0, 0.224, 0.631, 0.145};
// A further answer on one day, by the rating before it.
constexpr std::array<Ratings, 4> kFurtherOfNew{{{0.3687, 0.0628, 0.5108, 0.0577},
                                                {0.0441, 0.4553, 0.4457, 0.0549},
                                                {0.0518, 0.0470, 0.8462, 0.0550},
                                                {0.0518, 0.0470, 0.8462, 0.0550}}};
constexpr std::array<Ratings, 4> kFurtherOfKnown{{{0.2157, 0.0643, 0.6595, 0.0605},
                                                  {0.0500, 0.4638, 0.4475, 0.0387},
                                                  {0.1056, 0.1434, 0.7266, 0.0244},
                                                  {0.1056, 0.1434, 0.7266, 0.0244}}};
// The seconds that one answer takes.
constexpr Ratings kNewSeconds{12.75, 12.26, 8.0, 6.38};
constexpr Ratings kLaterSeconds{13.05, 11.74, 7.42, 5.6};
constexpr Ratings kFurtherSeconds{10.56, 10.0, 7.37, 5.4};
// The same where one answer stands for all of a day.
constexpr Ratings kNewDaySeconds{33.79, 24.3, 13.68, 6.5};
constexpr Ratings kLaterDaySeconds{23.0, 11.68, 7.33, 5.6};

struct Card {
    Memory Mind;
    int FirstDay = -1;
    int LastDay = -1;
    int LastRating = 0;
    // Seconds.
    int64_t Due = 0;
    // For the rules of this program.
    CardSchedule Schedule;
    float Lost = 0;
    int PassesToday = 0;
    // For the others: days, the factor of an interval, and how many steps are done.
    double Interval = 0;
    double Ease = 2.5;
    int Step = 0;
};

// A way to decide when a card is asked again.
class Rule {
  public:
    virtual ~Rule() = default;
    // Sets when the card is due. Its LastDay and LastRating are still those of the answer before.
    virtual void Answer(Card& card, int rating, int64_t now) = 0;
    // The card with the highest comes first.
    virtual double Urgency(const Card& card, int64_t now) const {
        return static_cast<double>(now - card.Due);
    }
    virtual void EndDay(double /*recall*/) {}
};

int DayOfStudy(int64_t now) {
    return static_cast<int>(now / kDay) - 1;
}

// The rules of this program, and what might be added to them.
struct OwnOptions {
    int Share = 0;
    // For again, hard, good and easy.
    std::array<int, 4> Scores{0, 3, 4, 5};
    // Takes away the least interval of a first pass after failures.
    bool IsShareAlone = false;
    // Lengthens each interval after a pass that follows a pass.
    double Stretch = 1.0;
    // Lengthens it from day to day, so that as many cards are recalled.
    double RecallTarget = 0;
    // The passes of a day after which a card waits until the next; 0 for none.
    int PassesADay = 0;
};

class OwnRule : public Rule {
  public:
    explicit OwnRule(const OwnOptions& options) : mOptions(options), mStretch(options.Stretch) {}

    void Answer(Card& card, int rating, int64_t now) override {
        const int score = mOptions.Scores.at(static_cast<size_t>(rating - 1));
        const wxDateTime time(static_cast<time_t>(now));
        CardSchedule& schedule = card.Schedule;
        float least = RelearnedInterval(card.Lost, score, mOptions.Share);
        if (mOptions.IsShareAlone && least > 0) {
            least = card.Lost * static_cast<float>(mOptions.Share) / 100.0f;
        }
        const bool isLater = schedule.Introduced && card.Lost == 0;
        const ReviewResult result = Review(schedule, score, time, mRandom, least);
        card.Lost = LostInterval(card.Lost, score, result.OldInterval);
        const bool isPass = score >= kLeastGoodScore;
        card.PassesToday = card.LastDay == DayOfStudy(now) ? card.PassesToday : 0;
        card.PassesToday += isPass ? 1 : 0;
        schedule.Introduced = true;
        schedule.ReviewInterval =
            result.NewInterval * (isLater && isPass ? static_cast<float>(mStretch) : 1.0f);
        schedule.LastReview = time;
        schedule.LastScore = static_cast<uint8_t>(score);
        schedule.Difficulty = result.Difficulty;
        card.Due = schedule.NextReview().GetTicks();
        if (mOptions.PassesADay > 0 && card.PassesToday >= mOptions.PassesADay) {
            card.Due = std::max(card.Due, (now / kDay + 1) * kDay);
        }
    }
    double Urgency(const Card& card, int64_t now) const override {
        return static_cast<double>(now - card.Schedule.LastReview.GetTicks()) /
               static_cast<double>(card.Schedule.ReviewInterval);
    }
    void EndDay(double recall) override {
        if (mOptions.RecallTarget > 0) {
            mStretch *= recall > mOptions.RecallTarget ? 1.01 : 0.99;
            mStretch = std::min(std::max(mStretch, 1.0), 3.0);
        }
    }

  private:
    OwnOptions mOptions;
    double mStretch;
    SequenceRandom mRandom;
};

// A rule of whole days, with or without steps within the day: a new card is passed twice, a
// forgotten one once, and ten minutes lie between.
class DayRule : public Rule {
  public:
    explicit DayRule(bool hasSteps) : mHasSteps(hasSteps) {}

    void Answer(Card& card, int rating, int64_t now) override {
        const bool isNew = card.Interval == 0;
        const bool isFurther = card.LastDay == DayOfStudy(now);
        if (!isFurther && !isNew) {
            card.Step = 0;
        }
        if (!isFurther || isNew) {
            // What was learnt in steps gets its first interval when they are done.
            const double before = card.Interval;
            SetInterval(card, rating);
            if (mHasSteps && isNew && !IsThrough(card, rating, 2)) {
                card.Interval = before;
                card.Due = now + (card.Step == 0 ? 60 : 600);
                return;
            }
            if (mHasSteps && !isNew && rating == kAgain) {
                card.Due = now + 600;
                return;
            }
        } else if (mHasSteps) {
            if (!IsThrough(card, rating, 1)) {
                card.Due = now + 600;
                return;
            }
            SetAfterSteps(card);
        }
        card.Due = (now / kDay + std::max<int64_t>(1, static_cast<int64_t>(card.Interval))) * kDay;
    }

  protected:
    virtual void SetInterval(Card& card, int rating) = 0;
    virtual void SetAfterSteps(Card& /*card*/) {}

  private:
    static bool IsThrough(Card& card, int rating, int steps) {
        card.Step = rating == kAgain ? 0 : card.Step + (rating == kEasy ? steps : rating - kHard);
        return card.Step >= steps;
    }

    const bool mHasSteps;
};

class Sm2Rule : public DayRule {
  public:
    using DayRule::DayRule;

  protected:
    void SetInterval(Card& card, int rating) override {
        const double old = card.Interval;
        if (old == 0) {
            card.Interval = rating == kEasy ? 4 : 1;
            return;
        }
        constexpr Ratings kEaseChange{-0.2, -0.15, 0.0, 0.15};
        const Ratings factors{0.0, 1.2, card.Ease, card.Ease * 1.3};
        card.Ease = std::max(1.3, card.Ease + Of(kEaseChange, rating));
        card.Interval =
            rating == kAgain ? 1.0 : std::max(old + 1.0, std::floor(old * Of(factors, rating)));
    }
};

class FixedRule : public DayRule {
  public:
    FixedRule() : DayRule(false) {}

  protected:
    void SetInterval(Card& card, int rating) override {
        constexpr std::array<double, 6> kSteps{1, 6, 12, 48, 96, 180};
        const auto* const longer =
            std::upper_bound(kSteps.begin(), kSteps.end() - 1, card.Interval);
        card.Interval = rating == kAgain ? kSteps[0] : *longer;
    }
};

class RecallRule : public DayRule {
  public:
    RecallRule(double target, bool hasSteps) : DayRule(hasSteps), mTarget(target) {}

  protected:
    void SetInterval(Card& card, int /*rating*/) override { SetAfterSteps(card); }
    void SetAfterSteps(Card& card) override {
        card.Interval = std::max(1.0, std::floor(card.Mind.DaysTo(mTarget)));
    }

  private:
    const double mTarget;
};

struct World {
    // One answer stands for all of a day.
    bool IsByDay = false;
    // A session ends when nothing falls due within so many seconds.
    int64_t Patience = 0;
    // With more than 0 a session lasts so long, and new cards are unlimited.
    int Minutes = 0;
};

struct Figures {
    double Answers = 0;
    double Minutes = 0;
    double LongestDay = 0;
    double Recall = 0;
    double Mean = 0;
    double PerHour = 0;
    // After one, two and five years.
    std::array<double, 3> After{};
};

class Study {
  public:
    Study(Rule& rule, const World& world) : mRule(rule), mWorld(world) {
        // Cards are pointed to.
        mCards.reserve(size_t{40} * kCards);
    }

    Figures Run() {
        double hours = 0;
        for (mDay = 0; mDay < kDays; ++mDay) {
            const int asked = mAsked;
            const int recalled = mRecalled;
            mToday = 0;
            StudyDay();
            mSeconds += mToday;
            mFigures.LongestDay = std::max(mFigures.LongestDay, mToday / 60);
            hours += mSeconds / 3600;
            const double memorised = CountMemorised();
            mFigures.Mean += memorised / kDays;
            for (size_t i = 0; i < 3; ++i) {
                constexpr std::array<int, 3> kYears{1, 2, 5};
                mFigures.After.at(i) =
                    mDay + 1 == 365 * kYears.at(i) ? memorised : mFigures.After.at(i);
            }
            if (mAsked > asked) {
                mRule.EndDay(static_cast<double>(mRecalled - recalled) / (mAsked - asked));
            }
        }
        mFigures.PerHour = mFigures.Mean / (hours / kDays);
        // The published rows count no first answers.
        mFigures.Answers = static_cast<double>(mWorld.IsByDay ? mAsked : mAnswers) / kDays;
        mFigures.Minutes = mSeconds / 60 / kDays;
        mFigures.Recall = static_cast<double>(mRecalled) / mAsked;
        return mFigures;
    }

  private:
    void StudyDay() {
        const int64_t morning = (mDay + 1) * kDay + kMorning;
        mNow = morning;
        mOpen.clear();
        for (Card& card : mCards) {
            if (card.Due < morning + kLongestSession) {
                mOpen.push_back(&card);
            }
        }
        for (int fresh = 0; mWorld.Minutes == 0 || mToday < 60.0 * mWorld.Minutes;) {
            Card* card = FindDue();
            const bool isUnlimited = mWorld.Minutes > 0 && mCards.size() < mCards.capacity();
            if (card == nullptr && (isUnlimited || (fresh < kNewADay && mCards.size() < kCards))) {
                ++fresh;
                mCards.emplace_back();
                card = &mCards.back();
                mOpen.push_back(card);
            }
            if (card != nullptr) {
                Ask(*card);
                if (card->Due >= morning + kLongestSession) {
                    mOpen.erase(std::find(mOpen.begin(), mOpen.end(), card));
                }
            } else if (mNextDue - mNow < mWorld.Patience) {
                mNow = mNextDue + 1;
            } else {
                return;
            }
        }
    }

    // Returns the due card that comes first, or null; then mNextDue is when the next one is due.
    Card* FindDue() {
        Card* first = nullptr;
        double most = 0;
        mNextDue = INT64_MAX;
        for (Card* const card : mOpen) {
            if (card->Due >= mNow) {
                mNextDue = std::min(mNextDue, card->Due);
                continue;
            }
            const double urgency = mRule.Urgency(*card, mNow);
            if (first == nullptr || urgency > most) {
                first = card;
                most = urgency;
            }
        }
        return first;
    }

    void Ask(Card& card) {
        const Ratings* seconds = nullptr;
        int rating = 0;
        if (card.FirstDay < 0) {
            card.FirstDay = mDay;
            rating = mDice.Rate(kFirstRatings);
            card.Mind.AnswerFirst(rating);
            seconds = mWorld.IsByDay ? &kNewDaySeconds : &kNewSeconds;
        } else if (card.LastDay == mDay) {
            const bool isNew = card.FirstDay == mDay;
            const auto before = static_cast<size_t>(card.LastRating - 1);
            rating = mDice.Rate((isNew ? kFurtherOfNew : kFurtherOfKnown).at(before));
            card.Mind.AnswerOnSameDay(rating);
            seconds = isNew ? &kNewSeconds : &kFurtherSeconds;
        } else {
            const double days = mDay - card.LastDay;
            const bool isRecalled = mDice.Next() < card.Mind.Recall(days);
            ++mAsked;
            mRecalled += isRecalled ? 1 : 0;
            rating = isRecalled ? mDice.Rate(kPasses) : kAgain;
            card.Mind.AnswerLater(rating, days);
            seconds = mWorld.IsByDay ? &kLaterDaySeconds : &kLaterSeconds;
        }
        ++mAnswers;
        mToday += Of(*seconds, rating);
        mNow += mWorld.IsByDay ? 0 : std::llround(Of(*seconds, rating));
        mRule.Answer(card, rating, mNow);
        card.LastDay = mDay;
        card.LastRating = rating;
    }

    double CountMemorised() const {
        double sum = 0;
        for (const Card& card : mCards) {
            sum += card.Mind.Recall(mDay - card.LastDay);
        }
        return sum;
    }

    Rule& mRule;
    const World mWorld;
    Dice mDice;
    std::vector<Card> mCards;
    // The cards that may be asked today.
    std::vector<Card*> mOpen;
    Figures mFigures;
    int mDay = 0;
    int64_t mNow = 0;
    int64_t mNextDue = 0;
    // Seconds of study.
    double mToday = 0;
    double mSeconds = 0;
    int mAnswers = 0;
    int mAsked = 0;
    int mRecalled = 0;
};

void Heading(const char* title) {
    std::printf(
        "\n%s\n\n| Rule | Memorised an hour | After 1 / 2 / 5 years, mean | Minutes, answers a "
        "day | Recall | Longest day |\n|---|---|---|---|---|---|\n",
        title);
}

void Print(const char* name, Rule& rule, const World& world) {
    const Figures f = Study(rule, world).Run();
    std::printf("| %s | %.1f | %.0f / %.0f / %.0f, %.0f | %.1f, %.0f | %.1f %% | %.0f min |\n",
                name, f.PerHour, f.After[0], f.After[1], f.After[2], f.Mean, f.Minutes, f.Answers,
                f.Recall * 100, f.LongestDay);
    std::fflush(stdout);
}

void PrintOwn(const char* name, const OwnOptions& options, const World& world) {
    OwnRule rule(options);
    Print(name, rule, world);
}

void Validate() {
    struct Row {
        const char* Name;
        std::unique_ptr<Rule> How;
        double Reviews, Memorised, PerHour;
    };
    Row rows[] = {{"SM-2", std::make_unique<Sm2Rule>(false), 122.2, 6680, 19.0},
                  {"steps of 1 to 180 days", std::make_unique<FixedRule>(), 101.6, 6710, 22.5},
                  {"recall 0.90", std::make_unique<RecallRule>(0.9, false), 110.8, 6886, 20.5},
                  {"recall 0.70", std::make_unique<RecallRule>(0.7, false), 50.8, 6052, 28.3}};
    std::printf(
        "One answer for all of a day, and the published rows:\n\n"
        "| Rule | Reviews a day | Memorised, mean | An hour |\n|---|---|---|---|\n");
    double worst = 0;
    for (Row& row : rows) {
        const Figures f = Study(*row.How, {true, 0, 0}).Run();
        std::printf("| %s | %.1f, published %.1f | %.0f, published %.0f | %.1f, published %.1f |\n",
                    row.Name, f.Answers, row.Reviews, f.Mean, row.Memorised, f.PerHour,
                    row.PerHour);
        worst =
            std::max({worst, std::abs(f.Answers / row.Reviews - 1),
                      std::abs(f.Mean / row.Memorised - 1), std::abs(f.PerHour / row.PerHour - 1)});
    }
    std::printf("\nThe greatest difference is %.1f %%.\n", worst * 100);
    if (worst > 0.02) {
        std::fputs("velomind_learn: the simulation is not the published one\n", stderr);
        std::exit(1);
    }
}

// Prints the rule as stated, and each choice of the options.
void PrintChoices(const World& world) {
    PrintOwn("begin again", {}, world);
    PrintOwn("keep a quarter", {25}, world);
    PrintOwn("keep half", {50}, world);
}

void PrintRules() {
    Heading("Ten new cards a day; the session ends when nothing is due:");
    const World world;
    PrintChoices(world);
    PrintOwn("begin again, scored 1 3 4 5", {0, {1, 3, 4, 5}}, world);
    PrintOwn("begin again, always 3", {0, {0, 3, 3, 3}}, world);
    PrintOwn("keep a quarter, always 3", {25, {0, 3, 3, 3}}, world);
    // These wait for their steps.
    const World patient{false, 1200, 0};
    Sm2Rule sm2(true);
    Print("SM-2", sm2, patient);
    for (const auto& [name, target] : {std::pair("recall 0.90", 0.9), {"recall 0.80", 0.8}}) {
        RecallRule rule(target, true);
        Print(name, rule, patient);
    }
    Heading("The same for a person who waits up to two minutes for a card:");
    PrintChoices({false, 120, 0});
    Heading("40 minutes a day, new cards without end:");
    PrintChoices({false, 0, 40});
}

void PrintTrials() {
    for (const World& world : {World{}, World{false, 0, 40}}) {
        Heading(world.Minutes == 0 ? "What else might help; ten new cards a day:"
                                   : "The same; 40 minutes a day, new cards without end:");
        OwnOptions options{25};
        PrintOwn("keep a quarter", options, world);
        options.IsShareAlone = true;
        PrintOwn("a quarter without the least interval of a first pass", options, world);
        options = {25};
        for (const auto& [name, stretch] :
             {std::pair("a quarter, later passes 1.15 times longer", 1.15), {"1.3 times", 1.3}}) {
            options.Stretch = stretch;
            PrintOwn(name, options, world);
        }
        options = {25};
        for (const auto& [name, target] :
             {std::pair("a quarter, stretched to a recall of 0.85", 0.85),
              {"to a recall of 0.80", 0.8}}) {
            options.RecallTarget = target;
            PrintOwn(name, options, world);
        }
        options = {25};
        options.PassesADay = 1;
        PrintOwn("a quarter, until tomorrow after each pass", options, world);
        options = {};
        for (const char* const name : {"begin again, until tomorrow after each pass",
                                       "after the second pass of a day", "after the third"}) {
            ++options.PassesADay;
            PrintOwn(name, options, world);
        }
    }
}

}  // namespace

int main() {
    Validate();
    PrintRules();
    PrintTrials();
    return 0;
}
