#include <wx/init.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <map>
#include <random>
#include <string>
#include <utility>

#include "plot/Plot.h"
#include "plot/PlotDrawing.h"
#include "scheduler/Scheduler.h"
#include "store/Database.h"
#include "support/Fakes.h"

// A year of study in both directions by a clock of its own, in a place where the clocks change in
// spring and autumn. On the way the clock is once set back by a day and once forward by a year.
// Every review is checked for what must always hold, when a forgotten card begins again and when it
// keeps a quarter of its interval. The figures of each day and the growth of an interval by score,
// for cards that begin again, are drawn to an SVG file each: velomind_year CARDS DAYS REVIEWS-A-DAY
// DIRECTORY
namespace {

constexpr int kCategory = 0;
constexpr int kHistory = 20;
// The spread leaves at least this part of an interval.
constexpr float kLeastSpread = 0.8122f;

void Check(bool holds, const char* what) {
    if (!holds) {
        std::fprintf(stderr, "velomind_year: %s\n", what);
        std::exit(1);
    }
}

// Returns the moment of a local time in 2025, with the day counted from the 1st of January.
int64_t LocalTime(int day, int hour) {
    std::tm local{};
    local.tm_year = 125;
    local.tm_mday = 1 + day;
    local.tm_hour = hour;
    local.tm_isdst = -1;
    return std::mktime(&local);
}

class Study {
  public:
    Study(const std::string& directory, int cards, int directions, int share, ReviewRandom& random)
        : mDirectory(directory), mRandom(random), mShare(share) {
        std::filesystem::create_directories(directory);
        const std::string path = directory + "/year.vlm";
        RemoveFiles();
        Check(mDatabase.Open(wxString::FromUTF8(path), mWait) == 0 &&
                  mDatabase.CategoryInsert("Default") == 0 &&
                  mDatabase.Execute(wxString::FromUTF8(FillSql(cards))) == 0,
              "no store");
        mCards = cards;
        mScheduler.SetRelearnShare(share);
        mScheduler.SetDirections(static_cast<ReviewDirection>(directions));
        mScheduler.Initialise();
    }
    ~Study() {
        mDatabase.Close();
        RemoveFiles();
    }
    Study(const Study&) = delete;
    Study& operator=(const Study&) = delete;

    void Set(int64_t time) { mClock.Set(time); }
    void Advance(int64_t seconds) { mClock.Advance(seconds); }
    int64_t Now() const { return mClock.Now().GetTicks(); }
    int Ready() { return mScheduler.GetReadyCount(); }
    int Introduced() const { return mIntroduced; }
    double SlowestReview() const { return mSlowest; }
    bool IsBreakTime() const { return mScheduler.IsBreakTime(); }
    void Refresh() { mScheduler.Refresh(); }

    // Scores the card on show. Returns its interval in seconds.
    float Review(int score);

  private:
    void RemoveFiles() const {
        std::filesystem::remove(mDirectory + "/year.vlm");
        std::filesystem::remove(mDirectory + "/year.vlm" + kReviewLogSuffix);
    }
    static std::string FillSql(int cards) {
        return "WITH RECURSIVE n(i) AS (SELECT 0 UNION ALL SELECT i + 1 FROM n WHERE i < " +
               std::to_string(cards - 1) +
               ") INSERT INTO Cards (CardId, Front, Back, CategoryId, Author, Chapter, "
               "IntroductionOrder, ForwardX, ReverseX, Notes, Introduced, LastReview, LastScore, "
               "ReviewInterval, Difficulty, NextReview, ERC, RIntroduced, RLastReview, RLastScore, "
               "RReviewInterval, RDifficulty, RNextReview, RERC) SELECT "
               "printf('%08x-0000-4000-8000-%012x', i * 2654435761 % 4294967296, i), 'front ' || "
               "i, 'back ' || i, 0, '', '', i, 0, 0, '', 0, 0, 0, 5.0, 16, 5, 0, 0, 0, 0, 5.0, 16, "
               "5, 0 FROM n";
    }
    FlashCard Stored(const CardUuid& id) {
        std::list<FlashCard> cards;
        Check(mDatabase.SelectCardById(id, cards) == 0 && cards.size() == 1, "a card is missing");
        return cards.front();
    }
    void CheckSchedule(const CardSchedule& old, const CardSchedule& now, int score) const;
    void CheckLost(const CardUuid& id, bool forward, float old, float now, int score);
    void CheckCounts();

    std::string mDirectory;
    RecordingReport mReport;
    SilentUpgradeWait mWait;
    Database mDatabase{mReport};
    FakeClock mClock{LocalTime(0, 18)};
    ReviewRandom& mRandom;
    FakeCategorySource mCategory;
    SilentMaintenance mMaintenance;
    ReviewLog mLog{wxString()};
    Scheduler mScheduler{mDatabase, {mCategory, mMaintenance, mClock, mRandom, &mLog}};
    int mShare;
    // The interval that each card and direction had when it was forgotten, until it is passed.
    std::map<std::pair<CardUuid, bool>, float> mLost;
    int mCards = 0;
    int mIntroduced = 0;
    double mSlowest = 0.0;
};

float Study::Review(int score) {
    Check(mScheduler.HasCard(), "no card to review");
    const FlashCard old = Stored(mScheduler.GetCurrentCardId());
    const auto start = std::chrono::steady_clock::now();
    mScheduler.ScoreCard(score);
    const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start;
    mSlowest = std::max(mSlowest, taken.count());
    Check(mReport.Texts.empty(), "the store failed");

    const FlashCard card = Stored(old.CardId);
    const bool forward = card.Forward != old.Forward;
    Check(forward != (card.Reverse != old.Reverse), "one direction changes with a score");
    const CardSchedule& before = forward ? old.Forward : old.Reverse;
    const CardSchedule& after = forward ? card.Forward : card.Reverse;
    mIntroduced += before.Introduced ? 0 : 1;
    CheckSchedule(before, after, score);
    CheckLost(old.CardId, forward, before.ReviewInterval, after.ReviewInterval, score);
    CheckCounts();
    Check(mScheduler.GetHistoryCount() <= kHistory, "the history holds 20 cards");
    return after.ReviewInterval;
}

void Study::CheckSchedule(const CardSchedule& old, const CardSchedule& now, int score) const {
    Check(now.Introduced && now.LastScore == score, "the score is kept");
    Check(now.LastReview.GetTicks() == Now(), "the time of the review is kept");
    Check(std::isfinite(now.ReviewInterval) && now.ReviewInterval >= 1.0f, "an interval is a time");
    Check(now.NextReview() >= now.LastReview, "the next review follows the last");
    if (old.Introduced && score > 2) {
        Check(now.ReviewInterval >= old.ReviewInterval * kLeastSpread,
              "a good score never shortens an interval but by its spread");
    } else if (old.Introduced) {
        Check(now.ReviewInterval <= std::max(old.ReviewInterval, 1.0f) / kLeastSpread,
              "a bad score never lengthens one");
    }
}

void Study::CheckLost(const CardUuid& id, bool forward, float old, float now, int score) {
    if (score < 3) {
        mLost.emplace(std::pair(id, forward), old);
        return;
    }
    const auto lost = mLost.find({id, forward});
    if (lost != mLost.end()) {
        Check(mShare == 0 || (now * 100.0f >= lost->second * static_cast<float>(mShare) * 0.9999f &&
                              now >= 3600.0f),
              "a forgotten card keeps its share");
        mLost.erase(lost);
    }
}

void Study::CheckCounts() {
    int32_t all = 0;
    int32_t forward = 0;
    int32_t reverse = 0;
    int32_t ready = 0;
    int32_t readyReverse = 0;
    Check(mDatabase.CountAllCards(all) == 0 && all == mCards, "no card is lost");
    Check(mDatabase.CountIntroducedForward(kCategory, forward) == 0 &&
              mDatabase.CountIntroducedReverse(kCategory, reverse) == 0 &&
              forward + reverse == mIntroduced,
          "the introduced cards add up");
    Check(mDatabase.SelectReadyCountForward(kCategory, mClock.Now(), ready) == 0 &&
              mDatabase.SelectReadyCountReverse(kCategory, mClock.Now(), readyReverse) == 0 &&
              ready <= forward && readyReverse <= reverse &&
              ready + readyReverse == mScheduler.GetReadyCount(),
          "the ready cards add up");
}

PlotSeries MakeLine(const char* name, PlotHue hue) {
    PlotSeries line;
    line.Name = name;
    line.Marks = PlotMarks::Line;
    line.Hue = hue;
    return line;
}

void AddPoint(PlotSeries& line, double x, double y) {
    PlotPoint point;
    point.X = x;
    point.Y = y;
    line.Points.push_back(point);
}

// Sets an axis of whole numbers with a tick at each step.
void SetNumberAxis(PlotAxis& axis, const char* title, int low, int high, int step) {
    axis.Title = title;
    axis.Low = low;
    axis.High = high;
    for (int number = low; number <= high; number += step) {
        axis.Ticks.push_back({static_cast<double>(number), wxString::Format("%i", number)});
    }
}

void WritePlot(const Plot& plot, const std::string& path) {
    const std::string svg = DrawPlotAsSvg(plot, wxSize(760, 420));
    std::FILE* const file = std::fopen(path.c_str(), "w");
    Check(file != nullptr && std::fwrite(svg.data(), 1, svg.size(), file) == svg.size() &&
              std::fclose(file) == 0,
          "a picture could not be written");
}

// Draws how an interval grows when a card is always asked when it is due.
void DrawGrowth(const std::string& directory) {
    struct Way {
        const char* Scores;
        const char* Name;
        PlotHue Hue;
    };
    constexpr Way kWays[] = {{"3333333333", "always 3", PlotHue::Orange},
                             {"4444444444", "always 4", PlotHue::Green},
                             {"5555555555", "always 5", PlotHue::Blue},
                             {"5555525555", "5, and one 2", PlotHue::Purple}};
    Plot plot;
    plot.Title = "Interval after each review, a card always asked when it is due";
    plot.Up.Title = "interval";
    SetDurationAxis(plot.Up, 1800.0, 10000.0 * 86400.0);
    SetNumberAxis(plot.Across, "review", 1, 10, 1);
    for (const Way& way : kWays) {
        PlotSeries line = MakeLine(way.Name, way.Hue);
        // One half: the spread changes nothing.
        FakeRandom random;
        Study study(directory, 1, kReviewForward, 0, random);
        for (int review = 0; way.Scores[review] != '\0'; ++review) {
            const float interval = study.Review(way.Scores[review] - '0');
            AddPoint(line, review + 1, static_cast<double>(interval));
            study.Advance(static_cast<int64_t>(interval) + 1);
            study.Refresh();
        }
        plot.Series.push_back(line);
    }
    WritePlot(plot, directory + "/interval-growth.svg");
}

// Draws the score of a person who knows most cards.
int DrawScore(std::mt19937& dice) {
    constexpr std::array<unsigned, 6> kUpTo{3, 7, 15, 40, 75, 100};
    const auto chance = static_cast<unsigned>(dice() % 100);
    int score = 0;
    while (chance >= kUpTo[static_cast<size_t>(score)]) {
        ++score;
    }
    return score;
}

// Studies for a year, and draws it if cards begin again.
void StudyYear(const std::string& directory, int cards, int days, int reviews, int share) {
    PlotSeries dueLine = MakeLine("due at the start", PlotHue::Red);
    PlotSeries againLine = MakeLine("scored again", PlotHue::Blue);
    PlotSeries newLine = MakeLine("new", PlotHue::Green);
    SequenceRandom random;
    Study study(directory, cards, kReviewForward | kReviewReverse, share, random);
    std::mt19937 dice{20250101};
    int64_t shift = 0;
    for (int day = 0; day < days; ++day) {
        // Two thirds through the year the clock is set wrong, and later right again and beyond.
        shift -= day == days * 2 / 3 ? 86400 : 0;
        shift += day == days * 5 / 6 ? 365 * 86400 : 0;
        study.Set(LocalTime(day, 18) + shift);
        study.Refresh();
        const int due = study.Ready();
        const int introduced = study.Introduced();
        int reviewed = 0;
        for (int i = 0; i < reviews; ++i) {
            study.Advance(8);
            reviewed += study.IsBreakTime() ? 0 : 1;
            study.Review(DrawScore(dice));
        }
        const int fresh = study.Introduced() - introduced;
        AddPoint(dueLine, day, due);
        AddPoint(againLine, day, reviewed - fresh);
        AddPoint(newLine, day, fresh);
    }
    std::printf(
        "%d cards, %d days, %d reviews, %d %% kept: every check held; slowest review %.1f ms\n",
        cards, days, days * reviews, share, study.SlowestReview() * 1e3);
    if (share > 0) {
        return;
    }
    Plot plot;
    plot.Title = wxString::Format("A year of %d reviews a day, in both directions", reviews);
    plot.Series = {dueLine, againLine, newLine};
    plot.Up.Title = "cards";
    SetCountAxis(plot.Up, plot.GreatestY());
    SetNumberAxis(plot.Across, "day", 0, days, std::max(days / 12, 1));
    WritePlot(plot, directory + "/year-of-study.svg");
}

}  // namespace

int main(int argc, char** argv) {
    const wxInitializer library;
    if (argc != 5 || !library.IsOk()) {
        std::fputs("usage: velomind_year CARDS DAYS REVIEWS-A-DAY DIRECTORY\n", stderr);
        return 2;
    }
    setenv("TZ", "Europe/Berlin", 1);
    tzset();
    std::filesystem::create_directories(argv[4]);
    DrawGrowth(argv[4]);
    for (const int share : {0, 25}) {
        StudyYear(argv[4], std::atoi(argv[1]), std::atoi(argv[2]), std::atoi(argv[3]), share);
    }
    return 0;
}
