#include "app/MainWindows.h"

#include "support/GuiTest.h"

namespace {

class MainWindowsTest : public GuiTest {
  protected:
    wxFrame* Make(int& made) {
        ++made;
        auto* const frame = new wxFrame(nullptr, wxID_ANY, "window");
        frame->Bind(wxEVT_CLOSE_WINDOW, [this, frame](wxCloseEvent& event) {
            event.Skip();
            mWindows.Forget(*frame);
        });
        return frame;
    }

    int mListsMade = 0;
    int mStudiesMade = 0;
    MainWindows mWindows{[this] { return Make(mListsMade); },
                         [this] { return Make(mStudiesMade); }};
};

TEST_F(MainWindowsTest, OneIsShownAndTheOtherStaysAliveBehind) {
    wxFrame& list = mWindows.ShowList();
    EXPECT_EQ(mStudiesMade, 0);
    wxFrame& study = mWindows.ShowStudy();
    BringToFront(list);
    EXPECT_TRUE(study.IsShown());
    EXPECT_FALSE(list.IsShown());
    EXPECT_EQ(&mWindows.ShowList(), &list);
    EXPECT_EQ(&mWindows.ShowStudy(), &study);
    EXPECT_EQ(mListsMade + mStudiesMade, 2);
}

TEST_F(MainWindowsTest, TheLastVisibleWindowTakesTheHiddenOneWithIt) {
    wxFrame& list = mWindows.ShowList();
    auto* const editor = new wxFrame(nullptr, wxID_ANY, "editor");
    editor->Show();
    mWindows.ShowStudy().Close();
    DrainEvents();
    EXPECT_EQ(&mWindows.ShowList(), &list) << "closed while another was open";
    editor->Destroy();
    DrainEvents();
    mWindows.ShowStudy().Close();
    DrainEvents();
    EXPECT_TRUE(wxTopLevelWindows.empty());
}

}  // namespace
