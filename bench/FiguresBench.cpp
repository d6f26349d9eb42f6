#include <benchmark/benchmark.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>

#include "base/Files.h"
#include "reviews/ReviewFigures.h"
#include "reviews/ScheduleEvents.h"
#include "support/Fakes.h"

// Measures the statistics of 100,000 cards beside their floor, which reads the same table by bare
// SQLite and the bytes of the log: first from nothing, as when the window opens, then for another
// question, with the log already read.
namespace {

constexpr int kCards = 100000;
constexpr int64_t kNow = 1764000000;

CardUuid IdOf(int card) {
    CardUuid id;
    // Matches the ids of the store below.
    const wxString text =
        wxString::Format("%08x-0000-4000-8000-%012x", static_cast<unsigned>(card) * 2654435761U,
                         static_cast<unsigned>(card));
    ParseUuid(text, id);
    return id;
}

std::string FillSql() {
    return "WITH RECURSIVE n(i) AS (SELECT 0 UNION ALL SELECT i + 1 FROM n WHERE i < " +
           std::to_string(kCards - 1) +
           ") INSERT INTO Cards (CardId, Front, Back, CategoryId, Author, Chapter, "
           "IntroductionOrder, ForwardX, ReverseX, Notes, Introduced, LastReview, LastScore, "
           "ReviewInterval, Difficulty, NextReview, ERC, RIntroduced, RLastReview, RLastScore, "
           "RReviewInterval, RDifficulty, RNextReview, RERC) SELECT printf('%08x-0000-4000-8000-"
           "%012x', i * 2654435761 % 4294967296, i), 'the front of card ' || i, 'what stands on "
           "the back of card ' || i, i % 10, '', '', i, 0, 0, 'a note that helps with card ' || i, "
           "1, 1764000000 - i * 31 % 9000000, 3, 1.0 + i * 7919 % 20000000, i % 33, 1764000000 - i "
           "* 31 % 9000000 + 1 + i * 7919 % 20000000, 0, i % 2, 1760000000, 0, 86400.0, 16, "
           "1760086400, 0 FROM n";
}

void WriteLog(const wxString& path, int64_t lines) {
    std::mt19937 random(7);
    std::ofstream file(path.utf8_string());
    for (int64_t i = 0; i < lines; ++i) {
        ReviewRecord record;
        // Ten years, in order.
        record.Time = kNow - 315360000 + 315360000 / lines * i;
        record.CardId = IdOf(static_cast<int>(random() % kCards));
        record.Direction = random() % 4 == 0 ? kReviewReverse : kReviewForward;
        record.Score = static_cast<uint8_t>(random() % 6);
        record.Elapsed = random() % 10 == 0 ? -1 : static_cast<int64_t>(random() % 20000000);
        record.OldInterval = static_cast<float>(random() % 10000000);
        record.NewInterval = static_cast<float>(random() % 10000000) / 7;
        record.OldDifficulty = record.NewDifficulty = 16;
        // Half of them were written before reviews had extensions.
        const bool isOld = i % 2 == 0;
        file << (isOld ? FormatReviewLine(record)
                       : FormatEvent(MakeReviewEvent(record, CardSchedule(), 25, 4711)));
    }
}

double Milliseconds(const std::chrono::steady_clock::time_point& start) {
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start)
        .count();
}

// Reads the figures' sources and computes nothing.
void ReadBare(const std::string& store, const std::string& log) {
    sqlite3* handle = nullptr;
    sqlite3_open(store.c_str(), &handle);
    sqlite3_stmt* statement = nullptr;
    sqlite3_prepare_v2(handle,
                       "SELECT CardId, CategoryId, ForwardX, ReverseX, Introduced, LastReview, "
                       "ReviewInterval, Difficulty, RIntroduced, RLastReview, RReviewInterval, "
                       "RDifficulty FROM Cards",
                       -1, &statement, nullptr);
    while (sqlite3_step(statement) == SQLITE_ROW) {
        benchmark::DoNotOptimize(sqlite3_column_text16(statement, 0));
        for (int column = 1; column < 12; ++column) {
            benchmark::DoNotOptimize(sqlite3_column_double(statement, column));
        }
    }
    sqlite3_finalize(statement);
    sqlite3_close(handle);
    std::ifstream file(log);
    std::vector<char> buffer(size_t{1} << 20);
    while (file.read(buffer.data(), static_cast<std::streamsize>(buffer.size()))) {
        benchmark::DoNotOptimize(buffer.data());
    }
}

void StatisticsFigures(benchmark::State& state) {
    const std::string directory = std::string(VELOMIND_BENCH_DIRECTORY) + "/figures";
    std::filesystem::create_directories(directory);
    const std::string path = directory + "/store.vlm";
    std::filesystem::remove(path);
    RecordingReport report;
    SilentUpgradeWait wait;
    Database database(report);
    bool isMade = database.Open(wxString::FromUTF8(path), wait) >= 0;
    for (int i = 0; i < 10; ++i) {
        isMade = isMade && database.CategoryInsert(wxString::Format("category %i", i)) >= 0;
    }
    if (!isMade || database.Execute(FillSql()) < 0) {
        state.SkipWithError("cannot make the store");
        return;
    }
    const wxString log = ReviewLogPath(database.GetPath());
    WriteLog(log, state.range(0));
    ReviewQuery query;
    query.Now = wxDateTime(static_cast<time_t>(kNow));
    const std::atomic<bool> cancelled{false};
    ReviewHistory known;
    ReviewFigures figures;
    ReadReviewFigures(database, query, known, cancelled, figures);
    std::vector<double> floors;
    std::vector<double> times;
    for (auto _ : state) {
        auto start = std::chrono::steady_clock::now();
        ReadBare(path, log.utf8_string());
        floors.push_back(Milliseconds(start));
        ReviewHistory fresh;
        start = std::chrono::steady_clock::now();
        ReadReviewFigures(database, query, state.range(1) != 0 ? known : fresh, cancelled, figures);
        times.push_back(Milliseconds(start));
        state.SetIterationTime(times.back() * 1e-3);
    }
    if (figures.Log.Reviews != state.range(0) || figures.Hardest.size() != kMostHardCards) {
        state.SkipWithError("the log was not read");
    }
    std::sort(floors.begin(), floors.end());
    std::sort(times.begin(), times.end());
    state.counters["ratio"] = times[times.size() / 2] / floors[floors.size() / 2];
    state.counters["own_ms"] = times[times.size() / 2];
    state.counters["least_ms"] = times.front();
    database.Close();
    std::filesystem::remove_all(directory);
}

BENCHMARK(StatisticsFigures)
    ->ArgNames({"lines", "again"})
    ->ArgsProduct({{10000, 100000, 1000000}, {0, 1}})
    ->Iterations(9)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);

// Appends the line of one score, for which study waits.
void ReviewLogAppend(benchmark::State& state) {
    const std::string directory = std::string(VELOMIND_BENCH_DIRECTORY) + "/figures";
    std::filesystem::create_directories(directory);
    const wxString path = wxString::FromUTF8(directory + "/append.reviews");
    WriteLog(path, state.range(0));
    ReviewLog log(path);
    ReviewRecord record;
    record.Time = kNow;
    record.CardId = IdOf(7);
    std::vector<double> times;
    for (auto _ : state) {
        const auto start = std::chrono::steady_clock::now();
        log.Append(record, CardSchedule(), 0, 0);
        times.push_back(Milliseconds(start));
        state.SetIterationTime(times.back() * 1e-3);
    }
    std::sort(times.begin(), times.end());
    state.counters["own_ms"] = times[times.size() / 2];
    std::filesystem::remove_all(directory);
}

// Brings the reviews of another computer's day into a log, beside reading and writing its bytes.
void ReviewLogMerge(benchmark::State& state) {
    const std::string directory = std::string(VELOMIND_BENCH_DIRECTORY) + "/figures";
    std::filesystem::create_directories(directory);
    const std::string path = directory + "/merge.reviews";
    const std::string copy = directory + "/copy";
    WriteLog(wxString::FromUTF8(path), state.range(0));
    std::vector<double> floors;
    std::vector<double> times;
    int64_t session = 1;
    for (auto _ : state) {
        std::vector<ScheduleEvent> events(200);
        for (size_t i = 0; i < events.size(); ++i) {
            events[i].Time = events[i].Review.Time = kNow - 86400 + static_cast<int64_t>(i) * 60;
            events[i].CardId = events[i].Review.CardId = IdOf(static_cast<int>(i));
            events[i].Session = static_cast<uint64_t>(session);
            events[i].Number = static_cast<int64_t>(i);
            events[i].HasExtension = true;
        }
        ++session;
        std::filesystem::remove(copy);
        auto start = std::chrono::steady_clock::now();
        CopyToNewFile(path, copy);
        floors.push_back(Milliseconds(start));
        start = std::chrono::steady_clock::now();
        if (MergeEvents(wxString::FromUTF8(path), std::move(events), {}) != 0) {
            state.SkipWithError("the log was not merged");
        }
        times.push_back(Milliseconds(start));
        state.SetIterationTime(times.back() * 1e-3);
    }
    std::sort(floors.begin(), floors.end());
    std::sort(times.begin(), times.end());
    state.counters["own_ms"] = times[times.size() / 2];
    state.counters["ratio"] = times[times.size() / 2] / floors[floors.size() / 2];
    std::filesystem::remove_all(directory);
}

BENCHMARK(ReviewLogMerge)
    ->ArgName("lines")
    ->Arg(100000)
    ->Arg(1000000)
    ->Iterations(5)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);

BENCHMARK(ReviewLogAppend)
    ->ArgName("lines")
    ->Arg(1000)
    ->Arg(1000000)
    ->Iterations(2000)
    ->UseManualTime()
    ->Unit(benchmark::kMicrosecond);

}  // namespace
