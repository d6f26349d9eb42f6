#include "scheduler/ScheduleFold.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <map>
#include <sstream>
#include <string>

#include "scheduler/ReviewArithmetic.h"

namespace {

constexpr int64_t kStart = 1700000000;
constexpr int64_t kNineYears = int64_t{9} * 365 * 86400;

std::string BitsOf(const CardSchedule& schedule) {
    std::ostringstream bits;
    bits << std::hexfloat << schedule.Introduced << ' ' << schedule.LastReview.GetValue().GetValue()
         << ' ' << int{schedule.LastScore} << ' ' << schedule.ReviewInterval << ' '
         << int{schedule.Difficulty} << ' ' << schedule.ERC;
    return bits.str();
}

// A computer with a schedule of its own, which studies as the program does.
struct Machine {
    CardSchedule State;
    CardSchedule Before;
    // As it was before the last "both".
    CardSchedule Earlier;
    float Lost = 0;
    float LostBefore = 0;
    int Share = 0;
    uint64_t Session = 0;
    int64_t Number = 0;
    int64_t ClockError = 0;
    // When it scored last.
    int64_t Scored = 0;
};

// Several computers with one card, told by a script. "A4" scores it on computer A, "A<3" scores it
// there once more in place of the last score, and "A~4" gives the same score again; "A=" sets the
// interval by hand, "A^" goes back to before the last "both", and "A-" makes the card a new one;
// "A%50" sets what a forgotten card keeps, "A+" puts the clock nine years ahead and "A." right
// again, with a new start of the program. "day" passes a day, "back" puts all clocks back by an
// hour, "both" brings all that happened to each computer, "old" begins with an event from before
// extensions.
struct Story {
    Story() {
        for (const char name : {'A', 'B'}) {
            Machine& machine = Machines[name];
            machine.State = {true, Time(kStart - 20 * 86400), 4, 16 * 86400.0f, 16, 5};
            machine.Session = static_cast<uint64_t>(name) << 8;
        }
    }
    void Do(const std::string& word) {
        if (word == "day" || word == "back") {
            Now += word == "day" ? 86400 : -3600;
        } else if (word == "both") {
            for (auto& [name, machine] : Machines) {
                machine.Earlier = machine.State;
                machine.State = FoldEvents(Events, IsAhead).Schedule;
            }
        } else if (word == "old") {
            IsOld = true;
        } else {
            DoOn(Machines.at(word[0]), word.substr(1));
        }
    }
    static wxDateTime Time(int64_t seconds) { return wxDateTime(wxLongLong(seconds * 1000)); }
    static bool IsAhead(const ScheduleEvent& event) { return event.Time > kStart + kNineYears / 2; }

    void DoOn(Machine& machine, const std::string& word) {
        Now += 60;
        if (word[0] == '%') {
            machine.Share = std::stoi(word.substr(1));
        } else if (word == "+" || word == ".") {
            machine.ClockError = word == "+" ? kNineYears : 0;
            ++machine.Session;
        } else if (word == "=" || word == "-" || word == "^") {
            Set(machine, word[0]);
        } else {
            Score(machine, word.back() - '0', word[0]);
        }
    }
    ScheduleEvent& AddEvent(Machine& machine) {
        ScheduleEvent event;
        event.Time = Now + machine.ClockError;
        event.Session = machine.Session;
        event.Number = ++machine.Number;
        Events.push_back(event);
        return Events.back();
    }
    // A set schedule stands after the review before it even where the clock is behind that.
    void Set(Machine& machine, char how) {
        const int64_t last = machine.State.LastReview.GetTicks();
        if (how == '-') {
            machine.State = {false, Time(kStart), 0, 5, 16, 0};
        } else if (how == '^') {
            machine.State = machine.Earlier;
        } else {
            machine.State.ReviewInterval = 777;
        }
        ScheduleEvent& event = AddEvent(machine);
        event.IsSet = true;
        event.Time = std::max(event.Time, last + 1);
        event.After = machine.State;
        machine.Lost = 0;
    }
    void Score(Machine& machine, int score, char how) {
        const bool isAnew = how == '<';
        if (isAnew) {
            machine.State = machine.Before;
            machine.Lost = machine.LostBefore;
        }
        if (how != '~') {
            machine.Before = machine.State;
            machine.LostBefore = machine.Lost;
        }
        ScheduleEvent& event = AddEvent(machine);
        event.HasExtension = !IsOld;
        event.From = machine.State;
        event.From.ERC = 0;
        event.Share = machine.Share;
        event.Review.Time = event.Time;
        event.Review.Score = static_cast<uint8_t>(score);
        event.Review.Replaces = isAnew ? machine.Scored : -1;
        machine.Scored = event.Time;
        if (machine.State.Introduced) {
            event.Review.Elapsed =
                std::max<int64_t>(0, event.Time - machine.State.LastReview.GetTicks());
        }
        const ReviewResult result = Review(machine.State, score, Time(event.Time), Random,
                                           RelearnedInterval(machine.Lost, score, machine.Share));
        machine.Lost = LostInterval(machine.Lost, score, result.OldInterval);
        event.Review.OldInterval = result.OldInterval;
        machine.State = {true,
                         Time(event.Time),
                         event.Review.Score,
                         result.NewInterval,
                         result.Difficulty,
                         static_cast<int32_t>(100 + Events.size())};
        event.After = machine.State;
        if (IsOld) {
            event.Session = 0;
            event.After.ERC = machine.State.ERC = 0;
        }
    }

    int64_t Now = kStart;
    bool IsOld = false;
    SequenceRandom Random;
    std::map<char, Machine> Machines;
    std::vector<ScheduleEvent> Events;
};

struct ScheduleFoldTest : ::testing::Test {
    static FoldResult Fold(const std::vector<ScheduleEvent>& events) {
        return FoldEvents(events, Story::IsAhead);
    }
    // Checks a review that was given again after another schedule.
    static void ExpectGivenAgain(const CardSchedule& before, const ScheduleEvent& event, float lost,
                                 const CardSchedule& after) {
        const int64_t elapsed =
            Story::IsAhead(event) ? event.Review.Elapsed
                                  : std::max<int64_t>(0, event.Time - before.LastReview.GetTicks());
        const wxDateTime now = before.LastReview + wxTimeSpan::Seconds(elapsed);
        const int score = event.Review.Score;
        const IntervalRange range =
            PredictReview(before, score, now, RelearnedInterval(lost, score, event.Share));
        EXPECT_GE(after.ReviewInterval, range.Least);
        EXPECT_LE(after.ReviewInterval, range.Greatest);
        SequenceRandom any;
        CardSchedule expected = event.After;
        expected.ReviewInterval = after.ReviewInterval;
        expected.Difficulty = Review(before, score, now, any).Difficulty;
        EXPECT_EQ(BitsOf(after), BitsOf(expected));
    }
};

// The path names the events that count, in their order, by their numbers in the script: those that
// stand as they were recorded with "=", and those that are given again with "~", after which may
// stand what the card had lost. All orders of arrival give the same bits.
TEST_F(ScheduleFoldTest, AScheduleDependsOnTheSetOfEventsAlone) {
    constexpr float kLost = 16 * 86400.0f;
    const struct {
        const char* Script;
        const char* Path;
    } cases[] = {
        {"A4 day A5 day A0 day A3", "1= 2= 3= 4="},
        {"A4 day both B5 day both A3", "1= 2= 3="},
        {"A4 day B5", "1= 2~"},
        {"A4 day B5 day A3 B4", "1= 2~ 3~ 4~"},
        {"A4 day B5 both day A3 day B2", "1= 2~ 3= 4~"},
        // A score in place of another takes that one out, alone and where another computer has
        // scored meanwhile.
        {"A4 A<5 day A<0 A3", "3= 4="},
        {"A4 B5 A<2 day A3", "2= 3~ 4~"},
        {"A4 B5 both A<2 A<0", "2= 4~"},
        {"A4 A~4 A<2 day A3", "3= 4="},
        {"A4 B5 A~4 A<2 A<5", "2= 5~"},
        // What is kept after a failure goes by the computer of the pass.
        {"A%50 A0 day A4", "1= 2="},
        {"A%50 A0 B0 day A4", "1= 2~ 3~!"},
        {"A%50 A0 B0 day B4", "1= 2~ 3~!"},
        {"A%50 A0 B5 day A4", "1= 2~ 3~"},
        // Schedules set by hand.
        {"A4 A= day A3", "1= 2= 3="},
        {"A4 B= day A3", "1= 2= 3~"},
        {"A4 B- day A3 B5", "1= 2= 3~ 4~"},
        {"A- A4 day A- day A5", "1= 2= 3= 4="},
        {"A4 day B5 both B3 both A^", "1= 2~ 3= 4="},
        {"A4 day B5 both A= both back B3", "1= 2~ 3= 4="},
        // A clock that was nine years ahead, and put right: what followed still follows.
        {"A4 A+ A5 A. A3 day A4", "1= 2= 3= 4="},
        {"A4 A+ A= day A. A3", "1= 2= 3="},
        {"A+ A5 A. A- A3 day A4", "1= 2= 3= 4="},
        {"A+ A5 A- A. A3 day A4", "1= 2= 3= 4="},
        {"A4 A= back A-", "1= 2= 3="},
        {"A4 back A5 B3", "3= 1~ 2~"},
        {"A+ A4 B5 day B3", "2= 3= 1~"},
        // Lines of earlier versions tell less, and still are a chain.
        {"old A4 day A5 A0 day A3", "1= 2= 3= 4="},
        {"old A4 day B5", "1= 2~"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.Script);
        Story story;
        std::istringstream words(c.Script);
        for (std::string word; words >> word;) {
            story.Do(word);
        }
        std::vector<ScheduleEvent> taken;
        bool hasForked = false;
        std::istringstream path(c.Path);
        for (std::string step; path >> step;) {
            SCOPED_TRACE(step);
            const ScheduleEvent& event = story.Events.at(static_cast<size_t>(step[0] - '1'));
            const CardSchedule before = Fold(taken).Schedule;
            taken.push_back(event);
            const CardSchedule after = Fold(taken).Schedule;
            if (step[1] == '=') {
                EXPECT_EQ(BitsOf(after), BitsOf(event.After));
            } else {
                hasForked = true;
                ExpectGivenAgain(before, event, step.back() == '!' ? kLost : 0.0f, after);
            }
        }
        const std::string expected = BitsOf(Fold(taken).Schedule);
        std::vector<size_t> order(story.Events.size());
        for (size_t i = 0; i < order.size(); ++i) {
            order[i] = i;
        }
        do {
            std::vector<ScheduleEvent> arrived;
            for (const size_t place : order) {
                arrived.push_back(story.Events[place]);
                arrived.push_back(story.Events[order.front()]);
            }
            const FoldResult result = Fold(arrived);
            ASSERT_EQ(BitsOf(result.Schedule), expected);
            ASSERT_EQ(result.HasForked, hasForked);
        } while (std::next_permutation(order.begin(), order.end()));
    }
}

// Events that wait for each other, as no computer writes them, and many of them.
TEST_F(ScheduleFoldTest, NoSetOfEventsIsTooMuch) {
    std::vector<ScheduleEvent> events(20000);
    for (size_t i = 0; i < events.size(); ++i) {
        ScheduleEvent& event = events[i];
        event.Session = i % 7 + 1;
        event.Number = static_cast<int64_t>(i * 7919 % 20011);
        event.Time = event.Review.Time = static_cast<int64_t>(i % 100);
        event.HasExtension = true;
        event.Review.Replaces = i % 2 == 0 ? event.Time : -1;
        event.From = event.After = {true, wxDateTime(time_t{1} + static_cast<time_t>(i % 3)),
                                    3,    i % 5 == 0 ? NAN : 100.0f,
                                    16,   0};
        event.After.LastReview += wxTimeSpan::Seconds(1);
    }
    const std::string bits = BitsOf(Fold(events).Schedule);
    std::reverse(events.begin(), events.end());
    EXPECT_EQ(BitsOf(Fold(events).Schedule), bits);
    EXPECT_EQ(BitsOf(Fold({}).Schedule).substr(0, 1), "0");
}

}  // namespace
