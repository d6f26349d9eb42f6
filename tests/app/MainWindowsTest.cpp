#include "app/MainWindows.h"

#include "support/GuiTest.h"

namespace {

// That the hidden one goes with the last visible one is seen whenever the program ends.
TEST_F(GuiTest, OneMainWindowIsShownAndTheOtherStaysAliveBehind) {
    int made = 0;
    MainWindows* pWindows = nullptr;
    const auto make = [&]() -> wxFrame* {
        ++made;
        auto* const frame = new wxFrame(nullptr, wxID_ANY, "window");
        frame->Bind(wxEVT_CLOSE_WINDOW, [&pWindows, frame](wxCloseEvent& event) {
            event.Skip();
            pWindows->Forget(*frame);
        });
        return frame;
    };
    MainWindows windows(make, make);
    pWindows = &windows;
    wxFrame& list = windows.ShowList();
    EXPECT_EQ(made, 1);
    wxFrame& study = windows.ShowStudy();
    BringToFront(list);
    EXPECT_TRUE(study.IsShown() && !list.IsShown());
    EXPECT_EQ(&windows.ShowList(), &list);
    EXPECT_EQ(&windows.ShowStudy(), &study);
    EXPECT_EQ(made, 2);
    wxFrame editor(nullptr, wxID_ANY, "editor");
    editor.Show();
    study.Close();
    DrainEvents();
    EXPECT_EQ(&windows.ShowList(), &list) << "closed while another was open";
}

}  // namespace
