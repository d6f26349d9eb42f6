#include "edit/EditSchedulePanel.h"

#include <wx/spinctrl.h>

#include <algorithm>
#include <limits>

#include "support/GuiTest.h"

namespace {

using Panel = EditSchedulePanel;

struct EditSchedulePanelTest : GuiTest {
    wxTextCtrl& Interval() { return Find<wxTextCtrl>(*mpPanel, Panel::ID_REVIEW_INTERVAL); }
    wxChoice& Unit() { return Find<wxChoice>(*mpPanel, Panel::ID_INTERVAL_UNIT); }
    wxSpinCtrl& Difficulty() { return Find<wxSpinCtrl>(*mpPanel, Panel::ID_DIFFICULTY); }
    void LoadInterval(float seconds) {
        CardSchedule schedule;
        schedule.ReviewInterval = seconds;
        mpPanel->Load(schedule);
    }

    EditSchedulePanel* mpPanel =
        new EditSchedulePanel(new wxFrame(nullptr, wxID_ANY, "frame"), wxID_ANY, "Forward");
};

struct IntervalCase {
    float Seconds;
    const char* Text;
    int Unit;
};

TEST_F(EditSchedulePanelTest, AnIntervalIsShownInItsUnitAndStaysExact) {
    for (const IntervalCase& one : {IntervalCase{0.0f, "0.00", 0},
                                    {7200.0f, "120.00", 1},
                                    {7201.0f, "2.00", 2},
                                    {1000000.0f, "11.57", 3},
                                    {1e9f, "31.71", 6}}) {
        LoadInterval(one.Seconds);
        EXPECT_EQ(Interval().GetValue(), one.Text);
        EXPECT_EQ(Unit().GetSelection(), one.Unit);
        EXPECT_FALSE(mpPanel->IsModified());
        Difficulty().SetValue(17);
        // Study may have scored the card meanwhile.
        CardSchedule saved;
        saved.ReviewInterval = 4711.0f;
        EXPECT_EQ(mpPanel->Save(saved), 0);
        EXPECT_EQ(saved.ReviewInterval, 4711.0f);
        EXPECT_EQ(saved.Difficulty, 17);
    }
}

TEST_F(EditSchedulePanelTest, ATypedIntervalIsTakenOrRefusedWithTheRecordUntouched) {
    constexpr float kGreatest = std::numeric_limits<float>::max();
    constexpr float kNone = -1.0f;
    for (const IntervalCase& one : {IntervalCase{302400.0f, "3.5", 3},
                                    {kGreatest, " 1e38\n", 6},
                                    {kNone, "3.5e38", 0},
                                    {kNone, "-1", 0},
                                    {kNone, "5 days", 0},
                                    {kNone, "nan", 0},
                                    {kNone, " ", 0}}) {
        SCOPED_TRACE(one.Text);
        LoadInterval(60.0f);
        Interval().SetValue(one.Text);
        Unit().SetSelection(one.Unit);
        EXPECT_TRUE(mpPanel->IsModified());
        ModalAnswers answers;
        if (one.Seconds == kNone) {
            answers.Expect(wxID_OK);
        }
        CardSchedule saved;
        saved.ReviewInterval = kNone;
        mpPanel->Save(saved);
        EXPECT_EQ(saved.ReviewInterval, one.Seconds);
    }
}

TEST_F(EditSchedulePanelTest, AllElseComesBackAsItCameOrAsChosen) {
    CardSchedule schedule;
    schedule.LastReview = wxDateTime(static_cast<time_t>(1700000000));
    schedule.LastScore = 4;
    schedule.ReviewInterval = 60.0f;
    schedule.Difficulty = 20;
    schedule.ERC = 77;
    mpPanel->Load(schedule);
    EXPECT_EQ(Find<wxTextCtrl>(*mpPanel, Panel::ID_LAST_REVIEW).GetValue(), "2023-11-14 22:13:20Z");
    EXPECT_EQ(Find<wxTextCtrl>(*mpPanel, Panel::ID_NEXT_REVIEW).GetValue(), "2023-11-14 22:14:20Z");
    const auto showsLocalTime = [this] {
        const wxWindowList& all = mpPanel->GetChildren();
        return std::any_of(all.begin(), all.end(), [](const wxWindow* child) {
            return child->GetLabel().Contains("14 Nov 2023");
        });
    };
    EXPECT_FALSE(showsLocalTime()) << "no review yet";
    schedule.Introduced = true;
    mpPanel->Load(schedule);
    EXPECT_TRUE(showsLocalTime());
    Find<wxCheckBox>(*mpPanel, Panel::ID_INTRODUCED).SetValue(false);
    Difficulty().SetValue(32);
    Find<wxChoice>(*mpPanel, Panel::ID_LAST_SCORE).SetSelection(5);
    EXPECT_EQ(Find<wxChoice>(*mpPanel, Panel::ID_LAST_SCORE).GetStringSelection(),
              "0 - Fail (incorrect)\n");
    CardSchedule saved = schedule;
    saved.ERC = schedule.ERC = 78;
    EXPECT_EQ(mpPanel->Save(saved), 0);
    schedule.Introduced = false;
    schedule.Difficulty = 32;
    schedule.LastScore = 0;
    EXPECT_EQ(saved, schedule);

    // A score without a text in the choice, and a difficulty beyond the range of its control.
    schedule.LastScore = 9;
    schedule.Difficulty = 200;
    mpPanel->Load(schedule);
    saved = schedule;
    EXPECT_EQ(mpPanel->Save(saved), 0);
    EXPECT_EQ(saved, schedule);
}

TEST_F(EditSchedulePanelTest, ATimeIsToldByItsDistanceAndTheClockOnTheWall) {
    wxSetEnv("TZ", "CET-1CEST,M3.5.0,M10.5.0/3");
    tzset();
    constexpr time_t kNow = 1795784400;  // Friday, 27 November 2026, 14:00:00 there.
    constexpr int kDay = 86400;
    const struct {
        int Seconds;
        const char* Text;
    } cases[] = {{0, "in 0 seconds, Fri 27 Nov 14:00"},
                 {1, "in 1 second, Fri 27 Nov 14:00"},
                 {-119, "119 seconds ago, Fri 27 Nov 13:58"},
                 {3 * kDay + 300, "in 3 days, Mon 30 Nov 14:05"},
                 // In summer time, and in other years.
                 {-35 * kDay, "5 weeks ago, Fri 23 Oct 15:00"},
                 {40 * kDay, "in 6 weeks, Wed 06 Jan 2027 14:00"},
                 {-20000 * kDay, "55 years ago, Thu 24 Feb 1972 14:00"}};
    for (const auto& one : cases) {
        EXPECT_EQ(DescribeTime(wxDateTime(kNow + one.Seconds), wxDateTime(kNow)), one.Text);
    }
    wxUnsetEnv("TZ");
    tzset();
}

}  // namespace
