#include <wx/dnd.h>

#include "list/ListFixture.h"

struct BrowseFrameTest : ListTest {
    Texts RecentMenu() {
        Texts texts;
        for (const wxMenuItem* const item : SearchField().GetMenu()->GetMenuItems()) {
            if (item->IsSeparator()) {
                break;
            }
            texts.push_back(item->GetItemLabelText());
        }
        return texts;
    }
    // The labels of the entries with a tick, each with a comma.
    wxString Ticks() {
        wxString ticks;
        for (const wxMenuItem* const item : SearchField().GetMenu()->GetMenuItems()) {
            ticks += item->IsCheckable() && item->IsChecked() ? item->GetItemLabelText() + "," : "";
        }
        return ticks;
    }
    void Click(wxWindow& window) {
        SendMouse(window, wxEVT_LEFT_DOWN, wxPoint(1, 1));
        SendMouse(window, wxEVT_LEFT_UP, wxPoint(1, 1));
    }
    void Activate(bool active) {
        wxActivateEvent event(wxEVT_ACTIVATE, active);
        event.SetEventObject(mpFrame);
        mpFrame->ProcessWindowEvent(event);
    }
    bool Hook(int key) { return SendKeyEvent(wxEVT_CHAR_HOOK, *wxWindow::FindFocus(), key); }
};

TEST_F(BrowseFrameTest, LastSearchesCanBeChosenAgain) {
    Insert(MakeCard("salt & pepper", "x"));
    Insert(MakeCard("sugar", "x"));
    Open();
    const wxString first(L"\u65e5\u672c\u8a9e");
    EXPECT_EQ(RecentMenu(), (Texts{"Recent Searches", first}));
    EXPECT_FALSE(SearchField().GetMenu()->FindItemByPosition(0)->IsEnabled());
    Search("x");
    const wxMenu* const menu = SearchField().GetMenu();
    Search("x");
    EXPECT_EQ(SearchField().GetMenu(), menu);
    for (const char* const text : {"b", "c", "d", "b", "salt & pepper", ""}) {
        Search(text);
    }
    EXPECT_EQ(RecentMenu(), (Texts{"Recent Searches", "salt & pepper", "b", "d", "c", "x"}));
    EXPECT_EQ(Cards().GetItemCount(), 2);
    Command(BrowseFrame::kFirstRecentId);
    EXPECT_EQ(SearchField().GetValue(), "salt & pepper");
    EXPECT_TRUE(SearchField().IsCancelButtonVisible());
    EXPECT_EQ(Column(1), Texts{"salt & pepper"});
    // A new window begins with the newest four; the first one is its oldest again.
    Close();
    Open();
    EXPECT_EQ(RecentMenu(), (Texts{"Recent Searches", "salt & pepper", "b", "d", "c", first}));
}

TEST_F(BrowseFrameTest, AnEmptyStoreOffersTheFirstStepsByButtons) {
    Open();
    const wxWindow& steps = *FindById(*mpFrame, BrowseFrame::kFirstStepsId);
    EXPECT_TRUE(steps.IsShownOnScreen());
    EXPECT_FALSE(mpFrame->GetMenuBar()->IsEnabled(ID_RECENT_STORE_FIRST)) << "no other store";
    int command = 0;
    mpFrame->Bind(wxEVT_MENU, [&command](wxCommandEvent& event) { command = event.GetId(); });
    Send(*FindById(*mpFrame, BrowseFrame::kFirstCardId));
    EXPECT_EQ(command, wxID_NEW);
    Send(*FindById(*mpFrame, BrowseFrame::kFirstImportId));
    EXPECT_EQ(command, ID_IMPORT);
    const FlashCard card = Insert(MakeCard("first", "x"));
    Insert(MakeCard("second", "x"));
    mDatabase.Notify();
    EXPECT_FALSE(steps.IsShown());
    // A card that an editor has saved is shown, and a selection of several with it stays.
    mpFrame->ShowCard(card.CardId);
    EXPECT_EQ(Cards().GetSelectedRows(), std::vector<long>{0});
    Select({0, 1});
    mpFrame->ShowCard(card.CardId);
    EXPECT_EQ(Cards().GetSelectedRows(), (std::vector<long>{0, 1}));
}

TEST_F(BrowseFrameTest, ASearchFindsCardsOfAllCategoriesWhenTheMenuSaysSo) {
    EXPECT_EQ(mDatabase.CategoryInsert("Other"), 0);
    Insert(MakeCard("here", "x"));
    Insert(MakeCard("there", "x", 1));
    Open();
    Search("here");
    EXPECT_EQ(Column(1), Texts{"here"});
    Command(BrowseFrame::kSearchAllId);
    EXPECT_EQ(Column(1), (Texts{"here", "there"}));
    EXPECT_EQ(Column(3), (Texts{"Default", "Other"}));
    SendCommand(CardPanel(), ID_COLUMN_CATEGORY);
    EXPECT_EQ(Headings().back(), "Back");
    // Without a search the list has every card, until the user chooses a category.
    Search("");
    EXPECT_EQ(Column(1), (Texts{"here", "there"}));
    auto& categories = Find<wxListCtrl>(*mpFrame, BrowseFrame::kCategoryListId);
    categories.SetItemState(1, wxLIST_STATE_FOCUSED, wxLIST_STATE_FOCUSED);
    EXPECT_EQ(Column(1), Texts{"there"});
    Search("here");
    EXPECT_EQ(Column(1), Texts{"there"});
}

TEST_F(BrowseFrameTest, WordsNarrowASearchAndTheMenuWritesThem) {
    FlashCard card = MakeCard(L"\u00c9cole d'art", "x");
    card.Forward = {true, mServices.Time.Now(), 4, 60.0f};
    Insert(card);
    Insert(MakeCard("art ecole", "x"));
    Open();
    Search("ecole ART");
    EXPECT_EQ(Column(1), (Texts{card.Front, "art ecole"}));
    Command(BrowseFrame::kFirstStateId + static_cast<int>(CardState::kNew));
    EXPECT_EQ(SearchField().GetValue(), "ecole ART is:new");
    EXPECT_EQ(Column(1), Texts{"art ecole"});
    EXPECT_EQ(Ticks(), "New Cards,");
    mServices.ReverseStudy = true;
    Activate(true);
    EXPECT_EQ(Column(1), (Texts{card.Front, "art ecole"}));
    Command(BrowseFrame::kFirstStateId + static_cast<int>(CardState::kNew), false);
    EXPECT_EQ(SearchField().GetValue(), "ecole ART");
    // A word that means nothing is told, and the list stays.
    const Texts recent = RecentMenu();
    const wxWindow& problem = *FindById(*mpFrame, BrowseFrame::kSearchProblemId);
    Search("due<xyz");
    EXPECT_EQ(Column(1).size(), 2U);
    EXPECT_EQ(RecentMenu(), recent);
    EXPECT_TRUE(problem.IsShownOnScreen());
    EXPECT_TRUE(problem.GetLabel().Contains("xyz"));
    Send(SearchField(), wxEVT_SEARCH_CANCEL);
    EXPECT_FALSE(problem.IsShown());
    // An exact search takes it for a text, also in the next window.
    Search("is:new ecole");
    Command(BrowseFrame::kExactSearchId);
    EXPECT_EQ(Column(1), Texts());
    EXPECT_EQ(Ticks(), "Exact Search,");
    Close();
    Open();
    Search("due<xyz");
    EXPECT_FALSE(FindById(*mpFrame, BrowseFrame::kSearchProblemId)->IsShown());
    Search("T E");
    EXPECT_EQ(Column(1), Texts{"art ecole"});
    EXPECT_EQ(Ticks(), "Exact Search,");
}

TEST_F(BrowseFrameTest, TheStudyButtonCountsWhatIsReadyInTheDirectionOfStudy) {
    FlashCard card = MakeCard("a", "b");
    card.Reverse.Introduced = true;
    card.Reverse.LastReview = mServices.Time.Now();
    card.Reverse.ReviewInterval = 60.0f;
    Insert(card);
    Open();
    const auto label = [this] {
        return FindById(*mpFrame, BrowseFrame::kStudyButtonId)->GetLabel();
    };
    const auto comeBack = [this] {
        Activate(false);
        Activate(true);
    };
    EXPECT_EQ(label(), "Study");
    mServices.ReverseStudy = true;
    mServices.Time.Advance(61);
    comeBack();
    EXPECT_EQ(label(), "Study (1)");
    EXPECT_EQ(mDatabase.Execute("DELETE FROM Cards"), 0);
    mDatabase.Notify();
    EXPECT_EQ(label(), "Study");
}

TEST_F(BrowseFrameTest, TheDropDownOpensAtItsButtonAndClosesWhenTheUserTurnsAway) {
    Open();
    for (const int key : {int{WXK_SPACE}, int{WXK_RETURN}, int{WXK_DOWN}}) {
        OpenDropDown(key);
        EXPECT_EQ(DropDown().GetScreenPosition(),
                  Button().GetScreenRect().GetBottomLeft() + wxPoint(0, 1));
        // With no blank row behind the only one.
        wxRect row;
        EXPECT_TRUE(Categories().GetItemRect(0, row));
        EXPECT_LT(Categories().GetClientSize().y, 2 * row.height);
        EXPECT_TRUE(Hook(WXK_ESCAPE));
        EXPECT_FALSE(DropDown().IsShown());
        EXPECT_TRUE(WaitFor([this] { return Button().HasFocus(); }));
    }
    const std::pair<std::string, std::function<void()>> ways[] = {
        {"a press on its button", [this] { Click(Button()); }},
        {"a press on what takes no focus", [this] { Click(*mpFrame); }},
        {"the focus elsewhere", [this] { Cards().SetFocus(); }},
        {"find", [this] { mpFrame->FocusSearch(); }},
        {"a choice", [this] { Send(Categories(), wxEVT_LIST_ITEM_ACTIVATED); }},
        {"another window", [this] { Activate(false); }}};
    for (const auto& [name, turnAway] : ways) {
        OpenDropDown();
        turnAway();
        EXPECT_TRUE(WaitFor([this] { return !DropDown().IsShown(); })) << name;
    }
    OpenDropDown();
    ModalAnswers answers;
    answers.Then([this](wxDialog& question) {
        Activate(false);
        EXPECT_TRUE(DropDown().IsShown());
        question.EndModal(wxID_CANCEL);
    });
    Categories().Rename();
    EXPECT_TRUE(WaitFor([this] { return mpFrame->IsActive() && IsFocusIn(Categories()); }));
}

TEST_F(BrowseFrameTest, AStartShowsTheFirstPageAndThenTheRest) {
    constexpr int kCards = 20001;
    std::vector<FlashCard> cards;
    for (int number = 0; number < kCards; ++number) {
        cards.push_back(MakeCard(wxString::Format("front %i", number), "x"));
        cards.back().IntroductionOrder = number;
    }
    size_t inserted = 0;
    ASSERT_EQ(mDatabase.InsertFlashCards(cards, inserted), 0);
    auto* const frame = new BrowseFrame(mServices);
    mpFrame = frame;
    frame->ShowAtStart(mDatabase);
    EXPECT_EQ(Cards().GetItemCount(), 1000);
    EXPECT_EQ(Rows(), Texts());
    frame->Show();
    EXPECT_TRUE(WaitFor([this] { return Cards().GetItemCount() == kCards; }));
    EXPECT_EQ(Cards().OnGetItemText(kCards - 1, 1), "front 20000");
    EXPECT_EQ(Rows(), Texts{"Default"});
}

TEST_F(BrowseFrameTest, TheListFollowsTheFieldAfterAPause) {
    Insert(MakeCard("salt", "x"));
    Insert(MakeCard("sugar", "x"));
    Open();
    const auto status = [this] { return mpFrame->GetStatusBar()->GetStatusText(); };
    EXPECT_EQ(status(), "2 cards");
    const Texts recent = RecentMenu();
    for (const auto& [text, found] :
         {std::pair<wxString, Texts>{"su", {"sugar"}}, {"s", {"salt", "sugar"}}}) {
        SearchField().SetValue(text);
        EXPECT_NE(Column(1), found) << "at once";
        EXPECT_TRUE(WaitFor([&, expected = &found] { return Column(1) == *expected; })) << text;
    }
    EXPECT_EQ(RecentMenu(), recent);
    // Enter does not wait. Once more, it opens the only card found.
    SearchField().SetValue("su");
    Send(SearchField(), wxEVT_TEXT_ENTER);
    EXPECT_EQ(Column(1), Texts{"sugar"});
    EXPECT_TRUE(mServices.Edited.empty());
    Send(SearchField(), wxEVT_TEXT_ENTER);
    ASSERT_EQ(mServices.Edited.size(), 1U);
    EXPECT_EQ(mServices.Edited.front().Front, "sugar");
    for (const char* const text : {"s", "s", ""}) {
        Search(text);
    }
    EXPECT_EQ(mServices.Edited.size(), 1U);
    Select({1});
    DrainEvents();
    EXPECT_EQ(status(), "2 cards   1 selected");
}

TEST_F(BrowseFrameTest, KeysLeadFromTheFieldToTheCardsAndBack) {
    Insert(MakeCard("a", "x"));
    Insert(MakeCard("b", "x"));
    Open();
    mpFrame->FocusSearch();
    ASSERT_TRUE(WaitFor([this] { return IsFocusIn(SearchField()); }));
    std::vector<wxWindow*> order;
    for (wxWindow* const child : mpFrame->GetChildren()) {
        if (child->AcceptsFocusFromKeyboard()) {
            order.push_back(child);
        }
    }
    ASSERT_GE(order.size(), 3U);
    EXPECT_EQ(order[0], &SearchField());
    EXPECT_EQ(order[1], &CardPanel());
    EXPECT_EQ(order[2], &Button());
    EXPECT_TRUE(Hook(WXK_DOWN));
    ASSERT_TRUE(WaitFor([this] { return IsFocusIn(Cards()); }));
    Cards().SetFocusedRow(1);
    EXPECT_FALSE(Hook(WXK_UP));
    Cards().SetFocusedRow(0);
    EXPECT_TRUE(Hook(WXK_UP));
    EXPECT_TRUE(WaitFor([this] { return IsFocusIn(SearchField()); }));
}

TEST_F(BrowseFrameTest, FilesThatAreDroppedOnTheWindowAreOpened) {
    Open();
    auto* const target = dynamic_cast<wxFileDropTarget*>(mpFrame->GetDropTarget());
    ASSERT_NE(target, nullptr);
    wxArrayString paths;
    paths.push_back("/a");
    paths.push_back("/b");
    EXPECT_TRUE(target->OnDropFiles(0, 0, paths));
    EXPECT_THAT(mServices.Opened, testing::ElementsAre("/a", "/b"));
}
