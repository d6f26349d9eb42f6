#include <sqlite3.h>
#include <unistd.h>

#include <chrono>
#include <fstream>
#include <string>
#include <thread>

#include "store/Statement.h"
#include "support/StoreFixture.h"

struct StatementTest : StoreFixture {
    StatementRun Run(const char* sql) { return {mDatabase, mDatabase.GetStatement(sql)}; }
};

TEST_F(StatementTest, ANestedRunFailsAndLeavesTheFirstAlone) {
    const char* const sql = "SELECT 1 UNION SELECT 2";
    {
        StatementRun first = Run(sql);
        ASSERT_EQ(first.Step("first"), 0);
        {
            StatementRun second = Run(sql);
            EXPECT_EQ(second.Bind(1), -1);
            EXPECT_EQ(second.Step("second"), -1);
            EXPECT_EQ(second.ColumnText(0), "");
        }
        ASSERT_EQ(first.Step("first"), 0);
        EXPECT_EQ(first.ColumnInt(0), 2);
    }
    // Left in the middle, it begins anew.
    StatementRun again = Run(sql);
    ASSERT_EQ(again.Step("again"), 0);
    EXPECT_EQ(again.ColumnInt(0), 1);
    EXPECT_TRUE(mReport.Texts.empty());
}

TEST_F(StatementTest, AFailedStepIsReportedInTheProgramsWords) {
    const FlashCard card = Insert(MakeCard("front", "back"));
    EXPECT_LT(mDatabase.InsertFlashCard(card), 0);
    EXPECT_EQ(mDatabase.GetLastErrorCode(), SQLITE_CONSTRAINT_PRIMARYKEY);
    EXPECT_EQ(mDatabase.GetLastError(), "UNIQUE constraint failed: Cards.CardId");
    Database other(mReport);
    ASSERT_EQ(other.Open(StorePath(), mWait), 0);
    ASSERT_EQ(other.Execute("BEGIN EXCLUSIVE"), 0);
    // Without it the update would wait for seconds.
    ASSERT_EQ(mDatabase.Execute("PRAGMA busy_timeout = 0"), 0);
    EXPECT_EQ(mDatabase.UpdateFlashCard(card), -SQLITE_BUSY);
    int32_t cards = 0;
    EXPECT_EQ(mDatabase.CopyFile(StorePath() + ".copy", cards), EBUSY);
    other.Close();
    EXPECT_EQ(mDatabase.UpdateFlashCard(card), 0);
    EXPECT_EQ(mReport.Texts,
              (std::vector<wxString>{
                  "Problem accessing flash cards (UNIQUE constraint failed: "
                  "Cards.CardId/InsertFlashCard)\n" +
                      StorePath(),
                  "Problem accessing flash cards (5/UpdateFlashCard)\n" + StorePath() +
                      "\nAnother program is using this store. What was to be done is not done."}));
}

// As velomind-cards does beside a person who studies. It commits once the main thread sleeps.
TEST_F(StatementTest, AWriteWaitsForAnotherProgramThatIsAboutToEnd) {
    const FlashCard card = Insert(MakeCard("front", "back"));
    Database other(mReport);
    ASSERT_EQ(other.Open(StorePath(), mWait), 0);
    ASSERT_EQ(other.Execute("BEGIN EXCLUSIVE"), 0);
    const std::string state = "/proc/self/task/" + std::to_string(::gettid()) + "/stat";
    std::thread worker([&] {
        const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(4);
        std::string text;
        while (text.find(") S ") == std::string::npos && std::chrono::steady_clock::now() < limit) {
            std::ifstream file(state);
            std::getline(file, text);
        }
        other.Execute("COMMIT");
    });
    const int result = mDatabase.UpdateFlashCard(card);
    worker.join();
    EXPECT_EQ(result, 0);
    EXPECT_TRUE(mReport.Texts.empty());
}

// The engine then refuses whatever was prepared before.
TEST_F(StatementTest, AnotherProgramMayChangeTheSchema) {
    FlashCard card = Insert(MakeCard("front", "back"));
    std::vector<int64_t> rowIds;
    EXPECT_EQ(mDatabase.CardSelectRowIdsOrder(0, CardColumn::kFront, rowIds), 0);
    for (const char* sql : {"VACUUM", "CREATE INDEX a ON Cards(Notes)", "DROP INDEX a",
                            "ALTER TABLE Cards ADD COLUMN a DEFAULT 1"}) {
        SCOPED_TRACE(sql);
        StatementRun unused = Run("SELECT 1");
        Query(sql);
        card.Front = sql;
        card.Forward.ReviewInterval = 7.5f;
        EXPECT_EQ(mDatabase.UpdateFlashCard(card), 0);
        EXPECT_EQ(Stored(card.CardId).Front, sql);
        Query("REINDEX; CREATE TABLE b (x); DROP TABLE b");
        EXPECT_EQ(Stored(card.CardId).Forward.ReviewInterval, 7.5f);
        EXPECT_EQ(mDatabase.CategoryInsert(sql), 0);
        EXPECT_EQ(mDatabase.CardSelectRowIdsOrder(0, CardColumn::kFront, rowIds), 0);
    }
    EXPECT_EQ(rowIds, std::vector<int64_t>(5, 1));
    EXPECT_TRUE(mReport.Texts.empty());
    // What cannot be prepared anew is told as any failure, and the next one finds the way back.
    Query("ALTER TABLE Cards RENAME TO b");
    EXPECT_LT(mDatabase.UpdateFlashCard(card), 0);
    EXPECT_EQ(mReport.Texts.size(), 1U);
    Query("ALTER TABLE b RENAME TO Cards");
    EXPECT_EQ(mDatabase.UpdateFlashCard(card), 0);
}

TEST_F(StatementTest, ATextThatCannotBePreparedClosesTheStore) {
    StatementRun living = Run("SELECT ROWID FROM Categories");
    ASSERT_EQ(living.Step("living"), 0);
    EXPECT_EQ(mDatabase.GetStatement("SELECT NoSuchColumn FROM Cards"), nullptr);
    EXPECT_FALSE(mDatabase.IsOpen());
    EXPECT_EQ(mDatabase.GetLastError(), "no such column: NoSuchColumn");
    EXPECT_EQ(living.Step("living"), -1);
    EXPECT_EQ(mDatabase.InsertFlashCard(MakeCard("front", "back")), -1);
    EXPECT_EQ(mDatabase.CategoryInsert("new"), -1);
    Reopen();
}
