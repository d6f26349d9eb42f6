#include "scheduler/ReviewArithmetic.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

#include "support/Fakes.h"

namespace {

uint32_t Bits(float number) {
    uint32_t bits = 0;
    std::memcpy(&bits, &number, sizeof bits);
    return bits;
}

// What the simulation of study never or rarely meets. The bits were calculated with 50 decimal
// digits. A time of -1 is that of a new card.
TEST(ReviewArithmetic, GivesTheIntervalBitForBitAndTheDifficulty) {
    const struct {
        const char* Story;
        int64_t Elapsed;
        float Interval;
        int Difficulty, Score;
        float Random;
        uint32_t NewInterval;
        int NewDifficulty;
    } cases[] = {
        {"a first pass keeps a longer edited interval", -1, 6e4f, 16, 5, 0, Bits(6e4f), 16},
        {"easiest, long overdue", 10000, 5000.0f, 0, 5, 0.5f, 0x475A8DBE, 0},
        {"hardest, greatest random number", 86400, 5.0f, 32, 4, 1.0f, 0x47E65CC9, 32},
        {"the factor has a floor", 86400, 5.0f, 40, 4, 0.5f, Bits(95040.0f), 40},
        {"hard, least random number", 100, 100.0f, 20, 4, 0.0f, 0x42D9EDAC, 20},
        {"not quite the end of the table", 101, 90.0f, 16, 2, 0.99999f, 0x4278B0F1, 17},
        {"elapsed as a 32-bit float", 16777217, 5.0f, 16, 3, 0.9f, 0x4B972AC4, 16},
        {"an interval below 1 is lifted first", 1, 0.25f, 16, 0, 0.0f, Bits(1.0f), 17},
        {"forgotten at the interval itself", 400, 100.0f, 16, 1, 0.0f, 0x42A27353, 16},
        {"at its hardest", 100, 100.0f, 32, 0, 0.5f, Bits(1.0f), 32},
        {"reviewed in the future", -100, 70.0f, 31, 2, 0.0f, Bits(1.0f), 32},
    };
    const FakeClock clock;
    for (const auto& c : cases) {
        SCOPED_TRACE(c.Story);
        FakeRandom random;
        random.Feed(c.Random);
        CardSchedule schedule;
        schedule.Introduced = c.Elapsed != -1;
        schedule.LastReview = clock.Now() - wxTimeSpan::Seconds(c.Elapsed);
        schedule.ReviewInterval = c.Interval;
        schedule.Difficulty = static_cast<uint8_t>(c.Difficulty);
        const ReviewResult result = Review(schedule, c.Score, clock.Now(), random);
        EXPECT_EQ(Bits(result.NewInterval), c.NewInterval) << result.NewInterval;
        EXPECT_EQ(result.Difficulty, c.NewDifficulty);
    }
    EXPECT_EQ(DifficultyFactor(-4), 5.0f) << "the factor has a ceiling";
}

// The limits that are told before a score are those that chance reaches, and no draw is needed.
TEST(ReviewArithmetic, TellsTheLimitsOfTheIntervalBeforeTheScore) {
    const struct {
        const char* Story;
        int64_t Elapsed;
        float Interval;
        int Score;
        float Least, Greatest;
    } cases[] = {
        {"in time", 1000, 1000.0f, 5, 1624.5047f, 2462.2888f},
        {"early, a good score keeps the interval", 10, 1000.0f, 4, 1000.0f, 1000.0f},
        {"early, a bad score", 10, 1000.0f, 2, 4.0612617f, 6.1557221f},
        {"a bad score keeps a short interval", 9000, 10.0f, 1, 10.0f, 10.0f},
        {"failed", 1000, 1000.0f, 0, 1.0f, 1.0f},
        {"new, failed", -1, 5.0f, 0, 1.0f, 1.0f},
        {"new, a first pass", -1, 5.0f, 3, 3600.0f, 3600.0f},
        {"new, guessed", -1, 5.0f, 1, 1.0153154f, 1.5389305f},
        {"reviewed in the future", -100, 70.0f, 1, 1.0f, 1.0f},
    };
    const FakeClock clock;
    for (const auto& c : cases) {
        SCOPED_TRACE(c.Story);
        CardSchedule schedule;
        schedule.Introduced = c.Elapsed != -1;
        schedule.LastReview = clock.Now() - wxTimeSpan::Seconds(c.Elapsed);
        schedule.ReviewInterval = c.Interval;
        const IntervalRange told = PredictReview(schedule, c.Score, clock.Now());
        EXPECT_FLOAT_EQ(told.Least, c.Least);
        EXPECT_FLOAT_EQ(told.Greatest, c.Greatest);
        float least = told.Greatest;
        float greatest = told.Least;
        SequenceRandom random;
        for (int i = 0; i < 1000; ++i) {
            const float interval = Review(schedule, c.Score, clock.Now(), random).NewInterval;
            least = std::min(least, interval);
            greatest = std::max(greatest, interval);
        }
        EXPECT_EQ(Bits(least), Bits(told.Least));
        EXPECT_EQ(Bits(greatest), Bits(told.Greatest));
    }
}

TEST(IntervalUnits, TakesTheLargestUnitOfWhichTheTimeIsMoreThanTwice) {
    const std::pair<float, const char*> cases[] = {
        {1209600.0f, "14.00 days"},    {1209601.0f, "2.00 weeks"},  {5256002.0f, "2.00 months"},
        {63072000.0f, "24.00 months"}, {63072004.0f, "2.00 years"}, {-9000.0f, "-9000.00 seconds"}};
    for (const auto& [seconds, text] : cases) {
        const IntervalInUnits split = SplitInterval(seconds);
        EXPECT_EQ(wxString::Format("%.2f %s", split.Value, IntervalUnitName(split.Unit)), text);
    }
    EXPECT_EQ(IntervalUnitName(-1) + IntervalUnitName(99), "secondsseconds");
}

}  // namespace
