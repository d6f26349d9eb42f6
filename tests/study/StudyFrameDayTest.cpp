#include "study/StudyFrameFixture.h"
#include "study/StudyTexts.h"
#include "support/LoggedReview.h"

namespace {

struct StudyFrameDay : StudyFrameTest {
    // The bar's message, and in brackets the offer of more; empty while it is hidden.
    wxString Bar() {
        wxWindow& bar = Find<wxWindow>(*mpFrame, "breakBar");
        if (!bar.IsShown()) {
            return wxString();
        }
        wxString text = Find<wxStaticText>(bar, "staticText").GetLabel();
        text.Replace("\n", " ");
        return text + (FindById(bar, ID_SHOW_MORE_TODAY)->IsShown() ? " [more]" : "");
    }
};

}  // namespace

TEST_F(StudyFrameDay, TheStatusBarTellsHowFarTheDayIsAndAQuietLineThatItIsEnough) {
    InsertCards(9);
    Open();
    EXPECT_EQ(mpFrame->GetStatusBar()->GetFieldsCount(), 3);
    Keys({WXK_SPACE, '5'});
    WriteIntegerSetting(kSettingEnoughForToday, 3);
    mServices.SettingsNotifier.Notify();
    EXPECT_TRUE(WaitFor([this] { return StatusText(3) == "1 of 3"; })) << StatusText(3);
    Keys({WXK_SPACE, '4'});
    EXPECT_EQ(Bar(), "");
    Keys({WXK_SPACE, '4'});
    EXPECT_EQ(StatusText(3), "3 of 3");
    EXPECT_EQ(Bar(), "Enough for today: 3 answers.");
    EXPECT_EQ(State(), "f4|");
    SendKeyEvent(wxEVT_CHAR_HOOK, *mpFrame, WXK_ESCAPE);
    Keys({WXK_SPACE, '4'});
    EXPECT_EQ(StatusText(3), "4 of 3");
    EXPECT_EQ(Bar(), "");
    // Tomorrow begins at nothing, also after a start.
    mServices.Time.Advance(86400);
    Close();
    Open();
    EXPECT_TRUE(WaitFor([this] { return StatusText(3) == "0 of 3"; })) << StatusText(3);
}

TEST_F(StudyFrameDay, WhenTheNewCardsAreUsedUpMoreCanBeAskedFor) {
    WriteIntegerSetting(kSettingNewCardsPerDay, 1);
    mDatabase.CategoryInsert("Other");
    Insert(MakeCard("other", "new", 1));
    InsertCards(3);
    Open();
    EXPECT_EQ(Rule(ID_SHOW_MORE_TODAY), "off");
    Keys({WXK_SPACE, '5'});
    EXPECT_EQ(State(), "f1|");
    EXPECT_TRUE(Bar().EndsWith("early review. [more]")) << Bar();
    EXPECT_EQ(Rule(ID_SHOW_MORE_TODAY), "on");
    mServices.CurrentCategory = 1;
    mDatabase.Notify();
    EXPECT_EQ(State(), "message");
    EXPECT_EQ(Message().GetLabel().BeforeFirst('\n').Left(20), NewCardsHeldMessage().Left(20));
    mServices.CurrentCategory = 0;
    mDatabase.Notify();
    Send(*FindById(*mpFrame, ID_SHOW_MORE_TODAY));
    EXPECT_EQ(State(), "f2|");
    EXPECT_EQ(Bar(), "");
    Keys({WXK_SPACE, '5'});
    EXPECT_EQ(State(), "f1|");
}

TEST_F(StudyFrameDay, ACardThatTakesTooMuchAndAPauseAreToldOnce) {
    std::vector<FlashCard> cards = InsertCards(3);
    const int64_t now = mServices.Time.Now().GetTicks();
    for (FlashCard& card : cards) {
        card.Forward.Introduced = true;
        card.Forward.LastReview = wxDateTime(static_cast<time_t>(now - 3000000));
        card.Forward.ReviewInterval = 86400;
        mDatabase.UpdateFlashCard(card);
    }
    WriteIntegerSetting(kSettingEnoughForToday, 1);
    for (int64_t i = 8; i > 0; --i) {
        LoggedReview{cards[0].CardId, now - (21 + i) * 86400, 1, 1, 86400}.AppendTo(StorePath());
    }
    Open();
    EXPECT_TRUE(WaitFor([this] { return !Bar().empty(); }));
    const wxString day = FormatDate(mServices.Time.Now() + wxDateSpan::Days(2), "%d %b %Y");
    EXPECT_EQ(Bar(),
              "After 3 weeks away 3 cards are due. At 1 a day the backlog is gone on " + day + ".");
    EXPECT_EQ(StatusText(1), "Try to remember (stubborn)");
    Keys({WXK_SPACE, '4'});
    EXPECT_EQ(Bar(), "Enough for today: 1 answer.");
    EXPECT_EQ(StatusText(1), "Try to remember");
}
