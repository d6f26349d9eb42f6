#include "preferences/PreferencesDialog.h"

#include <wx/filename.h>
#include <wx/spinctrl.h>
#include <wx/utils.h>

#include <filesystem>

#include "base/Unicode.h"
#include "files/windows/FakeStoreFileActions.h"
#include "preferences/DayGroup.h"
#include "preferences/ExchangeGroup.h"
#include "preferences/StudyGroup.h"
#include "shell/ExchangeSettings.h"
#include "support/GuiTest.h"
#include "sync/Exchange.h"
#include "sync/SyncState.h"

namespace {

using Dialog = PreferencesDialog;

struct PreferencesDialogTest : GuiStoreTest {
    PreferencesDialogTest() {
        WriteBooleanSetting("EarlyIntroduction", true);
        OpenDialog();
    }

    // Opens the dialog anew, on what the settings hold by now.
    PreferencesDialog& OpenDialog() {
        mpDialog->Destroy();
        mpDialog = new PreferencesDialog(nullptr, mNotifier, mFiles);
        mpDialog->SetDatabase(&mDatabase);
        return *mpDialog;
    }
    void PressOk() {
        ModalAnswers answers;
        answers.ThenPress(wxID_OK);
        EXPECT_EQ(mpDialog->ShowModal(), wxID_OK);
    }

    Subject mNotifier;
    FakeStoreFileActions mFiles;
    PreferencesDialog* mpDialog = new PreferencesDialog(nullptr, mNotifier, mFiles);
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
        PressOk();
        EXPECT_EQ(ReadIntegerSetting("EarlyIntroductionInterval"), -7) << interval;
    }
    EXPECT_EQ(observer.Calls, 4);
    EXPECT_TRUE(ReadBooleanSetting("EarlyIntroduction"));
    EXPECT_FALSE(HasSetting("Font")) << "untouched, so it follows the desktop";
    EXPECT_EQ(ReadFontSetting("BrowseFont").GetPointSize(), 30);
    EXPECT_EQ(ReadColourSetting("FontColor"), wxColour(1, 2, 3));
    EXPECT_EQ(ReadColourSetting("StudyBgColor"), wxColour(1, 2, 3));
}

TEST_F(PreferencesDialogTest, AForgottenCardKeepsWhatIsChosen) {
    // What is stored, what is shown for it, and what is stored for the choice after that.
    const int32_t cases[][3] = {{0, 0, 25}, {25, 1, 50}, {33, 0, 25}};
    for (const auto& [stored, shown, written] : cases) {
        WriteIntegerSetting("RelearnShare", stored);
        PreferencesDialog& dialog = OpenDialog();
        auto& choice = Find<wxChoice>(dialog, StudyGroup::kRelearningId);
        EXPECT_EQ(choice.GetSelection(), shown);
        choice.SetSelection(shown + 1);
        PressOk();
        EXPECT_EQ(ReadIntegerSetting("RelearnShare"), written);
    }
}

TEST_F(PreferencesDialogTest, ALimitOfTheDayIsStoredOnceItIsSwitchedOn) {
    Find<wxSpinCtrl>(*mpDialog, DayGroup::kNewCardsCountId).SetValue(7);
    for (const bool on : {false, true, false}) {
        auto& box = Find<wxCheckBox>(*mpDialog, DayGroup::kNewCardsId);
        box.SetValue(on);
        Send(box, wxEVT_CHECKBOX);
        EXPECT_EQ(FindById(*mpDialog, DayGroup::kNewCardsCountId)->IsEnabled(), on);
        Choose(*mpDialog, DayGroup::kEnoughUnitId, on ? 1 : 0);
        PressOk();
        EXPECT_EQ(ReadIntegerSetting(kSettingNewCardsPerDay), on ? 7 : 0);
        EXPECT_EQ(ReadIntegerSetting(kSettingEnoughForToday), 0);
        EXPECT_EQ(ReadBooleanSetting(kSettingEnoughIsMinutes), on);
    }
}

TEST_F(PreferencesDialogTest, WhatFollowsTheDesktopIsNotStored) {
    const struct {
        int Id;
        const char* Key;
        const char* Stored;
    } cases[] = {{Dialog::ID_LIST_FONT, "BrowseFont", "Monospace 30"},
                 {Dialog::ID_STUDY_FONT, "Font", "Monospace 30"},
                 {Dialog::ID_STUDY_FONT_COLOR, "FontColor", "R001G002B003"},
                 {Dialog::ID_STUDY_COLOR, "StudyBgColor", "R001G002B003"}};
    for (const auto& one : cases) {
        SCOPED_TRACE(one.Key);
        // Whether the value is stored at first, and whether it shall follow the desktop: -1 leaves
        // the box alone.
        for (const auto& [stored, follow] :
             {std::pair(false, -1), {true, -1}, {true, 1}, {false, 0}}) {
            RemoveSetting(one.Key);
            if (stored) {
                WriteStringSetting(one.Key, one.Stored);
            }
            PreferencesDialog& dialog = OpenDialog();
            auto& box = Find<wxCheckBox>(*FindById(dialog, one.Id), AppearanceControl::kFollowId);
            EXPECT_EQ(box.GetValue(), !stored);
            if (follow >= 0) {
                box.SetValue(follow == 1);
                Send(box, wxEVT_CHECKBOX, follow);
            }
            PressOk();
            const bool isStored = follow < 0 ? stored : follow == 0;
            EXPECT_EQ(HasSetting(one.Key), isStored);
            if (stored && isStored) {
                EXPECT_EQ(ReadStringSetting(one.Key), one.Stored);
            }
        }
    }
}

// The form is in sight up to three quarters of the screen, and its long texts take the width of
// their group.
TEST_F(PreferencesDialogTest, TheFormFitsTheScreenAndItsTextsTheForm) {
    auto& form = *FindById(*mpDialog, Dialog::ID_INTERVAL)->GetParent();
    const int most = wxGetClientDisplayRect().height * 3 / 4;
    const wxSize size = mpDialog->GetClientSize();
    EXPECT_EQ(size.y, std::min(most, std::max(size.y, form.GetSizer()->CalcMin().y)));
    EXPECT_GE(size.x, form.GetSizer()->CalcMin().x);
    for (wxWindow* const child : form.GetChildren()) {
        const auto* const text = dynamic_cast<wxStaticText*>(child);
        if (text != nullptr) {
            const auto lines = static_cast<int>(text->GetLabelText().Freq('\n')) + 1;
            EXPECT_LT(text->GetSize().y, (lines + 1) * text->GetCharHeight()) << "an empty line";
        }
        if (text != nullptr && text->GetLabelText().Contains("\n")) {
            // A line ends where the next word would not fit.
            const wxString first = text->GetLabelText().BeforeFirst('\n') + " " +
                                   text->GetLabelText().AfterFirst('\n').BeforeFirst(' ');
            EXPECT_GT(text->GetTextExtent(first).x, text->GetSize().x - 10) << first;
        }
    }
}

TEST_F(PreferencesDialogTest, AFolderForOtherComputersIsOneThatServesForThat) {
    const TestDirectory other;
    const wxString good = wxFileName(other.Path("x")).GetPath();
    const wxString store = wxFileName(StorePath()).GetPath();
    const wxString link = other.Path("link");
    std::filesystem::create_directory_symlink(ToUtf8(store), ToUtf8(link));
    const char* const lies = "The store file must not lie";
    const struct {
        wxString Folder;
        const char* Refusal;
        wxString Stored = wxString();
        // Where the store is to move to.
        wxString Target = wxString();
    } cases[] = {{good, "", good},
                 {"  " + good + " ", "", good},
                 {"~", "", wxGetHomeDir()},
                 {"~/none", "There is no folder"},
                 {good + "/none", "There is no folder"},
                 {"relative", "There is no folder"},
                 {store, lies},
                 {store + "/", lies},
                 {link, lies},
                 {good, lies, "", other.Path("moved.vlm")},
                 {wxString(), "", ""}};
    for (const auto& c : cases) {
        const bool isRefused = *c.Refusal != '\0';
        WriteExchangeSetUp(StorePath(), {"/stored", wxString()});
        PreferencesDialog& dialog = OpenDialog();
        auto& folder = Find<wxTextCtrl>(dialog, ExchangeGroup::kFolderId);
        EXPECT_EQ(folder.GetValue(), "/stored");
        folder.SetValue(c.Folder);
        Find<wxTextCtrl>(dialog, ExchangeGroup::kNameId).SetValue("desk");
        if (!c.Target.empty()) {
            Find<wxChoice>(dialog, Dialog::ID_STORE_CHOICE).SetSelection(1);
            Find<wxTextCtrl>(dialog, Dialog::ID_NEW_PATH).SetValue(c.Target);
        }
        ModalAnswers answers;
        answers.Then([&](wxDialog& shown) {
            if (isRefused) {
                answers.Expect(wxID_OK);
            }
            Send(*FindById(shown, wxID_OK));
            if (isRefused) {
                EXPECT_TRUE(shown.IsModal()) << c.Folder;
                EXPECT_TRUE(answers.Dialogs.back().Message.StartsWith(c.Refusal)) << c.Folder;
                shown.EndModal(wxID_CANCEL);
            }
        });
        dialog.ShowModal();
        const ExchangeSetUp stored = ReadExchangeSetUp(StorePath());
        EXPECT_EQ(stored.Folder, isRefused ? wxString("/stored") : c.Stored);
        EXPECT_EQ(stored.Name == "desk", !isRefused);
        EXPECT_TRUE(ReadExchangeSetUp("/another/store.vlm").Folder.empty());
    }
}

TEST_F(PreferencesDialogTest, WhoLeavesTheExchangeDoesSoWithOk) {
    for (const bool isMeant : {false, true}) {
        WriteExchangeSetUp(StorePath(), {"/stored", "desk"});
        SyncState state;
        ASSERT_TRUE(state.Open(StorePath()));
        state.SaveMachine({7, "laptop", 1700000000000, 0, {}});
        PreferencesDialog& dialog = OpenDialog();
        EXPECT_TRUE(Find<wxChoice>(dialog, ExchangeGroup::kOthersId)
                        .GetString(0)
                        .StartsWith("laptop: 2023-11-1"));
        ModalAnswers answers;
        answers.Then([&](wxDialog& shown) {
            answers.Expect(isMeant ? wxID_YES : wxID_NO);
            Send(*FindById(shown, ExchangeGroup::kLeaveId));
            EXPECT_TRUE(TakesPart(StorePath()));
            Send(*FindById(shown, wxID_OK));
        });
        dialog.ShowModal();
        EXPECT_EQ(TakesPart(StorePath()), !isMeant);
        EXPECT_EQ(ReadExchangeSetUp(StorePath()).Folder.empty(), isMeant);
    }
}

}  // namespace
