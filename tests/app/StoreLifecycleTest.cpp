#include "files/StoreBackup.h"
#include "files/windows/StoreOpening.h"

#include <wx/filename.h>

#include "support/GuiTest.h"

namespace {

constexpr char kNoStore[] = "This is no store at all, and long enough to be read as one.";

struct StoreLifecycleTest : GuiTest {
    bool Open(const wxString& path, bool mustExist) {
        return TryOpenStoreFile(nullptr, mDatabase, path, mustExist);
    }

    wxString Stored() const { return ReadStringSetting("DatabasePath"); }
    wxString Path(const wxString& name) const { return mFiles.Path(name); }

    TestDirectory mFiles;
    RecordingReport mReport;
    Database mDatabase{mReport};
};

TEST_F(StoreLifecycleTest, RetryMakesNoFileAndOpenTakesAnother) {
    const wxString gone = Path("gone.vlm");
    ModalAnswers answers;
    answers.Then([gone](wxDialog& dialog) {
        EXPECT_EQ(Find<wxTextCtrl>(dialog, DatabaseOpenFailed::ID_PATH).GetValue(), gone);
        WriteBytes(gone, "");
        Send(*FindById(dialog, DatabaseOpenFailed::ID_RETRY));
    });
    // The wait while the file is brought to the present schema.
    answers.Expect(wxID_OK);
    EXPECT_TRUE(Open(gone, true));
    EXPECT_EQ(Stored(), gone);
    mDatabase.Close();

    const wxString missing = Path("missing.vlm");
    const auto isSettled = [](const wxDialog& dialog, const wxPoint& place) {
        return WaitFor([&] { return dialog.GetScreenPosition() == place; });
    };
    answers.Then([&](wxDialog& dialog) {
        dialog.Move(200, 300);
        EXPECT_TRUE(isSettled(dialog, wxPoint(200, 300)));
        Send(*FindById(dialog, DatabaseOpenFailed::ID_RETRY));
    });
    answers.Then([&](wxDialog& dialog) {
        EXPECT_TRUE(isSettled(dialog, wxPoint(200, 300))) << "a failed try does not move it";
        Send(*FindById(dialog, DatabaseOpenFailed::ID_OPEN));
    });
    answers.ThenChoose(gone);
    EXPECT_TRUE(Open(missing, true));
    EXPECT_FALSE(wxFileName::FileExists(missing));
    EXPECT_EQ(Stored(), gone);
}

TEST_F(StoreLifecycleTest, NewReplacesAFileThatIsInTheWay) {
    const wxString path = Path("bad.vlm");
    WriteBytes(path, kNoStore);
    // The backup cannot be made at first.
    WriteStringSetting(kSettingBackupDirectory, path + "/none");
    ModalAnswers answers;
    const auto pressNew = [path](wxDialog& dialog) {
        EXPECT_EQ(ReadBytes(path), kNoStore);
        wxWindow* const recovery = dialog.GetParent();
        recovery->CallAfter([recovery] { Send(*FindById(*recovery, DatabaseOpenFailed::ID_NEW)); });
    };
    answers.ThenPress(DatabaseOpenFailed::ID_NEW);
    answers.Expect([&](wxDialog& dialog) {
        // Cancelled, so that the recovery dialog stays and the file too.
        EXPECT_EQ(dynamic_cast<wxFileDialog&>(dialog).GetDirectory(), wxPathOnly(path));
        pressNew(dialog);
        return wxID_CANCEL;
    });
    answers.ThenChoose(path);
    answers.Expect([&](wxDialog& box) {
        const auto& question = dynamic_cast<wxMessageDialog&>(box);
        EXPECT_TRUE((question.GetMessageDialogStyle() & wxNO_DEFAULT) != 0);
        EXPECT_TRUE(question.GetMessage().Contains("could not be kept"));
        WriteStringSetting(kSettingBackupDirectory, wxString());
        pressNew(box);
        return wxID_NO;
    });
    answers.ThenChoose(path);
    EXPECT_TRUE(Open(path, true));
    EXPECT_TRUE(mDatabase.IsEmpty());
    EXPECT_EQ(Stored(), path);
    const std::vector<StoreBackup> kept = ListBackups(GetBackupDirectory(), path);
    ASSERT_EQ(kept.size(), 1U);
    EXPECT_EQ(ReadBytes(kept[0].Path), kNoStore);
}

// The reason, and the button that most likely helps and has the focus.
TEST_F(StoreLifecycleTest, TheRecoveryDialogTellsWhyAndAdvises) {
    const wxString cut = Path("cut.vlm");
    ASSERT_TRUE(Open(Path("whole.vlm"), false));
    mDatabase.Close();
    WriteBytes(cut, ReadBytes(Path("whole.vlm")).substr(0, 5000));
    WriteBytes(Path("text.vlm"), kNoStore);
    const wxString kept = Path("kept.vlm");
    WriteBytes(kept, ReadBytes(cut));
    const wxString backups = GetBackupDirectory();
    ASSERT_TRUE(wxFileName::Mkdir(backups, wxS_DIR_DEFAULT, wxPATH_MKDIR_FULL));
    WriteBytes(backups + "/kept.20261125T093000Z.import.vlm", ReadBytes(Path("whole.vlm")));
    const std::tuple<wxString, const char*, int> cases[] = {
        {Path("gone.vlm"), "There is no such file.", DatabaseOpenFailed::ID_OPEN},
        {Path("not/there.vlm"), "There is no such folder.", DatabaseOpenFailed::ID_RETRY},
        {Path("text.vlm"), "This is no store file", DatabaseOpenFailed::ID_OPEN},
        {cut, "The file is damaged.", DatabaseOpenFailed::ID_REPAIR},
        {kept, "The file is damaged.", DatabaseOpenFailed::ID_RESTORE_BACKUP}};
    for (const auto& [path, reason, advised] : cases) {
        SCOPED_TRACE(path.utf8_string());
        ModalAnswers answers;
        answers.Then([reason = reason, advised = advised](wxDialog& dialog) {
            const wxString text = FindById(dialog, DatabaseOpenFailed::ID_REASON)->GetLabel();
            EXPECT_TRUE(text.StartsWith(reason)) << text;
            EXPECT_TRUE(WaitFor([&] { return FindById(dialog, advised)->HasFocus(); }));
            EXPECT_EQ(dialog.GetDefaultItem(), FindById(dialog, advised));
            Send(*FindById(dialog, DatabaseOpenFailed::ID_EXIT));
        });
        EXPECT_FALSE(Open(path, true));
    }
}

}  // namespace
