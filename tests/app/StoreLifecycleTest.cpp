#include "app/StoreLifecycle.h"

#include <wx/filedlg.h>
#include <wx/filename.h>
#include <wx/textctrl.h>
#include <wx/utils.h>

#include <functional>

#include "shell/Settings.h"
#include "support/GuiTest.h"

namespace {

enum : int { ID_EXIT = 10000, ID_RETRY = 10068, ID_OPEN = 10070, ID_NEW = 10071, ID_PATH = 10121 };

constexpr char kNoStore[] = "This is no store at all, and long enough to be read as one.";

class StoreLifecycleTest : public GuiTest {
  protected:
    static void PressLater(wxWindow& dialog, int id) {
        dialog.CallAfter([id, &dialog] {
            wxCommandEvent press(wxEVT_BUTTON, id);
            dialog.ProcessWindowEvent(press);
        });
    }

    // Looks at the recovery dialog and presses a button on it once it is on the screen.
    static std::function<int(wxDialog&)> Press(int id, const wxString& shownPath) {
        return [id, shownPath](wxDialog& dialog) {
            EXPECT_EQ(dynamic_cast<wxTextCtrl*>(FindById(dialog, ID_PATH))->GetValue(), shownPath);
            PressLater(dialog, id);
            return wxID_NONE;
        };
    }

    // Answers a file dialog, which takes its time to look into the directory.
    static std::function<int(wxDialog&)> Choose(const wxString& path) {
        return [path](wxDialog& dialog) {
            auto& chooser = dynamic_cast<wxFileDialog&>(dialog);
            chooser.SetPath(path);
            EXPECT_TRUE(WaitFor([&] { return chooser.GetPath() == path; }));
            return wxID_OK;
        };
    }

    bool Open(const wxString& path, bool mustExist) {
        return TryOpenStoreFile(nullptr, mDatabase, path, mustExist);
    }

    wxString Stored() const { return ReadStringSetting("DatabasePath"); }
    wxString Path(const wxString& name) const { return mFiles.Path(name); }

    TemporaryDirectory mFiles;
    RecordingReport mReport;
    Database mDatabase{mReport};
};

TEST_F(StoreLifecycleTest, TheFirstStartMakesTheDefaultFileAndItsDirectory) {
    wxString before;
    wxGetEnv("HOME", &before);
    wxSetEnv("HOME", Path("not/there"));
    EXPECT_TRUE(OpenAtStart(mReport)->IsOpen());
    wxSetEnv("HOME", before);
    EXPECT_TRUE(wxFileName::FileExists(Path("not/there/FlashCards2.vlm")));
    EXPECT_EQ(Stored(), Path("not/there/FlashCards2.vlm"));
    // A stored directory stands for the file in it.
    WriteStringSetting("DatabasePath", Path("not/there"));
    EXPECT_TRUE(OpenAtStart(mReport)->IsOpen());
    EXPECT_EQ(Stored(), Path("not/there/FlashCards2.vlm"));
}

TEST_F(StoreLifecycleTest, RetryMakesNoFileAndOpenTakesAnother) {
    const wxString gone = Path("gone.vlm");
    ModalAnswers answers;
    answers.Expect([gone](wxDialog& dialog) {
        WriteBytes(gone, "");
        return Press(ID_RETRY, gone)(dialog);
    });
    // The wait while the file is brought to the present schema.
    answers.Expect(wxID_OK);
    EXPECT_TRUE(Open(gone, true));
    EXPECT_EQ(Stored(), gone);
    mDatabase.Close();

    const wxString missing = Path("missing.vlm");
    answers.Expect(Press(ID_RETRY, missing));
    answers.Expect(Press(ID_OPEN, missing));
    answers.Expect(Choose(gone));
    EXPECT_TRUE(Open(missing, true));
    EXPECT_FALSE(wxFileName::FileExists(missing));
    EXPECT_EQ(Stored(), gone);
}

TEST_F(StoreLifecycleTest, NewReplacesAFileThatIsInTheWay) {
    const wxString path = Path("bad.vlm");
    WriteBytes(path, kNoStore);
    ModalAnswers answers;
    answers.Expect(Press(ID_NEW, path));
    answers.Expect([path](wxDialog& dialog) {
        // Cancelled, so that the recovery dialog stays and the file too.
        EXPECT_EQ(ReadBytes(path), kNoStore);
        PressLater(*dialog.GetParent(), ID_NEW);
        return wxID_CANCEL;
    });
    answers.Expect(Choose(path));
    answers.Expect(wxID_OK);
    EXPECT_TRUE(Open(path, true));
    EXPECT_TRUE(mDatabase.IsEmpty());
    EXPECT_EQ(Stored(), path);
}

TEST_F(StoreLifecycleTest, ExitAndTheTitleBarGiveUpAndKeepTheChoice) {
    WriteStringSetting("DatabasePath", "/kept");
    ModalAnswers answers;
    answers.Expect(Press(ID_EXIT, wxString()));
    EXPECT_FALSE(Open(wxString(), false));
    answers.Expect([](wxDialog& dialog) {
        dialog.CallAfter([&dialog] { dialog.Close(); });
        return wxID_NONE;
    });
    EXPECT_FALSE(Open("file:store.vlm", false));
    EXPECT_FALSE(mDatabase.IsOpen());
    EXPECT_EQ(Stored(), "/kept");
}

TEST_F(StoreLifecycleTest, ARelativePathIsStoredInFull) {
    const wxString before = wxGetCwd();
    wxSetWorkingDirectory(mFiles.Path(wxString()));
    EXPECT_TRUE(Open("mine.vlm", false));
    wxSetWorkingDirectory(before);
    EXPECT_EQ(Stored(), Path("mine.vlm"));
}

}  // namespace
