#include "shell/WindowPlace.h"

#include "shell/Toolkit.h"
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

TEST(WindowPlaceTest, ASizeIsTwoNumbersAndMayBeMaximised) {
    const std::pair<const char*, WindowPlace> cases[] = {
        {"640,480", {wxRect(7, 8, 640, 480), false}},
        {"800,600,maximised", {wxRect(7, 8, 800, 600), true}},
    };
    for (const auto& [text, expected] : cases) {
        WindowPlace place{wxRect(7, 8, 100, 100), !expected.Maximised};
        EXPECT_TRUE(ParseSize(text, place)) << text;
        EXPECT_EQ(place.Free, expected.Free) << text;
        EXPECT_EQ(place.Maximised, expected.Maximised) << text;
        EXPECT_EQ(FormatSize(place), text);
    }
    WindowPlace place;
    for (const char* text : {"", "640", "640,480,", "640,480,maximised,maximised", "maximised",
                             "640,480,1", "640,10", "7,8,640,480"}) {
        EXPECT_FALSE(ParseSize(text, place)) << text;
    }
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
    wxFrame* Open(bool expectRestored) {
        auto* const frame =
            new wxFrame(nullptr, wxID_ANY, "Window", wxDefaultPosition, wxSize(300, 200));
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
    const wxRect place(120, 90, 333, 222);
    WriteStringSetting("StudyFramePosition", FormatPlace(place));
    for (int start = 0; start < 3; ++start) {
        wxFrame* const frame = Open(true);
        EXPECT_TRUE(WaitFor([&] { return GetInnerPlace(*frame) == place; }))
            << FormatPlace(GetInnerPlace(*frame));
        Save(*frame);
    }
    EXPECT_EQ(ReadStringSetting("StudyFramePosition"), FormatPlace(place));
    EXPECT_EQ(ReadStringSetting("StudyFrameSize"), "333,222");
}

TEST_F(WindowPositionTest, AWindowWithoutAStoredPlaceHasItsSizeInsideTheFrame) {
    Save(*Open(false));
    EXPECT_EQ(ReadStringSetting("StudyFrameSize"), "300,200");
}

TEST_F(WindowPositionTest, AWindowKeepsItsPlaceWhileItIsHiddenAndWhenItIsBack) {
    const wxRect place(120, 90, 333, 222);
    WriteStringSetting("StudyFramePosition", FormatPlace(place));
    wxFrame* const frame = Open(true);
    ASSERT_TRUE(WaitFor([&] { return GetInnerPlace(*frame) == place; }));
    const wxRect outer = frame->GetRect();
    frame->Hide();
    // The window manager takes its frame away, by which the toolkit believes the window smaller.
    WaitFor([&] { return frame->GetRect() != outer; }, 500);
    EXPECT_EQ(GetPlace(*frame).Free, place);
    ShowAndWait(*frame);
    EXPECT_TRUE(WaitFor([&] { return GetPlace(*frame).Free == place; }))
        << FormatPlace(GetPlace(*frame).Free);
    frame->Destroy();
}

TEST_F(WindowPositionTest, AMaximisedWindowIsSoAgainAndReturnsToThePlaceItHad) {
    const wxRect place(120, 90, 333, 222);
    WriteStringSetting("StudyFramePosition", FormatPlace(place));
    WriteStringSetting("StudyFrameSize", "333,222,maximised");
    for (int start = 0; start < 2; ++start) {
        wxFrame* const frame = Open(true);
        EXPECT_TRUE(WaitFor([frame] { return frame->IsMaximized(); }));
        Save(*frame);
        EXPECT_EQ(ReadStringSetting("StudyFramePosition"), FormatPlace(place));
        EXPECT_EQ(ReadStringSetting("StudyFrameSize"), "333,222,maximised");
    }
    wxFrame* const frame = Open(true);
    EXPECT_TRUE(WaitFor([frame] { return frame->IsMaximized(); }));
    frame->Maximize(false);
    EXPECT_TRUE(WaitFor([&] { return !frame->IsMaximized() && GetInnerPlace(*frame) == place; }))
        << FormatPlace(GetInnerPlace(*frame));
    Save(*frame);
    EXPECT_EQ(ReadStringSetting("StudyFrameSize"), "333,222");
}

TEST_F(WindowPositionTest, AWindowThatTheUserMaximisesKeepsThePlaceBefore) {
    WriteStringSetting("StudyFramePosition", "120,90,333,222");
    wxFrame* const frame = Open(true);
    wxStopWatch sinceUp;
    WaitFor([&] { return sinceUp.Time() > 400; });
    frame->Maximize();
    ASSERT_TRUE(WaitFor([frame] { return frame->IsMaximized() && frame->GetSize().x > 333; }));
    DrainEvents();
    Save(*frame);
    EXPECT_EQ(ReadStringSetting("StudyFramePosition"), "120,90,333,222");
    EXPECT_EQ(ReadStringSetting("StudyFrameSize"), "333,222,maximised");
}
