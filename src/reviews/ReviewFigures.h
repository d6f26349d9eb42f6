#pragma once

#include <wx/datetime.h>
#include <wx/string.h>

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "reviews/ReviewLog.h"
#include "reviews/StudyHabit.h"
#include "store/CardUuid.h"
#include "store/CategoryChoice.h"
#include "store/FlashCard.h"

class Database;

// The numbers for the plots of progress. The past comes from the review log, the future from the
// present schedules. A figure of both directions counts a card twice, once in each.
//
// Days are those of the local calendar, counted from 1 January 1970 as day 0. A day lasts from
// midnight to midnight in the process's time zone: 23, 24 or 25 hours.

// How far back the figures go.
enum class ReviewSpan : uint8_t { kMonth, kQuarter, kYear, kAll };

// Returns the days of a span including today: 30, 90, 365; 0 for all.
int32_t SpanDays(ReviewSpan span);

// Returns the local day that holds a moment, in seconds since 1970.
int32_t DayOf(int64_t seconds);
// Returns the first second of a day. Where the clock is put forward at midnight, it begins at one.
int64_t StartOfDay(int32_t day);
// Returns noon of a day, which has the day's date in every time zone.
wxDateTime NoonOfDay(int32_t day);

// The hardest cards that the statistics show.
constexpr size_t kMostHardCards = 20;

struct ReviewQuery {
    // Empty asks for all categories.
    std::optional<CategoryChoice> Asked;
    // A set of directions; both are kReviewForward | kReviewReverse.
    int Directions = kReviewForward | kReviewReverse;
    ReviewSpan Span = ReviewSpan::kYear;
    // The moment of the question.
    wxDateTime Now;
    size_t MostHardest = kMostHardCards;
};

constexpr size_t kForecastDays = 365;

// What falls due, from the schedules of introduced cards that are not excluded. Does not depend on
// the span.
struct DueForecast {
    // Already due at the moment of the question.
    int32_t Overdue = 0;
    // Reviews that fall due on each day, without the overdue ones; the first is the rest of today,
    // the second tomorrow. Counts only the next review of each card.
    std::array<int32_t, kForecastDays> PerDay{};
    // The reviews left at the end of each day if no day has more than UsualDay; all zero while that
    // is unknown.
    std::array<int32_t, kForecastDays> LeftOver{};
    // The median number of reviews on the days of study among the last 90 days, in the queried
    // directions but over all categories. 0 while there was none.
    int32_t UsualDay = 0;
    // The days of study that it is taken from.
    int32_t StudyDays = 0;
    // The answers after which the person wants to stop; 0 without such a measure. With one,
    // LeftOver comes from a forecast that studies the days through.
    int32_t Measure = 0;
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

// Counts how many reviews of cards scored before were remembered, that is, scored 3 or more.
struct Retention {
    TimeRange Range;
    int32_t Reviews = 0;
    int32_t Remembered = 0;

    // Returns the share, 0 to 1; 0 without a review.
    double Share() const { return Reviews == 0 ? 0.0 : static_cast<double>(Remembered) / Reviews; }
    // Return the bounds of the true share with 95 % certainty (Wilson's), so that five reviews do
    // not look like five hundred; 0 and 1 without a review.
    double LeastShare() const;
    double GreatestShare() const;
};

// A card with this interval or more is old: 21 days.
constexpr int64_t kOldInterval = int64_t{21} * 86400;
constexpr size_t kDifficultyCount = 33;

// The state of the present schedules that are not excluded. Does not depend on the span.
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

// A card that was often forgotten within the span.
struct HardCard {
    CardUuid CardId;
    wxString Front;
    // Scores 0 to 2 after the card had been scored before.
    int32_t Lapses = 0;
    int32_t Reviews = 0;
    // The greater one among the queried directions.
    uint8_t Difficulty = 0;
};

// A card that takes too much (kManyLapses) and is still studied in such a direction.
struct CostlyCard {
    CardUuid CardId;
    wxString Front;
    // A set of the directions in which it takes too much, among the queried ones.
    int Directions = kReviewNone;
    // In these directions, since it was last begun anew. Does not depend on the span.
    int32_t Lapses = 0;
};

constexpr size_t kMostCostlyCards = 200;

// The state of a category, to see which needs work. Every category has one, whichever is queried.
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

// What the log contained, to explain empty plots.
struct LogFigures {
    // Reviews in the log, without those that a later score replaced.
    int64_t Reviews = 0;
    int64_t ForeignLines = 0;
    // The first one; invalid without any.
    wxDateTime First;
};

struct ReviewFigures {
    // The day of the question.
    int32_t Today = 0;
    DueForecast Due;
    // Each day of the span up to today, from the oldest; for kAll from the first review on.
    std::vector<DayReviews> Days;
    // The last 371 days up to today, for any span: 53 weeks of a calendar.
    std::vector<DayReviews> Calendar;
    // Split by the time since the review before, and by the time since the first review of the card
    // in the log, in that direction. Ranges without reviews are included.
    std::array<Retention, kTimeRangeCount> ByElapsed;
    std::array<Retention, kTimeRangeCount> ByAge;
    ScheduleFigures Schedules;
    // Most lapses first, at most ReviewQuery::MostHardest.
    std::vector<HardCard> Hardest;
    // Most lapses first, at most kMostCostlyCards.
    std::vector<CostlyCard> Costly;
    // In all categories and directions.
    StudyHabit Habit;
    // In the order of the store.
    std::vector<CategoryFigures> Categories;
    LogFigures Log;
};

// Computes the figures from copies alone, without texts (HardCard::Front is empty). Any thread.
ReviewFigures MakeReviewFigures(const std::vector<CardSchedules>& cards,
                                const std::vector<Category>& categories,
                                const ReviewHistory& history, const ReviewQuery& query);

// Reads the open store and what its log has gained since the last call with this history, and
// computes the figures. For a worker thread: the store is locked for a few milliseconds at a time,
// so that study goes on, and a card scored meanwhile counts as before or after. The Database must
// outlive the call; if it is closed or opens another store meanwhile, the caller must drop the
// figures. Use a history for one call at a time. cards gets the schedules that were read, if it is
// not null. Returns 0; or -1 when the store could not be read,
// which is not reported, or when cancelled became true.
int ReadReviewFigures(Database& database, const ReviewQuery& query, ReviewHistory& history,
                      const std::atomic<bool>& cancelled, ReviewFigures& figures,
                      std::vector<CardSchedules>* cards = nullptr);

// Gives the identities of the cards in ReviewFigures::Hardest, on any thread that has no operation
// of the Database running. Returns 0; or -1 and none when the store could not be read, or when
// cancelled became true.
int ReadHardestCards(Database& database, const ReviewQuery& query, ReviewHistory& history,
                     const std::atomic<bool>& cancelled, std::vector<CardUuid>& cards);
