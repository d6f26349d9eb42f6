#include "edit/MediaStrip.h"

#include <wx/clipbrd.h>

#include "support/GuiTest.h"

namespace {

struct MediaStripTest : GuiTest {
    MediaStripTest() {
        ShowAndWait(mFrame);
        mStrip.SetStore(mDirectory.Path("a.vlm"));
    }
    static wxString Corpus(const char* name) { return wxString(VELOMIND_CORPUS) + "/" + name; }
    bool Add(const char* name) {
        wxArrayString paths;
        paths.push_back(Corpus(name));
        return mStrip.AddFiles(paths);
    }

    TestDirectory mDirectory;
    wxFrame& mFrame = *new wxFrame(nullptr, wxID_ANY, "Editor");
    wxPanel& mPanel = *new wxPanel(&mFrame);
    wxTextCtrl& mField = *new wxTextCtrl(&mPanel, wxID_ANY, wxString(), wxDefaultPosition,
                                         wxSize(200, 80), wxTE_MULTILINE);
    MediaStrip& mStrip = *new MediaStrip(&mPanel, mField);
};

TEST_F(MediaStripTest, AFileBecomesALineBelowTheOneWithTheCursor) {
    const struct {
        const char* Before;
        long Cursor;
        const char* After;
    } rows[] = {{"", 0, "[picture: good.png]"},
                {"bird", 2, "bird\n[picture: good.png]"},
                {"bird\nmore", 1, "bird\n[picture: good.png]\nmore"},
                {"bird\n", 5, "bird\n[picture: good.png]"}};
    for (const auto& row : rows) {
        mField.ChangeValue(row.Before);
        mField.SetInsertionPoint(row.Cursor);
        EXPECT_TRUE(Add("good.png"));
        EXPECT_EQ(mField.GetValue(), row.After);
    }
    EXPECT_TRUE(mStrip.IsShown());
    EXPECT_EQ(mStrip.GetChildren().size(), 1U);
    mField.SetValue("bird");
    EXPECT_FALSE(mStrip.IsShown());
    // The line is gone and the file stays.
    EXPECT_TRUE(MediaFolder(mDirectory.Path("a.vlm")).Open("good.png").IsOpen());
}

TEST_F(MediaStripTest, WhatIsNoPictureIsToldAndAPastedOneIsTaken) {
    ModalAnswers answers;
    answers.Expect({wxID_OK, wxID_OK});
    EXPECT_FALSE(Add("text.png"));
    EXPECT_FALSE(Add("huge.png"));
    EXPECT_TRUE(mField.IsEmpty());
    EXPECT_TRUE(Add("good.ogg"));
    EXPECT_EQ(mField.GetValue(), "[sound: good.ogg]");

    wxImage image(3, 2);
    {
        const wxClipboardLocker lock;
        ASSERT_TRUE(wxTheClipboard->SetData(new wxBitmapDataObject(wxBitmap(image))));
    }
    mField.Paste();
    EXPECT_TRUE(WaitFor([this] { return mField.GetNumberOfLines() == 2; }));
    EXPECT_EQ(mField.GetValue(), "[sound: good.ogg]\n[picture: picture.png]");
    EXPECT_EQ(mStrip.GetChildren().size(), 2U);
    const wxClipboardLocker lock;
    wxTheClipboard->Clear();
}

}  // namespace
