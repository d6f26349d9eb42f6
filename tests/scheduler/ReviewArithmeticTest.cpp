#include "scheduler/ReviewArithmetic.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

#include "scheduler/IntervalUnits.h"
#include "support/Fakes.h"

namespace {

uint32_t Bits(float number) {
    uint32_t bits = 0;
    std::memcpy(&bits, &number, sizeof bits);
    return bits;
}

struct ReviewCase {
    const char* Story;
    bool Introduced;
    float Interval;
    int Difficulty;
    int64_t Elapsed;
    int Score;
    float Random;
    uint32_t IntervalBits;
    int NewDifficulty;
};

// The bits of the intervals that are spread were calculated with 50 decimal digits.
const ReviewCase kReviewCases[] = {
    {"a new card failed", false, 5.0f, 16, 0, 0, 0.5f, Bits(1.0f), 17},
    {"a first pass lifts to an hour", false, 5.0f, 16, 0, 3, 0.5f, Bits(3600.0f), 16},
    {"a first pass lifts to four hours", false, 5.0f, 16, 0, 4, 0.5f, Bits(14400.0f), 16},
    {"a first pass lifts to sixteen hours", false, 5.0f, 16, 0, 5, 0.5f, Bits(57600.0f), 15},
    {"a first pass keeps a longer edited interval", false, 6e4f, 16, 0, 5, 0, Bits(6e4f), 16},
    {"a good score never shortens", true, 1000.0f, 16, 500, 3, 0.9f, Bits(1000.0f), 16},
    {"a bad score never lengthens", true, 1000.0f, 16, 5000, 2, 0.9f, Bits(1000.0f), 16},
    {"a failure returns at once", true, 9e6f, 32, 100, 0, 0.5f, Bits(1.0f), 32},
    {"easiest, long overdue", true, 5000.0f, 0, 10000, 5, 0.5f, 0x475A8DBE, 0},
    {"hardest, greatest random number", true, 5.0f, 32, 86400, 4, 1.0f, 0x47E65CC9, 32},
    {"beyond the hardest, the factor has a floor", true, 5.0f, 40, 86400, 4, 0.5f, Bits(95040.0f),
     40},
    {"hard, least random number", true, 100.0f, 20, 100, 4, 0.0f, 0x42D9EDAC, 20},
    {"hard and due gets easier", true, 12345.0f, 24, 12345, 5, 0.77f, 0x469E06CF, 23},
    {"scored 5 early stays as hard", true, 12346.0f, 24, 12345, 5, 0.77f, 0x469E06CF, 24},
    {"easy and forgotten in time", true, 60.0f, 10, 100, 1, 0.3f, 0x41B8099C, 16},
    {"easy and forgotten late", true, 50.0f, 10, 100, 1, 0.3f, 0x41B8099C, 10},
    {"not quite the end of the table", true, 90.0f, 16, 101, 2, 0.99999f, 0x4278B0F1, 17},
    {"elapsed as a 32-bit float", true, 5.0f, 16, 16777217, 3, 0.9f, 0x4B972AC4, 16},
    {"an interval below 1 is lifted first", true, 0.25f, 16, 1, 0, 0.0f, Bits(1.0f), 17},
    {"reviewed in the future, good", true, 70.0f, 16, -100, 4, 0.0f, Bits(70.0f), 16},
    {"reviewed in the future, bad", true, 70.0f, 31, -100, 2, 0.0f, Bits(1.0f), 32},
};

TEST(ReviewArithmetic, GivesTheIntervalBitForBitAndTheDifficulty) {
    for (const ReviewCase& c : kReviewCases) {
        SCOPED_TRACE(c.Story);
        const FakeClock clock;
        FakeRandom random;
        random.Feed(c.Random);
        CardSchedule schedule;
        schedule.Introduced = c.Introduced;
        schedule.LastReview = clock.Now() - wxTimeSpan::Seconds(c.Elapsed);
        schedule.ReviewInterval = c.Interval;
        schedule.Difficulty = static_cast<uint8_t>(c.Difficulty);
        const ReviewResult result = Review(schedule, c.Score, clock.Now(), random);
        EXPECT_EQ(Bits(result.NewInterval), c.IntervalBits) << result.NewInterval;
        EXPECT_EQ(result.Difficulty, c.NewDifficulty);
    }
}

TEST(ReviewRandom, RunsThroughTheFixedSequenceUpToExactlyOne) {
    SequenceRandom whole;
    for (const int number : {41, 18467, 6334, 26500, 19169, 15724}) {
        EXPECT_EQ(whole.NextWhole(), number);
    }
    SequenceRandom next;
    EXPECT_EQ(Bits(next.Next()), Bits(41.0f * 0x1.0002p-15f));
    float greatest = 0.0f;
    for (int i = 0; i < 200000; ++i) {
        greatest = std::max(greatest, next.Next());
    }
    EXPECT_EQ(greatest, 1.0f);
}

TEST(IntervalUnits, TakesTheLargestUnitOfWhichTheTimeIsMoreThanTwice) {
    const struct {
        float Seconds;
        const char* Text;
    } cases[] = {{5.0f, "5.00 seconds"},     {120.0f, "120.00 seconds"},
                 {121.0f, "2.02 minutes"},   {7200.0f, "120.00 minutes"},
                 {7201.0f, "2.00 hours"},    {172801.0f, "2.00 days"},
                 {1209601.0f, "2.00 weeks"}, {5256002.0f, "2.00 months"},
                 {1e9f, "31.71 years"},      {-9000.0f, "-9000.00 seconds"}};
    for (const auto& c : cases) {
        const IntervalInUnits split = SplitInterval(c.Seconds);
        EXPECT_EQ(wxString::Format("%.2f %s", split.Value, IntervalUnitName(split.Unit)), c.Text);
    }
    EXPECT_EQ(IntervalUnitSeconds(7), 1.0f);
    EXPECT_EQ(IntervalUnitName(-1), "seconds");
}

}  // namespace
