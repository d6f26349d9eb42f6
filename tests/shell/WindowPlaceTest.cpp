#include "shell/WindowPlace.h"

#include <wx/frame.h>

#include <ostream>

#include "shell/Settings.h"
#include "support/GuiTest.h"

static std::ostream& operator<<(std::ostream& out, const wxRect& rect) {
    return out << FormatPlace(rect);
}

TEST(WindowPlaceTest, OnlyFourNumbersOfAScreenAreAPlace) {
    wxRect place;
    EXPECT_TRUE(ParsePlace("-20,30,640,480", place));
    EXPECT_EQ(place, wxRect(-20, 30, 640, 480));
    for (const char* text :
         {"", "1,2,3", "1,2,3,4,5", "1,2,3,4,", "a,b,c,d", "1;2;3;4", "1,2,0,4", "1,2,3,-4",
          "1.5,2,3,4", "40000,2,3,4", "1,2,99999999999999999999,4", "-9223372036854775808,2,3,4"}) {
        EXPECT_FALSE(ParsePlace(text, place)) << text;
        EXPECT_EQ(place, wxRect(-20, 30, 640, 480)) << text;
    }
}

TEST(WindowPlaceTest, APlaceIsBroughtOntoAScreenThatExists) {
    const std::vector<wxRect> screens = {wxRect(0, 0, 1920, 1080), wxRect(1920, 200, 1280, 800)};
    const struct {
        wxRect Place;
        wxRect Expected;
    } cases[] = {
        {{100, 100, 640, 480}, {100, 100, 640, 480}},
        {{-50, -10, 640, 480}, {0, 0, 640, 480}},
        {{1800, 700, 640, 480}, {1920, 520, 640, 480}},
        {{1500, 900, 640, 480}, {1280, 600, 640, 480}},
        {{1920, 200, 1280, 800}, {1920, 200, 1280, 800}},
        {{2000, 300, 3000, 3000}, {1920, 200, 1280, 800}},
        {{-5000, 6000, 640, 480}, {0, 600, 640, 480}},
    };
    for (const auto& row : cases) {
        EXPECT_EQ(ClampPlace(row.Place, screens), row.Expected) << row.Place;
    }
    EXPECT_EQ(ClampPlace(wxRect(1, 2, 3, 4), {}), wxRect(1, 2, 3, 4));
}

class WindowPositionTest : public GuiTest {
  protected:
    // Opens a window as one of ours does; false in restored when nothing was stored.
    wxFrame* Open(bool& restored) {
        auto* const frame =
            new wxFrame(nullptr, wxID_ANY, "Window", wxPoint(40, 50), wxSize(300, 200));
        restored = RestoreWindowPosition("StudyFramePosition", "Velomind", *frame);
        frame->Show();
        EXPECT_TRUE(WaitFor([frame] { return frame->IsShownOnScreen(); }));
        DrainEvents();
        return frame;
    }

    void Save(wxFrame& frame) {
        SaveWindowPosition("StudyFramePosition", "Velomind", frame);
        frame.Destroy();
        DrainEvents();
    }
};

TEST_F(WindowPositionTest, AWindowOpensWhereItWasClosed) {
    bool restored = true;
    wxFrame* frame = Open(restored);
    EXPECT_FALSE(restored);
    frame->SetSize(wxRect(120, 90, 333, 222));
    EXPECT_TRUE(WaitFor([frame] { return frame->GetRect() == wxRect(120, 90, 333, 222); }));
    Save(*frame);
    EXPECT_EQ(ReadStringSetting("StudyFramePosition"), "120,90,333,222");
    frame = Open(restored);
    EXPECT_TRUE(restored);
    EXPECT_TRUE(WaitFor([frame] { return frame->GetRect() == wxRect(120, 90, 333, 222); }))
        << frame->GetRect();
}

TEST_F(WindowPositionTest, AMaximisedWindowSavesThePlaceThatItComesBackTo) {
    bool restored = false;
    wxFrame* const frame = Open(restored);
    frame->SetSize(wxRect(120, 90, 333, 222));
    ASSERT_TRUE(WaitFor([frame] { return frame->GetRect() == wxRect(120, 90, 333, 222); }));
    DrainEvents();
    frame->Maximize();
    // Without a window manager nobody maximises.
    if (!WaitFor([frame] { return frame->IsMaximized() && frame->GetSize().x > 333; }, 2000)) {
        GTEST_SKIP() << "no window manager";
    }
    DrainEvents();
    Save(*frame);
    EXPECT_EQ(ReadStringSetting("StudyFramePosition"), "120,90,333,222");
}
