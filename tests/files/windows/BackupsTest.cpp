#include "files/windows/Backups.h"

#include "support/StoreFixture.h"

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

}  // namespace
