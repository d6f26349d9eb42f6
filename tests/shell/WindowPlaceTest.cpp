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
    // Opens a window at a stored place as one of ours does and waits for the window manager, which
    // makes a new window the active one when it has placed it.
    wxFrame* Open() {
        auto* const frame =
            new wxFrame(nullptr, wxID_ANY, "Window", wxDefaultPosition, wxSize(300, 200));
        EXPECT_TRUE(RestoreWindowPosition("StudyFramePosition", "Velomind", *frame));
        ShowAndWait(*frame);
        EXPECT_TRUE(WaitFor([&] { return GetInnerPlace(*frame) == mPlace; }))
            << FormatPlace(GetInnerPlace(*frame));
        return frame;
    }

    const wxRect mPlace{120, 90, 333, 222};
};

TEST_F(WindowPositionTest, AWindowComesBackToItsPlaceFromStartToStart) {
    WriteStringSetting("StudyFramePosition", FormatPlace(mPlace));
    for (int start = 0; start < 3; ++start) {
        wxFrame* const frame = Open();
        SaveWindowPosition("StudyFramePosition", "Velomind", *frame);
        frame->Destroy();
        DrainEvents();
    }
    EXPECT_EQ(ReadStringSetting("StudyFramePosition"), FormatPlace(mPlace));
    EXPECT_EQ(ReadStringSetting("StudyFrameSize"), "333,222");
}

TEST_F(WindowPositionTest, AWindowKeepsItsPlaceWhileItIsHiddenAndWhenItIsBack) {
    WriteStringSetting("StudyFramePosition", FormatPlace(mPlace));
    wxFrame* const frame = Open();
    const wxRect outer = frame->GetRect();
    frame->Hide();
    // The window manager takes its frame away, by which the toolkit believes the window smaller.
    WaitFor([&] { return frame->GetRect() != outer; }, 500);
    EXPECT_EQ(GetPlace(*frame).Free, mPlace);
    ShowAndWait(*frame);
    EXPECT_TRUE(WaitFor([&] { return GetPlace(*frame).Free == mPlace; }))
        << FormatPlace(GetPlace(*frame).Free);
}
