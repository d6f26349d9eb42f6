#include "edit/EditSchedulePanel.h"

#include <wx/spinctrl.h>

#include <limits>

#include "support/GuiTest.h"

namespace {

struct EditSchedulePanelTest : GuiTest {
    wxTextCtrl& Interval() { return Find<wxTextCtrl>(*mpPanel, 10000); }
    wxChoice& Unit() { return Find<wxChoice>(*mpPanel, 10003); }
    void LoadInterval(float seconds) {
        CardSchedule schedule;
        schedule.ReviewInterval = seconds;
        mpPanel->Load(schedule);
    }

    EditSchedulePanel* mpPanel =
        new EditSchedulePanel(new wxFrame(nullptr, wxID_ANY, "frame"), wxID_ANY, "Forward");
};

struct IntervalCase {
    float Loaded;
    const char* Text;
    int Unit;
    float Saved;
};

TEST_F(EditSchedulePanelTest, AnIntervalIsShownInItsUnitAndSavedAsShown) {
    for (const IntervalCase& one : {IntervalCase{0.0f, "0.00", 0, 0.0f},
                                    {7200.0f, "120.00", 1, 7200.0f},
                                    {7201.0f, "2.00", 2, 7200.0f},
                                    {1e9f, "31.71", 6, 31.71f * 31536000.0f}}) {
        LoadInterval(one.Loaded);
        EXPECT_EQ(Interval().GetValue(), one.Text);
        EXPECT_EQ(Unit().GetSelection(), one.Unit);
        EXPECT_FALSE(mpPanel->IsModified());
        CardSchedule saved;
        EXPECT_EQ(mpPanel->Save(saved), 0);
        EXPECT_EQ(saved.ReviewInterval, one.Saved);
    }
}

TEST_F(EditSchedulePanelTest, ATypedIntervalIsTakenOrRefusedWithTheRecordUntouched) {
    constexpr float kGreatest = std::numeric_limits<float>::max();
    constexpr float kNone = -1.0f;
    for (const IntervalCase& one : {IntervalCase{60.0f, "3.5", 3, 302400.0f},
                                    {60.0f, " 1e38\n", 6, kGreatest},
                                    {60.0f, "3.5e38", 0, kNone},
                                    {60.0f, "-1", 0, kNone},
                                    {60.0f, "5 days", 0, kNone},
                                    {60.0f, "nan", 0, kNone}}) {
        SCOPED_TRACE(one.Text);
        LoadInterval(one.Loaded);
        Interval().SetValue(one.Text);
        Unit().SetSelection(one.Unit);
        EXPECT_TRUE(mpPanel->IsModified());
        ModalAnswers answers;
        if (one.Saved == kNone) {
            answers.Expect(wxID_OK);
        }
        CardSchedule saved;
        saved.ReviewInterval = kNone;
        mpPanel->Save(saved);
        EXPECT_EQ(saved.ReviewInterval, one.Saved);
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
    EXPECT_EQ(Find<wxTextCtrl>(*mpPanel, 10002).GetValue(), "2023-11-14 22:13:20Z");
    EXPECT_EQ(Find<wxTextCtrl>(*mpPanel, 10004).GetValue(), "2023-11-14 22:14:20Z");
    CardSchedule saved;
    EXPECT_EQ(mpPanel->Save(saved), 0);
    EXPECT_EQ(saved, schedule);

    Find<wxCheckBox>(*mpPanel, 10001).SetValue(true);
    Find<wxSpinCtrl>(*mpPanel, 10007).SetValue(32);
    Find<wxChoice>(*mpPanel, 10005).SetSelection(5);
    EXPECT_EQ(Find<wxChoice>(*mpPanel, 10005).GetStringSelection(), "0 - Fail (incorrect)\n");
    EXPECT_EQ(mpPanel->Save(saved), 0);
    schedule.Introduced = true;
    schedule.Difficulty = 32;
    schedule.LastScore = 0;
    EXPECT_EQ(saved, schedule);

    // A score without a text in the choice.
    schedule.LastScore = 9;
    mpPanel->Load(schedule);
    EXPECT_EQ(mpPanel->Save(saved), 0);
    EXPECT_EQ(saved.LastScore, 9);
}

}  // namespace
