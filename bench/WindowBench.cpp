#include <benchmark/benchmark.h>
#include <malloc.h>
#include <sqlite3.h>
#include <wx/frame.h>
#include <wx/textentry.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <filesystem>
#include <list>
#include <memory>
#include <string>
#include <vector>

#include "categories/CategoryList.h"
#include "edit/EditForm.h"
#include "edit/EditFrame.h"
#include "shell/CommandIds.h"
#include "store/Database.h"
#include "study/CardViewer.h"
#include "study/LearningProgress.h"
#include "support/FakeServices.h"

// Measures the list of categories and the learning progress, windows included, beside bare SQLite
// that counts the same cards, and the time until an editor or a long text is on the screen. Needs a
// display.
namespace {

constexpr int kCategories = 20;
constexpr int64_t kNow = 1700000000;

// The counts of one category, forward and back.
constexpr const char* kTotal = "SELECT count(*) FROM Cards WHERE CategoryId = ?";
constexpr std::array<const char*, 2> kReady = {
    "SELECT count(*) FROM Cards WHERE CategoryId = ? AND ForwardX = 0 AND Introduced = 1 AND "
    "NextReview < ?",
    "SELECT count(*) FROM Cards WHERE CategoryId = ? AND ReverseX = 0 AND RIntroduced = 1 AND "
    "RNextReview < ?"};
constexpr std::array<const char*, 4> kStudied = {
    "SELECT count(*) FROM Cards WHERE CategoryId = ? AND ForwardX = 0",
    "SELECT count(*) FROM Cards WHERE CategoryId = ? AND ForwardX = 0 AND Introduced = 1",
    "SELECT count(*) FROM Cards WHERE CategoryId = ? AND ReverseX = 0",
    "SELECT count(*) FROM Cards WHERE CategoryId = ? AND ReverseX = 0 AND RIntroduced = 1"};

// A store of twenty categories with that many cards each, half of them introduced and half of those
// due.
class StudiedStore {
  public:
    explicit StudiedStore(int cards) {
        std::filesystem::remove_all(kDirectory);
        std::filesystem::create_directories(kDirectory);
        IsOpen = Cards.Open(wxString::FromUTF8(StorePath()), mWait) == 0;
        for (int i = 0; i < kCategories; ++i) {
            IsOpen = IsOpen && Cards.CategoryInsert(wxString::Format("category %i", i)) == 0;
        }
        IsOpen = IsOpen && Cards.Execute(wxString::FromUTF8(FillSql(cards))) == 0;
    }
    ~StudiedStore() {
        Cards.Close();
        std::filesystem::remove_all(kDirectory);
    }
    StudiedStore(const StudiedStore&) = delete;
    StudiedStore& operator=(const StudiedStore&) = delete;

    static std::string StorePath() { return std::string(kDirectory) + "/store.vlm"; }

    bool IsOpen = false;
    RecordingReport Report;
    Database Cards{Report};

  private:
    static constexpr char kDirectory[] = "/dev/shm/velomind-window-bench";

    static std::string FillSql(int cards) {
        return "WITH RECURSIVE n(i) AS (SELECT 0 UNION ALL SELECT i + 1 FROM n WHERE i < " +
               std::to_string(cards - 1) +
               ") INSERT INTO Cards (CardId, Front, Back, CategoryId, Author, Chapter, Notes, "
               "IntroductionOrder, ForwardX, ReverseX, Introduced, NextReview, RIntroduced, "
               "RNextReview) SELECT "
               "printf('%08x-0000-4000-8000-%012x', i * 2654435761 % 4294967296, i), "
               "'the front of card ' || i, 'what stands on the back of card ' || i, i % " +
               std::to_string(kCategories) +
               ", 'somebody', '', 'a note that helps to remember', i, 0, 0, (i / 20) % 2, " +
               std::to_string(kNow) + " + ((i / 40) % 2) * 7200 - 3600, (i / 20) % 2, " +
               std::to_string(kNow) + " + ((i / 40) % 2) * 7200 - 3600 FROM n";
    }

    SilentUpgradeWait mWait;
};

// Counts by statements that are prepared once.
class BareCounts {
  public:
    explicit BareCounts(const std::vector<const char*>& texts) {
        sqlite3_open(StudiedStore::StorePath().c_str(), &mpHandle);
        for (const char* const text : texts) {
            sqlite3_stmt* statement = nullptr;
            sqlite3_prepare_v2(mpHandle, text, -1, &statement, nullptr);
            mStatements.push_back(statement);
        }
    }
    ~BareCounts() {
        for (sqlite3_stmt* const statement : mStatements) {
            sqlite3_finalize(statement);
        }
        sqlite3_close(mpHandle);
    }
    BareCounts(const BareCounts&) = delete;
    BareCounts& operator=(const BareCounts&) = delete;

    void Run(int category) {
        for (sqlite3_stmt* const statement : mStatements) {
            sqlite3_bind_int(statement, 1, category);
            if (sqlite3_bind_parameter_count(statement) > 1) {
                sqlite3_bind_int64(statement, 2, kNow);
            }
            sqlite3_step(statement);
            benchmark::DoNotOptimize(sqlite3_column_int(statement, 0));
            sqlite3_reset(statement);
        }
    }

  private:
    sqlite3* mpHandle = nullptr;
    std::vector<sqlite3_stmt*> mStatements;
};

template <typename Work>
double Milliseconds(const Work& work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start)
        .count();
}

// Runs a job and its floor in turn.
template <typename Floor, typename Job>
void Compare(benchmark::State& state, const Floor& floor, const Job& job) {
    std::vector<double> ratios;
    for (auto _ : state) {
        const double bare = Milliseconds(floor);
        const double time = Milliseconds(job);
        ratios.push_back(time / bare);
        state.SetIterationTime(time * 1e-3);
    }
    const auto middle = ratios.begin() + static_cast<std::ptrdiff_t>(ratios.size() / 2);
    std::nth_element(ratios.begin(), middle, ratios.end());
    state.counters["ratio"] = *middle;
}

FakeServices& GetServices() {
    static FakeServices services;
    services.Time.Set(kNow);
    return services;
}

void CategoryListRefresh(benchmark::State& state) {
    StudiedStore store(static_cast<int>(state.range(0)));
    if (!store.IsOpen) {
        state.SkipWithError("cannot make the store");
        return;
    }
    auto* const frame = new wxFrame(nullptr, wxID_ANY, "categories");
    auto* const list = new CategoryList(GetServices(), frame, wxID_ANY);
    list->SetDatabase(&store.Cards);
    BareCounts bare({kReady[0], kReady[1]});
    Compare(
        state,
        [&] {
            for (int category = 0; category < kCategories; ++category) {
                bare.Run(category);
            }
        },
        [&] { store.Cards.Notify(); });
    delete frame;
}

void LearningProgressCounts(benchmark::State& state) {
    StudiedStore store(static_cast<int>(state.range(0)));
    if (!store.IsOpen) {
        state.SkipWithError("cannot make the store");
        return;
    }
    std::vector<const char*> texts(kStudied.begin(), kStudied.end());
    texts.insert(texts.end(), {kReady[0], kReady[1], kTotal});
    BareCounts bare(texts);
    Compare(
        state,
        [&] {
            // All categories are counted below the current one.
            for (int category = 0; category < kCategories; ++category) {
                bare.Run(category);
            }
        },
        [&] {
            LearningProgress dialog({store.Cards, GetServices().GetClock(), {0, "category 0"}},
                                    nullptr, wxID_ANY, "progress");
        });
}

// From the command to a window that has been laid out and drawn.
void OpenEditor(benchmark::State& state) {
    StudiedStore store(static_cast<int>(state.range(0)));
    std::list<FlashCard> cards;
    if (!store.IsOpen || store.Cards.SelectCardByRowId(1, cards) < 0 || cards.empty()) {
        state.SkipWithError("cannot make the store");
        return;
    }
    for (auto _ : state) {
        EditFrame* frame = nullptr;
        state.SetIterationTime(1e-3 * Milliseconds([&] {
                                   frame = new EditFrame(GetServices());
                                   frame->SetDatabase(&store.Cards);
                                   frame->SetCard(cards.front());
                                   frame->Show();
                                   frame->wxWindow::Update();
                                   wxYield();
                               }));
        frame->Destroy();
        wxYield();
    }
}

// The same for that many cards together. change_ms is the writing of one text into all of them, and
// undo_ms the taking back.
void OpenEditorOfMany(benchmark::State& state) {
    StudiedStore store(static_cast<int>(state.range(0)));
    std::vector<int64_t> rowIds;
    if (!store.IsOpen ||
        store.Cards.CardSelectRowIdsOrder(CardColumn::kIntroductionOrder, rowIds) < 0) {
        state.SkipWithError("cannot make the store");
        return;
    }
    double change = 0;
    double undo = 0;
    for (auto _ : state) {
        auto* const frame = new EditFrame(GetServices());
        state.SetIterationTime(1e-3 * Milliseconds([&] {
                                   frame->SetDatabase(&store.Cards);
                                   frame->SetCards(rowIds);
                                   frame->Show();
                                   frame->wxWindow::Update();
                                   wxYield();
                               }));
        auto* const author = dynamic_cast<wxTextEntry*>(frame->FindWindow(EditForm::ID_AUTHOR));
        author->ChangeValue("another author");
        wxCommandEvent save(wxEVT_MENU, ID_SAVE_CLOSE);
        change += Milliseconds([&] { frame->ProcessWindowEvent(save); });
        UndoOutcome outcome;
        undo += Milliseconds([&] { GetServices().History.UndoLast(store.Cards, outcome); });
        wxYield();
    }
    state.counters["change_ms"] = change / static_cast<double>(state.iterations());
    state.counters["undo_ms"] = undo / static_cast<double>(state.iterations());
}

double HeapMegabytes() {
    const struct mallinfo2 heap = mallinfo2();
    return static_cast<double>(heap.uordblks + heap.hblkhd) / 1e6;
}

// Returns words, of which no line is like the next.
wxString LongText(size_t characters) {
    std::string text;
    for (size_t i = 1; text.size() < characters; ++i) {
        text += std::to_string(i * i) + " words to be read ";
    }
    return wxString::FromAscii(text.data(), characters);
}

// Measures from a text to the window that shows its beginning. After whole_ms all of it can be
// scrolled to; MB is the memory added.
void ShowLongText(benchmark::State& state) {
    auto* const frame = new wxFrame(nullptr, wxID_ANY, "text", wxDefaultPosition, wxSize(640, 480));
    auto* const viewer = new CardViewer(frame, wxID_ANY);
    viewer->SetScrollRate(0, 1);
    frame->Show();
    wxYield();
    const wxString text = LongText(static_cast<size_t>(state.range(0)));
    double whole = 0;
    double megabytes = 0;
    for (auto _ : state) {
        viewer->SetFirstText(wxString());
        const double before = HeapMegabytes();
        state.SetIterationTime(1e-3 * Milliseconds([&] {
                                   viewer->SetFirstText(text);
                                   viewer->wxWindow::Update();
                               }));
        whole += Milliseconds([&] {
            while (!viewer->IsLaidOut()) {
                wxYield();
                wxIdleEvent idle;
                viewer->ProcessWindowEvent(idle);
            }
        });
        megabytes = std::max(megabytes, HeapMegabytes() - before);
    }
    state.counters["whole_ms"] = whole / static_cast<double>(state.iterations());
    state.counters["MB"] = megabytes;
    delete frame;
}

void AddSizes(benchmark::internal::Benchmark* bench) {
    bench->ArgName("cards")->Arg(10000)->Arg(100000)->Arg(1000000);
    bench->Iterations(9)->UseManualTime()->Unit(benchmark::kMillisecond);
}

BENCHMARK(CategoryListRefresh)->Apply(AddSizes);
BENCHMARK(LearningProgressCounts)->Apply(AddSizes);
BENCHMARK(OpenEditor)->Apply(AddSizes);
BENCHMARK(OpenEditorOfMany)
    ->ArgName("cards")
    ->Arg(1000)
    ->Arg(20000)
    ->Iterations(5)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK(ShowLongText)
    ->ArgName("characters")
    ->RangeMultiplier(10)
    ->Range(1000, 10000000)
    ->Arg(5000000)
    ->Arg(50000000)
    ->Iterations(3)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);

}  // namespace
