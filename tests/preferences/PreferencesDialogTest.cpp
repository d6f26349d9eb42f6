#include "preferences/PreferencesDialog.h"

#include <gmock/gmock.h>
#include <wx/choice.h>
#include <wx/fontdlg.h>
#include <wx/textctrl.h>

#include <vector>

#include "preferences/ColorControl.h"
#include "preferences/FontControl.h"
#include "preferences/StoreFileChange.h"
#include "shell/Settings.h"
#include "support/GuiTest.h"

namespace {

using ::testing::StartsWith;

enum : int {
    ID_LIST_FONT = 10004,
    ID_STUDY_COLOR = 10005,
    ID_INTERVAL = 10003,
    ID_STUDY_FONT_COLOR = 10054,
    ID_DEFAULT = 10006,
    ID_FONT_NAME = 10047,
    ID_CHANGE_FONT = 10051,
    ID_SWATCH = 10062,
    ID_CHANGE_COLOR = 10064,
    ID_STORE_PATH = 10069,
    ID_BROWSE = 10117,
    ID_STORE_CHOICE = 10123,
    ID_NEW_PATH = 10124,
    ID_INTRODUCTION = 10149
};

class FileDialogs : public StoreFileActions {
  public:
    wxString GetDefaultStorePath() override { return "/default.vlm"; }
    bool ChooseToOpen(wxWindow*, wxString& path) override {
        path = "/opened.vlm";
        return true;
    }
    bool ChooseToSave(wxWindow*, const wxString& title, wxString& path) override {
        path = title;
        return true;
    }
    bool DiscardEdits(wxWindow*) override { return false; }
    void OpenStoreFile(wxWindow*, Database&, const wxString&, bool) override {}
};

class SettingsWatcher : public Observer {
  public:
    void Update(Subject*) override {
        Intervals.push_back(ReadIntegerSetting("EarlyIntroductionInterval"));
    }
    std::vector<int32_t> Intervals;
};

class PreferencesDialogTest : public GuiStoreTest {
  protected:
    PreferencesDialogTest() : mAttachment(&mNotifier, &mWatcher) {
        WriteStringSetting("DatabasePath", "/cards.vlm");
    }

    PreferencesDialog& Make() {
        auto* const dialog = new PreferencesDialog(nullptr, mNotifier, mFiles);
        dialog->SetDatabase(&mDatabase);
        return *dialog;
    }
    template <typename Control>
    static Control& Find(wxWindow& dialog, int id) {
        return dynamic_cast<Control&>(*FindById(dialog, id));
    }
    static void Choose(wxWindow& dialog, int id, int selection) {
        auto& choice = Find<wxChoice>(dialog, id);
        choice.SetSelection(selection);
        wxCommandEvent event(wxEVT_CHOICE, id);
        event.SetEventObject(&choice);
        event.SetInt(selection);
        choice.ProcessWindowEvent(event);
    }
    static void Press(wxWindow& window, int id) {
        wxCommandEvent event(wxEVT_BUTTON, id);
        FindById(window, id)->ProcessWindowEvent(event);
    }
    static std::string Text(wxWindow& dialog, int id) {
        return Find<wxTextCtrl>(dialog, id).GetValue().utf8_string();
    }
    // Runs the dialog and presses OK once it is up; gives its result.
    static int PressOk(wxDialog& dialog) {
        dialog.CallAfter([&dialog] { Press(dialog, wxID_OK); });
        return dialog.ShowModal();
    }
    static std::string Description(wxWindow& dialog) {
        for (wxWindow* const window : FindById(dialog, ID_INTERVAL)->GetParent()->GetChildren()) {
            const wxString text = window->GetLabel();
            if (text.StartsWith("New cards")) {
                return text.utf8_string();
            }
        }
        return std::string();
    }

    Subject mNotifier;
    SettingsWatcher mWatcher;
    SubjectAttachment mAttachment;
    FileDialogs mFiles;
};

TEST_F(PreferencesDialogTest, OpensOnTheSettingsWithTheFirstDescription) {
    WriteBooleanSetting("EarlyIntroduction", true);
    PreferencesDialog& dialog = Make();
    EXPECT_EQ(Find<wxChoice>(dialog, ID_INTRODUCTION).GetSelection(), 1);
    EXPECT_TRUE(FindById(dialog, ID_INTERVAL)->IsEnabled());
    EXPECT_EQ(Text(dialog, ID_INTERVAL), "180");
    EXPECT_EQ(Text(dialog, ID_STORE_PATH), "/cards.vlm");
    EXPECT_THAT(Description(dialog), StartsWith("New cards are only introduced"));
    Choose(dialog, ID_INTRODUCTION, 1);
    EXPECT_THAT(Description(dialog), StartsWith("New cards are introduced during"));
    Choose(dialog, ID_INTRODUCTION, 0);
    EXPECT_FALSE(FindById(dialog, ID_INTERVAL)->IsEnabled());
}

TEST_F(PreferencesDialogTest, TheStoreChoiceEnablesThePathAndSaysWhatBrowsingIsFor) {
    PreferencesDialog& dialog = Make();
    const char* const browsed[] = {"/default.vlm", "Move Store File", "New Store File",
                                   "/opened.vlm"};
    for (int selection = 3; selection >= 0; --selection) {
        Choose(dialog, ID_STORE_CHOICE, selection);
        for (const int id : {int{ID_NEW_PATH}, int{ID_DEFAULT}, int{ID_BROWSE}}) {
            EXPECT_EQ(FindById(dialog, id)->IsEnabled(), selection != 0) << id;
        }
        Press(dialog, ID_DEFAULT);
        EXPECT_EQ(Text(dialog, ID_NEW_PATH), "/default.vlm");
        Press(dialog, ID_BROWSE);
        EXPECT_EQ(Text(dialog, ID_NEW_PATH), browsed[selection]);
    }
}

TEST_F(PreferencesDialogTest, OkWritesTheSettingsAndTellsTheWindows) {
    PreferencesDialog& dialog = Make();
    Choose(dialog, ID_INTRODUCTION, 1);
    Find<wxTextCtrl>(dialog, ID_INTERVAL).ChangeValue("-7");
    ModalAnswers answers;
    answers.Expect([](wxDialog&) { return wxID_NONE; });
    EXPECT_EQ(PressOk(dialog), wxID_OK);
    EXPECT_TRUE(ReadBooleanSetting("EarlyIntroduction"));
    EXPECT_EQ(mWatcher.Intervals, std::vector<int32_t>{-7});
    for (const char* const text : {"", "12 seconds", "99999999999"}) {
        Find<wxTextCtrl>(dialog, ID_INTERVAL).ChangeValue(text);
        answers.Expect([](wxDialog&) { return wxID_NONE; });
        PressOk(dialog);
        EXPECT_EQ(ReadIntegerSetting("EarlyIntroductionInterval"), -7) << text;
    }
}

TEST_F(PreferencesDialogTest, FontAndColourAreTakenFromTheirDialogs) {
    PreferencesDialog& dialog = Make();
    auto& control = Find<FontControl>(dialog, ID_LIST_FONT);
    const int shownSize = FindById(control, ID_FONT_NAME)->GetFont().GetPointSize();
    ModalAnswers answers;
    const auto chooseFont = [](wxDialog& fonts) {
        auto& data = dynamic_cast<wxFontDialog&>(fonts).GetFontData();
        data.SetChosenFont(wxFont(wxFontInfo(30).FaceName("Monospace")));
        return wxID_OK;
    };
    answers.Expect(chooseFont);
    Press(control, ID_CHANGE_FONT);
    EXPECT_EQ(Text(control, ID_FONT_NAME), "30pt, Monospace");
    EXPECT_EQ(FindById(control, ID_FONT_NAME)->GetFont().GetPointSize(), shownSize);

    for (const int id : {int{ID_STUDY_COLOR}, int{ID_STUDY_FONT_COLOR}}) {
        auto& colour = Find<ColorControl>(dialog, id);
        wxColourData chosen;
        chosen.SetColour(wxColour(1, 2, 3));
        colour.SetColourData(chosen);
        answers.Expect(wxID_CANCEL);
        Press(colour, ID_CHANGE_COLOR);
        EXPECT_EQ(FindById(colour, ID_SWATCH)->GetBackgroundColour(), wxColour(1, 2, 3));
    }

    EXPECT_NE(ReadColourSetting("FontColor"), wxColour(1, 2, 3));
    answers.Expect([](wxDialog&) { return wxID_NONE; });
    PressOk(dialog);
    EXPECT_EQ(ReadFontSetting("BrowseFont").GetPointSize(), 30);
    EXPECT_NE(ReadFontSetting("Font").GetPointSize(), 30);
    EXPECT_EQ(ReadColourSetting("FontColor"), wxColour(1, 2, 3));
    EXPECT_EQ(ReadColourSetting("StudyBgColor"), wxColour(1, 2, 3));
}

}  // namespace
