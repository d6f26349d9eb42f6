// The steps of study as a person takes them with one hand on the keys.

#include <wx/dialog.h>

#include "study/StudyFrameFixture.h"
#include "study/StudyTexts.h"

namespace {

class StudyFrameState : public StudyFrameTest {
  protected:
    std::vector<wxString> Labels() {
        std::vector<wxString> labels;
        for (unsigned int i = 0; i < Scores().GetCount(); ++i) {
            labels.push_back(Scores().GetString(i));
        }
        return labels;
    }
    std::vector<wxString> ScoreTexts() {
        const ScoreLabels labels = GetScoreLabels(false);
        return {labels.begin(), labels.end()};
    }
    void Score(char digit) {
        Key(digit);
        Key(digit);
    }
    int LastScore(const FlashCard& card) { return Stored(card.CardId).Forward.LastScore; }
};

TEST_F(StudyFrameState, AScoreFirstUncoversTheBackAndThenBringsTheNextCard) {
    const FlashCard card = InsertCards(1).front();
    Open();
    Key(WXK_LEFT);
    EXPECT_EQ(State(), "front") << "no history to go back to";
    EXPECT_EQ(Labels(), std::vector<wxString>(6, "Show Back"));
    EXPECT_EQ(Scores().GetSelection(), 2);
    EXPECT_EQ(StatusText(1), "Try to remember");
    EXPECT_EQ(Viewer().GetHint(), "The back side of this flash card is hidden");

    Key('4');
    EXPECT_EQ(State(), "back");
    EXPECT_EQ(Viewer().GetSecondText(), "back 1");
    EXPECT_EQ(Labels(), ScoreTexts());
    EXPECT_EQ(Scores().GetSelection(), 1) << "the cursor stays where the user put it";
    EXPECT_EQ(StatusText(1), "Score yourself");
    EXPECT_EQ(Viewer().GetHint(), "This is the back of a flash card");
    EXPECT_FALSE(Stored(card.CardId).Forward.Introduced);

    Key('1');
    EXPECT_EQ(LastScore(card), 1);
    EXPECT_EQ(State(), "front") << "the same card again";
    EXPECT_EQ(Scores().GetSelection(), 2);
}

TEST_F(StudyFrameState, TheHistoryIsWalkedBackAndForwardAgain) {
    InsertCards(3);
    Open();
    Score('5');
    Score('1');
    Key(WXK_UP);

    Key(WXK_LEFT);
    EXPECT_EQ(State(), "recent");
    EXPECT_EQ(Viewer().GetFirstText(), "front 2");
    EXPECT_EQ(Labels(), ScoreTexts());
    EXPECT_EQ(Scores().GetMark(), 4);
    EXPECT_EQ(StatusText(1), "Recently studied 1/2");

    Key(WXK_LEFT);
    EXPECT_EQ(StatusText(1), "Recently studied 2/2");
    EXPECT_EQ(Scores().GetMark(), 0);
    Key(WXK_LEFT);
    EXPECT_EQ(StatusText(1), "Recently studied 2/2") << "the oldest is the end";
    Key(WXK_DOWN);
    Key(WXK_UP);

    Key(WXK_RIGHT);
    Key(WXK_RIGHT);
    EXPECT_EQ(State(), "front");
    EXPECT_EQ(Viewer().GetFirstText(), "front 3");
    EXPECT_EQ(Scores().GetSelection(), 1) << "the moved cursor of the current card";
    Command(wxID_FORWARD);
    EXPECT_EQ(State(), "back");
    Command(wxID_FORWARD);
    EXPECT_EQ(State(), "back") << "nothing lies ahead of the current card";
}

TEST_F(StudyFrameState, ARescoreAsksFirst) {
    const std::vector<FlashCard> cards = InsertCards(3);
    Open();
    Score('5');
    Score('4');
    Key(WXK_LEFT);
    ModalAnswers answers;
    answers.Expect([](wxDialog& dialog) {
        EXPECT_EQ(dialog.GetDefaultItem()->GetLabel(), "Rescore");
        return wxNO;
    });
    Key('1');
    EXPECT_EQ(LastScore(cards[1]), 4);
    EXPECT_EQ(StatusText(1), "Recently studied 1/2");
    EXPECT_EQ(Scores().GetSelection(), 1);
    EXPECT_EQ(Scores().GetMark(), 1);

    answers.Expect(wxYES);
    Key(WXK_DOWN);
    Key(WXK_LEFT);
    EXPECT_EQ(LastScore(cards[1]), 3);
    EXPECT_EQ(StatusText(1), "Recently studied 2/2") << "the left key goes on into the past";

    // Closed by its title bar.
    answers.Expect(wxID_CANCEL);
    Key('0');
    EXPECT_EQ(LastScore(cards[0]), 0);
    EXPECT_EQ(StatusText(1), "Recently studied 1/2");
}

TEST_F(StudyFrameState, WithoutACardAMessageSaysWhy) {
    const struct {
        bool OneCard, SecondCategory;
        int32_t Current;
        wxString Text;
    } cases[] = {
        {false, false, 0, StoreEmptyMessage()},
        {true, false, 0, AllExcludedMessage()},
        {true, true, 0, CategoryExcludedMessage()},
        {true, true, 1, CategoryEmptyMessage()},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(each.Text);
        ASSERT_EQ(mDatabase.Execute("DELETE FROM Cards"), 0);
        if (each.OneCard) {
            FlashCard card = MakeCard("front", "back");
            card.ForwardX = true;
            Insert(card);
        }
        if (each.SecondCategory) {
            mDatabase.CategoryInsert("Other");
        }
        mServices.CurrentCategory = each.Current;
        Open();
        EXPECT_EQ(State(), "message");
        EXPECT_EQ(mServices.StudyMessage, each.Text);
        wxString shown = Message().GetLabelText();
        shown.Replace("\n", " ");
        wxString wanted = each.Text;
        wanted.Replace("\n", " ");
        EXPECT_EQ(shown, wanted);
        EXPECT_EQ(IsEnabled(ID_EXPORT), each.OneCard);
        // A command without its menu entry meets the same wall.
        for (const int id : {wxID_OPEN, wxID_CUT, wxID_DELETE, wxID_FORWARD, wxID_BACKWARD}) {
            Command(id);
        }
        EXPECT_FALSE(IsEnabled(wxID_OPEN));
        EXPECT_EQ(State(), "message");
        Close();
    }
    EXPECT_TRUE(mServices.Edited.empty());
}

TEST_F(StudyFrameState, TheFirstCardOfAnEmptyStoreTakesThePlaceOfTheMessage) {
    Open();
    InsertCards(1);
    mDatabase.Notify();
    DrainEvents();
    EXPECT_EQ(State(), "front");
    EXPECT_TRUE(WaitFor([&] { return Scores().HasFocus(); }));
}

TEST_F(StudyFrameState, StatusTextsAreShorterInANarrowWindow) {
    InsertCards(2);
    Open(wxSize(240, 480));
    EXPECT_EQ(StatusText(0), "Ready: 0");
    Score('5');
    Key(WXK_LEFT);
    EXPECT_EQ(StatusText(1), "Recent 1/1");
}

TEST_F(StudyFrameState, BreakTimeAndHelpOfTheMenusTakeTheirTurns) {
    InsertCards(1);
    Open();
    Score('5');
    EXPECT_EQ(StatusText(0), "Break Time");
    mServices.Time.Advance(100000000);
    mpFrame->DoGiveHelp("Creates a new flash card.", true);
    Command(wxID_FORWARD);
    EXPECT_EQ(StatusText(0), "Creates a new flash card.");
    mpFrame->DoGiveHelp("", false);
    DrainEvents();
    EXPECT_EQ(StatusText(0), "Ready for Review: 1");
}

TEST_F(StudyFrameState, TheOtherDirectionSelectsAnewAndKeepsTheHistory) {
    InsertCards(2);
    Open();
    Score('5');
    Key(WXK_LEFT);
    EXPECT_TRUE(IsChecked(ID_STUDY_FORWARD));
    Command(ID_STUDY_REVERSE);
    EXPECT_EQ(State(), "front");
    EXPECT_EQ(Viewer().GetFirstText(), "back 1");
    EXPECT_TRUE(IsChecked(ID_STUDY_REVERSE));
    EXPECT_FALSE(IsChecked(ID_STUDY_FORWARD));
    Command(wxID_FORWARD);
    EXPECT_EQ(Viewer().GetSecondText(), "front 1");
    Key(WXK_LEFT);
    EXPECT_EQ(StatusText(1), "Recently studied 1/1");
    Command(ID_STUDY_FORWARD);
    EXPECT_EQ(Viewer().GetFirstText(), "front 2");
}

}  // namespace
