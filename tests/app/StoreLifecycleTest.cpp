#include "app/StoreLifecycle.h"

#include <wx/filename.h>
#include <wx/log.h>

#include <algorithm>

#include "support/GuiTest.h"

namespace {

enum : int { ID_RETRY = 10068, ID_OPEN = 10070, ID_NEW = 10071, ID_PATH = 10121 };

constexpr char kNoStore[] = "This is no store at all, and long enough to be read as one.";

struct StoreLifecycleTest : GuiStoreTest {
    StoreLifecycleTest() { mDatabase.Close(); }

    bool Open(const wxString& path, bool mustExist) {
        return TryOpenStoreFile(nullptr, mDatabase, path, mustExist);
    }

    wxString Stored() const { return ReadStringSetting("DatabasePath"); }
    wxString Path(const wxString& name) const { return mDirectory.Path(name); }
};

TEST_F(StoreLifecycleTest, TheFirstStartMakesTheDefaultFileAndItsDirectory) {
    wxString before;
    wxGetEnv("HOME", &before);
    wxSetEnv("HOME", Path("not/there"));
    // A stored directory stands for the file in it.
    for (const wxString& stored : {wxString(), Path("not/there")}) {
        WriteStringSetting("DatabasePath", stored);
        EXPECT_TRUE(OpenAtStart(mReport)->IsOpen());
        EXPECT_EQ(Stored(), Path("not/there/FlashCards2.vlm"));
    }
    wxSetEnv("HOME", before);
    EXPECT_TRUE(wxFileName::FileExists(Path("not/there/FlashCards2.vlm")));
}

TEST_F(StoreLifecycleTest, RetryMakesNoFileAndOpenTakesAnother) {
    const wxString gone = Path("gone.vlm");
    ModalAnswers answers;
    answers.Then([gone](wxDialog& dialog) {
        EXPECT_EQ(Find<wxTextCtrl>(dialog, ID_PATH).GetValue(), gone);
        WriteBytes(gone, "");
        Send(*FindById(dialog, ID_RETRY));
    });
    // The wait while the file is brought to the present schema.
    answers.Expect(wxID_OK);
    EXPECT_TRUE(Open(gone, true));
    EXPECT_EQ(Stored(), gone);
    mDatabase.Close();

    const wxString missing = Path("missing.vlm");
    answers.ThenPress(ID_RETRY);
    answers.ThenPress(ID_OPEN);
    answers.ThenChoose(gone);
    EXPECT_TRUE(Open(missing, true));
    EXPECT_FALSE(wxFileName::FileExists(missing));
    EXPECT_EQ(Stored(), gone);
}

TEST_F(StoreLifecycleTest, NewReplacesAFileThatIsInTheWay) {
    const wxString path = Path("bad.vlm");
    WriteBytes(path, kNoStore);
    ModalAnswers answers;
    answers.ThenPress(ID_NEW);
    answers.Expect([path](wxDialog& dialog) {
        // Cancelled, so that the recovery dialog stays and the file too.
        EXPECT_EQ(ReadBytes(path), kNoStore);
        wxWindow* const recovery = dialog.GetParent();
        recovery->CallAfter([recovery] { Send(*FindById(*recovery, ID_NEW)); });
        return wxID_CANCEL;
    });
    answers.ThenChoose(path);
    answers.Expect(wxID_OK);
    EXPECT_TRUE(Open(path, true));
    EXPECT_TRUE(mDatabase.IsEmpty());
    EXPECT_EQ(Stored(), path);
}

TEST_F(StoreLifecycleTest, TheTitleBarGivesUpAndKeepsTheChoice) {
    WriteStringSetting("DatabasePath", "/kept");
    ModalAnswers answers;
    answers.Then([](wxDialog& dialog) { dialog.Close(); });
    EXPECT_FALSE(Open("file:store.vlm", false));
    EXPECT_FALSE(mDatabase.IsOpen());
    EXPECT_EQ(Stored(), "/kept");
}

TEST_F(StoreLifecycleTest, AStoreThatFailsAtTheFirstListCanBeLeftForAnother) {
    const wxString good = Path("good.vlm");
    WriteBytes(good, ReadBytes(StorePath()));
    // The first card of the list is in the midst of the file, and the list's index ends it: both
    // far from what opening reads.
    Query(
        "DROP INDEX Cards_CategoryId_IntroductionOrder;"
        "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i+1 FROM n WHERE i<3000)"
        " INSERT INTO Cards (CardId, CategoryId, IntroductionOrder, Notes)"
        " SELECT i, 0, abs(i-1500), iif(i=1500, '!', '') || '!!!' FROM n;"
        "CREATE INDEX Cards_CategoryId_IntroductionOrder ON Cards (CategoryId,IntroductionOrder)");
    const std::string whole = ReadBytes(StorePath());
    const std::string text("!\0!\0!\0!", 7);
    for (const size_t place : {whole.find(text), whole.size() - 1}) {
        std::string bytes = whole;
        std::fill_n(bytes.begin() + static_cast<std::ptrdiff_t>(place / 4096 * 4096), 4096, '\0');
        WriteBytes(StorePath(), bytes);
        ASSERT_TRUE(Open(StorePath(), true));
        ModalAnswers answers;
        answers.ThenPress(ID_RETRY);
        answers.ThenPress(ID_OPEN);
        answers.ThenChoose(good);
        int asked = 0;
        AskBeforeWindows(mDatabase, [&] {
            std::vector<int64_t> rowIds;
            mDatabase.CardSelectRowIdsOrder(0, "IntroductionOrder", rowIds);
            wxLogError("Nobody is to read this.");
            ++asked;
        });
        EXPECT_EQ(asked, 3);
        EXPECT_EQ(mDatabase.GetPath(), good);
        EXPECT_EQ(Stored(), good);
        mDatabase.Close();
    }
    EXPECT_TRUE(mReport.Texts.empty());
}

}  // namespace
