#include "study/CardViewer.h"

#include "media/MediaFolder.h"
#include "support/GuiTest.h"

namespace {

// Lines of text.
wxString Lines(size_t count) {
    wxString text('a', 2 * count);
    text.Replace("aa", "a\n");
    return text;
}

TEST(CardLayout, TheDividerLeavesTheMiddleOnlyForATextThatNeedsIt) {
    const wxSize client(200, 101);
    // The heights of both texts, of the room of the first one, and of all.
    const std::tuple<const char*, int32_t, int32_t, int32_t, int32_t> rows[] = {
        {"two short texts", 20, 30, 50, 101},
        {"a long first text", 60, 20, 60, 101},
        {"a long second text", 20, 60, 40, 101},
        {"both too long", 60, 60, 60, 121},
        {"a short first and an endless second text", 20, 300, 20, 321},
    };
    for (const auto& [what, first, second, firstHeight, height] : rows) {
        SCOPED_TRACE(what);
        const CardLayout layout = ArrangeCard(wxVERTICAL, client, first, second);
        EXPECT_EQ(layout.VirtualHeight, height);
        EXPECT_EQ(layout.First, wxRect(0, 0, 200, firstHeight));
        EXPECT_EQ(layout.Second, wxRect(0, firstHeight + 1, 200, height - firstHeight - 1));
        EXPECT_EQ(CardHeightNeeded(wxVERTICAL, first, second) <= client.y, height == client.y);
    }
    const CardLayout columns = ArrangeCard(wxHORIZONTAL, wxSize(201, 101), 20, 300);
    EXPECT_EQ(columns.First, wxRect(0, 0, 100, 300));
    EXPECT_EQ(columns.Second, wxRect(101, 0, 100, 300));
}

struct CardViewerTest : GuiTest {
    CardViewerTest() {
        mViewer.SetScrollRate(0, 1);
        mViewer.SetBackgroundColour(*wxWHITE);
        ShowAndWait(mFrame);
        EXPECT_TRUE(WaitFor([this] { return mViewer.GetClientSize().y > 100; }));
        DrainEvents();
    }

    void Show(const wxString& first, const wxString& second) {
        mViewer.SetFirstText(first);
        mViewer.SetSecondText(second);
        DrainEvents();
    }

    // True when the window comes to show that colour there.
    bool Shows(const wxColour& expected, int x, int y) {
        mViewer.Refresh();
        return WaitFor([&] {
            wxColour colour;
            wxClientDC(&mViewer).GetPixel(x, y, &colour);
            return colour == expected;
        });
    }

    wxFrame& mFrame =
        *new wxFrame(nullptr, wxID_ANY, "Viewer", wxDefaultPosition, wxSize(300, 400));
    CardViewer& mViewer = *new CardViewer(&mFrame, wxID_ANY, wxDefaultPosition, wxDefaultSize,
                                          wxBORDER_NONE | wxHSCROLL | wxVSCROLL);
};

TEST_F(CardViewerTest, ALongTextIsLaidOutInIdleMomentsAndAnEndlessOneIsCut) {
    mViewer.SetFirstText(Lines(20000));
    const int first = mViewer.GetVirtualSize().y;
    EXPECT_TRUE(mViewer.IsScrollNeeded());
    EXPECT_TRUE(WaitFor([this] { return mViewer.IsLaidOut(); }));
    EXPECT_GT(mViewer.GetVirtualSize().y, 2 * first);
    mViewer.SetFirstText(wxString('x', CardViewer::kMostCharacters + 5));
    EXPECT_EQ(mViewer.GetFirstText().length(), CardViewer::kMostCharacters);
    EXPECT_EQ(mViewer.GetFirstText().Last(), wxUniChar(0x2026));
}

TEST_F(CardViewerTest, TextIsWrappedBesideTheScrollBarThatALongOneNeeds) {
    Show("some words that need more than one line of this narrow window", "back");
    const auto countLines = [this] { return mViewer.GetFirst().Wraps[0].Lines.size(); };
    const size_t lines = countLines();
    mViewer.SetFont(mViewer.GetFont().Scaled(2));
    EXPECT_GT(countLines(), lines);

    const wxSize client = mViewer.GetClientSize();
    for (const int32_t layout : {wxVERTICAL, wxHORIZONTAL}) {
        mViewer.SetLayout(layout);
        Show("front", Lines(100));
        EXPECT_TRUE(mViewer.IsScrollNeeded());
        // The text keeps clear of the bar, whether that lies beside the window or over it.
        EXPECT_LT(mViewer.GetSecond().Rect.GetRight() + 1, client.x);
        EXPECT_LE(mViewer.GetSecond().Rect.GetRight() + 1, mViewer.GetClientSize().x);
        EXPECT_EQ(mViewer.GetSecond().Rect.GetBottom() + 1, mViewer.GetVirtualSize().y);

        Show("front", "back");
        EXPECT_FALSE(mViewer.IsScrollNeeded());
        EXPECT_EQ(mViewer.GetSecond().Rect.GetRight() + 1, client.x);
        EXPECT_EQ(mViewer.GetSecond().Rect.GetBottom() + 1, client.y);
    }
}

TEST_F(CardViewerTest, ScrollsToTheDividerByPagesAndByLinesOfText) {
    Show(Lines(40), Lines(40));
    const int32_t page = mViewer.GetClientSize().y * 8 / 10;
    mViewer.ScrollToSecond();
    EXPECT_EQ(mViewer.GetViewStart().y, mViewer.GetFirst().Rect.height);
    mViewer.PageUp();
    EXPECT_EQ(mViewer.GetViewStart().y, mViewer.GetFirst().Rect.height - page);
    mViewer.ScrollToTop();
    mViewer.PageUp();
    EXPECT_EQ(mViewer.GetViewStart().y, 0);
    mViewer.PageDown();
    EXPECT_EQ(mViewer.GetViewStart().y, page);

    mViewer.ScrollToTop();
    const auto lineHeight = mViewer.GetFirst().Rect.height / 40;
    SendMouse(mViewer, wxEVT_MOUSEWHEEL, wxPoint(10, 10), -120);
    EXPECT_EQ(mViewer.GetViewStart().y, 3 * lineHeight);

    mViewer.SetLayout(wxHORIZONTAL);
    mViewer.ScrollToSecond();
    EXPECT_EQ(mViewer.GetViewStart().y, 0);
}

TEST_F(CardViewerTest, TheCoverFillsTheSecondSideAndTheDividerShowsOnAnyBackground) {
    Show("front", wxString());
    const wxRect second = mViewer.GetSecond().Rect;
    EXPECT_TRUE(Shows(*wxWHITE, second.width - 1, second.y + second.height / 2));
    EXPECT_TRUE(Shows(*wxBLACK, second.width / 2, second.y - 1));

    wxBitmap cover(1, 256);
    wxMemoryDC dc(cover);
    dc.SetBackground(*wxGREEN_BRUSH);
    dc.Clear();
    dc.SelectObject(wxNullBitmap);
    mViewer.SetSecondCover(cover);
    mViewer.SetBackgroundColour(*wxBLACK);
    EXPECT_TRUE(Shows(*wxGREEN, second.width - 1, second.y + second.height / 2));
    EXPECT_TRUE(Shows(*wxWHITE, second.width / 2, second.y - 1));
}

TEST_F(CardViewerTest, CtrlAndTheWheelAskForAnotherSizeAndScrollNothing) {
    Show(Lines(100), Lines(100));
    EXPECT_EQ(mViewer.LinesOf(mViewer.GetFirst()).MaxWidth,
              mViewer.GetFirst().Rect.width - 2 * mViewer.FromDIP(12))
        << "the text keeps a margin";
    std::vector<int> heard;
    mFrame.Bind(wxEVT_MENU, [&](wxCommandEvent& event) { heard.push_back(event.GetId()); });
    for (const int rotation : {-60, -60, 240}) {
        wxMouseEvent wheel(wxEVT_MOUSEWHEEL);
        wheel.SetControlDown(true);
        wheel.m_wheelRotation = rotation;
        wheel.m_wheelDelta = 120;
        mViewer.HandleWindowEvent(wheel);
    }
    EXPECT_EQ(heard, (std::vector<int>{wxID_ZOOM_OUT, wxID_ZOOM_IN, wxID_ZOOM_IN}));
    EXPECT_EQ(mViewer.GetViewStart().y, 0);
}

// A store's folder with the pictures of the corpus under their names.
struct CardViewerPicturesTest : CardViewerTest {
    CardViewerPicturesTest() {
        const MediaFolder folder(mDirectory.Path("a.vlm"));
        wxString name;
        for (const char* const file : {"good.png", "most.png", "cut.gif", "good.svg", "huge.png"}) {
            EXPECT_EQ(folder.Add(std::string(VELOMIND_CORPUS) + "/" + file, file, name), 0);
        }
        mViewer.SetStore(mDirectory.Path("a.vlm"));
    }
    TestDirectory mDirectory;
};

TEST_F(CardViewerPicturesTest, PicturesFitBelowTheTextAndKeepTheirProportions) {
    const int32_t half = (mViewer.GetClientSize().y - 1) / 2;
    for (const int32_t layout : {wxVERTICAL, wxHORIZONTAL}) {
        mViewer.SetLayout(layout);
        Show("bird\n[picture: most.png]", "[picture: good.png]\n[picture: none.png]");
        ASSERT_EQ(mViewer.GetFirst().Pictures.size(), 1U);
        const SidePicture& most = mViewer.GetFirst().Pictures[0];
        EXPECT_EQ(most.Natural, wxSize(5200, 5000));
        EXPECT_LT(most.Size.y, layout == wxVERTICAL ? half : mViewer.GetClientSize().y);
        EXPECT_GT(most.Size.y, half / 3);
        EXPECT_NEAR(most.Size.x * 5000, most.Size.y * 5200, 5200);
        // A small one is not made larger, and a missing one has a place for its name.
        EXPECT_EQ(mViewer.GetSecond().Pictures[0].Size, wxSize(40, 30));
        EXPECT_EQ(mViewer.GetSecond().Pictures[1].Natural, wxSize());
        EXPECT_GT(mViewer.GetSecond().Pictures[1].Size.y, 10);
        EXPECT_FALSE(mViewer.IsScrollNeeded());
    }
    // Many pictures need a scroll bar, and no more than some are shown at all.
    wxString many;
    for (int i = 0; i < 60; ++i) {
        many += "[picture: most.png]\n";
    }
    Show(many, "back");
    EXPECT_TRUE(mViewer.IsScrollNeeded());
    EXPECT_EQ(mViewer.GetFirst().Pictures.size(), 50U);
}

TEST_F(CardViewerPicturesTest, APictureIsDrawnOnceItIsReadAndTellsOfAClick) {
    wxString clicked;
    mFrame.Bind(EVT_CARD_PICTURE, [&](wxCommandEvent& event) { clicked = event.GetString(); });
    int presses = 0;
    mFrame.Bind(wxEVT_BUTTON, [&](wxCommandEvent&) { ++presses; });
    Show("[picture: good.svg]", "[picture: huge.png]");
    const wxRect first = mViewer.GetFirst().Rect;
    const wxPoint middle(first.x + first.width / 2, first.y + first.height / 2);
    EXPECT_TRUE(Shows(*wxBLUE, middle.x + 20, middle.y - 10));
    SendMouse(mViewer, wxEVT_LEFT_DOWN, middle);
    SendMouse(mViewer, wxEVT_LEFT_UP, middle);
    EXPECT_EQ(clicked, "good.svg");
    EXPECT_EQ(presses, 0);
    // One that cannot be shown is a part of the card like any other.
    const wxRect second = mViewer.GetSecond().Rect;
    const wxPoint there(second.x + second.width / 2, second.y + second.height / 2);
    SendMouse(mViewer, wxEVT_LEFT_DOWN, there);
    SendMouse(mViewer, wxEVT_LEFT_UP, there);
    EXPECT_EQ(presses, 1);
    // Black on nothing gets a sheet on a ground that is black too.
    wxString name;
    const char* const dot =
        "<svg xmlns='http://www.w3.org/2000/svg' width='200' height='200'>"
        "<rect x='90' y='90' width='20' height='20'/></svg>";
    ASSERT_EQ(MediaFolder(mDirectory.Path("a.vlm")).AddBytes(dot, "dot.svg", name), 0);
    mViewer.SetBackgroundColour(*wxBLACK);
    Show("[picture: dot.svg]", "back");
    const wxRect side = mViewer.GetFirst().Rect;
    EXPECT_TRUE(Shows(*wxWHITE, side.x + side.width / 2 - 20, side.y + side.height / 2));
}

TEST_F(CardViewerTest, ACardWithoutPicturesTakesTheShortWay) {
    Show("say [picture: a.png] and [sound", "[]");
    EXPECT_EQ(mViewer.GetPictures(), nullptr);
    EXPECT_EQ(mViewer.GetFirst().PicturesHeight, 0);
}

}  // namespace
