#include <benchmark/benchmark.h>
#include <sqlite3.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "exchange/Export.h"
#include "exchange/PasteThread.h"
#include "store/Database.h"
#include "support/Fakes.h"

// Measures an export beside bare SQLite that reads the same cards by their row ids, one by one and
// all under one lock of the file (twice for a table, whose export reads twice), and a paste beside
// bare statements.
namespace {

constexpr int kCards = 100000;

class ExportStore {
  public:
    explicit ExportStore(int cards) : mPath(kDirectory) {
        std::filesystem::remove_all(mPath);
        std::filesystem::create_directories(mPath);
        mIsOpen = mDatabase.Open(wxString::FromUTF8(Path("store.vlm")), mWait) == 0 &&
                  mDatabase.CategoryInsert("Default") == 0 &&
                  mDatabase.CategoryInsert("Words") == 0 &&
                  mDatabase.Execute(wxString::FromUTF8(FillSql(cards))) == 0 &&
                  mDatabase.CardSelectRowIdsOrder(CardColumn::kCategory, RowIds) == 0;
    }
    ~ExportStore() {
        mDatabase.Close();
        std::filesystem::remove_all(mPath);
    }
    ExportStore(const ExportStore&) = delete;
    ExportStore& operator=(const ExportStore&) = delete;

    bool IsOpen() const { return mIsOpen; }
    Database& Get() { return mDatabase; }
    std::string Path(const std::string& name) const { return mPath + "/" + name; }

    std::vector<int64_t> RowIds;

  private:
    static constexpr char kDirectory[] = "/dev/shm/velomind-export-bench";

    static std::string FillSql(int cards) {
        return "WITH RECURSIVE n(i) AS (SELECT 0 UNION ALL SELECT i + 1 FROM n WHERE i < " +
               std::to_string(cards - 1) +
               ") INSERT INTO Cards (CardId, Front, Back, CategoryId, Author, Chapter, "
               "IntroductionOrder, Notes, Introduced, LastReview, LastScore, ReviewInterval, "
               "Difficulty, NextReview, ERC) SELECT "
               "printf('%08x-0000-4000-8000-%012x', i * 2654435761 % 4294967296, i), "
               "'the front of card ' || i, 'what stands on the back of card ' || i, i % 2, "
               "'somebody', 'chapter ' || i / 1000, i, 'a note that helps to remember ' || i, "
               "1, 1700000000 + i, 3, 86400.0 + i, 16, 1700086400, i * 7 FROM n";
    }

    std::string mPath;
    RecordingReport mReport;
    SilentUpgradeWait mWait;
    Database mDatabase{mReport};
    bool mIsOpen = false;
};

// Reads all columns of each card and does nothing with them.
class BareScan {
  public:
    explicit BareScan(const std::string& path) {
        sqlite3_open(path.c_str(), &mpHandle);
        sqlite3_prepare_v2(
            mpHandle,
            "SELECT CardId, Front, Back, CategoryId, Author, Chapter, IntroductionOrder, ForwardX, "
            "ReverseX, Notes, Introduced, LastReview, LastScore, ReviewInterval, Difficulty, ERC, "
            "RIntroduced, RLastReview, RLastScore, RReviewInterval, RDifficulty, RERC "
            "FROM Cards WHERE ROWID = ?",
            -1, &mpSelect, nullptr);
    }
    ~BareScan() {
        sqlite3_finalize(mpSelect);
        sqlite3_close(mpHandle);
    }
    BareScan(const BareScan&) = delete;
    BareScan& operator=(const BareScan&) = delete;

    void Run(const std::vector<int64_t>& rowIds, bool locked) {
        if (locked) {
            sqlite3_exec(mpHandle, "BEGIN", nullptr, nullptr, nullptr);
        }
        for (const int64_t rowId : rowIds) {
            sqlite3_bind_int64(mpSelect, 1, rowId);
            if (sqlite3_step(mpSelect) == SQLITE_ROW) {
                ReadColumns();
            }
            sqlite3_reset(mpSelect);
        }
        if (locked) {
            sqlite3_exec(mpHandle, "COMMIT", nullptr, nullptr, nullptr);
        }
    }

  private:
    void ReadColumns() {
        for (const int column : {0, 1, 2, 4, 5, 9}) {
            benchmark::DoNotOptimize(sqlite3_column_text16(mpSelect, column));
            benchmark::DoNotOptimize(sqlite3_column_bytes16(mpSelect, column));
        }
        for (const int column : {3, 6, 7, 8, 10, 11, 12, 14, 15, 16, 17, 18, 20, 21}) {
            benchmark::DoNotOptimize(sqlite3_column_int(mpSelect, column));
        }
        for (const int column : {13, 19}) {
            benchmark::DoNotOptimize(sqlite3_column_double(mpSelect, column));
        }
    }

    sqlite3* mpHandle = nullptr;
    sqlite3_stmt* mpSelect = nullptr;
};

// Returns the processor time of this thread, which other work on the machine does not lengthen.
// Nothing here waits for a disk.
double ProcessorMicroseconds() {
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) * 1e6 + static_cast<double>(time.tv_nsec) * 1e-3;
}

// Writes a file of that many arbitrary bytes.
void WriteFile(const std::string& path, std::uintmax_t bytes) {
    const std::vector<char> block(size_t{1} << 16, 'x');
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    for (std::uintmax_t left = bytes; left > 0;) {
        const auto part = std::min<std::uintmax_t>(left, block.size());
        file.write(block.data(), static_cast<std::streamsize>(part));
        left -= part;
    }
}

template <typename Work>
double MicrosecondsPerCard(int cards, const Work& work) {
    const double start = ProcessorMicroseconds();
    work();
    return (ProcessorMicroseconds() - start) / cards;
}

double Median(std::vector<double>& values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

void ExportCards(benchmark::State& state) {
    const int cards = static_cast<int>(state.range(2));
    const ExportOptions options{true, static_cast<ExportFormat>(state.range(0)), L'\t'};
    const wxFontEncoding encoding = ExportEncoding(static_cast<int>(state.range(1)));
    const int scans = options.Format == ExportFormat::kDelimited ? 2 : 1;
    ExportStore store(cards);
    if (!store.IsOpen()) {
        state.SkipWithError("cannot make the store");
        return;
    }
    BareScan bare(store.Path("store.vlm"));
    std::vector<double> times;
    std::vector<double> eachRatios;
    std::vector<double> ratios;
    std::vector<double> writtenRatios;
    for (auto _ : state) {
        const auto scan = [&](bool locked) {
            return MicrosecondsPerCard(cards, [&] {
                for (int i = 0; i < scans; ++i) {
                    bare.Run(store.RowIds, locked);
                }
            });
        };
        const double eachFloor = scan(false);
        const double floor = scan(true);
        ExportProgress progress;
        times.push_back(MicrosecondsPerCard(cards, [&] {
            ExportToFile(wxString::FromUTF8(store.Path("out.txt")), encoding, store.Get(),
                         store.RowIds, options, progress);
        }));
        if (progress.Position != cards) {
            state.SkipWithError("cards are missing");
            return;
        }
        eachRatios.push_back(times.back() / eachFloor);
        ratios.push_back(times.back() / floor);
        const std::uintmax_t bytes = std::filesystem::file_size(store.Path("out.txt"));
        const double writing =
            MicrosecondsPerCard(cards, [&] { WriteFile(store.Path("bare.txt"), bytes); });
        writtenRatios.push_back(times.back() / (floor + writing));
        state.SetIterationTime(times.back() * cards * 1e-6);
    }
    state.counters["card_us"] = Median(times);
    state.counters["ratio_lock_for_each"] = Median(eachRatios);
    state.counters["ratio"] = Median(ratios);
    state.counters["ratio_written"] = Median(writtenRatios);
}
BENCHMARK(ExportCards)
    ->ArgNames({"format", "encoding", "cards"})
    ->ArgsProduct({{0, 1, 2}, {0, 2}, {kCards}})
    ->Args({0, 2, 10000})
    ->Iterations(7)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK(ExportCards)
    ->ArgNames({"format", "encoding", "cards"})
    ->Args({0, 2, 1000000})
    ->Iterations(1)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);

// The least work of a paste: one statement and one commit for each card.
class BarePaste {
  public:
    BarePaste(const std::string& path, bool copy) {
        sqlite3_open(path.c_str(), &mpHandle);
        const std::string columns =
            "Front, Back, CategoryId, Author, Chapter, IntroductionOrder, ForwardX, ReverseX, "
            "Notes, Introduced, LastReview, LastScore, ReviewInterval, Difficulty, NextReview, ERC";
        const std::string sql = copy ? "INSERT INTO Cards (CardId, " + columns +
                                           ") SELECT lower(hex(randomblob(18))), " + columns +
                                           " FROM Cards WHERE ROWID = ?"
                                     : "UPDATE Cards SET CategoryId = 2 WHERE ROWID = ?";
        sqlite3_prepare_v2(mpHandle, sql.c_str(), -1, &mpPaste, nullptr);
    }
    ~BarePaste() {
        sqlite3_finalize(mpPaste);
        sqlite3_close(mpHandle);
    }
    BarePaste(const BarePaste&) = delete;
    BarePaste& operator=(const BarePaste&) = delete;

    void Run(const std::vector<int64_t>& rowIds) {
        for (const int64_t rowId : rowIds) {
            sqlite3_bind_int64(mpPaste, 1, rowId);
            sqlite3_step(mpPaste);
            sqlite3_reset(mpPaste);
        }
    }

  private:
    sqlite3* mpHandle = nullptr;
    sqlite3_stmt* mpPaste = nullptr;
};

void PasteCards(benchmark::State& state) {
    constexpr int kPasted = 10000;
    const bool copy = state.range(0) != 0;
    ExportStore store(kPasted);
    if (!store.IsOpen()) {
        state.SkipWithError("cannot make the store");
        return;
    }
    BarePaste bare(store.Path("store.vlm"), copy);
    std::vector<double> ratios;
    for (auto _ : state) {
        const auto start = std::chrono::steady_clock::now();
        bare.Run(store.RowIds);
        const auto middle = std::chrono::steady_clock::now();
        PasteThread thread(store.Get(), store.RowIds, copy, 1);
        thread.Start();
        thread.Join();
        const auto end = std::chrono::steady_clock::now();
        ratios.push_back((end - middle) / std::chrono::duration<double>(middle - start));
        state.SetIterationTime(std::chrono::duration<double>(end - middle).count());
    }
    state.counters["ratio"] = Median(ratios);
}
BENCHMARK(PasteCards)
    ->ArgNames({"copy"})
    ->Arg(0)
    ->Arg(1)
    ->Iterations(5)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);

}  // namespace
