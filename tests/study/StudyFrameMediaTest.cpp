// Pictures of cards in the whole study window.

#include <filesystem>

#include "media/MediaFolder.h"
#include "media/windows/CardPictures.h"
#include "study/PictureView.h"
#include "study/StudyFrameFixture.h"

namespace {

namespace fs = std::filesystem;

struct StudyFrameMedia : StudyFrameTest {
    StudyFrameMedia() {
        wxString name;
        for (const char* const file : {"good.png", "good.svg", "sideways.jpg"}) {
            EXPECT_EQ(
                MediaFolder(StorePath()).Add(std::string(VELOMIND_CORPUS) + "/" + file, file, name),
                0);
        }
    }
    // The picture in the whole window, or "card".
    wxString Whole() {
        auto* const view =
            dynamic_cast<PictureView*>(wxWindow::FindWindowByName("picture", mpFrame));
        const bool isShown = view != nullptr && view->IsShown();
        EXPECT_NE(Viewer().IsShown(), isShown);
        return isShown ? view->GetPicture() : wxString("card");
    }
    PictureView& View() { return Find<PictureView>(*mpFrame, "picture"); }
    void Click(const CardViewerSide& side) {
        const wxPoint middle(side.Rect.x + side.Rect.width / 2, side.Rect.y + side.Rect.height / 2);
        SendMouse(Viewer(), wxEVT_LEFT_DOWN, middle);
        SendMouse(Viewer(), wxEVT_LEFT_UP, middle);
        DrainEvents();
    }
};

TEST_F(StudyFrameMedia, APictureFillsTheWindowUntilAKeyOrTheNextCard) {
    Insert(MakeCard("[picture: good.png]\n[picture: sideways.jpg]", "[picture: good.svg]"));
    Insert(MakeCard("plain", "card"));
    Open();
    Command(ID_SHOW_PICTURE);
    EXPECT_EQ(Whole(), "good.png");
    Command(ID_SHOW_PICTURE);
    EXPECT_EQ(Whole(), "sideways.jpg");
    // The back has no pictures yet, so the next step is the card again.
    SendKeyDown(View(), WXK_SPACE);
    EXPECT_EQ(Whole(), "card");
    EXPECT_TRUE(Viewer().IsSecondCovered());

    // Before the back is shown a click shows it, as anywhere on the card.
    Click(Viewer().GetFirst());
    EXPECT_EQ(Whole(), "card");
    EXPECT_FALSE(Viewer().IsSecondCovered());
    Click(Viewer().GetSecond());
    EXPECT_EQ(Whole(), "good.svg");
    SendKeyDown(View(), WXK_LEFT);
    EXPECT_EQ(Whole(), "sideways.jpg");
    SendKeyDown(View(), WXK_ESCAPE);
    EXPECT_EQ(Whole(), "card");
    Keys({'5'});
    EXPECT_EQ(State(), "plain|");
    EXPECT_EQ(RuleOf(*mpFrame, ID_SHOW_PICTURE), "off");
    Command(ID_SHOW_PICTURE);
    EXPECT_EQ(Whole(), "card");
}

TEST_F(StudyFrameMedia, ASoundThatIsMissingIsToldAndStudyGoesOn) {
    Insert(MakeCard("[sound: none.ogg]", "back"));
    Open();
    EXPECT_EQ(StatusText(1), "This sound cannot be played.");
    EXPECT_TRUE(Viewer().GetFirst().Words.EndsWith(" none.ogg"));
    Keys({'4'});
    EXPECT_EQ(StatusText(1), "Score yourself");
    Command(ID_PLAY_SOUNDS, false);
    Keys({'1'});
    EXPECT_EQ(StatusText(1), "Try to remember");
    Command(ID_SPEAK_AGAIN);
    EXPECT_EQ(StatusText(1), "This sound cannot be played.");
}

TEST_F(StudyFrameMedia, AChangeOfTheStoreBringsTheCardBack) {
    Insert(MakeCard("[picture: good.png]", "back"));
    Open();
    Command(ID_SHOW_PICTURE);
    EXPECT_EQ(Whole(), "good.png");
    Query("DELETE FROM Cards");
    mDatabase.Notify();
    DrainEvents();
    EXPECT_EQ(State(), "message");
}

TEST_F(StudyFrameMedia, APictureThatComesLaterOrIsChangedIsShown) {
    Insert(MakeCard("[picture: late.png]", "back"));
    Open();
    ASSERT_EQ(Viewer().GetFirst().Pictures.size(), 1U);
    EXPECT_EQ(Viewer().GetFirst().Pictures[0].Natural.x, 0);
    const fs::path late = MediaFolder(StorePath()).GetPath() / "late.png";
    for (const char* const file : {"good.png", "sideways.jpg"}) {
        const fs::path aside = late.string() + "-new";
        fs::copy_file(std::string(VELOMIND_CORPUS) + "/" + file, aside);
        fs::rename(aside, late);
        CardPictures pictures([] {});
        pictures.SetStore(StorePath());
        mDatabase.Notify();
        EXPECT_EQ(Viewer().GetFirst().Pictures[0].Natural, pictures.FindSize(file));
    }
}

}  // namespace
