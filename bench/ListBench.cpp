#include <benchmark/benchmark.h>
#include <sqlite3.h>
#include <wx/app.h>
#include <wx/frame.h>

#include <algorithm>
#include <chrono>
#include <clocale>
#include <ctime>
#include <filesystem>
#include <string>
#include <vector>

#include "list/CardList.h"
#include "list/CardListCtrl.h"
#include "store/Database.h"
#include "support/FakeServices.h"

// Measures a refresh of the list of cards, window included, beside bare SQLite that reads the same
// row ids into an array. Floor and list take turns. A list by front counts until the main thread is
// free again, and sorted_ms until a worker has put it into the order of the user's language. The
// floor of a search uses the engine's own LOWER and LIKE. Needs a display.
namespace {

enum Kind { kByNumber, kByFront, kSearch, kExactSearch };

bool IsSearch(Kind kind) {
    return kind == kSearch || kind == kExactSearch;
}

constexpr char kText[] = "4711";

std::string FillSql(int cards) {
    return "WITH RECURSIVE n(i) AS (SELECT 0 UNION ALL SELECT i + 1 FROM n WHERE i < " +
           std::to_string(cards - 1) +
           ") INSERT INTO Cards (CardId, Front, Back, CategoryId, Author, Chapter, Notes, "
           "IntroductionOrder, ForwardX, ReverseX, Introduced, RIntroduced) SELECT "
           "printf('%08x-0000-4000-8000-%012x', i * 2654435761 % 4294967296, i), "
           "'the front of card ' || (i * 7919 % " +
           std::to_string(cards) +
           "), 'what stands on the back of card ' || i, 0, 'somebody', 'chapter ' || i / 1000, "
           "'a note that helps to remember', i, 0, 0, 0, 0 FROM n";
}

// The list in a window on the screen, over a store of its own.
class ListOnStore {
  public:
    explicit ListOnStore(int cards) : mPath(kDirectory) {
        std::filesystem::remove_all(mPath);
        std::filesystem::create_directories(mPath);
        IsOpen = mDatabase.Open(wxString::FromUTF8(StorePath()), mWait) == 0 &&
                 mDatabase.CategoryInsert("Default") == 0 &&
                 mDatabase.Execute(wxString::FromUTF8(FillSql(cards))) == 0;
        mpFrame = new wxFrame(nullptr, wxID_ANY, "list", wxDefaultPosition, wxSize(640, 480));
        mpList = new CardList(mServices, mpFrame, wxSize(640, 480));
        mpList->SetShowCategory(true);
        mpList->SetDatabase(&mDatabase);
        mpFrame->Show();
        mpFrame->SendSizeEvent();
        wxYield();
    }
    ~ListOnStore() {
        delete mpFrame;
        mDatabase.Close();
        std::filesystem::remove_all(mPath);
    }
    ListOnStore(const ListOnStore&) = delete;
    ListOnStore& operator=(const ListOnStore&) = delete;

    CardListCtrl& Control() const {
        return static_cast<CardListCtrl&>(*mpList->GetChildren().front());
    }
    void Prepare(Kind kind) {
        if (IsSearch(kind)) {
            mpList->SetSearch(kText, kind == kExactSearch);
        } else {
            mpList->SortBy({kind == kByFront ? ListColumn::kFront : ListColumn::kNumber});
        }
        WaitUntilSorted();
    }
    void Refresh() { mDatabase.Notify(); }
    // A worker sorts long lists by a text, and the time counts until they are shown.
    void WaitUntilSorted() {
        while (mpList->IsSorting()) {
            wxMilliSleep(1);
            wxYield();
        }
        wxYield();
    }
    // Reads every cell of the visible page, with no card cached after a refresh.
    void ReadPage() {
        const long top = Control().GetTopItem();
        const long last =
            std::min<long>(top + Control().GetCountPerPage(), Control().GetItemCount() - 1);
        for (long row = top; row <= last; ++row) {
            for (const int column : {0, 1, 2}) {
                benchmark::DoNotOptimize(Control().OnGetItemText(row, column));
            }
        }
    }
    // Returns processor time until the rows are drawn; the wait for the screen's next frame does
    // not count.
    double DrawPage() {
        bool drawn = false;
        wxWindow& rows = Rows();
        const auto note = [&drawn](wxPaintEvent& event) {
            event.Skip();
            drawn = true;
        };
        rows.Bind(wxEVT_PAINT, note);
        rows.Refresh();
        const std::clock_t start = std::clock();
        while (!drawn) {
            wxMilliSleep(1);
            wxYield();
        }
        const std::clock_t end = std::clock();
        rows.Unbind(wxEVT_PAINT, note);
        return 1000.0 * static_cast<double>(end - start) / CLOCKS_PER_SEC;
    }
    int Count() const { return Control().GetItemCount(); }
    std::string StorePath() const { return mPath + "/store.vlm"; }

    bool IsOpen = false;

  private:
    // The child of the control that draws the rows.
    wxWindow& Rows() const {
        for (wxWindow* const child : Control().GetChildren()) {
            if (child->IsKindOf(wxClassInfo::FindClass("wxListMainWindow"))) {
                return *child;
            }
        }
        return Control();
    }

    static constexpr char kDirectory[] = "/dev/shm/velomind-list-bench";

    std::string mPath;
    RecordingReport mReport;
    SilentUpgradeWait mWait;
    Database mDatabase{mReport};
    FakeServices mServices;
    wxFrame* mpFrame = nullptr;
    CardList* mpList = nullptr;
};

class BareQuery {
  public:
    BareQuery(const std::string& path, Kind kind) {
        sqlite3_open(path.c_str(), &mpHandle);
        std::string sql = "SELECT ROWID from Cards WHERE CategoryId = ?";
        if (IsSearch(kind)) {
            sql +=
                " AND ( LOWER(Front) LIKE ? OR LOWER(Back) LIKE ? OR LOWER(Author) LIKE ? OR "
                "LOWER(Chapter) LIKE ? OR LOWER(Notes) LIKE ? )";
        }
        sql += kind == kByFront ? " ORDER BY Front;" : " ORDER BY IntroductionOrder;";
        sqlite3_prepare_v2(mpHandle, sql.c_str(), -1, &mpSelect, nullptr);
        sqlite3_bind_int(mpSelect, 1, 0);
        const std::string pattern = std::string("%") + kText + "%";
        for (int index = 2; index <= sqlite3_bind_parameter_count(mpSelect); ++index) {
            sqlite3_bind_text(mpSelect, index, pattern.c_str(), -1, SQLITE_TRANSIENT);
        }
    }
    ~BareQuery() {
        sqlite3_finalize(mpSelect);
        sqlite3_close(mpHandle);
    }
    BareQuery(const BareQuery&) = delete;
    BareQuery& operator=(const BareQuery&) = delete;

    int Run() {
        std::vector<int64_t> rowIds;
        while (sqlite3_step(mpSelect) == SQLITE_ROW) {
            rowIds.push_back(sqlite3_column_int64(mpSelect, 0));
        }
        sqlite3_reset(mpSelect);
        return static_cast<int>(rowIds.size());
    }

  private:
    sqlite3* mpHandle = nullptr;
    sqlite3_stmt* mpSelect = nullptr;
};

template <typename Work>
double Milliseconds(const Work& work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start)
        .count();
}

double Median(std::vector<double>& values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

void RefreshList(benchmark::State& state, Kind kind) {
    ListOnStore list(static_cast<int>(state.range(0)));
    if (!list.IsOpen) {
        state.SkipWithError("cannot make the store");
        return;
    }
    list.Prepare(kind);
    BareQuery bare(list.StorePath(), kind);
    std::vector<double> ratios;
    std::vector<double> reads;
    std::vector<double> drawings;
    std::vector<double> sorts;
    for (auto _ : state) {
        int found = 0;
        const double floor = Milliseconds([&] { found = bare.Run(); });
        const double time = Milliseconds([&] { list.Refresh(); });
        const double sorted = time + Milliseconds([&] { list.WaitUntilSorted(); });
        if (found != list.Count()) {
            state.SkipWithError("the two have not found alike");
            return;
        }
        ratios.push_back(time / floor);
        reads.push_back(Milliseconds([&] { list.ReadPage(); }));
        list.Refresh();
        drawings.push_back(list.DrawPage());
        list.WaitUntilSorted();
        sorts.push_back(sorted);
        state.SetIterationTime(time * 1e-3);
    }
    state.counters["ratio"] = Median(ratios);
    state.counters["sorted_ms"] = Median(sorts);
    state.counters["page_read_ms"] = Median(reads);
    state.counters["page_cpu_ms"] = Median(drawings);
}

void AddBench(const char* name, int cards, Kind kind) {
    auto* const bench = benchmark::RegisterBenchmark(
        name, [kind](benchmark::State& state) { RefreshList(state, kind); });
    bench->ArgName("cards")->Arg(cards)->Iterations(cards < 1000000 ? 9 : 5)->UseManualTime();
    bench->Unit(benchmark::kMillisecond);
}

void AddBenches() {
    for (const int cards : {10000, 100000, 1000000}) {
        AddBench("ListByNumber", cards, kByNumber);
        AddBench("ListByFront", cards, kByFront);
        AddBench("ListSearch", cards, kSearch);
        AddBench("ListExactSearch", cards, kExactSearch);
    }
}

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    wxApp::SetInstance(new wxApp);
    if (benchmark::ReportUnrecognizedArguments(argc, argv) || !wxEntryStart(argc, argv)) {
        return 1;
    }
    std::setlocale(LC_CTYPE, "C.UTF-8");
    AddBenches();
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    wxEntryCleanup();
    return 0;
}
