#include "ListFixture.h"

struct CardListTest : ListTest {
    long FocusedRow() { return Cards().GetNextItem(-1, wxLIST_NEXT_ALL, wxLIST_STATE_FOCUSED); }
    // Cards numbered from 0, with these fronts.
    void InsertCards(const Texts& fronts) {
        for (size_t i = 0; i < fronts.size(); ++i) {
            FlashCard card = MakeCard(fronts[i], "back");
            card.IntroductionOrder = static_cast<int32_t>(i);
            mCards.push_back(Insert(card));
        }
    }
    std::vector<FlashCard> mCards;
};

TEST_F(CardListTest, ManyCardsAreOrderedFoundSelectedAndDeleted) {
    // Numbered from 0, and the fronts in the opposite order.
    Query(
        "WITH RECURSIVE n(i) AS (SELECT 0 UNION ALL SELECT i + 1 FROM n WHERE i < 99999)"
        " INSERT INTO Cards (CardId, Front, Back, CategoryId, Author, Chapter, Notes,"
        " IntroductionOrder, ForwardX, ReverseX, Introduced, RIntroduced)"
        " SELECT printf('%08x-0000-4000-8000-000000000000', i), printf('front %06d', 99999 - i),"
        " 'back ' || i, 0, '', '', '', i, 0, 0, 0, 0 FROM n");
    Open();
    ASSERT_EQ(Cards().GetItemCount(), 100000);
    EXPECT_EQ(Cards().OnGetItemText(99999, 1), "front 000000");
    Select({7, 99999});
    Cards().SetFocusedRow(7);
    Sort(1);
    EXPECT_EQ(Cards().OnGetItemText(0, 1), "front 000000");
    // Both cards are selected where they are now, and the focused one has come into view.
    EXPECT_EQ(Cards().GetSelectedRows(), (std::vector<long>{0, 99992}));
    EXPECT_EQ(FocusedRow(), 99992);
    DrainEvents();
    EXPECT_TRUE(Cards().IsVisible(99992));

    Search("FRONT 0000_0");
    EXPECT_EQ(Cards().GetItemCount(), 10);
    EXPECT_EQ(Column(2).back(), "back 99909");
    EXPECT_EQ(Cards().GetSelectedRows(), std::vector<long>{0});

    Cards().SetFocus();
    Command(wxID_SELECTALL);
    ModalAnswers answers;
    answers.Expect(wxID_OK);
    Command(wxID_DELETE);
    EXPECT_EQ(Query("SELECT count(*) FROM Cards"), Strings{"99990"});
    EXPECT_EQ(Cards().GetItemCount(), 0);
    EXPECT_TRUE(WaitFor([this] { return FindById(Cards(), 10000)->IsShown(); }));
    Search("");
    EXPECT_EQ(Cards().GetItemCount(), 99990);
    EXPECT_TRUE(WaitFor([this] { return !FindById(Cards(), 10000)->IsShown(); }));
}

TEST_F(CardListTest, TheSelectionStaysWithItsCards) {
    InsertCards({"a", "b", "c", "d", "e"});
    Open();
    for (const std::vector<long>& rows : {std::vector<long>{}, {0, 4}, {0, 1, 2, 3, 4}}) {
        Select(rows);
        mDatabase.Notify();
        EXPECT_EQ(Cards().GetSelectedRows(), rows);
    }
    Select({1, 2});
    Cards().SetFocusedRow(2);
    mCards[0].IntroductionOrder = 9;
    EXPECT_EQ(mDatabase.UpdateFlashCard(mCards[0]), 0);
    EXPECT_EQ(mDatabase.DeleteCard(mCards[1].CardId), 0);
    mDatabase.Notify();
    EXPECT_EQ(Column(1), (Texts{"c", "d", "e", "a"}));
    EXPECT_EQ(Cards().GetSelectedRows(), std::vector<long>{0});
    EXPECT_EQ(FocusedRow(), 0);
}

TEST_F(CardListTest, ADeletionWaitsForTheAnswerAndLeavesTheKeysInPlace) {
    InsertCards({"a", "b", "c"});
    Open();
    const auto remove = [this] { SendKeyDown(*Cards().GetChildren().front(), WXK_DELETE); };
    ModalAnswers answers;
    answers.Expect(wxID_CANCEL);
    remove();
    // With nothing selected the question is about the focused row, which is to be seen.
    EXPECT_EQ(Cards().GetSelectedRows(), std::vector<long>{0});
    EXPECT_EQ(Column(1), (Texts{"a", "b", "c"}));
    Select({1, 2});
    Cards().SetFocusedRow(1);
    answers.Expect(wxID_OK);
    remove();
    EXPECT_EQ(Column(1), Texts{"a"});
    EXPECT_EQ(FocusedRow(), 0);
    EXPECT_EQ(Cards().GetSelectedItemCount(), 0);
}

TEST_F(CardListTest, TheFocusStaysWithItsCardOrGoesToTheFirst) {
    InsertCards({"x", "xy", "y", "yz", "z"});
    Open();
    EXPECT_EQ(Cards().GetFocusedRow(), 0);
    Cards().SetFocusedRow(3);
    for (const auto& [text, row] : std::vector<std::pair<wxString, long>>{
             {"y", 2}, {"", 3}, {"x", 0}, {"none", -1}, {"", 0}}) {
        Search(text);
        EXPECT_EQ(Cards().GetFocusedRow(), row) << text;
    }
    // From wherever it is, Shift extends the selection, and keeps what is selected elsewhere.
    for (const long row : {1L, 2L, 0L}) {
        Select({4});
        Cards().SetFocusedRow(row);
        SendKeyEvent(wxEVT_CHAR, *Cards().GetChildren().front(), WXK_DOWN, wxMOD_SHIFT);
        EXPECT_EQ(Cards().GetSelectedRows(), (std::vector<long>{row, row + 1, 4}));
    }
}

TEST_F(CardListTest, TheFirstFocusedOrSelectedRowIsEdited) {
    InsertCards({"a", "b", "c"});
    Open();
    Cards().SetFocusedRow(2);
    EXPECT_EQ(Rule(wxID_OPEN), "on");
    Command(wxID_OPEN);
    Select({1});
    Command(wxID_OPEN);
    wxListEvent activated(wxEVT_LIST_ITEM_ACTIVATED, Cards().GetId());
    activated.m_itemIndex = 0;
    Cards().ProcessWindowEvent(activated);
    // Gone meanwhile, before the notice: nothing to edit, and nothing to show.
    EXPECT_EQ(mDatabase.DeleteCard(mCards[0].CardId), 0);
    Cards().ProcessWindowEvent(activated);
    wxString edited;
    for (const FlashCard& card : mServices.Edited) {
        edited += card.Front;
    }
    EXPECT_EQ(edited, "cba");
    EXPECT_EQ(Cards().OnGetItemText(7, 1), "Error: contact technical support");
}

TEST_F(CardListTest, CellsShowTheBeginningOfLongTextsOnOneLine) {
    InsertCards({wxString('x', 1000000), wxString(L"one\ntwo\u2028\u05d0\U0001F600")});
    Open();
    const wxString cell = Cards().OnGetItemText(0, 1);
    EXPECT_TRUE(cell.StartsWith("xxxxx") && cell.Last() != 'x') << cell;
    EXPECT_LT(Cards().GetTextExtent(cell).x, Cards().GetColumnWidth(1));
    EXPECT_EQ(Cards().OnGetItemText(1, 1), wxString(L"one two \u05d0\U0001F600"));
}

TEST_F(CardListTest, ADoubleClickOnAnEdgeFitsTheColumnAndHeadingsGoWithTheirCells) {
    const wxString text = "a text that has more letters than forty in all";
    InsertCards({text, "b"});
    Open();
    wxWindow& headings = *FindNamed(Cards(), "wxlistctrlcolumntitles");
    const wxPoint edge(Cards().GetColumnWidth(0) + Cards().GetColumnWidth(1), 5);
    // Quick enough for the drag that the first click began to be pending yet.
    for (const wxEventType type : {wxEventType{wxEVT_LEFT_DOWN}, wxEventType{wxEVT_LEFT_UP},
                                   wxEventType{wxEVT_LEFT_DCLICK}, wxEventType{wxEVT_LEFT_UP}}) {
        SendMouse(headings, type, edge);
    }
    DrainEvents();
    EXPECT_EQ(Cards().OnGetItemText(0, 1), text);
    Cards().SetColumnWidth(2, wxLIST_AUTOSIZE);
    EXPECT_LT(Cards().GetColumnWidth(2), 90);

    const auto scrolled = [this] { return Cards().CalcUnscrolledPosition(wxPoint()).x; };
    int drawn = 0;
    headings.Bind(wxEVT_PAINT, [&](wxPaintEvent& event) {
        event.Skip();
        drawn = scrolled();
    });
    Cards().SetColumnWidth(2, 2000);
    DrainEvents();
    wxScrollWinEvent scroll(wxEVT_SCROLLWIN_THUMBTRACK, 9, wxHORIZONTAL);
    Cards().ProcessWindowEvent(scroll);
    EXPECT_GT(scrolled(), 0);
    EXPECT_TRUE(WaitFor([&] { return drawn == scrolled(); })) << drawn;
    Close();
}

TEST_F(CardListTest, ColumnWidthsAreKeptWhenThereAreAsManyAsColumns) {
    for (const char* text : {"35,95,123", "", "11,22", "11,22,33,44", "11,x,33", "-1,22,33"}) {
        WriteStringSetting("CardListColumns", text);
        Open();
        Close();
        EXPECT_EQ(ReadStringSetting("CardListColumns"),
                  std::string(text) == "35,95,123" ? text : "30,90,90");
    }
}

TEST_F(CardListTest, CommandsGoByTheFocus) {
    InsertCards({"a", "b"});
    mServices.HasCardsToPaste = true;
    Open();
    // Cut, paste, delete, select all, rename.
    const std::pair<std::string, Strings> cases[] = {{"cards", {"on", "on", "on", "on", ""}},
                                                     {"search", {"", "", "", "", ""}},
                                                     {"categories", {"", "on", "on", "on", "on"}},
                                                     {"button", {"", "on", "on", "on", "on"}}};
    for (const auto& [where, rules] : cases) {
        if (where == "search") {
            mpFrame->FocusSearch();
        } else if (where == "categories") {
            OpenDropDown();
        } else if (where == "button") {
            DropDown().Dismiss();
            ASSERT_TRUE(WaitFor([this] { return mpFrame->IsActive() && Button().HasFocus(); }));
        } else {
            Cards().SetFocus();
        }
        DrainEvents();
        EXPECT_EQ((Strings{Rule(wxID_CUT), Rule(wxID_PASTE), Rule(wxID_DELETE),
                           Rule(wxID_SELECTALL), Rule(ID_RENAME)}),
                  rules)
            << where;
        for (const int id : {int{wxID_CUT}, int{wxID_COPY}, int{wxID_PASTE}}) {
            Command(id);
        }
    }
    // The list had a card to take, and cards went into both lists.
    ASSERT_EQ(mServices.Taken.size(), 2U);
    EXPECT_TRUE(mServices.Taken[0].Cut && !mServices.Taken[1].Cut);
    // A cut is taken off the clipboard before its cards move, but in the list of categories.
    const auto before = std::make_pair(0, AppServices::EmptyCut::kBefore);
    const auto after = std::make_pair(0, AppServices::EmptyCut::kAfter);
    EXPECT_THAT(mServices.Pasted, ::testing::ElementsAre(before, after, after));

    Cards().SetFocus();
    DrainEvents();
    Command(wxID_SELECTALL);
    Command(ID_EXPORT);
    EXPECT_EQ(mServices.Exported, (std::vector<std::vector<int64_t>>{{1, 2}}));
    EXPECT_EQ(Rule(ID_EXPORT), "on");
    EXPECT_EQ(mDatabase.Execute("DELETE FROM Cards"), 0);
    mDatabase.Notify();
    EXPECT_EQ(Rule(ID_EXPORT), "off");
}
