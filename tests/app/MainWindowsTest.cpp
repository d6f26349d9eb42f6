#include "app/MainWindows.h"

#include <gtest/gtest.h>
#include <wx/frame.h>

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
    EXPECT_TRUE(study.IsShown());
    EXPECT_FALSE(list.IsShown());
    EXPECT_EQ(&mWindows.ShowList(), &list);
    EXPECT_EQ(&mWindows.ShowStudy(), &study);
    EXPECT_EQ(mWindows.GetShown(), &study);
    EXPECT_EQ(mListsMade + mStudiesMade, 2);
}

TEST_F(MainWindowsTest, AWindowThatWasClosedIsMadeAnew) {
    wxFrame editor(nullptr, wxID_ANY, "editor");
    editor.Show();
    mWindows.ShowList().Close();
    DrainEvents();
    EXPECT_EQ(mWindows.GetShown(), nullptr);
    mWindows.ShowList();
    EXPECT_EQ(mListsMade, 2);
}

TEST_F(MainWindowsTest, TheLastVisibleWindowTakesTheHiddenOneWithIt) {
    mWindows.ShowList();
    mWindows.ShowStudy().Close();
    DrainEvents();
    EXPECT_TRUE(wxTopLevelWindows.empty());
}

TEST_F(MainWindowsTest, AHiddenWindowLivesOnWhileAnotherIsOpen) {
    wxFrame& list = mWindows.ShowList();
    wxFrame editor(nullptr, wxID_ANY, "editor");
    editor.Show();
    mWindows.ShowStudy().Close();
    DrainEvents();
    EXPECT_EQ(&mWindows.ShowList(), &list);
    // An editor that goes last takes a hidden window with it too.
    list.Hide();
    mWindows.Forget(editor);
    DrainEvents();
    EXPECT_EQ(wxTopLevelWindows.GetCount(), 1U);
}

TEST_F(MainWindowsTest, BringingToTheFrontNeverShowsAHiddenWindow) {
    wxFrame& list = mWindows.ShowList();
    mWindows.ShowStudy();
    BringToFront(list);
    EXPECT_FALSE(list.IsShown());
}

}  // namespace
