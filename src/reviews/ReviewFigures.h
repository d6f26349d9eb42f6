#pragma once

#include <wx/datetime.h>
#include <wx/string.h>

#include <array>
#include <atomic>
#include <cstdint>
#include <optional>
#include <vector>

#include "reviews/ReviewLog.h"
#include "store/CardUuid.h"
#include "store/FlashCard.h"

class Database;

// The numbers behind the plots of progress. Past reviews come from the review log, what is to come
// from the present schedules. A figure of both directions counts a card twice, once in each.
//
// Days are those of the local calendar, counted from 1 January 1970 as day 0. A day lasts from
// midnight to midnight of the time zone of the process, be it 23, 24 or 25 hours.

// How far back figures of the past go.
enum class ReviewSpan : uint8_t { kMonth, kQuarter, kYear, kAll };

// Days of a span up to and with today: 30, 90, 365; 0 for all.
int32_t SpanDays(ReviewSpan span);

// Returns the local day that holds a moment, in seconds since 1970.
int32_t DayOf(int64_t seconds);
// Returns noon of a day, whose date is the day's in every time zone rule.
wxDateTime NoonOfDay(int32_t day);

struct ReviewQuery {
    // None asks for all categories.
    std::optional<int32_t> CategoryId;
    // A set of directions; both are kReviewForward | kReviewReverse.
    int Directions = kReviewForward | kReviewReverse;
    ReviewSpan Span = ReviewSpan::kYear;
    // The moment of the question.
    wxDateTime Now;
};

constexpr size_t kForecastDays = 365;

// What falls due, from the schedules of introduced cards that are not excluded. The span plays no
// part.
struct DueForecast {
    // Due already at the moment of the question.
    int32_t Overdue = 0;
    // Reviews that fall due on each day without what is overdue; the first is the rest of today,
    // the second tomorrow. A review that comes after the first one of a card is not foreseen.
    std::array<int32_t, kForecastDays> PerDay{};
    // What is left undone at the end of each day when no day has more than UsualDay reviews; all
    // zero while that is unknown.
    std::array<int32_t, kForecastDays> LeftOver{};
    // The median number of reviews on the days of study among the last 90 days, in the queried
    // directions but over all categories. 0 while there was none.
    int32_t UsualDay = 0;
    // The days of study behind it.
    int32_t StudyDays = 0;
};

// The reviews of one day.
struct DayReviews {
    int32_t Day = 0;
    // Counts by score, 0 to 5.
    std::array<int32_t, 6> ByScore{};

    int32_t Total() const;
};

// A range of times in seconds: From is in it, To is not. The last range of a row has no end: its To
// is 0.
struct TimeRange {
    int64_t From = 0;
    int64_t To = 0;
};

// The bounds of the ranges, close to a logarithmic scale, as people name times: a minute, ten, an
// hour, six, a day, ... ten years. The first range is below a minute.
constexpr size_t kTimeRangeCount = 17;
const std::array<TimeRange, kTimeRangeCount>& TimeRanges();

// How much was remembered, that is, scored 3 or more, among reviews of cards scored before.
struct Retention {
    TimeRange Range;
    int32_t Reviews = 0;
    int32_t Remembered = 0;

    // The share, 0 to 1; 0 without a review.
    double Share() const { return Reviews == 0 ? 0.0 : static_cast<double>(Remembered) / Reviews; }
    // The bounds within which the true share lies with 95 % certainty (Wilson's), so that five
    // reviews do not look like five hundred. 0 and 1 without a review.
    double LeastShare() const;
    double GreatestShare() const;
};

// Intervals from here on make a card an old one: 21 days.
constexpr int64_t kOldInterval = int64_t{21} * 86400;
constexpr size_t kDifficultyCount = 33;

// How the present schedules stand that are not excluded. The span plays no part.
struct ScheduleFigures {
    // Not scored yet.
    int32_t New = 0;
    // Introduced, with an interval below and from kOldInterval.
    int32_t Young = 0;
    int32_t Old = 0;
    // Introduced schedules by interval, in the ranges of TimeRanges.
    std::array<int32_t, kTimeRangeCount> ByInterval{};
    // Introduced schedules by difficulty, 0 easiest to 32 hardest.
    std::array<int32_t, kDifficultyCount> ByDifficulty{};
};

// A card that was forgotten often within the span.
struct HardCard {
    CardUuid CardId;
    wxString Front;
    // Scores 0 to 2 after the card had been scored before.
    int32_t Lapses = 0;
    int32_t Reviews = 0;
    // The greater one of the queried directions.
    uint8_t Difficulty = 0;
};

constexpr size_t kMostHardCards = 20;

// How one category stands, to see which needs work. For every category, whichever is queried.
struct CategoryFigures {
    Category Info;
    int32_t Overdue = 0;
    // Falling due on the day after today.
    int32_t Tomorrow = 0;
    int32_t New = 0;
    // Within the span, as in Retention.
    int32_t Reviews = 0;
    int32_t Remembered = 0;
};

// What the log had to say, to tell why plots may be empty.
struct LogFigures {
    // Reviews in the log, those that a later score replaced left out.
    int64_t Reviews = 0;
    int64_t ForeignLines = 0;
    // The first one; invalid without any.
    wxDateTime First;
};

struct ReviewFigures {
    // The day of the question.
    int32_t Today = 0;
    DueForecast Due;
    // Each day of the span up to today, from the oldest; for all from the first review on.
    std::vector<DayReviews> Days;
    // Each of the last 371 days up to today, whatever the span, which fill 53 weeks of a calendar.
    std::vector<DayReviews> Calendar;
    // Split by the time since the review before, and by the time since the first review of the card
    // in the log, in that direction. A range without reviews is there as well.
    std::array<Retention, kTimeRangeCount> ByElapsed;
    std::array<Retention, kTimeRangeCount> ByAge;
    ScheduleFigures Schedules;
    // Most lapses first, at most kMostHardCards.
    std::vector<HardCard> Hardest;
    // In the order of the store.
    std::vector<CategoryFigures> Categories;
    LogFigures Log;
};

// Computes the figures from copies alone, without texts (HardCard::Front is empty). Any thread.
ReviewFigures MakeReviewFigures(const std::vector<CardSchedules>& cards,
                                const std::vector<Category>& categories,
                                const ReviewHistory& history, const ReviewQuery& query);

// Reads the open store and what its log has got since the last call with this history, and computes
// the figures. For a worker thread: the store is locked for a few milliseconds at a time, so that
// study goes on, and a card scored meanwhile counts as before or after. The Database must outlive
// the call; when it is closed or turned to another store meanwhile the figures mean nothing, so the
// caller drops them then. One history may serve one call at a time. Returns 0; or -1 when the store
// could not be read, which is reported to nobody, or when cancelled became true.
int ReadReviewFigures(Database& database, const ReviewQuery& query, ReviewHistory& history,
                      const std::atomic<bool>& cancelled, ReviewFigures& figures);
