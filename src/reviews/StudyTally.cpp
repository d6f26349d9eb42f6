#include "reviews/StudyTally.h"

#include <algorithm>

#include "reviews/ReviewFigures.h"

namespace {

constexpr int64_t kLongestAnswer = 60;
constexpr int32_t kUsualDays = 90;
// What an answer takes where the log does not tell.
constexpr double kUsualSeconds = 8.0;
constexpr int32_t kTellingAnswers = 20;

}  // namespace

void StudyTally::Add(const ReviewRecord& record, int32_t categoryId) {
    auto& lapses = mLapses[record.Direction == kReviewReverse ? 1 : 0];
    const bool isLapse = record.Score < kLeastPass && record.OldInterval >= kKnownInterval;
    const auto known = lapses.find(record.CardId);
    if (known != lapses.end()) {
        std::vector<int64_t>& times = known->second;
        if (record.Replaces >= 0) {
            times.erase(std::remove(times.begin(), times.end(), record.Replaces), times.end());
        }
        if (record.Elapsed < 0) {
            times.clear();
        }
    }
    if (isLapse) {
        lapses[record.CardId].push_back(record.Time);
    }
    if (record.Replaces >= 0) {
        return;
    }
    const int32_t day = FindDay(record.Time);
    DayTally& tally = mDays[day];
    ++tally.Answers;
    tally.Seconds += std::clamp<int64_t>(record.Time - mLastTime, 0, kLongestAnswer);
    mLastTime = record.Time;
    if (record.Elapsed < 0 && day >= mFirstDay) {
        tally.NewCards.push_back({record.CardId, categoryId});
    }
}

int32_t StudyTally::CountLapses(const CardUuid& card, ReviewDirection direction) const {
    const auto& lapses = mLapses[direction == kReviewReverse ? 1 : 0];
    const auto found = lapses.find(card);
    return found == lapses.end() ? 0 : static_cast<int32_t>(found->second.size());
}

double StudyTally::SecondsPerAnswer(int32_t today) const {
    int64_t seconds = 0;
    int64_t answers = 0;
    const auto end = mDays.upper_bound(today);
    for (auto day = mDays.upper_bound(today - kUsualDays); day != end; ++day) {
        seconds += day->second.Seconds;
        answers += day->second.Answers;
    }
    return answers < kTellingAnswers || seconds == 0
               ? kUsualSeconds
               : static_cast<double>(seconds) / static_cast<double>(answers);
}

int32_t StudyTally::FindDay(int64_t time) {
    if (time < mDayStart || time >= mDayEnd) {
        mDay = DayOf(time);
        mDayStart = StartOfDay(mDay);
        mDayEnd = StartOfDay(mDay + 1);
    }
    return mDay;
}
