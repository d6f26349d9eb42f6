// The steps of study as a person takes them with one hand on the keys.

#include "study/StudyFrameFixture.h"
#include "study/StudyPanels.h"
#include "study/StudyTexts.h"

namespace {

struct StudyFrameState : StudyFrameTest {
    int LastScore(const FlashCard& card) { return Stored(card.CardId).Forward.LastScore; }
};

TEST_F(StudyFrameState, AScoreFirstUncoversTheBackAndThenBringsTheNextCard) {
    const FlashCard card = InsertCards(1).front();
    Open();
    Keys({WXK_LEFT});
    EXPECT_EQ(State(), "f1|") << "no history to go back to";
    EXPECT_EQ(Scores().GetString(0) + Scores().GetString(5), "Show BackShow Back");
    EXPECT_EQ(Scores().GetSelection(), 2);
    EXPECT_EQ(StatusText(1), "Try to remember");
    EXPECT_EQ(Viewer().GetHint(), "The back side of this flash card is hidden");

    Keys({'4'});
    EXPECT_EQ(State(), "f1/b1");
    EXPECT_EQ(Scores().GetString(1), GetScoreLabels(false)[1]);
    EXPECT_EQ(Scores().GetSelection(), 1) << "the cursor stays where the user put it";
    EXPECT_EQ(StatusText(1), "Score yourself");
    EXPECT_EQ(Viewer().GetHint(), "This is the back of a flash card");
    EXPECT_FALSE(Stored(card.CardId).Forward.Introduced);

    Keys({'1'});
    EXPECT_EQ(LastScore(card), 1);
    EXPECT_EQ(State(), "f1|") << "the same card again";
    EXPECT_EQ(Scores().GetSelection(), 2);
}

TEST_F(StudyFrameState, TheHistoryIsWalkedBackAndForwardAgain) {
    InsertCards(3);
    Open();
    Keys({'5', '5', '1', '1', WXK_UP, WXK_LEFT});
    EXPECT_EQ(State(), "f2/b2 scored 1");
    EXPECT_EQ(StatusText(1), "Recently studied 1/2");
    Keys({WXK_LEFT});
    EXPECT_EQ(State(), "f1/b1 scored 5");
    Keys({WXK_LEFT});
    EXPECT_EQ(StatusText(1), "Recently studied 2/2") << "the oldest is the end";

    Keys({WXK_DOWN, WXK_UP, WXK_RIGHT, WXK_RIGHT});
    EXPECT_EQ(State(), "f3|");
    EXPECT_EQ(Scores().GetSelection(), 1) << "the moved cursor of the current card";
    for (int i = 0; i < 2; ++i) {
        Command(wxID_FORWARD);
        EXPECT_EQ(State(), "f3/b3") << "nothing lies ahead of the current card";
    }
}

TEST_F(StudyFrameState, ARescoreAsksFirst) {
    const std::vector<FlashCard> cards = InsertCards(3);
    Open();
    Keys({'5', '5', '4', '4', WXK_LEFT});
    ModalAnswers answers;
    answers.Expect([](wxDialog& dialog) {
        EXPECT_EQ(dialog.GetDefaultItem()->GetLabel(), "Rescore");
        return wxYES;
    });
    Keys({WXK_DOWN, WXK_LEFT});
    EXPECT_EQ(LastScore(cards[1]), 3);
    EXPECT_EQ(StatusText(1), "Recently studied 2/2") << "the left key goes on into the past";

    // Closed by its title bar.
    answers.Expect(wxID_CANCEL);
    Keys({'0'});
    EXPECT_EQ(LastScore(cards[0]), 0);
    EXPECT_EQ(StatusText(1), "Recently studied 1/2");
}

TEST_F(StudyFrameState, TheTipOfACompactScoreTellsWhenTheCardComesBack) {
    InsertCards(1);
    Open();
    Command(ID_COMPACT_SCORING);
    Keys({WXK_SPACE});
    const wxRect best = Scores().GetItemRect(0);
    SendMouse(Scores(), wxEVT_MOTION, best.GetPosition() + wxSize(5, 5));
    EXPECT_EQ(Scores().GetToolTipText(), SelectScoreTip() + "\n5 - Pass (no hesitation): 16 hours");
    EXPECT_TRUE(Scores().GetNotes().empty()) << "no room beside a figure";
}

TEST_F(StudyFrameState, ABarTellsOfTheBreakUntilItIsDismissedForThatBreak) {
    InsertCards(2);
    Open();
    const wxWindow& bar = Find<wxWindow>(*mpFrame, "breakBar");
    Keys({WXK_SPACE, '5', WXK_SPACE});
    EXPECT_FALSE(bar.IsShown());
    Keys({'5'});
    EXPECT_TRUE(bar.IsShown());
    EXPECT_TRUE(Scores().HasFocus());
    SendKeyEvent(wxEVT_CHAR_HOOK, *mpFrame, WXK_ESCAPE);
    EXPECT_FALSE(bar.IsShown());
    // A card that fails in early review is due at once, but belongs to the same break.
    Keys({WXK_SPACE, '0'});
    mServices.Time.Advance(10);
    Keys({WXK_SPACE, '5', WXK_SPACE, '5'});
    EXPECT_EQ(StatusText(0), "Break Time");
    EXPECT_FALSE(bar.IsShown());
    // The next day has a break of its own.
    mServices.Time.Advance(int64_t{2} * 57600);
    Keys({WXK_SPACE, '5', WXK_SPACE, '5'});
    EXPECT_TRUE(bar.IsShown());
}

TEST_F(StudyFrameState, ATypedAnswerIsComparedAndProposesAScore) {
    InsertCards(4);
    Open();
    wxTextCtrl& field = Find<wxTextCtrl>(*mpFrame, 10110);
    const wxWindow& result = Find<wxWindow>(*mpFrame, 10111);
    const auto answer = [&](const wxString& text) {
        EXPECT_TRUE(field.HasFocus());
        field.ChangeValue(text);
        SendKeyDown(field, WXK_RETURN);
        Send(field, wxEVT_TEXT_ENTER);
        DrainEvents();
        // A Return that is held repeats, and is let go over the scores.
        SendKeyDown(Scores(), WXK_RETURN);
        SendKeyUp(Scores(), WXK_RETURN);
        EXPECT_FALSE(field.IsShown());
        EXPECT_TRUE(Scores().HasFocus());
    };
    EXPECT_FALSE(field.IsShown());
    Command(ID_TYPE_ANSWER);
    // Commands of the card go on to the text.
    EXPECT_EQ(Rule(wxID_DELETE), "");
    answer("B1");
    EXPECT_EQ(State(), "f1/b1");
    EXPECT_EQ(Scores().GetSelection(), 2);
    EXPECT_TRUE(result.IsShown());
    EXPECT_EQ(result.GetToolTipText(), "accent or case: \"B\" for \"b\"");
    EXPECT_EQ(Rule(wxID_DELETE), "on");
    Keys({'5'});

    // The next card has an empty field; the history has none.
    EXPECT_FALSE(result.IsShown());
    EXPECT_EQ(field.GetValue(), "");
    field.ChangeValue("half");
    Command(wxID_BACKWARD);
    EXPECT_EQ(State(), "f1/b1 scored 5");
    EXPECT_FALSE(field.IsShown() || result.IsShown());
    Command(wxID_FORWARD);
    EXPECT_EQ(field.GetValue(), "half");
    answer("b3");
    EXPECT_EQ(Scores().GetSelection(), 4);
    // The person's score stands; an edit meanwhile is compared anew and moves nothing.
    Keys({WXK_UP});
    Query("UPDATE Cards SET Back = 'b3' WHERE Front = 'f2'");
    mDatabase.Notify();
    EXPECT_EQ(State(), "f2/b3");
    EXPECT_EQ(result.GetToolTipText(), "Your answer is right.");
    EXPECT_EQ(Scores().GetSelection(), 3);
    Keys({WXK_RETURN});
    answer("");
    EXPECT_FALSE(result.IsShown());
    EXPECT_EQ(Scores().GetSelection(), 2) << "nothing to compare";

    // The other direction has its own choice.
    Command(ID_STUDY_REVERSE);
    EXPECT_EQ(Rule(ID_TYPE_ANSWER), "on");
    EXPECT_FALSE(field.IsShown());
    Close();
    Open();
    EXPECT_EQ(Rule(ID_TYPE_ANSWER), "checked");
    EXPECT_TRUE(Find<wxTextCtrl>(*mpFrame, 10110).HasFocus());
}

TEST_F(StudyFrameState, WithoutACardAMessageSaysWhy) {
    // Whether there is a card and a second category, the current category, and the message.
    const std::tuple<bool, bool, int32_t, wxString> cases[] = {
        {true, false, 0, AllExcludedMessage()},
        {true, true, 0, CategoryExcludedMessage()},
        {true, true, 1, CategoryEmptyMessage()},
        {false, true, 0, StoreEmptyMessage()},
    };
    for (const auto& [oneCard, secondCategory, current, text] : cases) {
        SCOPED_TRACE(text);
        ASSERT_EQ(mDatabase.Execute("DELETE FROM Cards"), 0);
        if (oneCard) {
            FlashCard card = MakeCard("front", "back");
            card.ForwardX = true;
            Insert(card);
        }
        if (secondCategory) {
            mDatabase.CategoryInsert("Other");
        }
        mServices.CurrentCategory = current;
        Open();
        EXPECT_EQ(mServices.StudyMessage, text);
        EXPECT_EQ(Rule(ID_EXPORT), oneCard ? "on" : "off");
        // A command without its menu entry meets the same wall.
        for (const int id : {wxID_OPEN, wxID_CUT, wxID_DELETE, wxID_FORWARD, wxID_BACKWARD}) {
            Command(id);
        }
        EXPECT_EQ(Rule(wxID_OPEN), "off");
        EXPECT_EQ(State(), "message");
        Close();
    }
    EXPECT_TRUE(mServices.Edited.empty());

    // The first card takes the place of the message.
    Open();
    EXPECT_EQ(Message().GetLabelText().Left(9), StoreEmptyMessage().Left(9));
    InsertCards(1);
    mDatabase.Notify();
    DrainEvents();
    EXPECT_EQ(State(), "f1|");
    EXPECT_TRUE(WaitFor([&] { return Scores().HasFocus(); }));
    // Nothing is said of a card that is gone.
    Query("DELETE FROM Cards");
    mDatabase.Notify();
    DrainEvents();
    EXPECT_EQ(State() + StatusText(0), "message");
}

TEST_F(StudyFrameState, APressMeansWhatItShowedWhenItBegan) {
    InsertCards(2);
    Open();
    SendKeyDown(Scores(), '5');
    Command(wxID_FORWARD);
    SendKeyUp(Scores(), '5');
    EXPECT_EQ(State(), "f1/b1");
    EXPECT_EQ(Query("SELECT count(*) FROM Cards WHERE Introduced"), Strings{"0"});
}

TEST_F(StudyFrameState, StatusTextsFitTheWindowAndTakeTurnsWithTheHelpOfTheMenus) {
    InsertCards(1);
    Open(wxSize(240, 480));
    EXPECT_EQ(StatusText(0), "Ready: 0");
    Keys({'5', '5', WXK_LEFT});
    EXPECT_EQ(StatusText(1), "Recent 1/1");
    Close();
    WriteStringSetting("StudyFramePosition", "");
    WriteStringSetting("StudyFrameSize", "");
    Open();
    EXPECT_EQ(StatusText(0), "Break Time");
    mServices.Time.Advance(100000000);
    mpFrame->DoGiveHelp("Creates a new flash card.", true);
    Command(wxID_FORWARD);
    EXPECT_EQ(StatusText(0), "Creates a new flash card.");
    mpFrame->DoGiveHelp("", false);
    DrainEvents();
    EXPECT_EQ(StatusText(0), "Ready for Review: 1");
}

TEST_F(StudyFrameState, NewCardsAreToldAndAreSomethingToGoOnWith) {
    mDatabase.CategoryInsert("Capitals");
    mDatabase.CategoryInsert("Empty");
    InsertCards(1);
    for (const char* const front : {"a", "b"}) {
        FlashCard card = MakeCard(front, "city");
        card.CategoryId = 1;
        Insert(card);
    }
    mServices.CurrentCategory = 2;
    Open();
    EXPECT_EQ(StatusText(2), "Empty");
    Command(ID_NEXT_DUE_CATEGORY);
    EXPECT_EQ(StatusText(1), "New cards: Default");
    EXPECT_EQ(StatusText(2), "Default: 1 new");
    Keys({WXK_SPACE, '5'});
    EXPECT_EQ(StatusText(2), "Default");
    Command(ID_NEXT_DUE_CATEGORY);
    EXPECT_EQ(StatusText(0), "Ready for Review: 0");
    EXPECT_EQ(StatusText(1), "New cards: Capitals");
    EXPECT_EQ(StatusText(2), "Capitals: 2 new");
    Command(ID_NEXT_DUE_CATEGORY);
    EXPECT_EQ(StatusText(1), "Nothing else to study now");
}

TEST_F(StudyFrameState, TheOtherDirectionSelectsAnewAndKeepsTheHistory) {
    InsertCards(2);
    Open();
    Keys({'5', '5', WXK_LEFT});
    EXPECT_EQ(Rule(ID_STUDY_FORWARD) + Rule(ID_STUDY_REVERSE), "checkedon");
    Command(ID_STUDY_REVERSE);
    EXPECT_EQ(State(), "b1|");
    EXPECT_EQ(Rule(ID_STUDY_FORWARD) + Rule(ID_STUDY_REVERSE), "onchecked");
    Command(wxID_FORWARD);
    EXPECT_EQ(State(), "b1/f1");
    Keys({WXK_LEFT});
    EXPECT_EQ(StatusText(1), "Recently studied 1/1");
    Command(ID_STUDY_FORWARD);
    EXPECT_EQ(State(), "f2|");
}

}  // namespace

// As while the message of a store that failed at a score is on the screen.
TEST(BreakBar, NoTimeIsNoMessageAndNoComplaint) {
    EXPECT_EQ(BreakMessage(wxDateTime(), wxDateTime(time_t(1764000000))), "");
}
