// What reaches the study window from outside: commands of its menus, changes of the store and of
// the settings, and its own end.

#include "study/StudyFrameFixture.h"

namespace {

using StudyFrameChange = StudyFrameTest;

TEST_F(StudyFrameChange, ACardIsDeletedAfterAQuestion) {
    InsertCards(2);
    Open();
    ModalAnswers answers;
    answers.Expect({wxID_CANCEL, wxID_OK, wxID_OK});
    Command(wxID_DELETE);
    EXPECT_EQ(answers.Dialogs.at(0).Title, "Delete Card");
    EXPECT_EQ(answers.Dialogs.at(0).Message, "Do you really want to delete this card?");
    EXPECT_EQ(State(), "f1|");

    Keys({'5', '5', WXK_LEFT});
    Command(wxID_DELETE);
    EXPECT_EQ(State(), "f2|") << "its place in the history has gone";
    Command(wxID_DELETE);
    EXPECT_EQ(State(), "message");
    EXPECT_EQ(Query("SELECT COUNT(*) FROM Cards"), Strings{"0"});
}

TEST_F(StudyFrameChange, ClosingKeepsCompactScoringAndNotTheHorizontalLayout) {
    InsertCards(1);
    Open();
    const wxSize size = mpFrame->GetSize();
    Command(ID_COMPACT_SCORING);
    EXPECT_EQ(Scores().GetString(5), ">");
    EXPECT_LT(Viewer().GetRect().GetRight(), Scores().GetRect().GetLeft());
    EXPECT_LT(Scores().GetSize().GetWidth(), 50);
    Command(wxID_FORWARD);
    EXPECT_EQ(Scores().GetString(5), "0");
    Command(ID_LAYOUT_HORIZONTAL);
    EXPECT_EQ(Rule(ID_LAYOUT_HORIZONTAL), "checked");
    EXPECT_EQ(OpenSettings()->Read("CardLayout"), "horizontal");
    EXPECT_EQ(mpFrame->GetSize(), size);
    wxFrame* const frame = mpFrame;
    Command(wxID_CLOSE);
    EXPECT_EQ(mServices.Closed, std::vector<wxFrame*>{frame});
    EXPECT_EQ(OpenSettings()->Read("LastWindow"), "Study");
    EXPECT_TRUE(OpenSettings()->HasEntry("StudyFramePosition"));

    Open();
    EXPECT_EQ(Rule(ID_COMPACT_SCORING) + Rule(ID_LAYOUT_VERTICAL), "checkedchecked");
    Command(wxID_FORWARD);
    Command(ID_COMPACT_SCORING);
    EXPECT_EQ(Scores().GetString(5), "0 - Fail (incorrect)");
    EXPECT_LT(Viewer().GetRect().GetBottom(), Scores().GetRect().GetTop());
    const int bottom = Scores().GetRect().GetBottom();
    Command(ID_STATUS_BAR, false);
    EXPECT_EQ(Rule(ID_STATUS_BAR), "on");
    EXPECT_TRUE(WaitFor([&] { return Scores().GetRect().GetBottom() > bottom; }));
}

TEST_F(StudyFrameChange, SettingsAndThemesAreTakenOverAtOnce) {
    InsertCards(3);
    Open();
    Viewer().SetBackgroundColour(*wxRED);
    wxSysColourChangedEvent event;
    event.SetEventObject(mpFrame);
    mpFrame->GetEventHandler()->ProcessEvent(event);
    EXPECT_EQ(Viewer().GetBackgroundColour(), wxSystemSettings::GetColour(wxSYS_COLOUR_WINDOW));

    Keys({'5', '5'});
    mServices.Time.Advance(100000000);
    // The scored card is due by now. It would come first, were it not for the early introduction.
    WriteBooleanSetting("EarlyIntroduction", true);
    WriteIntegerSetting("EarlyIntroductionInterval", 0);
    WriteFontSetting("Font", wxFontInfo(31));
    WriteColourSetting("FontColor", wxColour(1, 2, 3));
    WriteColourSetting("StudyBgColor", wxColour(250, 240, 230));
    mServices.SettingsNotifier.Notify();
    EXPECT_EQ(Viewer().GetFont().GetPointSize(), 31);
    EXPECT_EQ(Viewer().GetSecond().TextColour, wxColour(1, 2, 3));
    EXPECT_EQ(Viewer().GetBackgroundColour(), wxColour(250, 240, 230));
    Keys({'5', '5'});
    EXPECT_EQ(State(), "f3|");
}

// The log lies beside the store that has the score, and a score of the history belongs to the store
// in which it was given, wherever that is by now.
TEST_F(StudyFrameChange, TheLogAndTheHistoryGoWithTheStore) {
    const std::vector<FlashCard> cards = InsertCards(2);
    Open();
    Keys({'4', '4'});
    const auto lines = [](const wxString& store) {
        const std::string log = ReadBytes(ReviewLogPath(store));
        // Without the heading and what follows a score.
        return std::count(log.begin(), log.end(), '\n') - std::count(log.begin(), log.end(), '#');
    };
    EXPECT_EQ(lines(StorePath()), 1);
    const wxString moved = mDirectory.Path("moved.vlm");
    mDatabase.Close();
    ASSERT_EQ(MoveStoreFile(StorePath(), moved), 0);
    ASSERT_EQ(mDatabase.Open(moved, mWait), 0);
    mDatabase.Notify();
    Keys({WXK_LEFT});
    EXPECT_EQ(State(), "f1/b1 scored 4");
    Keys({WXK_RIGHT, '4', '4'});
    EXPECT_EQ(lines(moved), 2);
    EXPECT_FALSE(wxFileName::FileExists(ReviewLogPath(StorePath())));
}

TEST_F(StudyFrameChange, AnotherStoreBringsItsOwnCardsAndKeepsTheDirection) {
    InsertCards(1);
    Database other(mReport);
    ASSERT_EQ(other.Open(mDirectory.Path("other.vlm"), mWait), 0);
    ASSERT_EQ(other.CategoryInsert("Default"), 0);
    FlashCard card = MakeCard("other front", "other back");
    card.ForwardX = true;
    ASSERT_EQ(other.InsertFlashCard(card), 0);
    Open();
    Command(ID_STUDY_REVERSE);
    mpFrame->SetDatabase(&other);
    EXPECT_EQ(State(), "other back|");
    mDatabase.Notify();
    EXPECT_EQ(State(), "other back|");
    Close();
    // Nobody is left to hear these.
    other.Notify();
    mServices.SettingsNotifier.Notify();
}

}  // namespace
