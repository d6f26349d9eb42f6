#include "list/ListFixture.h"

#include "files/StoreFiles.h"
#include "shell/Toolkit.h"
#include "support/LoggedReview.h"

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
    // A worker sorts so many. A notice meanwhile begins that anew, and what is shown stays.
    EXPECT_EQ(Cards().OnGetItemText(7, 1), "front 099992");
    mDatabase.Notify();
    wxIdleEvent idle;
    mpFrame->ProcessWindowEvent(idle);
    EXPECT_EQ(mpFrame->GetStatusBar()->GetStatusText(), "100000 cards   2 selected   Sorting...");
    DrainEvents();
    EXPECT_TRUE(WaitFor([this] { return Cards().OnGetItemText(0, 1) == "front 000000"; }, 20000));
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
    EXPECT_TRUE(WaitFor([this] { return FindById(Cards(), CardListCtrl::kNoticeId)->IsShown(); }));
    Search("");
    EXPECT_EQ(Cards().GetItemCount(), 99990);
    EXPECT_TRUE(WaitFor([this] { return !FindById(Cards(), CardListCtrl::kNoticeId)->IsShown(); }));
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
    // Several are opened together, in the order of the list.
    mDatabase.Notify();
    Select({0, 1});
    Command(wxID_OPEN);
    Cards().ProcessWindowEvent(activated);
    const std::vector<int64_t> both{2, 3};
    EXPECT_EQ(mServices.EditedTogether, (std::vector<std::vector<int64_t>>{both, both}));
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
    testing::internal::CaptureStderr();
    Cards().ProcessWindowEvent(scroll);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "") << "a complaint of the toolkit";
    EXPECT_GT(scrolled(), 0);
    EXPECT_TRUE(WaitFor([&] { return drawn == scrolled(); })) << drawn;
    Close();
}

TEST_F(CardListTest, ColumnsFillTheListUntilTheUserSetsTheirWidths) {
    const auto room = [this] { return Cards().GetChildren().front()->GetClientSize().x; };
    const auto widths = [this] {
        return std::vector<int>{Cards().GetColumnWidth(0), Cards().GetColumnWidth(1),
                                Cards().GetColumnWidth(2)};
    };
    for (const char* bad : {"", "11,22", "11,22,33,44", "11,x,33", "-1,22,33"}) {
        WriteStringSetting("CardListColumns", bad);
        Open();
        EXPECT_GT(Cards().GetColumnWidth(0), Cards().GetTextExtent("99999").x);
        EXPECT_NEAR(Cards().GetColumnWidth(1), Cards().GetColumnWidth(2), 1);
        mpFrame->SetSize(mpFrame->GetSize() + wxSize(200, 0));
        EXPECT_TRUE(WaitFor([&] { return Cards().GetSize().x > 700; }));
        EXPECT_EQ(widths()[0] + widths()[1] + widths()[2], room()) << bad;
        Close();
        EXPECT_EQ(ReadStringSetting("CardListColumns"), bad);
    }
    WriteStringSetting("CardListColumns", "35,95,123");
    Open();
    EXPECT_EQ(widths(), (std::vector<int>{35, 95, 123}));
    // A search over all categories shows their names, and no width of that column is kept.
    Command(BrowseFrame::kSearchAllId);
    Search("x");
    EXPECT_EQ(Headings().back(), "Category");
    Close();
    EXPECT_EQ(ReadStringSetting("CardListColumns"), "35,95,123");
}

TEST_F(CardListTest, ColumnsOfTheMenuAreShownSortedByAndKept) {
    for (const char* const name : {"a", "b", "c"}) {
        const int place = *name - 'a';
        FlashCard card = MakeCard(name, "x");
        const wxString last = wxString("213").Mid(static_cast<size_t>(place), 1);
        card.Author = "a" + last;
        card.Chapter = "c" + last;
        card.Notes = "n" + last;
        card.ForwardX = place != 1;
        card.ReverseX = place != 0;
        card.Forward.Introduced = place < 2;
        card.Forward.ReviewInterval = place == 0 ? 172801.0f : 60.0f;
        card.Forward.LastReview = wxDateTime(1, wxDateTime::Jan, 2024 - place, 12);
        card.Forward.Difficulty = place == 0 ? 20 : 16;
        Insert(card);
    }
    Open();
    // The cells of all cards in the order of the column.
    const std::pair<int, Texts> columns[] = {
        {ID_COLUMN_AUTHOR, {"a1", "a2", "a3"}},
        {ID_COLUMN_CHAPTER, {"c1", "c2", "c3"}},
        {ID_COLUMN_FORWARD_EXCLUDE, {"", "Yes", "Yes"}},
        {ID_COLUMN_REVERSE_EXCLUDE, {"", "Yes", "Yes"}},
        {ID_COLUMN_NOTES, {"n1", "n2", "n3"}},
        {ID_COLUMN_NEXT_REVIEW, {"2023-01-01 12:01", "2024-01-03 12:00", ""}},
        {ID_COLUMN_INTERVAL, {"60.0 seconds", "2.0 days", ""}},
        {ID_COLUMN_LAST_REVIEW, {"2023-01-01 12:00", "2024-01-01 12:00", ""}},
        {ID_COLUMN_DIFFICULTY, {"16", "20", ""}}};
    for (const auto& [id, cells] : columns) {
        SendCommand(CardPanel(), id);
        ASSERT_EQ(Headings().size(), 4U) << id;
        Sort(3);
        EXPECT_EQ(Column(3), cells);
        SendCommand(CardPanel(), id);
        // Without its column the order is that of the numbers again.
        EXPECT_EQ(Column(1), (Texts{"a", "b", "c"}));
    }
    SendCommand(CardPanel(), ID_COLUMN_INTERVAL);
    mServices.ReverseStudy = true;
    Close();
    Open();
    EXPECT_EQ(Headings(), (Texts{"#", "Front", "Back", "Interval"}));
    EXPECT_EQ(Column(3), (Texts{"", "", ""}));
}

TEST_F(CardListTest, ASecondClickOrTheMenuTurnsTheOrderWhichIsKept) {
    InsertCards({L"\u044f", "Card 10", "Baum", "Card 9", L"\u00e9t\u00e9", "Card 10"});
    const Texts ascending{"Baum", "Card 9", "Card 10", "Card 10", L"\u00e9t\u00e9", L"\u044f"};
    const Texts descending(ascending.rbegin(), ascending.rend());
    Open();
    Sort(1);
    EXPECT_EQ(Column(1), ascending);
    // Without a selection the list begins at its top.
    EXPECT_EQ(Cards().GetFocusedRow(), 0);
    EXPECT_TRUE(Cards().IsAscendingSortIndicator());
    Select({1});
    Cards().SetFocusedRow(1);
    Sort(1);
    EXPECT_EQ(Column(1), descending);
    EXPECT_EQ(Cards().GetFocusedRow(), 4);
    // Cards of the same front stay in the order of their numbers.
    EXPECT_EQ(Column(0), (Texts{"0", "4", "1", "5", "3", "2"}));
    EXPECT_EQ(Cards().GetSelectedRows(), std::vector<long>{4});
    Command(ID_SORT_ASCENDING);
    EXPECT_EQ(Column(1), ascending);
    EXPECT_EQ(Rule(ID_SORT_ASCENDING), "checked");
    EXPECT_EQ(Rule(ID_SORT_FIRST + static_cast<int>(ListColumn::kCategory)), "off");
    // A column that is not shown comes in sight.
    Command(ID_SORT_FIRST + static_cast<int>(ListColumn::kDifficulty));
    EXPECT_EQ(Rule(ID_SORT_FIRST + static_cast<int>(ListColumn::kDifficulty)), "checked");
    Command(ID_SORT_FIRST + static_cast<int>(ListColumn::kNumber));
    Command(ID_SORT_DESCENDING);
    const Texts numbers{"5", "4", "3", "2", "1", "0"};
    EXPECT_EQ(Column(0), numbers);
    Close();
    Open();
    EXPECT_EQ(Column(0), numbers);
    EXPECT_EQ(Cards().GetSortIndicator(), 0);
    EXPECT_FALSE(Cards().IsAscendingSortIndicator());
    Sort(1);
    EXPECT_EQ(Column(1), ascending);
}

TEST_F(CardListTest, TheOrderOfIntroductionIsSetByHand) {
    InsertCards({"a", "b", "c"});
    Open();
    Cards().SetFocus();
    // Up is where the list shows it.
    Sort(0);
    Select({2});
    Command(ID_MOVE_UP);
    EXPECT_EQ(Column(1), (Texts{"c", "a", "b"}));
    EXPECT_EQ(Cards().GetSelectedRows(), std::vector<long>{1});

    // A wrong number is told, and asked for again.
    ModalAnswers answers;
    answers.ThenType("2147483646");
    answers.Expect(wxID_OK);
    answers.ThenType("7");
    Command(wxID_SELECTALL);
    Command(ID_RENUMBER);
    EXPECT_EQ(answers.Dialogs[1].Message,
              "The number must be a whole number from 0 to 2147483645.");
    EXPECT_EQ(Column(0), (Texts{"9", "8", "7"}));
    EXPECT_EQ(Column(1), (Texts{"b", "a", "c"}));
    Command(ID_RANDOM_ORDER);
    EXPECT_EQ(Column(0), (Texts{"9", "8", "7"}));
}

TEST_F(CardListTest, FailuresAreCountedInTheLogAndSortedBy) {
    InsertCards({"never", "new", "once", "twice"});
    const auto review = [&](size_t card, int score, int64_t elapsed = 60) {
        LoggedReview{mCards[card].CardId, mServices.Time.Now().GetTicks(), score, elapsed}.AppendTo(
            StorePath());
        mCards[card].Forward.Introduced = true;
        mCards[card].Forward.LastReview = mServices.Time.Now();
        EXPECT_EQ(mDatabase.UpdateFlashCard(mCards[card]), 0);
    };
    // A first review fails no card.
    review(0, 0, -1);
    review(0, 3);
    review(2, 2);
    review(3, 0);
    Open();
    SendCommand(CardPanel(), ID_COLUMN_FAILURES);
    EXPECT_TRUE(WaitFor([this] { return Column(3) == Texts{"0", "", "1", "1"}; }));
    Sort(3);
    Sort(3);
    EXPECT_EQ(Column(1), (Texts{"once", "twice", "never", "new"}));
    // The hardest cards come from the log too.
    Search("is:hard");
    EXPECT_TRUE(WaitFor([this] { return Column(1) == Texts{"once", "twice"}; }));
    Search("");
    review(3, 1);
    mDatabase.Notify();
    EXPECT_TRUE(WaitFor([this] { return Column(3) == Texts{"2", "1", "0", ""}; }));
    EXPECT_EQ(Column(1), (Texts{"twice", "once", "never", "new"}));
    mServices.ReverseStudy = true;
    Close();
    Open();
    EXPECT_EQ(Column(3), (Texts{"", "", "", ""}));
}

TEST_F(CardListTest, ListsTakeTheNewColoursOfTheDesktop) {
    Open();
    for (wxListCtrl* const list :
         {static_cast<wxListCtrl*>(&Cards()), static_cast<wxListCtrl*>(&Categories())}) {
        list->SetBackgroundColour(*wxRED);
        TakeDesktopStyle(*mpFrame);
        EXPECT_EQ(list->GetChildren().front()->GetBackgroundColour(),
                  wxSystemSettings::GetColour(wxSYS_COLOUR_LISTBOX));
    }
}

TEST(CardColumnsTest, ColumnsWithoutAWidthShareTheRoomThatIsLeft) {
    const struct {
        std::vector<int> Widths;
        int Room;
        std::vector<int> Shared;
    } cases[] = {{{50, 0, 0}, 651, {50, 300, 301}},
                 {{50, 0, 0, 100}, 350, {50, 100, 100, 100}},
                 {{50, 0, 0}, 100, {50, 90, 90}},
                 {{50, 60}, 10, {50, 60}}};
    for (auto test : cases) {
        ShareRoom(test.Widths, test.Room, 90);
        EXPECT_EQ(test.Widths, test.Shared);
    }
}

TEST_F(CardListTest, CommandsGoByTheFocus) {
    InsertCards({"a", "b"});
    mServices.HasCardsToPaste = true;
    Open();
    // Cut, paste, delete, select all, rename.
    // The current category can be renamed wherever the focus is.
    const std::pair<std::string, Strings> cases[] = {{"cards", {"on", "on", "on", "on", "on"}},
                                                     {"search", {"", "", "", "", "on"}},
                                                     {"categories", {"", "on", "on", "on", "on"}},
                                                     {"button", {"", "", "", "", "on"}}};
    for (const auto& [where, rules] : cases) {
        if (where == "search") {
            mpFrame->FocusSearch();
        } else if (where == "categories") {
            OpenDropDown();
        } else if (where == "button") {
            DropDown().Dismiss();
            ASSERT_TRUE(WaitFor([this] { return Button().HasFocus(); }));
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
    EXPECT_THAT(mServices.Pasted, ::testing::ElementsAre(before, after));

    Cards().SetFocus();
    DrainEvents();
    Command(wxID_SELECTALL);
    Command(ID_EXPORT);
    Select({1});
    Command(ID_EXPORT);
    EXPECT_EQ(mServices.Exported, (std::vector<std::vector<int64_t>>{{1, 2}, {2}}));
    // One row is selected by chance.
    using First = AppServices::OfferFirst;
    EXPECT_EQ(mServices.Offered, (std::vector<First>{First::kSelection, First::kCategory}));
    EXPECT_EQ(Rule(ID_EXPORT), "on");
    EXPECT_EQ(mDatabase.Execute("DELETE FROM Cards"), 0);
    mDatabase.Notify();
    EXPECT_EQ(Rule(ID_EXPORT), "off");
}
