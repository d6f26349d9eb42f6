#include "scheduler/ReviewArithmetic.h"

#include <wx/translation.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

namespace {

struct IntervalUnit {
    float Seconds;
    const char* Name;
};

constexpr std::array<IntervalUnit, kIntervalUnitCount> kUnits{{
    {1.0f, wxTRANSLATE("seconds")},
    {60.0f, wxTRANSLATE("minutes")},
    {3600.0f, wxTRANSLATE("hours")},
    {86400.0f, wxTRANSLATE("days")},
    {604800.0f, wxTRANSLATE("weeks")},
    {2628000.0f, wxTRANSLATE("months")},
    {31536000.0f, wxTRANSLATE("years")},
}};

const IntervalUnit& UnitAt(int unit) {
    const bool known = unit >= 0 && unit < kIntervalUnitCount;
    return kUnits.at(known ? static_cast<size_t>(unit) : 0U);
}

}  // namespace

float IntervalUnitSeconds(int unit) {
    return UnitAt(unit).Seconds;
}

wxString IntervalUnitName(int unit) {
    return wxGetTranslation(UnitAt(unit).Name);
}

IntervalInUnits SplitInterval(float seconds) {
    int unit = kIntervalUnitCount - 1;
    while (unit > 0 && !(seconds > 2.0f * IntervalUnitSeconds(unit))) {
        --unit;
    }
    return {seconds / IntervalUnitSeconds(unit), unit};
}

float SequenceRandom::Next() {
    // 1/32767 as a float, so that the greatest whole number gives exactly 1.
    constexpr float kStep = 0x1.0002p-15f;
    return static_cast<float>(NextWhole()) * kStep;
}

int SequenceRandom::NextWhole() {
    mState = mState * 214013U + 2531011U;
    return static_cast<int>((mState >> 16) & 0x7FFFU);
}

namespace {

constexpr float kLeastInterval = 1.0f;
constexpr float kElapsedOfNewCard = 5.0f;

constexpr uint8_t kNeutralDifficulty = 16;
constexpr uint8_t kGreatestDifficulty = 32;
constexpr float kEasingStep = 1.1f;
// The float with bits 0x3F68BA2E.
constexpr float kHardeningStep = 0.9090909f;
constexpr float kGreatestFactor = 5.0f;
constexpr float kLeastFactor = 0.2f;

constexpr int kSpreadCount = 31;

// Seconds; the least interval after a first pass with score 3, 4 and 5: 1, 4 and 16 hours.
constexpr std::array<float, 3> kFirstPassFloors{3600.0f, 14400.0f, 57600.0f};

float FirstPassFloor(int score) {
    return kFirstPassFloors.at(static_cast<size_t>(score - kLeastGoodScore));
}

std::array<float, kSpreadCount> MakeSpreadTable() {
    std::array<float, kSpreadCount> table{};
    for (int i = 0; i < kSpreadCount; ++i) {
        table.at(static_cast<size_t>(i)) = static_cast<float>(std::pow(2.0, (i - 15) / 50.0));
    }
    return table;
}

float ElapsedSeconds(const CardSchedule& schedule, const wxDateTime& now) {
    if (!schedule.Introduced) {
        return kElapsedOfNewCard;
    }
    return static_cast<float>(SecondsBetween(schedule.LastReview, now));
}

float NextInterval(float multiplier, float elapsed, float old, ReviewRandom& random) {
    const float target = multiplier * elapsed;
    const bool good = multiplier >= 1.0f;
    // A good score never shortens an interval, and a bad one never lengthens it.
    if ((good && target < old) || (!good && target > old)) {
        return old;
    }
    const float interval = SpreadFactor(random.Next()) * target;
    return kLeastInterval > interval ? kLeastInterval : interval;
}

uint8_t NextDifficulty(uint8_t difficulty, int score, float elapsed, float old) {
    // A card scored 5 before it was due does not become easier.
    if (score == 5 && elapsed >= old && difficulty != 0) {
        return static_cast<uint8_t>(difficulty - 1);
    }
    // A card forgotten long after its due time is not made harder.
    if (score < kLeastGoodScore && elapsed < 2.0f * old) {
        if (difficulty < kNeutralDifficulty) {
            return kNeutralDifficulty;
        }
        if (difficulty < kGreatestDifficulty) {
            return static_cast<uint8_t>(difficulty + 1);
        }
    }
    return difficulty;
}

}  // namespace

float DifficultyFactor(int difficulty) {
    float factor = 1.0f;
    for (int d = difficulty; d < kNeutralDifficulty; ++d) {
        factor *= kEasingStep;
    }
    for (int d = difficulty; d > kNeutralDifficulty; --d) {
        factor *= kHardeningStep;
    }
    if (factor > kGreatestFactor) {
        return kGreatestFactor;
    }
    return factor < kLeastFactor ? kLeastFactor : factor;
}

float ScoreMultiplier(int score, int difficulty) {
    switch (score) {
        case 0:
            return 0.0f;
        case 1:
            return 0.25f;
        case 2:
            return 0.5f;
        case 3:
            return 1.0f;
        case 4:
            return 1.0f + 0.5f * DifficultyFactor(difficulty);
        default:
            return 1.0f + DifficultyFactor(difficulty);
    }
}

float SpreadFactor(float random) {
    static const std::array<float, kSpreadCount> kTable = MakeSpreadTable();
    const int index = static_cast<int>(random * static_cast<float>(kSpreadCount));
    // A random number of exactly 1 would be one past the end.
    return kTable.at(static_cast<size_t>(index < kSpreadCount ? index : kSpreadCount - 1));
}

float LostInterval(float lost, int score, float oldInterval) {
    if (score >= kLeastGoodScore) {
        return 0.0f;
    }
    return lost > 0.0f ? lost : oldInterval;
}

float RelearnedInterval(float lost, int score, int share) {
    if (share == 0 || !(lost > 0.0f) || score < kLeastGoodScore) {
        return 0.0f;
    }
    return std::max(FirstPassFloor(score), lost * static_cast<float>(share) / 100.0f);
}

ReviewResult Review(const CardSchedule& schedule, int score, const wxDateTime& now,
                    ReviewRandom& random, float least) {
    ReviewResult result{};
    const float stored = schedule.ReviewInterval;
    result.OldInterval = kLeastInterval > stored ? kLeastInterval : stored;
    result.Elapsed = ElapsedSeconds(schedule, now);
    result.NewInterval = NextInterval(ScoreMultiplier(score, schedule.Difficulty), result.Elapsed,
                                      result.OldInterval, random);
    result.Difficulty =
        NextDifficulty(schedule.Difficulty, score, result.Elapsed, result.OldInterval);
    result.FirstPass = !schedule.Introduced && score >= kLeastGoodScore;
    if (result.FirstPass) {
        const float floor = FirstPassFloor(score);
        if (!(result.NewInterval > floor)) {
            result.NewInterval = floor;
        }
    }
    result.NewInterval = std::max(result.NewInterval, least);
    return result;
}

namespace {

// Replaces chance by one of its limits.
class FixedRandom : public ReviewRandom {
  public:
    explicit FixedRandom(float number) : mNumber(number) {}
    float Next() override { return mNumber; }

  private:
    float mNumber;
};

}  // namespace

IntervalRange PredictReview(const CardSchedule& schedule, int score, const wxDateTime& now,
                            float least) {
    // The interval grows with the random number, so its limits are at those of chance.
    FixedRandom lowest(0.0f);
    FixedRandom highest(1.0f);
    return {Review(schedule, score, now, lowest, least).NewInterval,
            Review(schedule, score, now, highest, least).NewInterval};
}

namespace {

constexpr int32_t kBlockSize = 4096;
// The last block to open, safely below the greatest 32-bit number.
constexpr int32_t kLastBlock = 0x7FFF0000;

}  // namespace

int32_t ErcBlock(int32_t erc) {
    return erc - erc % kBlockSize;
}

bool IsErcUsedUp(int32_t erc, int32_t greatest) {
    const int32_t block = ErcBlock(greatest);
    return erc >= block && block >= kLastBlock;
}

int32_t NextErc(int32_t erc, int32_t greatest, ReviewRandom& random) {
    int32_t block = ErcBlock(greatest);
    // A card from an older block joins the newest; one that is there already opens the next.
    if (IsErcUsedUp(erc, greatest)) {
        block = 0;
    } else if (erc >= block) {
        block += kBlockSize;
    }
    return block + static_cast<int32_t>(random.Next() * static_cast<float>(kBlockSize - 1));
}
