#include "reviews/ReviewFigures.h"

#include <algorithm>
#include <cmath>
#include <ctime>
#include <numeric>
#include <unordered_map>

#include "base/Job.h"
#include "store/Database.h"

namespace {

constexpr int64_t kSecondsPerDay = 86400;
constexpr int64_t kMonth = 2628000;
constexpr int64_t kYear = 31536000;
constexpr int64_t kBounds[] = {60,
                               600,
                               3600,
                               int64_t{6} * 3600,
                               kSecondsPerDay,
                               2 * kSecondsPerDay,
                               4 * kSecondsPerDay,
                               7 * kSecondsPerDay,
                               14 * kSecondsPerDay,
                               kMonth,
                               2 * kMonth,
                               4 * kMonth,
                               kYear,
                               2 * kYear,
                               4 * kYear,
                               10 * kYear};
static_assert(std::size(kBounds) + 1 == kTimeRangeCount);

constexpr int32_t kCalendarDays = 53 * 7;
constexpr int32_t kUsualDays = 90;
// 95 % of a normal distribution lie within this many deviations.
constexpr double kDeviations = 1.959964;
// The cards read at once: a few milliseconds, for which study may have to wait.
constexpr int32_t kPortion = 2000;

size_t RangeOf(double seconds) {
    return static_cast<size_t>(std::upper_bound(std::begin(kBounds), std::end(kBounds), seconds,
                                                [](double value, int64_t bound) {
                                                    return value < static_cast<double>(bound);
                                                }) -
                               std::begin(kBounds));
}

std::tm LocalDate(int64_t seconds) {
    const std::time_t moment = seconds;
    std::tm date{};
    ::localtime_r(&moment, &date);
    return date;
}

// The days of the figures: asking the system for the dates of a million reviews would take longer
// than all the rest.
class DayTable {
  public:
    DayTable(int32_t first, int32_t last) : mFirst(first) {
        for (int32_t day = first; day <= last + 1; ++day) {
            mStarts.push_back(StartOfDay(day));
        }
    }
    // Returns first - 1 or last + 1 for all moments before or after the table.
    int32_t Find(int64_t seconds) {
        if (seconds >= mStart && seconds < mEnd) {
            return mDay;
        }
        const auto next = std::upper_bound(mStarts.begin(), mStarts.end(), seconds);
        const auto day = mFirst + static_cast<int32_t>(next - mStarts.begin()) - 1;
        if (next != mStarts.begin() && next != mStarts.end()) {
            mStart = *std::prev(next);
            mEnd = *next;
            mDay = day;
        }
        return day;
    }

  private:
    int32_t mFirst;
    std::vector<int64_t> mStarts;
    // The last day found, as a log is nearly in order.
    int32_t mDay = 0;
    int64_t mStart = 0;
    int64_t mEnd = 0;
};

double WilsonBound(const Retention& retention, double deviations) {
    const double count = retention.Reviews;
    const double share = retention.Share();
    const double square = deviations * deviations;
    const double middle = share + square / (2 * count);
    const double spread =
        std::sqrt(share * (1 - share) / count + square / (4 * count * count)) * deviations;
    return std::clamp((middle + spread) / (1 + square / count), 0.0, 1.0);
}

std::array<Retention, kTimeRangeCount> EmptyRetentions() {
    std::array<Retention, kTimeRangeCount> all;
    for (size_t i = 0; i < all.size(); ++i) {
        all[i].Range = TimeRanges()[i];
    }
    return all;
}

void Count(Retention& retention, uint8_t score) {
    ++retention.Reviews;
    retention.Remembered += score >= kLeastPass ? 1 : 0;
}

std::vector<DayReviews> EmptyDays(int32_t first, int32_t last) {
    std::vector<DayReviews> days;
    for (int32_t day = first; day <= last; ++day) {
        days.push_back({day, {}});
    }
    return days;
}

void CountDay(std::vector<DayReviews>& days, int32_t day, uint8_t score) {
    const int64_t place = days.empty() ? -1 : int64_t{day} - days.front().Day;
    if (place >= 0 && place < static_cast<int64_t>(days.size())) {
        ++days[static_cast<size_t>(place)].ByScore[score];
    }
}

// Computes all figures once.
class FigureMaker {
  public:
    FigureMaker(const std::vector<CardSchedules>& cards, const std::vector<Category>& categories,
                const ReviewHistory& history, const ReviewQuery& query)
        : mCards(cards),
          mHistory(history),
          mQuery(query),
          mNow(query.Now.GetTicks()),
          mToday(DayOf(mNow)),
          mFirstDay(FindFirstDay()),
          mDays(std::min(mFirstDay, mToday - kCalendarDays),
                mToday + static_cast<int32_t>(kForecastDays)) {
        for (const Category& category : categories) {
            mPlaces.emplace(category.Id, mFigures.Categories.size());
            mFigures.Categories.push_back({category, 0, 0, 0, 0, 0});
        }
    }

    ReviewFigures Make() {
        mFigures.Today = mToday;
        mFigures.ByElapsed = mFigures.ByAge = EmptyRetentions();
        const int32_t span = SpanDays(mQuery.Span);
        mFigures.Days = EmptyDays(span == 0 ? mFirstDay : mToday - span + 1, mToday);
        mFigures.Calendar = EmptyDays(mToday - kCalendarDays + 1, mToday);
        for (const CardSchedules& card : mCards) {
            CountSide(card, card.Forward, kReviewForward);
            CountSide(card, card.Reverse, kReviewReverse);
        }
        CountReviews();
        EstimateUsualDay();
        SpreadLeftOver();
        ChooseHardest();
        ChooseCostly();
        mFigures.Habit = FindStudyHabit(mHistory, mNow);
        return std::move(mFigures);
    }

  private:
    // The sums of a card's reviews, by its place in the history.
    struct CardReviews {
        // The places of the card in the store and of its category; -1 for none.
        int32_t Card = -1;
        int32_t Category = -1;
        // The first review in each direction; 0 until found.
        std::array<int64_t, 2> First{};
        int32_t Reviews = 0;
        int32_t Lapses = 0;
        // Those of a known card since it was begun anew, in each direction.
        std::array<int32_t, 2> KnownLapses{};
    };

    bool Asks(ReviewDirection direction) const { return (mQuery.Directions & direction) != 0; }
    bool Asks(int32_t categoryId) const { return !mQuery.Asked || mQuery.Asked->Has(categoryId); }
    // A review from tomorrow or later was made while the clock was wrong.
    bool Counts(const ReviewHistory::Review& review) const {
        return !review.IsReplaced && review.Time < mNow + kSecondsPerDay &&
               Asks(review.IsReverse ? kReviewReverse : kReviewForward);
    }

    int32_t FindFirstDay() const {
        int64_t first = mNow;
        for (const ReviewHistory::Review& review : mHistory.Reviews()) {
            first = Counts(review) ? std::min(first, review.Time) : first;
        }
        return DayOf(first);
    }

    CategoryFigures* FindCategory(int32_t id) {
        const auto found = mPlaces.find(id);
        return found == mPlaces.end() ? nullptr : &mFigures.Categories[found->second];
    }

    void CountSide(const CardSchedules& card, const CardSchedules::Side& side,
                   ReviewDirection direction) {
        if (side.Excluded || !Asks(direction)) {
            return;
        }
        CategoryFigures* const category = FindCategory(card.CategoryId);
        const bool isAsked = Asks(card.CategoryId);
        if (!side.Introduced) {
            mFigures.Schedules.New += isAsked ? 1 : 0;
            if (category != nullptr) {
                ++category->New;
            }
            return;
        }
        const wxDateTime lastReview(wxLongLong(side.LastReview * 1000));
        const int64_t due = DueTime(lastReview, side.Interval).GetValue().GetValue() / 1000;
        const bool isOverdue = due < mNow;
        const int32_t day = isOverdue ? -1 : mDays.Find(due) - mToday;
        if (category != nullptr) {
            category->Overdue += isOverdue ? 1 : 0;
            category->Tomorrow += day == 1 ? 1 : 0;
        }
        if (!isAsked) {
            return;
        }
        if (isOverdue) {
            ++mFigures.Due.Overdue;
        } else if (day < static_cast<int32_t>(kForecastDays)) {
            ++mFigures.Due.PerDay[static_cast<size_t>(std::max(day, 0))];
        }
        CountSchedule(side);
    }

    void CountSchedule(const CardSchedules::Side& side) {
        ScheduleFigures& figures = mFigures.Schedules;
        (side.Interval < static_cast<float>(kOldInterval) ? figures.Young : figures.Old) += 1;
        ++figures.ByInterval[RangeOf(static_cast<double>(side.Interval))];
        ++figures.ByDifficulty[std::min<size_t>(side.Difficulty, kDifficultyCount - 1)];
    }

    // Finds the cards of the reviews in the store. A deleted card still counts when all categories
    // are queried.
    void FindCards() {
        mReviewed.resize(mHistory.Cards().size());
        for (size_t i = 0; i < mCards.size(); ++i) {
            const uint32_t place = mHistory.FindCard(mCards[i].CardId);
            if (place != ReviewHistory::kNone) {
                const auto category = mPlaces.find(mCards[i].CategoryId);
                mReviewed[place].Card = static_cast<int32_t>(i);
                mReviewed[place].Category =
                    category == mPlaces.end() ? -1 : static_cast<int32_t>(category->second);
            }
        }
    }

    void CountReviews() {
        FindCards();
        mUsual = EmptyDays(mToday - kUsualDays + 1, mToday);
        const int32_t span = SpanDays(mQuery.Span);
        const int32_t first = span == 0 ? mFirstDay : mToday - span + 1;
        mFigures.Log.ForeignLines = mHistory.ForeignLines();
        const std::vector<bool> asked = AskedPlaces();
        int64_t oldest = mNow;
        for (const ReviewHistory::Review& review : mHistory.Reviews()) {
            if (review.IsReplaced) {
                continue;
            }
            ++mFigures.Log.Reviews;
            oldest = std::min(oldest, review.Time);
            if (Counts(review)) {
                CountReview(review, std::min(mDays.Find(review.Time), mToday), first, asked);
            }
        }
        if (mFigures.Log.Reviews > 0) {
            mFigures.Log.First = wxDateTime(static_cast<time_t>(oldest));
        }
    }

    // Returns for each place whether its category is queried.
    std::vector<bool> AskedPlaces() const {
        std::vector<bool> asked(mFigures.Categories.size());
        for (const auto& [id, place] : mPlaces) {
            asked[place] = Asks(id);
        }
        return asked;
    }

    void CountReview(const ReviewHistory::Review& review, int32_t day, int32_t first,
                     const std::vector<bool>& asked) {
        CardReviews& card = mReviewed[review.Card];
        int64_t& firstTime = card.First[review.IsReverse ? 1 : 0];
        const bool isFirstInLog = firstTime == 0;
        firstTime = isFirstInLog ? review.Time : std::min(firstTime, review.Time);
        CountDay(mUsual, day, review.Score);
        const bool isRecall = review.Elapsed >= 0;
        const bool isWithin = day >= first;
        if (isWithin && isRecall && card.Category >= 0) {
            CategoryFigures& category = mFigures.Categories[static_cast<size_t>(card.Category)];
            ++category.Reviews;
            category.Remembered += review.Score >= kLeastPass ? 1 : 0;
        }
        if (mQuery.Asked && (card.Category < 0 || !asked[static_cast<size_t>(card.Category)])) {
            return;
        }
        CountDay(mFigures.Calendar, day, review.Score);
        int32_t& lapses = card.KnownLapses[review.IsReverse ? 1 : 0];
        lapses = isRecall ? lapses : 0;
        lapses += review.WasKnown && review.Score < kLeastPass ? 1 : 0;
        if (!isWithin) {
            return;
        }
        CountDay(mFigures.Days, day, review.Score);
        ++card.Reviews;
        if (isRecall) {
            card.Lapses += review.Score < kLeastPass ? 1 : 0;
            Count(mFigures.ByElapsed[RangeOf(static_cast<double>(review.Elapsed))], review.Score);
            // At its first review in the log the card's age is unknown.
            if (!isFirstInLog) {
                const auto age = static_cast<double>(review.Time - firstTime);
                Count(mFigures.ByAge[RangeOf(age)], review.Score);
            }
        }
    }

    void EstimateUsualDay() {
        std::vector<int32_t> totals;
        for (const DayReviews& day : mUsual) {
            // Today is not over yet, and counts only if there is no other day.
            if (day.Total() > 0 && (day.Day != mToday || totals.empty())) {
                totals.push_back(day.Total());
            }
        }
        mFigures.Due.StudyDays = static_cast<int32_t>(totals.size());
        if (!totals.empty()) {
            const auto middle = totals.begin() + static_cast<std::ptrdiff_t>(totals.size() / 2);
            std::nth_element(totals.begin(), middle, totals.end());
            mFigures.Due.UsualDay = *middle;
        }
    }

    void SpreadLeftOver() {
        DueForecast& due = mFigures.Due;
        if (due.UsualDay == 0) {
            return;
        }
        int32_t left = due.Overdue;
        for (size_t i = 0; i < due.PerDay.size(); ++i) {
            left = std::max(0, left + due.PerDay[i] - due.UsualDay);
            due.LeftOver[i] = left;
        }
    }

    void ChooseHardest() {
        std::vector<HardCard>& hardest = mFigures.Hardest;
        for (size_t i = 0; i < mReviewed.size(); ++i) {
            const CardReviews& reviews = mReviewed[i];
            if (reviews.Lapses > 0 && reviews.Card >= 0) {
                const CardSchedules& card = mCards[static_cast<size_t>(reviews.Card)];
                hardest.push_back(
                    {card.CardId, wxString(), reviews.Lapses, reviews.Reviews, DifficultyOf(card)});
            }
        }
        const auto isHarder = [](const HardCard& one, const HardCard& other) {
            if (one.Lapses != other.Lapses) {
                return one.Lapses > other.Lapses;
            }
            return one.Difficulty != other.Difficulty ? one.Difficulty > other.Difficulty
                                                      : one.CardId < other.CardId;
        };
        const size_t count = std::min(hardest.size(), mQuery.MostHardest);
        std::partial_sort(hardest.begin(), hardest.begin() + static_cast<std::ptrdiff_t>(count),
                          hardest.end(), isHarder);
        hardest.resize(count);
    }

    void ChooseCostly() {
        std::vector<CostlyCard>& costly = mFigures.Costly;
        for (const CardReviews& reviews : mReviewed) {
            if (reviews.Card < 0) {
                continue;
            }
            const CardSchedules& card = mCards[static_cast<size_t>(reviews.Card)];
            CostlyCard one{card.CardId, wxString(), kReviewNone, 0};
            for (const ReviewDirection direction : kEachDirection) {
                const bool isReverse = direction == kReviewReverse;
                const CardSchedules::Side& side = isReverse ? card.Reverse : card.Forward;
                const int32_t lapses = reviews.KnownLapses[isReverse ? 1 : 0];
                if (lapses >= kManyLapses && side.Introduced && !side.Excluded) {
                    one.Directions |= direction;
                    one.Lapses += lapses;
                }
            }
            if (one.Directions != kReviewNone) {
                costly.push_back(one);
            }
        }
        std::sort(costly.begin(), costly.end(), [](const CostlyCard& a, const CostlyCard& b) {
            return a.Lapses != b.Lapses ? a.Lapses > b.Lapses : a.CardId < b.CardId;
        });
        costly.resize(std::min(costly.size(), kMostCostlyCards));
    }

    uint8_t DifficultyOf(const CardSchedules& card) const {
        return std::max(Asks(kReviewForward) ? card.Forward.Difficulty : uint8_t{0},
                        Asks(kReviewReverse) ? card.Reverse.Difficulty : uint8_t{0});
    }

    const std::vector<CardSchedules>& mCards;
    const ReviewHistory& mHistory;
    const ReviewQuery& mQuery;
    int64_t mNow;
    int32_t mToday;
    // The day of the first review that counts, or today.
    int32_t mFirstDay;
    DayTable mDays;
    // The places of the categories in the figures, by their ids.
    std::unordered_map<int32_t, size_t> mPlaces;
    std::vector<CardReviews> mReviewed;
    // The days from which the usual one is taken.
    std::vector<DayReviews> mUsual;
    ReviewFigures mFigures;
};

}  // namespace

int32_t SpanDays(ReviewSpan span) {
    constexpr int32_t kDays[] = {30, 90, 365, 0};
    return kDays[static_cast<size_t>(span)];
}

int32_t DayOf(int64_t seconds) {
    std::tm date = LocalDate(seconds);
    date.tm_hour = 12;
    return static_cast<int32_t>(::timegm(&date) / kSecondsPerDay);
}

int64_t StartOfDay(int32_t day) {
    std::time_t noon = int64_t{day} * kSecondsPerDay + kSecondsPerDay / 2;
    std::tm date{};
    ::gmtime_r(&noon, &date);
    date.tm_hour = 0;
    date.tm_isdst = -1;
    int64_t start = ::mktime(&date);
    while (DayOf(start) < day) {
        start += 1800;
    }
    return start;
}

wxDateTime NoonOfDay(int32_t day) {
    return wxDateTime(static_cast<time_t>(StartOfDay(day) + kSecondsPerDay / 2));
}

int32_t DayReviews::Total() const {
    return std::accumulate(ByScore.begin(), ByScore.end(), 0);
}

const std::array<TimeRange, kTimeRangeCount>& TimeRanges() {
    static const std::array<TimeRange, kTimeRangeCount> kRanges = [] {
        std::array<TimeRange, kTimeRangeCount> ranges;
        for (size_t i = 0; i < std::size(kBounds); ++i) {
            ranges[i].To = ranges[i + 1].From = kBounds[i];
        }
        return ranges;
    }();
    return kRanges;
}

double Retention::LeastShare() const {
    return Reviews == 0 ? 0.0 : WilsonBound(*this, -kDeviations);
}

double Retention::GreatestShare() const {
    return Reviews == 0 ? 1.0 : WilsonBound(*this, kDeviations);
}

ReviewFigures MakeReviewFigures(const std::vector<CardSchedules>& cards,
                                const std::vector<Category>& categories,
                                const ReviewHistory& history, const ReviewQuery& query) {
    return FigureMaker(cards, categories, history, query).Make();
}

int ReadReviewFigures(Database& database, const ReviewQuery& query, ReviewHistory& history,
                      const std::atomic<bool>& cancelled, ReviewFigures& figures,
                      std::vector<CardSchedules>* schedules) {
    // The log is read while this thread reads the cards.
    bool isLogRead = false;
    Job log([&, path = ReviewLogPath(database.GetPath())](const std::atomic<bool>&) {
        isLogRead = history.Update(path, cancelled);
    });
    if (!log.Start()) {
        log.RunHere();
    }
    std::vector<CardSchedules> cards;
    int64_t rowId = INT64_MIN;
    int count = 1;
    while (count > 0 && !cancelled) {
        count = database.SelectSchedules(kPortion, rowId, cards);
    }
    std::list<Category> categories;
    const bool isRead =
        count == 0 && database.TryLocked([&] { database.SelectAllCategories(categories); });
    log.Join();
    log.RethrowFailure();
    if (!isLogRead || !isRead) {
        return -1;
    }
    figures = MakeReviewFigures(cards, {categories.begin(), categories.end()}, history, query);
    const auto readFront = [&database](const CardUuid& id, wxString& front) {
        std::list<FlashCard> found;
        if (database.TryLocked([&] { database.SelectCardById(id, found); }) && !found.empty()) {
            front = found.front().Front;
        }
    };
    for (HardCard& card : figures.Hardest) {
        readFront(card.CardId, card.Front);
    }
    for (CostlyCard& card : figures.Costly) {
        readFront(card.CardId, card.Front);
    }
    if (schedules != nullptr) {
        *schedules = std::move(cards);
    }
    return 0;
}

int ReadHardestCards(Database& database, const ReviewQuery& query, ReviewHistory& history,
                     const std::atomic<bool>& cancelled, std::vector<CardUuid>& cards) {
    ReviewFigures figures;
    cards.clear();
    if (ReadReviewFigures(database, query, history, cancelled, figures) < 0) {
        return -1;
    }
    for (const HardCard& card : figures.Hardest) {
        cards.push_back(card.CardId);
    }
    return 0;
}
