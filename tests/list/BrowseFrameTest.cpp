#include "ListFixture.h"

struct BrowseFrameTest : ListTest {
    Texts RecentMenu() {
        Texts texts;
        for (const wxMenuItem* const item : SearchField().GetMenu()->GetMenuItems()) {
            texts.push_back(item->GetItemLabelText());
        }
        return texts;
    }
    bool Hook(int key) { return SendKeyEvent(wxEVT_CHAR_HOOK, *wxWindow::FindFocus(), key); }
    bool IsFocusIn(wxWindow& window) { return window.IsDescendant(wxWindow::FindFocus()); }
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
    Command(11000);
    EXPECT_EQ(SearchField().GetValue(), "salt & pepper");
    EXPECT_TRUE(SearchField().IsCancelButtonVisible());
    EXPECT_EQ(Column(1), Texts{"salt & pepper"});
}

TEST_F(BrowseFrameTest, TheDropDownOpensStaysForItsQuestionsAndCloses) {
    Open();
    for (const int key : {int{WXK_SPACE}, int{WXK_RETURN}, int{WXK_DOWN}}) {
        SendKey(Button(), key);
        ASSERT_TRUE(WaitFor([this] { return DropDown().IsActive(); })) << key;
        EXPECT_TRUE(IsFocusIn(Categories()));
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
    OpenDropDown();
    mpFrame->Raise();
    EXPECT_TRUE(WaitFor([this] { return !DropDown().IsShown(); }));
}
