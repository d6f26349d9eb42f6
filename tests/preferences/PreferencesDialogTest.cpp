#include "preferences/PreferencesDialog.h"

#include "files/windows/FakeStoreFileActions.h"
#include "support/GuiTest.h"

namespace {

using Dialog = PreferencesDialog;

struct PreferencesDialogTest : GuiStoreTest {
    PreferencesDialogTest() {
        WriteBooleanSetting("EarlyIntroduction", true);
        mpDialog = new PreferencesDialog(nullptr, mNotifier, mFiles);
        mpDialog->SetDatabase(&mDatabase);
    }

    Subject mNotifier;
    FakeStoreFileActions mFiles;
    PreferencesDialog* mpDialog = nullptr;
};

TEST_F(PreferencesDialogTest, TheStoreIsTheOneThatIsOpenWhateverTheSettingsSay) {
    for (const char* const stored : {"", "/another/store.vlm"}) {
        WriteStringSetting("DatabasePath", stored);
        mpDialog->SetDatabase(&mDatabase);
        EXPECT_TRUE(
            mDatabase.IsStoreFile(Find<wxTextCtrl>(*mpDialog, Dialog::ID_STORE_PATH).GetValue()));
        EXPECT_TRUE(
            mDatabase.IsStoreFile(Find<wxTextCtrl>(*mpDialog, Dialog::ID_NEW_PATH).GetValue()));
    }
}

TEST_F(PreferencesDialogTest, TheFormIsInSightUpToThreeQuartersOfTheScreen) {
    auto& form = *FindById(*mpDialog, Dialog::ID_INTERVAL)->GetParent();
    const int needed = form.GetSizer()->CalcMin().y;
    const int screen = wxGetClientDisplayRect().height;
    const int height = mpDialog->GetClientSize().y;
    EXPECT_LE(height, screen * 3 / 4);
    EXPECT_TRUE(height == screen * 3 / 4 || height >= needed) << height << " " << needed;
    EXPECT_GE(mpDialog->GetClientSize().x, form.GetSizer()->CalcMin().x);
}

TEST_F(PreferencesDialogTest, OkWritesWhatMakesSenseAndTellsTheWindows) {
    CountingObserver observer(mNotifier);
    wxFontData font;
    font.SetChosenFont(wxFont(wxFontInfo(30).FaceName("Monospace")));
    Find<FontControl>(*mpDialog, Dialog::ID_LIST_FONT).SetFontData(font);
    EXPECT_EQ(Find<wxTextCtrl>(*mpDialog, FontControl::kFontNameId).GetValue(), "30pt, Monospace");
    EXPECT_LT(FindById(*mpDialog, FontControl::kFontNameId)->GetFont().GetPointSize(), 30);
    wxColourData colour;
    colour.SetColour(wxColour(1, 2, 3));
    Find<ColorControl>(*mpDialog, Dialog::ID_STUDY_COLOR).SetColourData(colour);
    Find<ColorControl>(*mpDialog, Dialog::ID_STUDY_FONT_COLOR).SetColourData(colour);
    for (const char* const interval : {"-7", "", "12 seconds", "99999999999"}) {
        Find<wxTextCtrl>(*mpDialog, Dialog::ID_INTERVAL).ChangeValue(interval);
        ModalAnswers answers;
        answers.ThenPress(wxID_OK);
        EXPECT_EQ(mpDialog->ShowModal(), wxID_OK);
        EXPECT_EQ(ReadIntegerSetting("EarlyIntroductionInterval"), -7) << interval;
    }
    EXPECT_EQ(observer.Calls, 4);
    EXPECT_TRUE(ReadBooleanSetting("EarlyIntroduction"));
    EXPECT_EQ(ReadFontSetting("BrowseFont").GetPointSize(), 30);
    EXPECT_LT(ReadFontSetting("Font").GetPointSize(), 30);
    EXPECT_EQ(ReadColourSetting("FontColor"), wxColour(1, 2, 3));
    EXPECT_EQ(ReadColourSetting("StudyBgColor"), wxColour(1, 2, 3));
}

}  // namespace
