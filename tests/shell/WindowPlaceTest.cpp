#include "shell/WindowPlace.h"

#include "support/GuiTest.h"

TEST(WindowPlaceTest, OnlyFourNumbersOfAScreenAreAPlace) {
    wxRect place;
    EXPECT_TRUE(ParsePlace("-20,30,640,480", place));
    EXPECT_EQ(place, wxRect(-20, 30, 640, 480));
    for (const char* text : {"", "1,2,3", "1,2,300,400,5", "1,2,300,400,", "a,b,c,d", "1,2,10,400",
                             "1.5,2,300,400", "40000,2,300,400", "1,2,99999999999999999999,400"}) {
        EXPECT_FALSE(ParsePlace(text, place)) << text;
    }
    EXPECT_EQ(place, wxRect(-20, 30, 640, 480));
}

TEST(WindowPlaceTest, APlaceIsBroughtOntoAScreenThatExists) {
    const std::vector<wxRect> screens = {wxRect(0, 0, 1920, 1080), wxRect(1920, 200, 1280, 800)};
    const std::pair<wxRect, wxRect> cases[] = {
        {{100, 100, 640, 480}, {100, 100, 640, 480}},
        {{-50, -10, 640, 480}, {0, 0, 640, 480}},
        {{1800, 700, 640, 480}, {1920, 520, 640, 480}},
        {{1500, 900, 640, 480}, {1280, 600, 640, 480}},
        {{2000, 300, 3000, 3000}, {1920, 200, 1280, 800}},
        {{-5000, 6000, 640, 480}, {0, 600, 640, 480}},
    };
    for (const auto& [place, expected] : cases) {
        EXPECT_EQ(ClampPlace(place, screens), expected) << FormatPlace(place);
    }
    EXPECT_EQ(ClampPlace(wxRect(1, 2, 3, 4), {}), wxRect(1, 2, 3, 4));
}

struct WindowPositionTest : GuiTest {
    // Opens a window as one of ours does and waits for the window manager, which makes a new
    // window the active one when it has placed it.
    wxFrame* Open(bool expectRestored, long style = wxDEFAULT_FRAME_STYLE) {
        auto* const frame =
            new wxFrame(nullptr, wxID_ANY, "Window", wxDefaultPosition, wxSize(300, 200), style);
        EXPECT_EQ(RestoreWindowPosition("StudyFramePosition", "Velomind", *frame), expectRestored);
        ShowAndWait(*frame);
        return frame;
    }

    void Save(wxFrame& frame) {
        SaveWindowPosition("StudyFramePosition", "Velomind", frame);
        frame.Destroy();
        DrainEvents();
    }
};

TEST_F(WindowPositionTest, AWindowComesBackToItsPlaceFromStartToStart) {
    Save(*Open(false));
    const wxRect place(120, 90, 333, 222);
    WriteStringSetting("StudyFramePosition", FormatPlace(place));
    // The two kinds have frames of different thickness.
    for (const long style : {0L, long{wxRESIZE_BORDER}, 0L, 0L}) {
        wxFrame* const frame = Open(true, (wxDEFAULT_FRAME_STYLE & ~wxRESIZE_BORDER) | style);
        EXPECT_TRUE(WaitFor([&] { return frame->GetRect() == place; }))
            << FormatPlace(frame->GetRect());
        Save(*frame);
    }
    EXPECT_EQ(ReadStringSetting("StudyFramePosition"), FormatPlace(place));
}

TEST_F(WindowPositionTest, AWindowKeepsItsPlaceWhileItIsHiddenAndWhenItIsBack) {
    const wxString place = "120,90,333,222";
    WriteStringSetting("StudyFramePosition", place);
    wxFrame* const frame = Open(true);
    ASSERT_TRUE(WaitFor([&] { return FormatPlace(frame->GetRect()) == place; }));
    DrainEvents();
    frame->Hide();
    // The window manager takes its frame away, by which the toolkit believes the window smaller.
    WaitFor([&] { return FormatPlace(frame->GetRect()) != place; }, 500);
    SaveWindowPosition("StudyFramePosition", "Velomind", *frame);
    EXPECT_EQ(ReadStringSetting("StudyFramePosition"), place);
    ShowAndWait(*frame);
    EXPECT_TRUE(WaitFor([&] {
        SaveWindowPosition("StudyFramePosition", "Velomind", *frame);
        return ReadStringSetting("StudyFramePosition") == place;
    })) << ReadStringSetting("StudyFramePosition");
    frame->Destroy();
}

TEST_F(WindowPositionTest, AMaximisedWindowSavesThePlaceThatItComesBackTo) {
    WriteStringSetting("StudyFramePosition", "120,90,333,222");
    wxFrame* const frame = Open(true);
    frame->Maximize();
    ASSERT_TRUE(WaitFor([frame] { return frame->IsMaximized() && frame->GetSize().x > 333; }));
    DrainEvents();
    Save(*frame);
    EXPECT_EQ(ReadStringSetting("StudyFramePosition"), "120,90,333,222");
}
