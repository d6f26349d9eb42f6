#include "files/windows/StoreFileChange.h"

#include <unistd.h>
#include <wx/filename.h>

#include <cerrno>

#include "files/windows/FakeStoreFileActions.h"
#include "support/GuiTest.h"

namespace {

struct StoreFileChangeTest : GuiStoreTest {
    StoreFileChangeTest() { Insert(MakeCard("front", "back")); }

    void Change(StoreFileChoice choice, const wxString& path) {
        mActions.Calls.clear();
        mObserver.Calls = 0;
        ChangeStoreFile(mActions, nullptr, mDatabase, choice, StorePath(), path);
    }
    wxString Path(const wxString& name) const { return mDirectory.Path(name); }
    // Asks the open store, not the file.
    int CountCards() {
        int32_t count = -1;
        mDatabase.CountAllCards(count);
        return count;
    }

    FakeStoreFileActions mActions;
    CountingObserver mObserver{mDatabase};
};

TEST_F(StoreFileChangeTest, NothingHappensToTheSameFileOrAgainstUnsavedEdits) {
    ASSERT_EQ(::link(StorePath().utf8_str(), Path("second.vlm").utf8_str()), 0);
    WriteBytes(Path("other.vlm"), "in the way, but nobody is asked");
    mActions.MayDiscard = false;
    const std::tuple<StoreFileChoice, const char*, const char*> cases[] = {
        {StoreFileChoice::kKeep, "other.vlm", ""},
        {StoreFileChoice::kMove, "store.vlm", ""},
        {StoreFileChoice::kMove, "./store.vlm", ""},
        {StoreFileChoice::kMove, "second.vlm", ""},
        {StoreFileChoice::kOpen, "store.vlm", ""},
        {StoreFileChoice::kMove, "other.vlm", "discard "},
        {StoreFileChoice::kCreate, "other.vlm", "discard "},
        {StoreFileChoice::kOpen, "other.vlm", "discard "}};
    for (const auto& [choice, name, calls] : cases) {
        Change(choice, Path(name));
        EXPECT_EQ(mActions.Calls, calls) << name;
    }
    EXPECT_EQ(mObserver.Calls, 0);
    EXPECT_EQ(CountCards(), 1);
}

// A yes to the first question is followed by another one where the file cannot be kept.
TEST_F(StoreFileChangeTest, AFileInTheWayGoesOnlyByAYes) {
    const wxString path = Path("other.vlm");
    const std::pair<int, std::vector<int>> rows[] = {{0, {wxID_NO}},
                                                     {0, {wxID_YES}},
                                                     {ENOSPC, {wxID_YES, wxID_NO}},
                                                     {ENOSPC, {wxID_YES, wxID_YES}}};
    for (const StoreFileChoice choice : {StoreFileChoice::kCreate, StoreFileChoice::kMove}) {
        const bool moves = choice == StoreFileChoice::kMove;
        for (const auto& [error, given] : rows) {
            Reopen();
            WriteBytes(path, "precious");
            mActions.BackupError = error;
            ModalAnswers answers;
            for (const int answer : given) {
                answers.Expect([answer](wxDialog& box) {
                    const auto& question = dynamic_cast<wxMessageDialog&>(box);
                    EXPECT_TRUE((question.GetMessageDialogStyle() & wxNO_DEFAULT) != 0);
                    return answer;
                });
            }
            Change(choice, path);
            EXPECT_EQ(answers.Dialogs[0].Title, moves ? "Move Store File" : "New Store File");
            EXPECT_TRUE(answers.Dialogs[0].Message.Contains(path + "\" already exists.  Do you"));
            EXPECT_EQ(answers.Dialogs.back().Message.Contains("could not be kept"), error != 0);
            const bool goes = given.back() == wxID_YES;
            EXPECT_EQ(ReadBytes(path) == "precious", !goes);
            EXPECT_EQ(mActions.Calls, wxString("discard ") +
                                          (given.size() > 1 || goes ? "backup:file " : "") +
                                          (!goes   ? ""
                                           : moves ? "backup open:other.vlm "
                                                   : "open:other.vlm:new "));
            EXPECT_EQ(mObserver.Calls, goes ? 1 : 0);
            EXPECT_EQ(CountCards(), moves || !goes ? 1 : 0);
            EXPECT_EQ(wxFileName::FileExists(StorePath()), !moves || !goes);
            if (goes && moves) {
                mDatabase.Close();
                WriteBytes(StorePath(), ReadBytes(path));
            }
        }
    }
}

TEST_F(StoreFileChangeTest, ABackupIsRestoredOrOpenedAsTheUserSays) {
    const wxString directory = GetBackupDirectory(ReadBackupSettings());
    const wxString backup =
        BackupPath(directory, StorePath(), wxDateTime::Now(), BackupCause::kDay);
    wxFileName::Mkdir(directory, wxS_DIR_DEFAULT, wxPATH_MKDIR_FULL);
    ASSERT_EQ(CopyOpenStore(mDatabase, backup), 0);
    const wxString name = wxFileName(backup).GetFullName();
    const std::tuple<int, wxString, int> cases[] = {
        {wxID_CANCEL, "", 2},
        {wxID_NO, "discard open:" + name + " ", 1},
        {wxID_YES, "discard backup open:store.vlm ", 1}};
    for (const auto& [answer, calls, cards] : cases) {
        Reopen();
        mDatabase.Execute("DELETE FROM Cards WHERE rowid > 1");
        Insert(MakeCard("second", "back"));
        ModalAnswers answers;
        answers.Expect(answer);
        Change(StoreFileChoice::kOpen, backup);
        EXPECT_TRUE(answers.Dialogs[0].Message.Contains("is a backup"));
        EXPECT_EQ(mActions.Calls, calls);
        EXPECT_EQ(CountCards(), cards);
    }
}

TEST_F(StoreFileChangeTest, AfterAFailureTheUserIsToldWhyAndTheOldStoreIsOpen) {
    WriteBytes(Path("text.vlm"), "no store at all, and long enough to be read as one");
    WriteBytes(Path("cut.vlm"), ReadBytes(StorePath()).substr(0, 5000));
    ASSERT_TRUE(wxFileName::Mkdir(Path("folder.vlm")));
    {
        QuietDatabase later;
        ASSERT_EQ(later.OpenQuietly(Path("later.vlm")), 0);
        ASSERT_EQ(later.Execute("UPDATE Globals SET Value='99'"), 0);
    }
    const std::tuple<StoreFileChoice, const char*, const char*, const char*> cases[] = {
        {StoreFileChoice::kOpen, "gone.vlm", "There is no such file.", ""},
        {StoreFileChoice::kOpen, "not/there.vlm", "There is no such folder.", ""},
        {StoreFileChoice::kOpen, "folder.vlm", "a folder or a device", ""},
        {StoreFileChoice::kOpen, "text.vlm", "This is no store file of Velomind",
         "discard open:text.vlm open:store.vlm "},
        {StoreFileChoice::kOpen, "cut.vlm", "The file is damaged.",
         "discard open:cut.vlm open:store.vlm "},
        {StoreFileChoice::kOpen, "later.vlm", "A newer version of Velomind",
         "discard open:later.vlm open:store.vlm "},
        {StoreFileChoice::kCreate, "not/there.vlm", "There is no such folder.",
         "discard open:there.vlm:new open:store.vlm "},
        {StoreFileChoice::kMove, "not/there.vlm",
         "Unable to move the store file (No such file or directory)",
         "discard backup open:store.vlm "}};
    for (const auto& [choice, name, reason, calls] : cases) {
        SCOPED_TRACE(name);
        ModalAnswers answers;
        answers.Expect(wxID_OK);
        Change(choice, Path(name));
        EXPECT_EQ(mActions.Calls, calls);
        ASSERT_EQ(answers.Dialogs.size(), 1U);
        EXPECT_THAT(answers.Dialogs[0].Message.utf8_string(), testing::HasSubstr(reason));
        EXPECT_TRUE(mDatabase.IsStoreFile(StorePath()));
        EXPECT_EQ(CountCards(), 1);
    }
}

}  // namespace
