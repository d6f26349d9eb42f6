#include "reviews/ReviewLog.h"

#include <atomic>
#include <filesystem>

#include "reviews/ScheduleEvents.h"
#include "scheduler/Scheduler.h"
#include "support/StoreFixture.h"

namespace {

const std::string kId = "1b4e28ba-2fa1-41d2-883f-0016d3cca427";
const std::string kReview = "2026-03-01T18:04:09Z\t" + kId + "\tF\t4\t86412\t86400\t131072\t16\t15";

struct ReviewLogTest : StoreFixture {
    std::string Log() { return ReadBytes(mPath); }
    ReviewHistory ReadAll() {
        ReviewHistory history;
        EXPECT_TRUE(history.Update(mPath, mCancelled));
        return history;
    }
    std::vector<ScheduleEvent> ReadEvents() {
        std::vector<ScheduleEvent> events;
        VisitEvents(
            mPath, 0, [&events](const ScheduleEvent& event) { events.push_back(event); },
            mCancelled);
        return events;
    }
    wxString mPath = ReviewLogPath(StorePath());
    std::atomic<bool> mCancelled{false};
};

// A first pass, a review a day later, and another score in its place: the line names the one that
// counts no more. The same score again is a review of its own, as it is for the schedule.
TEST_F(ReviewLogTest, EachScoreIsALineThatSaysWhatItReplaces) {
    FakeClock clock;
    FakeRandom random;
    FakeCategorySource category;
    SilentMaintenance maintenance;
    ReviewLog log(mPath);
    const FlashCard card = Insert(MakeCard("front", "back"));
    Scheduler scheduler(mDatabase, {category, maintenance, clock, random, &log});
    scheduler.SetDirections(kReviewForward);
    scheduler.SetRelearnShare(25);
    // Before and after each score.
    std::vector<CardSchedule> stored{Stored(card.CardId).Forward};
    const auto score = [&](int number, int64_t seconds) {
        clock.Advance(seconds);
        scheduler.ScoreCard(number);
        stored.push_back(Stored(card.CardId).Forward);
        scheduler.SetHistoryIndex(0);
    };
    score(4, 0);
    scheduler.SetHistoryIndex(-1);
    score(5, 86400);
    // Another computer has sent a review, whose place the next score does not take.
    mDatabase.Execute("UPDATE Cards SET LastReview = LastReview + 30, LastScore = 3");
    scheduler.SetHistoryIndex(0);
    score(1, 60);
    score(1, 0);
    const std::string id = FormatUuid(card.CardId).utf8_string();
    const std::string lines[] = {
        "2023-11-14T22:13:20Z\t" + id + "\tF\t4\t-\t5\t14400\t16\t16\t-",
        "2023-11-15T22:13:20Z\t" + id + "\tF\t5\t86400\t14400\t172800\t16\t15\t-",
        "2023-11-15T22:14:20Z\t" + id + "\tF\t1\t86460\t14400\t14400\t16\t16\t2023-11-15T22:13:20Z",
        "2023-11-15T22:14:20Z\t" + id + "\tF\t1\t0\t14400\t1\t16\t17\t-"};
    std::string expected =
        "# time\tcard\tdirection\tscore\telapsed\tinterval\tnew interval\tdifficulty\t"
        "new difficulty\treplaces\n";
    // The third score begins where the second one did, whose place it takes.
    const CardSchedule began[] = {stored[0], stored[1], stored[1], stored[3]};
    const std::vector<ScheduleEvent> events = ReadEvents();
    ASSERT_EQ(events.size(), 4U);
    for (size_t i = 0; i < events.size(); ++i) {
        CardSchedule from = events[i].From;
        from.ERC = began[i].ERC;
        EXPECT_TRUE(from == began[i] && events[i].After == stored[i + 1]) << i;
        EXPECT_EQ(events[i].Share, 25);
        EXPECT_EQ(events[i].Session, EventSession());
        EXPECT_EQ(events[i].Number, events[0].Number + static_cast<int64_t>(i));
        const std::string both = FormatEvent(events[i]);
        EXPECT_EQ(both.substr(0, both.find('\n')), lines[i]);
        expected += both;
    }
    EXPECT_EQ(Log(), expected);
    std::string replaced;
    const ReviewHistory history = ReadAll();
    for (const ReviewHistory::Review& review : history.Reviews()) {
        replaced += review.IsReplaced ? "x" : ".";
    }
    EXPECT_EQ(replaced, ".x..");
    const auto life = ReadCardReviews(mPath, card.CardId, mCancelled);
    std::string read;
    for (const ReviewRecord& record : life) {
        read += FormatReviewLine(record);
    }
    EXPECT_EQ(read, lines[0] + "\n" + lines[2] + "\n" + lines[3] + "\n");
    EXPECT_TRUE(ReadCardReviews(mPath, CardUuid(), mCancelled).empty());
    EXPECT_EQ(Stored(card.CardId).Forward.LastReview.GetTicks(), life.back().Time);
}

// However the bytes arrive: each case gives the reviews and the foreign lines of a file.
TEST_F(ReviewLogTest, ForeignAndTornLinesHarmNoOther) {
    const std::string whole = kReview + "\t-\n";
    const struct {
        std::string Bytes;
        size_t Reviews;
        int64_t Foreign;
    } cases[] = {
        {"", 0, 0},
        {"# a comment\n\n" + whole, 1, 0},
        {kReview + "\t-\r\n" + whole, 2, 0},
        {whole + kReview + "\t-", 1, 0},  // Whole but for its end, which is not known.
        {whole + kReview.substr(0, 40) + "\n" + whole, 2, 1},
        {kReview + "\n" + whole, 1, 1},
        {kReview + "\t-\t\n", 0, 1},
        {kReview + "\t2026-03-01T18:04:09Z\n" + whole, 2, 0},
        {std::string(100000, 'x') + "\n" + whole, 1, 1},
        {std::string(3, '\0') + "\n" + whole, 1, 1},
        {"2026-13" + whole.substr(7) + "2026-03-01 1" + whole.substr(12), 0, 2},
        {"2026-03-01T18:04:09Z\tnot an identity\tF\t4\t86412\t86400\t131072\t16\t16\t-\n", 0, 1},
        {"2026-03-01T18:04:09Z\t" + kId + "\tF\t6\t-\t5\t5\t16\t16\t-\n", 0, 1},
        {"2026-03-01T18:04:09Z\t" + kId + "\tB\t3\t-\t5\t5\t16\t16\t-\n", 0, 1},
        {"2026-03-01T18:04:09Z\t" + kId + "\tR\t3\t-2\t5\t5\t16\t16\t-\n", 0, 1},
        {"2026-03-01T18:04:09Z\t" + kId + "\tR\t3\t-\tnan\tinf\t16\t16\t-\n", 0, 1},
        {"2026-03-01T18:04:09Z\t" + kId + "\tR\t3\t-\t1.5\t1e9\t16\t16\t-\n", 1, 0},
    };
    for (const auto& c : cases) {
        for (const size_t piece : {size_t{1}, size_t{7}, c.Bytes.size() + 1}) {
            ReviewHistory history;
            for (size_t at = 0; at < c.Bytes.size(); at += piece) {
                history.Take(std::string_view(c.Bytes).substr(at, piece));
            }
            EXPECT_EQ(history.Reviews().size(), c.Reviews) << c.Bytes.substr(0, 200);
            EXPECT_EQ(history.ForeignLines(), c.Foreign) << c.Bytes.substr(0, 200);
        }
    }
}

TEST_F(ReviewLogTest, ALineAfterATornOneStartsAnew) {
    ReviewLog log(mPath);
    ReviewRecord record;
    ASSERT_TRUE(ParseReviewLine(kReview + "\t-", record));
    log.Append(record, CardSchedule(), 0, 0);
    // The disk fills up within the next line, and has room again afterwards.
    const std::string whole = Log();
    {
        const FullDisk full(whole.size() + 30);
        log.Append(record, CardSchedule(), 0, 0);
    }
    log.Append(record, CardSchedule(), 0, 0);
    const std::string torn = whole + kReview.substr(0, 30) + "\n" + kReview + "\t-\n";
    EXPECT_EQ(Log().substr(0, torn.size()), torn);
    EXPECT_EQ(ReadEvents().size(), 2U);
    EXPECT_EQ(ReadAll().Reviews().size(), 2U);
    EXPECT_EQ(ReadAll().ForeignLines(), 1);
}

// Neither a directory in its place nor a pipe, which would keep study waiting.
TEST_F(ReviewLogTest, ALogThatCannotBeWrittenIsTracedOnce) {
    static int traced;
    traced = 0;
    gTraceHook = [](const wxString&) { ++traced; };
    ASSERT_EQ(::mkfifo(mPath.utf8_string().c_str(), 0600), 0);
    ReviewLog log(mPath);
    log.Append(ReviewRecord(), CardSchedule(), 0, 0);
    log.Append(ReviewRecord(), CardSchedule(), 0, 0);
    EXPECT_EQ(ReadAll().Reviews().size(), 0U);
    std::filesystem::remove(mPath.utf8_string());
    std::filesystem::create_directory(mPath.utf8_string());
    log.Append(ReviewRecord(), CardSchedule(), 0, 0);
    gTraceHook = nullptr;
    EXPECT_EQ(traced, 1);
    EXPECT_EQ(ReadAll().Reviews().size(), 0U);
}

// Each line is a score in place of one that is not there, or of the one before.
TEST_F(ReviewLogTest, ALongLogOfOneCardTakesTimeByItsLength) {
    std::string bytes;
    for (int i = 0; i < 80000; ++i) {
        bytes += kReview + (i % 2 == 0 ? "\t1980-01-01T00:00:00Z\n" : "\t-\n");
    }
    WriteBytes(mPath, bytes);
    ReviewRecord record;
    ASSERT_TRUE(ParseReviewLine(kReview + "\t-", record));
    const std::clock_t begin = std::clock();
    EXPECT_EQ(ReadCardReviews(mPath, record.CardId, mCancelled).size(), 80000U);
    EXPECT_EQ(ReadAll().Reviews().size(), 80000U);
    // Four to five seconds where each line looks through all before it.
    EXPECT_LT(std::clock() - begin, 2 * CLOCKS_PER_SEC);
}

// More than one piece of a file, read on after it grew, and anew when another one is in its place.
TEST_F(ReviewLogTest, AHugeLogIsReadOnFromItsEnd) {
    std::string bytes;
    for (int i = 0; i < 50000; ++i) {
        bytes += kReview + "\t-\n";
    }
    WriteBytes(mPath, bytes + kReview.substr(0, 50));
    ReviewHistory history = ReadAll();
    EXPECT_EQ(history.Reviews().size(), 50000U);
    ReviewLog log(mPath);
    log.Append(ReviewRecord(), CardSchedule(), 0, 0);
    EXPECT_TRUE(history.Update(mPath, mCancelled));
    EXPECT_EQ(history.Reviews().size(), 50001U);
    EXPECT_EQ(history.Cards().size(), 2U);
    EXPECT_EQ(history.ForeignLines(), 1);
    WriteBytes(mPath, kReview + "\t-\n");
    EXPECT_TRUE(history.Update(mPath, mCancelled));
    EXPECT_EQ(history.Reviews().size(), 1U);
    std::filesystem::remove(mPath.utf8_string());
    EXPECT_TRUE(history.Update(mPath, mCancelled));
    EXPECT_TRUE(history.Reviews().empty());
}

// Its size alone must not take the memory.
TEST_F(ReviewLogTest, ALogOfATerabyteWithoutContentReservesNothing) {
    WriteBytes(mPath, "");
    std::filesystem::resize_file(mPath.utf8_string(), uintmax_t{1} << 43);
    const std::atomic<bool> cancelled{true};
    EXPECT_NO_THROW(EXPECT_FALSE(ReviewHistory().Update(mPath, cancelled)));
}

}  // namespace
