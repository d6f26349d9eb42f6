#include <benchmark/benchmark.h>
#include <malloc.h>
#include <sqlite3.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "exchange/ImportPass.h"
#include "formats/MediaSource.h"
#include "formats/decks/Deck.h"
#include "formats/decks/DeckWriter.h"
#include "store/Database.h"
#include "support/Fakes.h"

// Measures imports: the records that are validated in a second, a whole import beside the same
// inserts by bare SQLite, a deck beside the table of its cards, and that memory does not grow with
// the file.
namespace {

// A directory for one bench, on disk or on tmpfs.
class Workplace {
  public:
    explicit Workplace(bool onDisk)
        : mPath((onDisk ? std::string(VELOMIND_BENCH_DIRECTORY) : std::string("/dev/shm")) +
                "/import-bench") {
        std::filesystem::remove_all(mPath);
        std::filesystem::create_directories(mPath);
    }
    ~Workplace() { std::filesystem::remove_all(mPath); }
    Workplace(const Workplace&) = delete;
    Workplace& operator=(const Workplace&) = delete;

    std::string Path(const std::string& name) const { return mPath + "/" + name; }

  private:
    std::string mPath;
};

std::string IdText(int number) {
    char text[37];
    std::snprintf(text, sizeof text, "%08x-0000-4000-8000-%012x",
                  static_cast<unsigned>(number) * 2654435761U, static_cast<unsigned>(number));
    return text;
}

std::string FrontText(int number) {
    return "the front of card " + std::to_string(number);
}
std::string BackText(int number) {
    return "what stands on the back of card " + std::to_string(number);
}

void WriteRecords(const std::string& path, int count, bool withIds) {
    std::ofstream file(path);
    for (int i = 0; i < count; ++i) {
        file << (withIds ? "id: " + IdText(i) + "\n" : "") << "Front: " << FrontText(i)
             << "\nBack: " << BackText(i) << "\n\n";
    }
}

void WriteTable(const std::string& path, int count, bool withIds) {
    std::ofstream file(path);
    file << (withIds ? "id\t" : "") << "Front\tBack\n";
    for (int i = 0; i < count; ++i) {
        file << (withIds ? IdText(i) + "\t" : "") << FrontText(i) << "\t" << BackText(i) << "\n";
    }
}

ImportInput MakeFile(const Workplace& place, int count, bool withIds, bool isTable) {
    const std::string path = place.Path("records.txt");
    (isTable ? WriteTable : WriteRecords)(path, count, withIds);
    return {wxString::FromUTF8(path), isTable ? ImportFormat::kDelimited : ImportFormat::kVlmText,
            L'\t'};
}

// The program's store with the category that the records go into.
class Store {
  public:
    explicit Store(const std::string& path) {
        std::filesystem::remove(path);
        mIsOpen = mDatabase.Open(wxString::FromUTF8(path), mWait) == 0 &&
                  mDatabase.CategoryInsert("Default") == 0;
    }
    bool IsOpen() const { return mIsOpen; }
    Database& Get() { return mDatabase; }

  private:
    RecordingReport mReport;
    SilentUpgradeWait mWait;
    Database mDatabase{mReport};
    bool mIsOpen = false;
};

bool RunPass(const ImportInput& input, Database& database, bool validateOnly) {
    ImportResult result;
    ImportPassOptions options;
    options.ValidateOnly = validateOnly;
    return ImportPass(input, database, result, options) == 0;
}

void Validate(benchmark::State& state) {
    const int records = static_cast<int>(state.range(2));
    const bool withIds = state.range(0) != 0;
    const Workplace place(false);
    Store store(place.Path("store.vlm"));
    // The store has other cards than the file's, as in life.
    const std::string fill =
        "WITH RECURSIVE n(i) AS (SELECT 0 UNION ALL SELECT i + 1 FROM n WHERE i < 9999) INSERT "
        "INTO Cards (CardId, Front, Back, CategoryId) SELECT printf('%08x-1111-4000-8000-%012x', "
        "i * 2654435761 % 4294967296, i), 'a front ' || i, 'a back', 0 FROM n";
    if (!store.IsOpen() || store.Get().Execute(wxString::FromUTF8(fill)) != 0) {
        state.SkipWithError("no store");
        return;
    }
    const ImportInput input = MakeFile(place, records, withIds, state.range(1) != 0);
    for (auto _ : state) {
        if (!RunPass(input, store.Get(), true)) {
            state.SkipWithError("the pass failed");
            return;
        }
    }
    state.SetItemsProcessed(state.iterations() * records);
}
BENCHMARK(Validate)
    ->ArgNames({"ids", "table", "records"})
    ->ArgsProduct({{0, 1}, {0, 1}, {100000}})
    ->Args({1, 0, 10000})
    ->Args({1, 0, 1000000})
    ->Unit(benchmark::kMillisecond);

// The inserts of an import by hand, a group of rows in each statement.
class BareInserts {
  public:
    explicit BareInserts(const std::string& path) { sqlite3_open(path.c_str(), &mpHandle); }
    ~BareInserts() {
        sqlite3_finalize(mpInsert);
        sqlite3_close(mpHandle);
    }
    BareInserts(const BareInserts&) = delete;
    BareInserts& operator=(const BareInserts&) = delete;

    // Inserts the records from a number on.
    bool Insert(int first, int count) {
        if (count != mRows) {
            Prepare(count);
        }
        mParameter = 1;
        for (int i = first; i < first + count; ++i) {
            Bind(i);
        }
        const bool done = sqlite3_step(mpInsert) == SQLITE_DONE;
        return sqlite3_reset(mpInsert) == SQLITE_OK && done;
    }

  private:
    void Prepare(int count) {
        std::string sql =
            "INSERT INTO Cards (CardId,Front,Back,CategoryId,Author,Chapter,IntroductionOrder,"
            "ForwardX,ReverseX,Notes,Introduced,LastReview,LastScore,ReviewInterval,Difficulty,"
            "NextReview,ERC,RIntroduced,RLastReview,RLastScore,RReviewInterval,RDifficulty,"
            "RNextReview,RERC) VALUES ";
        for (int i = 0; i < count; ++i) {
            sql += i == 0 ? "" : ",";
            sql += "(?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?)";
        }
        sqlite3_finalize(mpInsert);
        sqlite3_prepare_v2(mpHandle, sql.c_str(), -1, &mpInsert, nullptr);
        mRows = count;
    }
    void Text(const std::string& value) {
        sqlite3_bind_text(mpInsert, mParameter++, value.c_str(), -1, SQLITE_TRANSIENT);
    }
    void Number(sqlite3_int64 value) { sqlite3_bind_int64(mpInsert, mParameter++, value); }
    void Bind(int record) {
        // Random ids, like those that the program makes where the file gives none.
        Text(IdText(record));
        Text(FrontText(record));
        Text(BackText(record));
        Number(0);
        Text("");
        Text("");
        Number(record);
        Number(0);
        Number(0);
        Text("");
        for (int direction = 0; direction < 2; ++direction) {
            Number(0);
            Number(1700000000);
            Number(0);
            sqlite3_bind_double(mpInsert, mParameter++, 5.0);
            Number(16);
            Number(1700000005);
            Number(0);
        }
    }

    sqlite3* mpHandle = nullptr;
    sqlite3_stmt* mpInsert = nullptr;
    int mRows = 0;
    int mParameter = 1;
};

using Seconds = std::chrono::duration<double>;

template <class Work>
double Time(Work work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    return Seconds(std::chrono::steady_clock::now() - start).count();
}

// Whole imports of new cards, both passes, beside the bare inserts. Floor and program take turns,
// each into a fresh store. The time of the bench is the program's.
void Import(benchmark::State& state) {
    const bool onDisk = state.range(0) != 0;
    const bool withIds = state.range(1) != 0;
    const int records = static_cast<int>(state.range(2));
    const Workplace place(onDisk);
    const ImportInput input = MakeFile(place, records, withIds, false);
    double floor = 0.0;
    double program = 0.0;
    for (auto _ : state) {
        bool done = true;
        { Store(place.Path("floor.vlm")); }
        BareInserts bare(place.Path("floor.vlm"));
        floor += Time([&] {
            constexpr int kRows = 4096;
            for (int i = 0; i < records && done; i += kRows) {
                done = bare.Insert(i, std::min(kRows, records - i));
            }
        });
        Store store(place.Path("store.vlm"));
        const double taken = Time([&] {
            ImportResult result;
            done = done && ImportCards(input, store.Get(), result, false, nullptr) == 0;
        });
        program += taken;
        state.SetIterationTime(taken);
        if (!done) {
            state.SkipWithError("a pass failed");
            return;
        }
    }
    state.SetItemsProcessed(state.iterations() * records);
    state.counters["ratio"] = program / floor;
}
BENCHMARK(Import)
    ->ArgNames({"disk", "ids", "records"})
    ->ArgsProduct({{0, 1}, {0, 1}, {10000, 100000}})
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);

// A package of Anki with as many notes as a table has rows.
ImportInput MakeDeck(const Workplace& place, int count) {
    const std::string path = place.Path("deck.apkg");
    const wxString database = wxString::FromUTF8(place.Path("collection.db"));
    const std::string numbers =
        "WITH RECURSIVE n(i) AS (SELECT 0 UNION ALL SELECT i + 1 FROM n "
        "WHERE i < " +
        std::to_string(count - 1) + ") INSERT INTO ";
    WriteDatabase(database,
                  Schema11("BEGIN;" + numbers +
                           "notes SELECT i, 'g' || i, 7, '', 'the front of card ' || i ||"
                           " char(31) || 'what stands on the back of card ' || i FROM n;" +
                           numbers +
                           "cards SELECT i, i, 2, 0, 0, 0, 0, 0, i, 0, 0, 0, "
                           "'' FROM n;COMMIT;"));
    std::ifstream file(database.utf8_string(), std::ios::binary);
    WritePackage(wxString::FromUTF8(path),
                 {{"collection.anki2", std::string(std::istreambuf_iterator<char>(file), {})}});
    ImportInput input;
    input.FileName = wxString::FromUTF8(path);
    input.Format = ImportFormat::kDeck;
    return input;
}

// Unpacks the deck and imports it.
bool ImportDeck(ImportInput input, Database& database) {
    wxString message;
    const auto deck = DeckFile::Open(input.FileName, message);
    input.Media = deck->GetMedia();
    input.MakeDeckReader = [deck](Database& asked, const std::atomic<bool>&, wxString& why) {
        return MakeDeckReader(deck, DeckOptions(), asked, why);
    };
    ImportResult result;
    return ImportCards(input, database, result, false, nullptr) == 0;
}

// Measures processor time, which other programs on the machine disturb less.
template <class Work>
double ProcessorTime(Work work) {
    const std::clock_t start = std::clock();
    work();
    return static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
}

// A deck beside a table of the same cards, whose identities the store looks up for both. They take
// turns, each into a fresh store. The ratio is the deck's best time over the table's.
void ImportOfADeck(benchmark::State& state) {
    const int records = static_cast<int>(state.range(0));
    const Workplace place(false);
    const ImportInput table = MakeFile(place, records, true, true);
    const ImportInput deck = MakeDeck(place, records);
    double tables = 1e9;
    double decks = 1e9;
    for (auto _ : state) {
        bool done = true;
        const auto importTable = [&] {
            Store store(place.Path("table.vlm"));
            ImportResult result;
            done = done && ImportCards(table, store.Get(), result, false, nullptr) == 0;
        };
        const auto importDeck = [&] {
            Store store(place.Path("deck.vlm"));
            done = done && ImportDeck(deck, store.Get());
        };
        tables = std::min(tables, ProcessorTime(importTable));
        const double taken = ProcessorTime(importDeck);
        decks = std::min(decks, taken);
        state.SetIterationTime(taken);
        if (!done) {
            state.SkipWithError("an import failed");
            return;
        }
    }
    state.SetItemsProcessed(state.iterations() * records);
    state.counters["ratio"] = decks / tables;
}
BENCHMARK(ImportOfADeck)
    ->ArgName("notes")
    ->Arg(20000)
    ->Iterations(9)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);

// A deck whose every card has a picture of 50 kB, on the disk, beside the copying of the same
// files. They take turns; the ratio is the deck's best time over that of copying.
void ImportOfFiles(benchmark::State& state) {
    const int count = static_cast<int>(state.range(0));
    constexpr size_t kBytes = 50000;
    const Workplace place(true);
    std::string rows = "BEGIN;";
    std::string list = "{";
    Members members;
    std::filesystem::create_directories(place.Path("files"));
    uint32_t noise = 1;
    for (int i = 0; i < count; ++i) {
        const std::string number = std::to_string(i);
        rows += NoteRow(i, "g" + number, 7, "<img src=\"" + number + ".jpg\">|back " + number) +
                NewCard(i, 0, number);
        list += (i == 0 ? "\"" : ",\"") + number + "\":\"" + number + ".jpg\"";
        std::string bytes(kBytes, '\0');
        for (char& byte : bytes) {
            noise = noise * 1664525U + 1013904223U;
            byte = static_cast<char>(noise >> 24);
        }
        std::ofstream(place.Path("files/" + number + ".jpg"), std::ios::binary) << bytes;
        members.emplace_back(number, std::move(bytes));
    }
    members.emplace_back("media", list + "}");
    const wxString database = wxString::FromUTF8(place.Path("collection.db"));
    WriteDatabase(database, Schema11(rows + "COMMIT;"));
    std::ifstream file(database.utf8_string(), std::ios::binary);
    members.emplace_back("collection.anki2", std::string(std::istreambuf_iterator<char>(file), {}));
    ImportInput deck;
    deck.FileName = wxString::FromUTF8(place.Path("deck.apkg"));
    deck.Format = ImportFormat::kDeck;
    WritePackage(deck.FileName, members);
    double copies = 1e9;
    double decks = 1e9;
    const auto timed = [](const auto& work) {
        ::sync();
        const auto start = std::chrono::steady_clock::now();
        work();
        return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    };
    // Nothing is deleted meanwhile: the file system goes a long way round the places of files that
    // went a moment ago.
    int turn = 0;
    for (auto _ : state) {
        const std::string to = place.Path("copy") + std::to_string(++turn);
        copies = std::min(copies, timed([&] {
                              std::filesystem::create_directory(to);
                              for (int i = 0; i < count; ++i) {
                                  const std::string name = "/" + std::to_string(i) + ".jpg";
                                  std::ifstream from(place.Path("files") + name, std::ios::binary);
                                  std::ofstream(to + name, std::ios::binary) << from.rdbuf();
                              }
                              ::sync();
                          }));
        bool done = true;
        const double taken = timed([&] {
            Store store(to + ".vlm");
            done = ImportDeck(deck, store.Get());
        });
        decks = std::min(decks, taken);
        state.SetIterationTime(taken);
        if (!done) {
            state.SkipWithError("an import failed");
            return;
        }
    }
    state.counters["ratio"] = decks / copies;
}
BENCHMARK(ImportOfFiles)
    ->ArgName("notes")
    ->Arg(2000)
    ->Iterations(5)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);

// Returns the process's peak memory since the last reset, in bytes.
double PeakMemory(bool reset) {
    if (reset) {
        // Memory freed earlier must not be there for the work to reuse.
        malloc_trim(0);
        std::ofstream("/proc/self/clear_refs") << "5";
    }
    std::ifstream status("/proc/self/status");
    std::string word;
    double kilobytes = 0.0;
    while (status >> word && word != "VmHWM:") {
    }
    status >> kilobytes;
    return kilobytes * 1024.0;
}

// Both passes; the counter is the memory that the import adds.
void Memory(benchmark::State& state) {
    const int records = static_cast<int>(state.range(0));
    const Workplace place(false);
    const ImportInput input = MakeFile(place, records, true, false);
    double peak = 0.0;
    for (auto _ : state) {
        Store store(place.Path("store.vlm"));
        const double before = PeakMemory(true);
        ImportResult result;
        if (ImportCards(input, store.Get(), result, false, nullptr) != 0) {
            state.SkipWithError("the import failed");
            return;
        }
        peak = PeakMemory(false) - before;
    }
    state.counters["bytes"] = peak;
}
BENCHMARK(Memory)->ArgName("records")->Arg(1000)->Arg(10000)->Arg(100000)->Iterations(1);

// The same for a deck.
void DeckMemory(benchmark::State& state) {
    const Workplace place(false);
    const ImportInput deck = MakeDeck(place, static_cast<int>(state.range(0)));
    for (auto _ : state) {
        Store store(place.Path("store.vlm"));
        const double before = PeakMemory(true);
        if (!ImportDeck(deck, store.Get())) {
            state.SkipWithError("the import failed");
            return;
        }
        state.counters["bytes"] = PeakMemory(false) - before;
    }
}
BENCHMARK(DeckMemory)->ArgName("notes")->Arg(1000)->Arg(10000)->Arg(100000)->Iterations(1);

}  // namespace
