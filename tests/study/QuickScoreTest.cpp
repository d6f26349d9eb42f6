#include "study/QuickScore.h"

#include "support/GuiTest.h"

namespace {

constexpr int kScoreId = 1;

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;

using Heard = std::vector<std::string>;

// Answers for the platform which keys are down; it does not tell unless a test says so.
struct ScoreWithKeys : QuickScore {
    using QuickScore::QuickScore;
    std::optional<bool> IsKeyDown(int) const override { return Down; }
    std::optional<bool> Down;
};

struct QuickScoreTest : GuiTest {
    QuickScoreTest() {
        const wxString labels[] = {"5 - Pass (no hesitation)", "4", "3", "2", "1", "0"};
        mScore.SetItems(labels, WXSIZEOF(labels));
        Listen(wxEVT_LISTBOX, "cursor");
        Listen(wxEVT_LISTBOX_DCLICK, "choose");
        Listen(wxEVT_MENU, "menu");
        Listen(EVT_QUICKSCORE_PAGE_UP, "page up");
        Listen(EVT_QUICKSCORE_PAGE_DOWN, "page down");
        ShowAndWait(mFrame);
        mScore.SetSize(200, 6 * ItemHeight());
        Reset(-1, 2);
    }

    // Keeps the name of the event, its item and the way through the history.
    void Listen(const wxEventTypeTag<wxCommandEvent>& type, const std::string& name) {
        mFrame.Bind(type, [this, name](wxCommandEvent& event) {
            const long way = event.GetId() == kScoreId ? event.GetExtraLong() : event.GetId();
            mHeard.push_back(name +
                             (event.GetInt() < 0 ? "" : " " + std::to_string(event.GetInt())) +
                             (way == wxID_FORWARD    ? " forward"
                              : way == wxID_BACKWARD ? " backward"
                                                     : ""));
        });
    }

    void Reset(int32_t mark, int32_t cursor) {
        mScore.SetMark(mark);
        mScore.SetSelection(cursor);
        mHeard.clear();
    }

    int32_t ItemHeight() const { return mScore.GetItemRect(0).height; }
    wxPoint Middle(int32_t item) const {
        return wxPoint(50, item * ItemHeight() + ItemHeight() / 2);
    }

    // The left button goes down at one place, moves to another and goes up there.
    void Drag(const wxPoint& from, const wxPoint& to) {
        SendMouse(mScore, wxEVT_LEFT_DOWN, from);
        SendMouse(mScore, wxEVT_MOTION, to);
        if (to.x < 0) {
            SendMouse(mScore, wxEVT_LEAVE_WINDOW, to);
        }
        mPressedInDrag = mScore.GetPressed();
        SendMouse(mScore, wxEVT_LEFT_UP, to);
    }

    wxFrame& mFrame = *new wxFrame(nullptr, wxID_ANY, "Score");
    ScoreWithKeys& mScore = *new ScoreWithKeys(&mFrame, kScoreId);
    Heard mHeard;
    int32_t mPressedInDrag = -1;
};

TEST_F(QuickScoreTest, KeysMoveTheCursorChooseAndWalkTheHistory) {
    const std::tuple<const char*, int32_t, int32_t, int, Heard, Heard> rows[] = {
        {"a digit is a score", -1, 0, '3', {"cursor 2"}, {"choose 2 forward"}},
        {"the lowest", -1, 5, '0', {}, {"choose 5 forward"}},
        {"Enter", -1, 2, WXK_RETURN, {}, {"choose 2 forward"}},
        {"the marked item is silent", 2, 2, WXK_RETURN, {}, {}},
        {"Up at the first", -1, 0, WXK_NUMPAD_UP, {}, {}},
        {"Down at the last", -1, 5, WXK_DOWN, {}, {}},
        {"Left without a mark", -1, 2, WXK_LEFT, {"menu backward"}, {}},
        {"Left beside the mark", 1, 2, WXK_LEFT, {}, {"choose 2 backward"}},
        {"Left of the number pad", 1, 2, WXK_NUMPAD_LEFT, {}, {"choose 2 forward"}},
        {"Right on the mark", 2, 2, WXK_NUMPAD_RIGHT, {"menu forward"}, {}},
        {"Right beside the mark", 1, 2, WXK_RIGHT, {}, {"choose 2 forward"}},
        {"Page Up", -1, 2, WXK_PAGEUP, {"page up"}, {}},
    };
    for (const auto& [what, mark, cursor, key, atPress, atRelease] : rows) {
        SCOPED_TRACE(what);
        Reset(mark, cursor);
        SendKeyDown(mScore, key);
        EXPECT_EQ(mHeard, atPress);
        mHeard.clear();
        SendKeyUp(mScore, key);
        EXPECT_EQ(mHeard, atRelease);
        EXPECT_EQ(mScore.GetPressed(), -1);
    }
}

TEST_F(QuickScoreTest, OnlyOneKeyHoldsAnItemAndItsRepeatsDoNotCount) {
    for (const int key : {int{'3'}, int{'3'}, int{'5'}}) {
        SendKeyDown(mScore, key);
    }
    SendMouse(mScore, wxEVT_LEFT_DOWN, Middle(0));
    SendKeyUp(mScore, '5');
    SendMouse(mScore, wxEVT_LEFT_UP, Middle(0));
    EXPECT_EQ(mScore.GetPressed(), 2);
    SendKeyUp(mScore, '3');
    EXPECT_THAT(mHeard, ElementsAre("choose 2 forward"));
}

TEST_F(QuickScoreTest, APressThatLosesTheFocusOrTheMouseChoosesNothing) {
    wxFocusEvent lostFocus(wxEVT_KILL_FOCUS);
    SendKeyDown(mScore, '4');
    mScore.HandleWindowEvent(lostFocus);
    SendKeyUp(mScore, '4');

    SendMouse(mScore, wxEVT_LEFT_DOWN, Middle(2));
    mScore.ReleaseMouse();
    wxMouseCaptureLostEvent lostMouse(mScore.GetId());
    mScore.HandleWindowEvent(lostMouse);
    SendMouse(mScore, wxEVT_LEFT_UP, Middle(2));
    EXPECT_THAT(mHeard, ElementsAre("cursor 1", "cursor 2"));
    SendKey(mScore, WXK_RETURN);
    EXPECT_EQ(mHeard.back(), "choose 2 forward");
}

TEST_F(QuickScoreTest, AKeyThatWasHeldDownElsewhereStartsNoPress) {
    for (const int key : {int{WXK_RETURN}, int{WXK_SPACE}, int{'4'}}) {
        SCOPED_TRACE(key);
        Reset(-1, 2);
        // Down since a question that it has answered, and repeating.
        mScore.Down = true;
        mScore.ResumeKeys();
        SendKeyDown(mScore, key);
        SendKeyDown(mScore, key);
        mScore.Down = false;
        SendKeyUp(mScore, key);
        EXPECT_THAT(mHeard, Not(::testing::Contains(::testing::HasSubstr("choose"))));
        SendKeyDown(mScore, key);
        SendKeyUp(mScore, key);
        EXPECT_THAT(mHeard.back(), ::testing::StartsWith("choose"));
    }
}

// On a busy machine the platform tells of keys whose events are still on their way.
TEST_F(QuickScoreTest, AReleaseCountsThoughTheKeyIsDownAgain) {
    SendKeyDown(mScore, '4');
    mScore.Down = true;
    SendKeyUp(mScore, '4');
    mScore.Down = false;
    SendKeyDown(mScore, '2');
    SendKeyUp(mScore, '2');
    EXPECT_THAT(mHeard,
                ElementsAre("cursor 1", "choose 1 forward", "cursor 3", "choose 3 forward"));
}

TEST_F(QuickScoreTest, KeysOfMenusGoOnToThem) {
    for (const int key : {int{WXK_F5}, int{WXK_NUMPAD_ENTER}, int{'6'}}) {
        EXPECT_FALSE(SendKeyDown(mScore, key)) << key;
    }
    for (const int modifier : {wxMOD_CONTROL, wxMOD_ALT, wxMOD_META}) {
        EXPECT_FALSE(SendKeyDown(mScore, WXK_LEFT, modifier)) << modifier;
    }
    EXPECT_THAT(mHeard, IsEmpty());
    EXPECT_TRUE(SendKeyDown(mScore, '3'));
}

TEST_F(QuickScoreTest, TheMousePressesDragsAndChoosesAtTheRelease) {
    Drag(Middle(1), Middle(4));
    EXPECT_EQ(mPressedInDrag, 4);
    EXPECT_THAT(mHeard, ElementsAre("cursor 1", "cursor 4", "choose 4 forward"));

    Reset(-1, 2);
    Drag(Middle(3), wxPoint(-5, 5));
    EXPECT_EQ(mPressedInDrag, -1);
    EXPECT_THAT(mHeard, ElementsAre("cursor 3"));
}

TEST_F(QuickScoreTest, OnlyTheFirstClickOfAGestureChooses) {
    // After a click on item 2, what the next one does: milliseconds later, at an item.
    const std::tuple<const char*, wxEventType, long, int32_t, bool> rows[] = {
        {"a double click", wxEVT_LEFT_DCLICK, 100, 2, false},
        {"the third click of a triple one", wxEVT_LEFT_DOWN, 200, 2, false},
        {"another item", wxEVT_LEFT_DOWN, 250, 4, true},
        {"later", wxEVT_LEFT_DOWN, 3000, 4, true},
        {"a double click once more", wxEVT_LEFT_DCLICK, 3100, 4, false},
    };
    const auto click = [this](wxEventType type, long time, int32_t item) {
        wxMouseEvent press(type);
        press.SetEventObject(&mScore);
        press.SetPosition(Middle(item));
        press.SetTimestamp(10000 + time);
        mScore.HandleWindowEvent(press);
        SendMouse(mScore, wxEVT_LEFT_UP, Middle(item));
    };
    click(wxEVT_LEFT_DOWN, 0, 2);
    EXPECT_THAT(mHeard, ElementsAre("choose 2 forward"));
    for (const auto& [what, type, time, item, chooses] : rows) {
        Reset(-1, item);
        click(type, time, item);
        EXPECT_EQ(mHeard.size(), chooses ? 1 : 0) << what;
    }
    Reset(-1, 4);
    SendKey(mScore, '1');
    EXPECT_THAT(mHeard, ElementsAre("choose 4 forward"));
}

TEST_F(QuickScoreTest, WithNotesTheItemsStandAtTheRightAndOnlyTheyCanBePressed) {
    mScore.SetSize(1000, 6 * ItemHeight());
    EXPECT_EQ(mScore.GetItemRect(1).width, 1000);
    mScore.ReserveNotes({"about 59 minutes"});
    const wxRect item = mScore.GetItemRect(1);
    EXPECT_LT(item.width, 800);
    EXPECT_EQ(item.GetRight(), 999);
    EXPECT_EQ(mScore.ItemAt(item.GetPosition()), 1);
    EXPECT_EQ(mScore.ItemAt(item.GetPosition() - wxSize(1, 0)), -1);
    mScore.SetAllStrings("Show Back");
    EXPECT_EQ(mScore.GetItemRect(1), item);
}

TEST_F(QuickScoreTest, TheWheelMovesTheCursorAndWithThePressOnItChooses) {
    SendMouse(mScore, wxEVT_MOUSEWHEEL, Middle(0), -60);
    EXPECT_THAT(mHeard, IsEmpty());
    SendMouse(mScore, wxEVT_MOUSEWHEEL, Middle(0), -60);
    SendMouse(mScore, wxEVT_MOUSEWHEEL, Middle(0), 120 * 9);
    SendMouse(mScore, wxEVT_MOUSEWHEEL, Middle(0), -120 * 9);
    EXPECT_THAT(mHeard, ElementsAre("cursor 3", "cursor 0", "cursor 5"));

    Reset(-1, 2);
    SendMouse(mScore, wxEVT_MIDDLE_DOWN, Middle(0));
    EXPECT_EQ(mScore.GetPressed(), 2);
    SendMouse(mScore, wxEVT_MOUSEWHEEL, Middle(0), 120);
    EXPECT_EQ(mScore.GetPressed(), 1);
    SendMouse(mScore, wxEVT_MIDDLE_UP, Middle(0));
    EXPECT_THAT(mHeard, ElementsAre("cursor 1", "choose 1 forward"));
}

}  // namespace
