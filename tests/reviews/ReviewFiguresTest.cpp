#include "reviews/ReviewFigures.h"

#include <cmath>
#include <cstdlib>
#include <map>
#include <random>
#include <tuple>

#include "support/StoreFixture.h"

namespace {

// A day in autumn, so that both nights in which Berlin turns its clocks lie within the past year.
constexpr int64_t kNow = 1764000000;
constexpr int kCards = 60;

// All figures as one list: the letter of the figure, its place, and a score or share.
using Counts = std::map<std::tuple<char, int64_t, int>, int>;

wxDateTime At(int64_t seconds) {
    return wxDateTime(static_cast<time_t>(seconds));
}

// Asks the toolkit for its own calendar.
int DaysAgo(const wxDateTime& time) {
    return static_cast<int>(
        std::lround(At(kNow).GetDateOnly().GetJDN() - time.GetDateOnly().GetJDN()));
}

int64_t RangeStart(double seconds) {
    int64_t from = 0;
    for (const TimeRange& range : TimeRanges()) {
        from = seconds >= static_cast<double>(range.From) ? range.From : from;
    }
    return from;
}

Counts List(const ReviewFigures& figures) {
    Counts counts;
    for (const auto& [letter, days] : {std::pair('d', &figures.Days), {'c', &figures.Calendar}}) {
        for (const DayReviews& day : *days) {
            for (size_t score = 0; score < 6; ++score) {
                counts[{letter, figures.Today - day.Day, score}] = day.ByScore[score];
            }
        }
    }
    for (size_t i = 0; i < kTimeRangeCount; ++i) {
        for (const auto& [letter, all] :
             {std::pair('e', &figures.ByElapsed), {'a', &figures.ByAge}}) {
            counts[{letter, (*all)[i].Range.From, 1}] = (*all)[i].Remembered;
            counts[{letter, (*all)[i].Range.From, 0}] = (*all)[i].Reviews - (*all)[i].Remembered;
        }
        counts[{'i', TimeRanges()[i].From, 0}] = figures.Schedules.ByInterval[i];
    }
    for (size_t i = 0; i < kDifficultyCount; ++i) {
        counts[{'f', static_cast<int64_t>(i), 0}] = figures.Schedules.ByDifficulty[i];
    }
    for (size_t i = 0; i < kForecastDays; ++i) {
        counts[{'p', static_cast<int64_t>(i), 0}] = figures.Due.PerDay[i];
    }
    for (const HardCard& card : figures.Hardest) {
        counts[{'h', wxAtoi(card.Front), 0}] = card.Lapses;
    }
    counts[{'o', 0, 0}] = figures.Schedules.Old;
    counts[{'n', 0, 0}] = figures.Schedules.New;
    counts[{'r', 0, 0}] = figures.Due.Overdue;
    return counts;
}

// Random cards of three categories, and their reviews of two years: some are replaced, and some
// are of cards that are not in the store any more.
struct ReviewFiguresTest : StoreFixture {
    ReviewFiguresTest() {
        ::setenv("TZ", "Europe/Berlin", 1);
        ::tzset();
        mDatabase.CategoryInsert("One");
        mDatabase.CategoryInsert("Two");
        for (int i = 0; i < kCards; ++i) {
            FlashCard card = MakeCard(wxString::Format("%i", i), "", Any(3));
            card.ForwardX = Any(9) == 0;
            card.ReverseX = Any(4) == 0;
            for (CardSchedule* const schedule : {&card.Forward, &card.Reverse}) {
                schedule->Introduced = Any(3) > 0;
                schedule->LastReview = At(kNow - Any(5000000));
                schedule->ReviewInterval = std::exp2(static_cast<float>(Any(250)) / 10);
                schedule->Difficulty = static_cast<uint8_t>(Any(33));
            }
            mCards.push_back(i < 50 ? Insert(card) : card);
        }
        std::string log = "a foreign line\n";
        for (int64_t time = kNow - int64_t{2} * 31536000; time < kNow; time += Any(40000)) {
            ReviewRecord record = AnyReview(time);
            const bool isReplaced = Any(10) == 0;
            log += FormatReviewLine(record);
            if (isReplaced) {
                record.Score = static_cast<uint8_t>(Any(6));
                record.Replaces = std::exchange(record.Time, time + 30);
                log += FormatReviewLine(record);
            }
            mReviews.push_back(record);
        }
        WriteBytes(ReviewLogPath(StorePath()), log);
    }
    ~ReviewFiguresTest() override {
        ::unsetenv("TZ");
        ::tzset();
    }

    int Any(int count) { return static_cast<int>(mRandom() % static_cast<unsigned>(count)); }
    ReviewRecord AnyReview(int64_t time) {
        ReviewRecord record;
        record.Time = time;
        record.CardId = mCards[static_cast<size_t>(Any(kCards))].CardId;
        record.Direction = Any(2) == 0 ? kReviewForward : kReviewReverse;
        record.Score = static_cast<uint8_t>(Any(6));
        record.Elapsed = Any(6) == 0 ? -1 : static_cast<int64_t>(std::exp2(Any(28)));
        return record;
    }
    const FlashCard* Find(const CardUuid& id) const {
        const auto found = std::find_if(mCards.begin(), mCards.begin() + 50,
                                        [&](const FlashCard& card) { return card.CardId == id; });
        return found == mCards.begin() + 50 ? nullptr : &*found;
    }
    Counts CountPast(const ReviewQuery& query) const {
        Counts counts;
        std::map<std::pair<CardUuid, int>, int64_t> firsts;
        const int span = SpanDays(query.Span) == 0 ? INT32_MAX : SpanDays(query.Span);
        for (const ReviewRecord& record : mReviews) {
            const FlashCard* const card = Find(record.CardId);
            const bool isIn =
                !query.Asked || (card != nullptr && query.Asked->Has(card->CategoryId));
            if (!isIn || (query.Directions & record.Direction) == 0) {
                continue;
            }
            const auto [first, isFirst] =
                firsts.emplace(std::pair(record.CardId, record.Direction), record.Time);
            const int day = DaysAgo(At(record.Time));
            if (day < 371) {
                ++counts[{'c', day, record.Score}];
            }
            if (day >= span) {
                continue;
            }
            ++counts[{'d', day, record.Score}];
            const int share = record.Score > 2 ? 1 : 0;
            if (record.Elapsed >= 0) {
                ++counts[{'e', RangeStart(static_cast<double>(record.Elapsed)), share}];
                if (!isFirst) {
                    ++counts[{'a', RangeStart(static_cast<double>(record.Time - first->second)),
                              share}];
                }
                if (share == 0 && card != nullptr) {
                    ++counts[{'h', wxAtoi(card->Front), 0}];
                }
            }
        }
        return counts;
    }

    Counts CountSchedules(const ReviewQuery& query) const {
        Counts counts;
        for (size_t i = 0; i < 50; ++i) {
            const FlashCard& card = mCards[i];
            for (const ReviewDirection direction : {kReviewForward, kReviewReverse}) {
                const CardSchedule& schedule = ScheduleOf(card, direction);
                if ((query.Asked && !query.Asked->Has(card.CategoryId)) ||
                    (query.Directions & direction) == 0 ||
                    (direction == kReviewForward ? card.ForwardX : card.ReverseX)) {
                    continue;
                }
                if (!schedule.Introduced) {
                    ++counts[{'n', 0, 0}];
                    continue;
                }
                const int day = -DaysAgo(schedule.NextReview());
                ++counts[{schedule.NextReview() < query.Now ? 'r'
                          : day < 365                       ? 'p'
                                                            : 'x',
                          schedule.NextReview() < query.Now ? 0 : day, 0}];
                counts[{'o', 0, 0}] += schedule.ReviewInterval >= 21 * 86400 ? 1 : 0;
                ++counts[{'i', RangeStart(static_cast<double>(schedule.ReviewInterval)), 0}];
                ++counts[{'f', schedule.Difficulty, 0}];
            }
        }
        return counts;
    }

    std::mt19937 mRandom{7};
    std::vector<FlashCard> mCards;
    std::vector<ReviewRecord> mReviews;
};

// The hardest cards are compared by the numbers of their lapses: of equal ones either may be shown.
TEST_F(ReviewFiguresTest, AgreeWithASlowCount) {
    ReviewHistory history;
    const std::atomic<bool> cancelled{false};
    for (int i = 0; i < 36; ++i) {
        ReviewQuery query;
        if (i % 4 != 3) {
            query.Asked = i % 4;
            query.Asked->Below.resize(i % 8 == 4 ? 1 : 0, 2);
        }
        query.Directions = i / 4 % 3 + 1;
        query.Span = static_cast<ReviewSpan>(i / 12 == 2 ? 3 : i / 12 * 2);
        query.Now = At(kNow);
        query.MostHardest = i % 2 == 0 ? 3 : kMostHardCards;
        ReviewFigures figures;
        ASSERT_EQ(ReadReviewFigures(mDatabase, query, history, cancelled, figures), 0);
        EXPECT_EQ(figures.Log.Reviews, static_cast<int64_t>(mReviews.size()));
        EXPECT_EQ(figures.Log.ForeignLines, 1);
        Counts expected = CountPast(query);
        expected.merge(CountSchedules(query));
        std::vector<int> lapses;
        for (const auto& [key, count] : expected) {
            if (std::get<char>(key) == 'h') {
                lapses.push_back(count);
            }
        }
        std::sort(lapses.rbegin(), lapses.rend());
        lapses.resize(std::min(lapses.size(), query.MostHardest));
        std::vector<int> found;
        for (const HardCard& card : figures.Hardest) {
            found.push_back(card.Lapses);
        }
        EXPECT_EQ(found, lapses);
        // A count of nothing may be listed or not.
        Counts listed = List(figures);
        for (const auto& [key, count] : expected) {
            if (std::get<char>(key) != 'x' && std::get<char>(key) != 'h') {
                listed.emplace(key, 0);
            }
        }
        for (const auto& [key, count] : listed) {
            EXPECT_EQ(expected[key], count) << i << std::get<char>(key) << std::get<int64_t>(key);
        }
    }
}

// Study days of 1 to 5 reviews, and a today with 50 so far: three is usual, and what is more stays
// for the next day.
TEST(ReviewFigures, AUsualDayWorksOffWhatIsDue) {
    ReviewHistory history;
    ReviewRecord record;
    for (const int daysAgo : {200, 5, 4, 3, 2, 1, 0}) {
        for (int i = 0; i < (daysAgo % 100 == 0 ? 50 : daysAgo); ++i) {
            record.Time = kNow - int64_t{daysAgo} * 86400 - i;
            history.Take(FormatReviewLine(record));
        }
    }
    // Made while the clock was ahead.
    for (int i = 0; i < 50; ++i) {
        record.Time = kNow + int64_t{3} * 86400 + i % 2 * 86400;
        history.Take(FormatReviewLine(record));
    }
    // Four cards are overdue, one is due this second, and seven come tomorrow.
    std::vector<CardSchedules> cards(12);
    for (size_t i = 0; i < cards.size(); ++i) {
        cards[i].Reverse.Excluded = true;
        cards[i].Forward.Introduced = true;
        cards[i].Forward.LastReview = kNow - (i < 5 ? 86400 : 0);
        cards[i].Forward.Interval = i < 5 ? 60 : 86400;
    }
    cards[0].Forward.LastReview = kNow - 60;
    ReviewQuery query;
    query.Now = At(kNow);
    const DueForecast due = MakeReviewFigures(cards, {}, history, query).Due;
    EXPECT_EQ(due.UsualDay, 3);
    EXPECT_EQ(due.StudyDays, 5);
    EXPECT_EQ(due.Overdue, 4);
    EXPECT_EQ(std::vector<int32_t>(due.LeftOver.begin(), due.LeftOver.begin() + 5),
              (std::vector<int32_t>{2, 6, 3, 0, 0}));
}

// The bounds that tables of Wilson's intervals give.
TEST(ReviewFigures, FewReviewsTellLess) {
    const double cases[][4] = {
        {0, 0, 0, 1}, {4, 5, 0.376, 0.964}, {400, 500, 0.763, 0.833}, {5, 5, 0.566, 1}};
    for (const auto& c : cases) {
        const Retention retention{{}, static_cast<int32_t>(c[1]), static_cast<int32_t>(c[0])};
        EXPECT_NEAR(retention.LeastShare(), c[2], 0.001) << c[1];
        EXPECT_NEAR(retention.GreatestShare(), c[3], 0.001) << c[1];
    }
}

}  // namespace
