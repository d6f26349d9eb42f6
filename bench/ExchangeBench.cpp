#include <benchmark/benchmark.h>
#include <sqlite3.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <string>

#include "base/Files.h"
#include "store/Database.h"
#include "support/Fakes.h"
#include "sync/Exchange.h"

// Measures an exchange of two computers with so many cards: the first one sends nothing or one
// change, the other joins. The change stands beside its floor, bare SQLite on the same files: a
// join of the store and its copy that compares all texts and schedules, and the same UPDATE in
// both. The files are on a disk, as both wait for it.
namespace {

namespace fs = std::filesystem;

const fs::path kPlace = VELOMIND_BENCH_DIRECTORY "/exchange";
const std::string kDiff =
    "SELECT count(*) FROM Cards c JOIN beside.Copy o ON o.CardId=c.CardId WHERE (c.Front,c.Back,"
    "c.CategoryId,c.Author,c.Chapter,c.IntroductionOrder,c.ForwardX,c.ReverseX,c.Notes,"
    "c.Introduced,c.LastReview,c.LastScore,c.ReviewInterval,c.Difficulty,c.RIntroduced,"
    "c.RLastReview,c.RLastScore,c.RReviewInterval,c.RDifficulty) IS NOT (o.Front,o.Back,"
    "o.CategoryId,o.Author,o.Chapter,o.IntroductionOrder,o.ForwardX,o.ReverseX,o.Notes,"
    "o.Introduced,o.LastReview,o.LastScore,o.ReviewInterval,o.Difficulty,o.RIntroduced,"
    "o.RLastReview,o.RLastScore,o.RReviewInterval,o.RDifficulty)";

std::string FillSql(int64_t cards) {
    return "WITH RECURSIVE n(i) AS (SELECT 0 UNION ALL SELECT i + 1 FROM n WHERE i < " +
           std::to_string(cards - 1) +
           ") INSERT INTO Cards (CardId, Front, Back, CategoryId, Author, Chapter, "
           "IntroductionOrder, ForwardX, ReverseX, Notes, Introduced, LastReview, LastScore, "
           "ReviewInterval, Difficulty, NextReview, ERC, RIntroduced, RLastReview, RLastScore, "
           "RReviewInterval, RDifficulty, RNextReview, RERC) SELECT printf('%08x-0000-4000-8000-"
           "%012x', i * 2654435761 % 4294967296, i), 'the front of card ' || i, "
           "'what stands on the back of card ' || i, 0, '', '', i, 0, 0, 'a note', 1, 1764000000, "
           "3, 1.0, 16, 1764000001, 0, 0, 1760000000, 0, 86400.0, 16, 1760086400, 0 FROM n";
}

struct Pair {
    explicit Pair(int64_t cards) {
        fs::remove_all(kPlace);
        fs::create_directories(kPlace / "carried");
        RecordingReport report;
        SilentUpgradeWait wait;
        Database database(report);
        database.Open(StorePath("one"), wait);
        database.CategoryInsert("Words");
        database.Execute(FillSql(cards).c_str());
    }
    ~Pair() { fs::remove_all(kPlace); }
    static wxString StorePath(const char* name) {
        return FromPath(kPlace / (std::string(name) + ".vlm"));
    }
    // Returns the milliseconds that it took.
    double Exchange(benchmark::State& state, const char* name) {
        const FakeClock clock(1780000000 + ++mSeconds);
        ExchangeOptions options;
        options.StorePath = StorePath(name);
        options.Folder = FromPath(kPlace / "carried");
        options.Name = name;
        options.Time = &clock;
        const auto start = std::chrono::steady_clock::now();
        const ExchangeReport report = RunExchange(options);
        const auto end = std::chrono::steady_clock::now();
        if (report.End != ExchangeEnd::kDone) {
            state.SkipWithError(report.Message.utf8_str());
        }
        return std::chrono::duration<double, std::milli>(end - start).count();
    }
    static double Bare(const std::string& sql) {
        const auto start = std::chrono::steady_clock::now();
        sqlite3* handle = nullptr;
        sqlite3_open(StorePath("one").utf8_str(), &handle);
        const std::string attach =
            "ATTACH '" + std::string(StorePath("one").utf8_str()) + ".exchange' AS beside;";
        sqlite3_exec(handle, (attach + sql).c_str(), nullptr, nullptr, nullptr);
        sqlite3_close(handle);
        const auto end = std::chrono::steady_clock::now();
        return std::chrono::duration<double, std::milli>(end - start).count();
    }

    int64_t mSeconds = 0;
};

void ExchangeNothing(benchmark::State& state) {
    Pair pair(state.range(0));
    pair.Exchange(state, "one");
    pair.Exchange(state, "one");
    double time = 0;
    for (auto _ : state) {
        time += pair.Exchange(state, "one");
    }
    state.counters["own_ms"] = time / static_cast<double>(state.iterations());
}
BENCHMARK(ExchangeNothing)
    ->ArgName("cards")
    ->Arg(1000)
    ->Arg(100000)
    ->Arg(1000000)
    ->Unit(benchmark::kMillisecond)
    ->Iterations(5);

void ExchangeOneChange(benchmark::State& state) {
    Pair pair(state.range(0));
    pair.Exchange(state, "one");
    pair.Exchange(state, "one");
    const std::string update = "UPDATE Cards SET Notes='note ";
    double ours = 0;
    double bare = 0;
    int64_t number = 0;
    for (auto _ : state) {
        Pair::Bare(update + std::to_string(++number) + "' WHERE rowid=77");
        ours += pair.Exchange(state, "one");
        // What is written here is the next change.
        bare += Pair::Bare(kDiff + ";BEGIN;" + update + "' WHERE rowid=77;UPDATE beside.Copy SET " +
                           "Notes='' WHERE rowid=77;COMMIT");
    }
    state.counters["own_ms"] = ours / static_cast<double>(state.iterations());
    state.counters["bare_ms"] = bare / static_cast<double>(state.iterations());
    state.counters["ratio"] = ours / bare;
}
BENCHMARK(ExchangeOneChange)
    ->ArgName("cards")
    ->Arg(100000)
    ->Unit(benchmark::kMillisecond)
    ->Iterations(5);

void ExchangeJoin(benchmark::State& state) {
    double time = 0;
    for (auto _ : state) {
        Pair pair(state.range(0));
        pair.Exchange(state, "one");
        time += pair.Exchange(state, "other");
    }
    state.counters["own_ms"] = time / static_cast<double>(state.iterations());
}
BENCHMARK(ExchangeJoin)
    ->ArgName("cards")
    ->Arg(100000)
    ->Unit(benchmark::kMillisecond)
    ->Iterations(3);

// Pictures of 50 kB beside the cards: sent, taken by the other computer, and left as they are while
// nothing or one card was changed. The floor of sending is a copy of the files.
void ExchangeMedia(benchmark::State& state) {
    Pair pair(state.range(0));
    const int64_t files = state.range(1);
    const fs::path media = kPlace / "one.vlm.media";
    fs::create_directories(media);
    for (int64_t i = 1; i <= files; ++i) {
        std::ofstream(media / (std::to_string(i) + ".png")) << i << std::string(50000, 'x');
    }
    Pair::Bare("UPDATE Cards SET Back='[picture: ' || rowid || '.png]' WHERE rowid<=" +
               std::to_string(files));
    const auto start = std::chrono::steady_clock::now();
    fs::copy(media, kPlace / "copied");
    const auto end = std::chrono::steady_clock::now();
    state.counters["copy_ms"] = std::chrono::duration<double, std::milli>(end - start).count();
    state.counters["send_ms"] = pair.Exchange(state, "one");
    state.counters["take_ms"] = pair.Exchange(state, "other");
    pair.Exchange(state, "one");
    pair.Exchange(state, "one");
    double nothing = 0;
    double change = 0;
    int64_t number = 0;
    for (auto _ : state) {
        nothing += pair.Exchange(state, "one");
        Pair::Bare("UPDATE Cards SET Notes='note " + std::to_string(++number) + "' WHERE rowid=77");
        change += pair.Exchange(state, "one");
    }
    state.counters["nothing_ms"] = nothing / static_cast<double>(state.iterations());
    state.counters["change_ms"] = change / static_cast<double>(state.iterations());
}
BENCHMARK(ExchangeMedia)
    ->ArgNames({"cards", "files"})
    ->Args({100000, 2500})
    ->Unit(benchmark::kMillisecond)
    ->Iterations(5);

}  // namespace
