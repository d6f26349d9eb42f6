#include <benchmark/benchmark.h>
#include <sqlite3.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <filesystem>
#include <string>
#include <vector>

#include "scheduler/Scheduler.h"
#include "store/Database.h"
#include "support/Fakes.h"

// Measures the time from a score to the next card, in a store of introduced cards of which some are
// due, beside the same statements by bare SQLite on a copy of the store. Both always score 0, which
// puts the card after all others and keeps the number of due cards. With a share each is a card
// that is being relearned.
namespace {

constexpr int64_t kStart = 1700000000;
constexpr int kCards = 100000;

const std::string kColumns =
    "CardId, Front, Back, CategoryId, Author, Chapter, IntroductionOrder, ForwardX, ReverseX, "
    "Notes, Introduced, LastReview, LastScore, ReviewInterval, Difficulty, ERC, RIntroduced, "
    "RLastReview, RLastScore, RReviewInterval, RDifficulty, RERC";

// One statement, so one commit. A due card has waited a hundred thousand times its interval; the
// others are due in months.
std::string FillSql(int cards, int due) {
    const std::string now = std::to_string(kStart);
    const std::string isDue = "i * 7919 % " + std::to_string(cards) + " < " + std::to_string(due);
    return "WITH RECURSIVE numbers(i) AS (SELECT 0 UNION ALL SELECT i + 1 FROM numbers WHERE i < " +
           std::to_string(cards - 1) + "), cards AS (SELECT *, CASE WHEN " + isDue + " THEN " +
           now + " - 100000 - i * 104729 % 300000 ELSE " + now + " - 10 END AS last, CASE WHEN " +
           isDue + " THEN 1.0 + i * 31 % 64 / 128.0 ELSE 10000000.0 + i END AS interval " +
           "FROM numbers) INSERT INTO Cards (" + kColumns + ", NextReview, RNextReview) SELECT " +
           "printf('%08x-0000-4000-8000-%012x', i * 2654435761 % 4294967296, i), " +
           "'the front of card ' || i, 'what stands on the back of card ' || i, 0, 'somebody', " +
           "'chapter ' || i / 1000, i, 0, 0, 'a note that helps to remember card ' || i, " +
           "1, last, 3, interval, 16, i * 15485863 % 40960000, " +
           "0, last, 0, 5.0, 16, 0, last + CAST(interval AS INTEGER), last + 5 FROM cards";
}

// The statements of a score and the choice after it, by hand.
class BareScore {
  public:
    explicit BareScore(const std::string& path) {
        sqlite3_open(path.c_str(), &mpHandle);
        const std::string card = "SELECT " + kColumns + " FROM Cards ";
        Prepare(mpMaxForward, card +
                                  "WHERE CategoryId = ? AND ForwardX = 0 AND  Introduced = 1 "
                                  "ORDER BY ERC DESC");
        Prepare(mpMaxReverse, card +
                                  "WHERE CategoryId = ? AND ReverseX = 0 AND RIntroduced = 1 "
                                  "ORDER BY RERC DESC");
        Prepare(mpUpdate,
                "UPDATE Cards SET Front=?,Back=?,CategoryId=?,Author=?,Chapter=?,"
                "IntroductionOrder=?,ForwardX=?,ReverseX=?,Notes=?,Introduced=?,LastReview=?,"
                "LastScore=?,ReviewInterval=?,Difficulty=?,NextReview=?,ERC=?,RIntroduced=?,"
                "RLastReview=?,RLastScore=?,RReviewInterval=?,RDifficulty=?,RNextReview=?,RERC=? "
                "WHERE CardId=?;");
        Prepare(mpReady, card +
                             "WHERE CategoryId = ? AND ForwardX = 0 AND  Introduced = 1 "
                             "AND NextReview < ? ORDER BY NextReview");
        Prepare(mpNew, card +
                           "WHERE CategoryId = ? AND ForwardX = 0 AND  Introduced = 0 "
                           "ORDER BY IntroductionOrder");
        Prepare(mpEarly, card +
                             "WHERE CategoryId = ? AND ForwardX = 0 AND  Introduced = 1 "
                             "ORDER BY ERC,NextReview");
        Prepare(mpById, card + "WHERE CardId = ?");
        ChooseNext(kStart);
    }
    ~BareScore() {
        for (sqlite3_stmt* const statement : mStatements) {
            sqlite3_finalize(statement);
        }
        sqlite3_close(mpHandle);
    }
    BareScore(const BareScore&) = delete;
    BareScore& operator=(const BareScore&) = delete;

    void Score(int64_t now) {
        const int base =
            std::max(ReadMaxErc(mpMaxForward, 15), ReadMaxErc(mpMaxReverse, 21)) & ~4095;
        mLowBits = (mLowBits + 1237) % 4095;
        const int erc = base + (mErc < base ? 0 : 4096) + mLowBits;
        int at = 1;
        BindText(mpUpdate, at++, mFront);
        BindText(mpUpdate, at++, mBack);
        sqlite3_bind_int(mpUpdate, at++, 0);
        BindText(mpUpdate, at++, mAuthor);
        BindText(mpUpdate, at++, mChapter);
        for (const int number : {mOrder, 0, 0}) {
            sqlite3_bind_int(mpUpdate, at++, number);
        }
        BindText(mpUpdate, at++, mNotes);
        BindSchedule(at, 1, now, 1.0, erc);
        BindSchedule(at, 0, mReverseLast, 5.0, 0);
        BindText(mpUpdate, at, mId);
        sqlite3_step(mpUpdate);
        sqlite3_reset(mpUpdate);
        ChooseNext(now);
    }

  private:
    void Prepare(sqlite3_stmt*& statement, const std::string& sql) {
        sqlite3_prepare_v2(mpHandle, sql.c_str(), -1, &statement, nullptr);
        mStatements.push_back(statement);
    }
    static void BindText(sqlite3_stmt* statement, int index, const std::string& text) {
        sqlite3_bind_text(statement, index, text.data(), static_cast<int>(text.size()),
                          SQLITE_STATIC);
    }
    void BindSchedule(int& at, int introduced, int64_t last, double interval, int erc) {
        sqlite3_bind_int(mpUpdate, at++, introduced);
        sqlite3_bind_int64(mpUpdate, at++, last);
        sqlite3_bind_int(mpUpdate, at++, 0);
        sqlite3_bind_double(mpUpdate, at++, interval);
        sqlite3_bind_int(mpUpdate, at++, 16);
        sqlite3_bind_int64(mpUpdate, at++, last + static_cast<int64_t>(interval));
        sqlite3_bind_int(mpUpdate, at++, erc);
    }
    static int ReadMaxErc(sqlite3_stmt* statement, int column) {
        sqlite3_bind_int(statement, 1, 0);
        const int erc =
            sqlite3_step(statement) == SQLITE_ROW ? sqlite3_column_int(statement, column) : 0;
        sqlite3_reset(statement);
        return erc;
    }
    static std::string Text(sqlite3_stmt* statement, int column) {
        const unsigned char* const text = sqlite3_column_text(statement, column);
        return {reinterpret_cast<const char*>(text),
                static_cast<size_t>(sqlite3_column_bytes(statement, column))};
    }
    void ReadCard(sqlite3_stmt* statement) {
        mId = Text(statement, 0);
        mFront = Text(statement, 1);
        mBack = Text(statement, 2);
        mAuthor = Text(statement, 4);
        mChapter = Text(statement, 5);
        mOrder = sqlite3_column_int(statement, 6);
        mNotes = Text(statement, 9);
        mErc = sqlite3_column_int(statement, 15);
        mReverseLast = sqlite3_column_int64(statement, 17);
    }
    // The first due card stands for the winner, so no column is read on the walk.
    void ChooseNext(int64_t now) {
        sqlite3_bind_int(mpReady, 1, 0);
        sqlite3_bind_int64(mpReady, 2, now);
        bool found = false;
        while (sqlite3_step(mpReady) == SQLITE_ROW) {
            if (!found) {
                mId = Text(mpReady, 0);
                found = true;
            }
        }
        sqlite3_reset(mpReady);
        if (found) {
            BindText(mpById, 1, mId);
            while (sqlite3_step(mpById) == SQLITE_ROW) {
                ReadCard(mpById);
            }
            sqlite3_reset(mpById);
            return;
        }
        for (sqlite3_stmt* const statement : {mpNew, mpEarly}) {
            sqlite3_bind_int(statement, 1, 0);
            if (sqlite3_step(statement) == SQLITE_ROW) {
                ReadCard(statement);
            }
            sqlite3_reset(statement);
        }
    }

    sqlite3* mpHandle = nullptr;
    std::vector<sqlite3_stmt*> mStatements;
    sqlite3_stmt* mpMaxForward = nullptr;
    sqlite3_stmt* mpMaxReverse = nullptr;
    sqlite3_stmt* mpUpdate = nullptr;
    sqlite3_stmt* mpReady = nullptr;
    sqlite3_stmt* mpNew = nullptr;
    sqlite3_stmt* mpEarly = nullptr;
    sqlite3_stmt* mpById = nullptr;
    std::string mId;
    std::string mFront;
    std::string mBack;
    std::string mAuthor;
    std::string mChapter;
    std::string mNotes;
    int mOrder = 0;
    int mErc = 0;
    int64_t mReverseLast = 0;
    int mLowBits = 0;
};

// Counts the scored cards of a store, to check that both did the same.
int CountScored(const std::string& path) {
    sqlite3* handle = nullptr;
    sqlite3_stmt* statement = nullptr;
    sqlite3_open(path.c_str(), &handle);
    sqlite3_prepare_v2(handle, "SELECT count(*) FROM Cards WHERE LastScore = 0", -1, &statement,
                       nullptr);
    const int count = sqlite3_step(statement) == SQLITE_ROW ? sqlite3_column_int(statement, 0) : -1;
    sqlite3_finalize(statement);
    sqlite3_close(handle);
    return count;
}

double Median(std::vector<double>& times) {
    const auto middle = times.begin() + static_cast<std::ptrdiff_t>(times.size() / 2);
    std::nth_element(times.begin(), middle, times.end());
    return *middle;
}

template <typename Work>
double Microseconds(const Work& work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double, std::micro>(std::chrono::steady_clock::now() - start)
        .count();
}

// Compares pair by pair, as the machine may be busy with something else for a while.
void CountTimes(benchmark::State& state, std::vector<double>& floorTimes,
                std::vector<double>& times) {
    std::vector<double> ratios;
    for (size_t i = 0; i < times.size(); ++i) {
        ratios.push_back(times[i] / floorTimes[i]);
    }
    state.counters["floor_us"] = Median(floorTimes);
    state.counters["score_us"] = Median(times);
    state.counters["ratio"] = Median(ratios);
}

void ScoreToNextCard(benchmark::State& state) {
    const int due = static_cast<int>(state.range(0));
    const int cards = static_cast<int>(state.range(2));
    const std::filesystem::path parent =
        state.range(1) == 0 ? VELOMIND_BENCH_DIRECTORY : "/dev/shm";
    if (!std::filesystem::is_directory(parent)) {
        state.SkipWithError("no such directory");
        return;
    }
    const std::filesystem::path directory = parent / "velomind-score-bench";
    std::filesystem::remove_all(directory);
    std::filesystem::create_directory(directory);
    const std::string floorPath = directory / "floor.vlm";
    const std::string storePath = directory / "store.vlm";

    RecordingReport report;
    SilentUpgradeWait wait;
    Database database(report);
    if (database.Open(wxString::FromUTF8(floorPath), wait) < 0 ||
        database.CategoryInsert("Default") < 0 || database.Execute(FillSql(cards, due)) < 0) {
        state.SkipWithError("cannot make the store");
        return;
    }
    database.Close();
    std::filesystem::copy_file(floorPath, storePath);
    database.Open(wxString::FromUTF8(storePath), wait);

    FakeClock clock(kStart);
    SequenceRandom random;
    FakeCategorySource category;
    SilentMaintenance maintenance;
    ReviewLog log(ReviewLogPath(wxString::FromUTF8(storePath)));
    // As in the program, with both limits of a day set.
    StudyDay day(clock);
    day.SetLimits({10, false, 40, false, 0});
    day.Open(&database, nullptr);
    Scheduler scheduler(database, {category, maintenance, clock, random, &log, &day});
    scheduler.SetRelearnShare(static_cast<int>(state.range(3)));
    BareScore bare(floorPath);
    std::vector<double> floorTimes;
    std::vector<double> times;
    for (auto _ : state) {
        // A card scored 0 is due again after two seconds, unless none is to be due.
        clock.Advance(due > 0 ? 2 : 0);
        const auto runFloor = [&] { bare.Score(clock.Now().GetTicks()); };
        const auto runScore = [&] { scheduler.ScoreCard(0); };
        const bool floorFirst = times.size() % 2 == 0;
        if (floorFirst) {
            floorTimes.push_back(Microseconds(runFloor));
        }
        times.push_back(Microseconds(runScore));
        if (!floorFirst) {
            floorTimes.push_back(Microseconds(runFloor));
        }
        state.SetIterationTime(times.back() * 1e-6);
    }
    if (!report.Texts.empty() || CountScored(storePath) != CountScored(floorPath)) {
        state.SkipWithError("the two have not scored alike");
    }
    CountTimes(state, floorTimes, times);
    day.Open(nullptr, nullptr);
    database.Close();
    std::filesystem::remove_all(directory);
}

BENCHMARK(ScoreToNextCard)
    ->ArgNames({"due", "tmpfs", "cards", "share"})
    ->ArgsProduct({{0, 1000}, {0, 1}, {kCards}, {0}})
    ->Args({1000, 1, 10000, 0})
    ->Args({1000, 1, 1000000, 0})
    ->Args({1000, 1, kCards, 25})
    ->Iterations(2000)
    ->UseManualTime()
    ->Unit(benchmark::kMicrosecond);
BENCHMARK(ScoreToNextCard)
    ->ArgNames({"due", "tmpfs", "cards", "share"})
    ->ArgsProduct({{kCards}, {0, 1}, {kCards}, {0}})
    ->Iterations(40)
    ->UseManualTime()
    ->Unit(benchmark::kMicrosecond);

}  // namespace
