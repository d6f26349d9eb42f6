#include "files/windows/Backups.h"

#include <wx/confbase.h>
#include <wx/log.h>

#include "shell/Settings.h"
#include "support/GuiTest.h"

namespace {

class BringBack : public StoreFixture {};

TEST_F(BringBack, CardsReturnToTheCategoryOfTheirName) {
    struct Row {
        const char* Title;
        // What became of the store after its backup, whose cards are in "Default" and "French".
        std::vector<std::string> Changes;
        std::string Category;
    };
    const Row rows[] = {
        {"nothing else", {}, "French"},
        {"the category is gone", {"DELETE FROM Categories WHERE Name = 'French'"}, "French"},
        {"another has its number",
         {"UPDATE Categories SET Name = 'Greek' WHERE Id = 1",
          "INSERT INTO Categories (Id, Name) VALUES (7, 'French')"},
         "French"}};
    ASSERT_EQ(0, mDatabase.CategoryInsert("French"));
    FlashCard card = MakeCard("oui", "yes", 1);
    card.Notes = "kept";
    Insert(card);
    const wxString path = mDirectory.Path("backup.vlm");
    ASSERT_EQ(0, CopyOpenStore(mDatabase, path));
    for (const Row& row : rows) {
        SCOPED_TRACE(row.Title);
        mDatabase.Execute("DELETE FROM Cards");
        for (const std::string& change : row.Changes) {
            ASSERT_EQ(0, mDatabase.Execute(change));
        }
        QuietDatabase backup;
        StoreDifference difference;
        ASSERT_EQ(0, backup.OpenQuietly(path));
        ASSERT_EQ(0, CompareStores(mDatabase, backup, difference));
        EXPECT_EQ(0, BringCardsBack(backup, mDatabase, difference.MissingRowIds));
        EXPECT_EQ(Strings{"oui|kept|" + row.Category},
                  Query("SELECT Front, Notes, Name FROM Cards JOIN Categories"
                        " ON CategoryId = Id"));
    }
}

struct BackupKeeperTest : GuiStoreTest {
    // Changes the settings while it is told of something, as a change of the theme does that comes
    // in the middle of a backup.
    class RestlessLog : public wxLog {
      public:
        explicit RestlessLog(Subject& notifier)
            : mNotifier(notifier), mpFormer(SetActiveTarget(this)) {}
        ~RestlessLog() override { SetActiveTarget(mpFormer); }
        int Told = 0;

      private:
        void DoLogRecord(wxLogLevel, const wxString&, const wxLogRecordInfo&) override {
            ++Told;
            mNotifier.Notify();
        }
        Subject& mNotifier;
        wxLog* const mpFormer;
    };
};

TEST_F(BackupKeeperTest, ABackupGoesOnWithItsSettingsWhileTheyChange) {
    Insert(MakeCard("front", "back"));
    WriteBytes(mDirectory.Path("file"), "no directory");
    OpenSettings()->Write(kSettingBackupDirectory, mDirectory.Path("file"));
    Subject notifier;
    BackupKeeper keeper(mDatabase, notifier);
    RestlessLog log(notifier);
    EXPECT_NE(keeper.BackUp(nullptr, BackupCause::kMerge), 0);
    EXPECT_NE(keeper.BackUp(nullptr, BackupCause::kMerge), 0);
    EXPECT_EQ(log.Told, 1) << "what it knows must not go with the settings";
    OpenSettings()->Write(kSettingBackupDirectory, mDirectory.Path("backups"));
    notifier.Notify();
    EXPECT_EQ(keeper.BackUp(nullptr, BackupCause::kMerge), 0);
    // An import that changes nothing makes none, and one that does makes one.
    const auto count = [this] {
        return ListBackups(mDirectory.Path("backups"), StorePath()).size();
    };
    EXPECT_EQ(count(), 1U);
    Insert(MakeCard("second", "back"));
    keeper.ExpectChange(BackupCause::kImport, 0);
    int32_t cards = 0;
    mDatabase.CountAllCards(cards);
    EXPECT_EQ(count(), 1U);
    Insert(MakeCard("third", "back"));
    Insert(MakeCard("fourth", "back"));
    EXPECT_EQ(count(), 2U);
}

}  // namespace
