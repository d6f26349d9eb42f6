#include <benchmark/benchmark.h>
#include <sqlite3.h>

#include <chrono>
#include <filesystem>
#include <string>
#include <vector>

#include "exchange/Duplicates.h"
#include "exchange/Replacement.h"
#include "store/Database.h"
#include "support/Fakes.h"

// Measures finding and replacing in 100,000 cards, and the search for duplicates among them. The
// writing stands beside its floor: bare SQLite that gives the same cards the same texts, card by
// card by a prepared UPDATE, with as many cards in a commit as one of our statements has.
namespace {

constexpr int kCards = 100000;
constexpr int kCardsInCommit = 4096;

std::string FillSql() {
    return "WITH RECURSIVE n(i) AS (SELECT 0 UNION ALL SELECT i + 1 FROM n WHERE i < " +
           std::to_string(kCards - 1) +
           ") INSERT INTO Cards (CardId, Front, Back, CategoryId, Author, Chapter, "
           "IntroductionOrder, ForwardX, ReverseX, Notes, Introduced, LastReview, LastScore, "
           "ReviewInterval, Difficulty, NextReview, ERC, RIntroduced, RLastReview, RLastScore, "
           "RReviewInterval, RDifficulty, RNextReview, RERC) SELECT printf('%08x-0000-4000-8000-"
           "%012x', i * 2654435761 % 4294967296, i), 'the front of card ' || (i * 7919 % 99000), "
           "'what stands on the back of card ' || i, 0, '', '', i, 0, 0, 'a note', 1, 1764000000, "
           "3, 1.0, 16, 1764000001, 0, 0, 1760000000, 0, 86400.0, 16, 1760086400, 0 FROM n";
}

struct Store {
    Store() {
        std::filesystem::remove(kPath);
        Opened.Open(kPath, Wait);
        Opened.Execute(FillSql());
        Query.Wanted = "card (\\d+)";
        Query.Replacement = "carte $1";
        Query.Options = {true, false, false};
        Query.Texts = {true, false, false, false, false};
        Opened.CardSelectRowIdsOrder(CardColumn::kFront, Query.RowIds);
    }

    static constexpr const char* kPath = VELOMIND_BENCH_DIRECTORY "/replace.vlm";
    RecordingReport Report;
    SilentUpgradeWait Wait;
    Database Opened{Report};
    ReplacementQuery Query;
    const std::atomic<bool> Cancelled{false};
};

double Milliseconds(const std::chrono::steady_clock::time_point& start) {
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start)
        .count();
}

void WriteBare(const std::vector<CardTextChange>& changes) {
    sqlite3* handle = nullptr;
    sqlite3_open(Store::kPath, &handle);
    sqlite3_stmt* update = nullptr;
    sqlite3_prepare_v2(handle, "UPDATE Cards SET Front=? WHERE ROWID=?", -1, &update, nullptr);
    for (size_t i = 0; i < changes.size(); ++i) {
        if (i % kCardsInCommit == 0) {
            sqlite3_exec(handle, i == 0 ? "BEGIN" : "COMMIT; BEGIN", nullptr, nullptr, nullptr);
        }
        const std::u16string& text = changes[i].Texts.front().After;
        sqlite3_bind_text16(update, 1, text.data(), static_cast<int>(text.size() * 2),
                            SQLITE_STATIC);
        sqlite3_bind_int64(update, 2, changes[i].RowId);
        sqlite3_step(update);
        sqlite3_reset(update);
    }
    sqlite3_exec(handle, "COMMIT", nullptr, nullptr, nullptr);
    sqlite3_finalize(update);
    sqlite3_close(handle);
}

void ReplaceFind(benchmark::State& state) {
    Store store;
    size_t found = 0;
    double time = 0;
    for (auto _ : state) {
        const auto start = std::chrono::steady_clock::now();
        found = FindReplacements(store.Opened, store.Query, store.Cancelled).Cards.size();
        time += Milliseconds(start);
    }
    state.counters["own_ms"] = time / static_cast<double>(state.iterations());
    state.counters["cards"] = static_cast<double>(found);
}
BENCHMARK(ReplaceFind)->Unit(benchmark::kMillisecond);

// Writes the changes and their opposite in turn.
void ReplaceWrite(benchmark::State& state) {
    Store store;
    std::vector<CardTextChange> there =
        FindReplacements(store.Opened, store.Query, store.Cancelled).Cards;
    std::vector<CardTextChange> back = there;
    for (CardTextChange& change : back) {
        std::swap(change.Texts.front().Before, change.Texts.front().After);
    }
    double bare = 0;
    double ours = 0;
    for (auto _ : state) {
        auto start = std::chrono::steady_clock::now();
        WriteBare(there);
        bare += Milliseconds(start);
        ReplacementThread undo(store.Opened, back);
        undo.Start();
        undo.Join();
        start = std::chrono::steady_clock::now();
        ReplacementThread thread(store.Opened, there);
        thread.Start();
        thread.Join();
        ours += Milliseconds(start);
        if (thread.CountLeftAlone() != 0) {
            state.SkipWithError("cards were left alone");
        }
        WriteBare(back);
    }
    const auto rounds = static_cast<double>(state.iterations());
    state.counters["own_ms"] = ours / rounds;
    state.counters["bare_ms"] = bare / rounds;
    state.counters["ratio"] = ours / bare;
}
BENCHMARK(ReplaceWrite)->Unit(benchmark::kMillisecond)->Iterations(3);

void DuplicatesFind(benchmark::State& state) {
    Store store;
    size_t found = 0;
    double time = 0;
    for (auto _ : state) {
        const auto start = std::chrono::steady_clock::now();
        found = FindDuplicates(store.Opened, SameBy::kFront, std::nullopt, store.Cancelled)
                    .Groups.size();
        time += Milliseconds(start);
    }
    state.counters["own_ms"] = time / static_cast<double>(state.iterations());
    state.counters["groups"] = static_cast<double>(found);
}
BENCHMARK(DuplicatesFind)->Unit(benchmark::kMillisecond);

// What a pause in the editor costs its worker when no card has that front.
void SameFrontFind(benchmark::State& state) {
    Store store;
    FlashCard found;
    for (auto _ : state) {
        FindCardWithFront(store.Opened, "another front", {}, store.Cancelled, found);
    }
}
BENCHMARK(SameFrontFind)->Unit(benchmark::kMillisecond);

}  // namespace
