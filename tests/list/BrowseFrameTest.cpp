#include "list/BrowseFrame.h"

#include <wx/button.h>
#include <wx/menu.h>

#include "shell/CommandIds.h"
#include "shell/Settings.h"
#include "support/FakeServices.h"
#include "support/GuiTest.h"

class BrowseFrameTest : public GuiStoreTest {
  protected:
    BrowseFrameTest() : mpFrame(new BrowseFrame(mServices)) {
        mpFrame->SetDatabase(&mDatabase);
        mpFrame->Show();
    }
    // The windows observe what is destroyed before the base class closes them.
    ~BrowseFrameTest() override {
        if (mServices.Closed.empty()) {
            mpFrame->Close(true);
        }
        DrainEvents();
    }

    wxString Figures() {
        return static_cast<wxControl*>(FindNamed(*mpFrame, "figures"))->GetLabelText();
    }

    FakeServices mServices;
    BrowseFrame* mpFrame;
};

TEST_F(BrowseFrameTest, TheFiguresFollowTheStore) {
    EXPECT_EQ(Figures(), "0 flash cards\n1 category\nCurrent category: Default");
    EXPECT_EQ(mDatabase.CategoryInsert("Salt & pepper"), 0);
    Insert(MakeCard("front", "back", 1));
    mServices.CurrentCategory = 1;
    mDatabase.Notify();
    EXPECT_EQ(Figures(), "1 flash card\n2 categories\nCurrent category: Salt & pepper");
    mServices.CurrentCategory = -1;
    mDatabase.Notify();
    EXPECT_EQ(Figures().AfterLast('\n'), "Current category: Deleted Items");
    mServices.CurrentCategory = 77;
    mDatabase.Notify();
    EXPECT_EQ(Figures().AfterLast('\n'), "Current category: Error");
}

TEST_F(BrowseFrameTest, ANewFontOfTheListIsTakenAtOnce) {
    WriteFontSetting("BrowseFont", wxFontInfo(23));
    mServices.SettingsNotifier.Notify();
    EXPECT_EQ(FindNamed(*mpFrame, "figures")->GetFont().GetPointSize(), 23);
}

TEST_F(BrowseFrameTest, TheStudyButtonAsksForTheStudyWindow) {
    int asked = 0;
    mpFrame->Bind(
        wxEVT_MENU, [&asked](wxCommandEvent&) { ++asked; }, ID_WINDOW_STUDY);
    wxWindow* const study = FindNamed(*mpFrame, "study");
    wxCommandEvent press(wxEVT_BUTTON, study->GetId());
    press.SetEventObject(study);
    study->ProcessWindowEvent(press);
    EXPECT_EQ(asked, 1);
    EXPECT_EQ(mpFrame->GetDefaultItem(), study);
}

TEST_F(BrowseFrameTest, ItsMenusHaveNothingOfTheOtherWindows) {
    wxMenuBar& bar = *mpFrame->GetMenuBar();
    for (const int id : {int{ID_SAVE_CLOSE}, int{ID_SAVE_NEW}, int{ID_STUDY_FORWARD},
                         int{ID_STUDY_REVERSE}, int{ID_CUSTOMIZE_MENU}, int{ID_STATUS_BAR}}) {
        EXPECT_EQ(bar.FindItem(id), nullptr) << id;
    }
    const wxMenu& tools = *bar.GetMenu(static_cast<size_t>(bar.FindMenu("Tools")));
    EXPECT_FALSE(tools.FindItemByPosition(0)->IsSeparator());
    mpFrame->UpdateWindowUI(wxUPDATE_UI_RECURSE);
    EXPECT_TRUE(bar.IsChecked(ID_WINDOW_LIST));
}

TEST_F(BrowseFrameTest, ClosingSavesThePlaceAndTellsTheApplication) {
    mpFrame->Move(90, 80);
    ASSERT_TRUE(WaitFor([this] { return mpFrame->GetPosition() == wxPoint(90, 80); }));
    wxCommandEvent close(wxEVT_MENU, wxID_CLOSE);
    mpFrame->ProcessWindowEvent(close);
    EXPECT_EQ(mServices.Closed, std::vector<wxFrame*>{mpFrame});
    EXPECT_EQ(ReadStringSetting("LastWindow"), "Browse");
    EXPECT_EQ(ReadStringSetting("BrowseFramePosition").substr(0, 6), "90,80,");
    // It ends later; until then a notice must not reach it.
    mDatabase.Notify();
}
