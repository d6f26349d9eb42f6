#include <filesystem>

#include "support/StoreFixture.h"

namespace {

const std::string kEndless =
    "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i+1 FROM n) SELECT i FROM n";

std::string Triggers(const std::string& when, const std::string& table) {
    std::string sql;
    for (const std::string event : {"INSERT", "UPDATE", "DELETE"}) {
        sql.append("CREATE TRIGGER ").append(table).append(event).append(" ").append(when);
        sql.append(" ").append(event).append(" ON ").append(table);
        sql.append(" BEGIN INSERT INTO Loot ").append(kEndless).append("; END;");
    }
    return sql;
}

}  // namespace

// Store files as somebody could send them: each carries something in its schema that would run, or
// that looks as if it did. Those that open do the work of a day without any of it.
struct MailedStoreTest : StoreFixture {
    MailedStoreTest() {
        mCard = Insert(MakeCard("front", "back"));
        mDatabase.Close();
        Query("CREATE TABLE Loot (x)");
        mPlain = ReadBytes(StorePath());
    }

    void Send(const std::string& sql) {
        WriteBytes(StorePath(), mPlain);
        Query(sql);
    }
    // Gives an object a text that the engine is not asked about.
    static std::string Forge(const std::string& object, const std::string& text) {
        return "PRAGMA writable_schema=ON; UPDATE sqlite_master SET sql=" + text + " WHERE name='" +
               object + "'";
    }
    // More behind the last column of the cards.
    static std::string Append(const std::string& text) {
        return Forge("Cards", "rtrim(sql, ')') || '" + text + ")'");
    }
    void ExpectHarmless() {
        ASSERT_EQ(mDatabase.Open(StorePath(), mWait), 0);
        mCard.Forward.Introduced = true;
        std::vector<int64_t> rowIds;
        const FlashCard added = MakeCard("another", "card");
        EXPECT_THAT(
            (std::vector<int>{mDatabase.UpdateFlashCard(mCard), mDatabase.InsertFlashCard(added),
                              mDatabase.SearchRowIdsOrder(0, "card", CardColumn::kNotes, rowIds),
                              mDatabase.DeleteCard(added.CardId), mDatabase.SetGlobal("a", "b"),
                              mDatabase.CategoryInsert("new"), mDatabase.UpdateCategory({0, "x"})}),
            ::testing::Each(0));
        EXPECT_EQ(rowIds.size(), 1U);
        mDatabase.Close();
        EXPECT_EQ(Query("SELECT count(*) FROM Loot"), Strings{"0"});
        EXPECT_LT(std::filesystem::file_size(StorePath().utf8_string()), 1000000U);
    }

    FlashCard mCard;
    std::string mPlain;
};

TEST_F(MailedStoreTest, WhatOthersHaveAddedDoesNotRun) {
    const std::string cases[] = {
        Triggers("BEFORE", "Cards"),
        Triggers("AFTER", "Cards") + Triggers("AFTER", "Categories"),
        "UPDATE Globals SET Value='1';" + Triggers("AFTER", "Globals"),
        "CREATE VIEW v AS " + kEndless +
            "; CREATE TABLE o (a CHECK (a), b AS (a + 1));"
            "CREATE INDEX p ON o(a + b) WHERE a",
        "CREATE TABLE o (a REFERENCES Cards ON DELETE CASCADE ON UPDATE CASCADE)",
        // Plain indexes and columns, in every way to write a name.
        "CREATE INDEX \"their own\" ON Cards([Author] COLLATE NOCASE DESC, `Notes`, 'Chapter' ASC)",
        "CREATE UNIQUE INDEX u ON Categories(Name, Id); ANALYZE",
        "ALTER TABLE Cards ADD COLUMN \"check\" VARCHAR(9) NOT NULL DEFAULT '''AS ('",
        Append(", n REAL /* CHECK (0) -- */ DEFAULT -1.5e3 -- CHECK (0)\n"),
        Append(", made TEXT DEFAULT CURRENT_TIMESTAMP, n DEFAULT ( 1 -- one\n), o DEFAULT TRUE"),
        "ALTER TABLE Cards RENAME TO o; ALTER TABLE o RENAME TO Cards",
    };
    for (const std::string& sql : cases) {
        SCOPED_TRACE(sql);
        Send(sql);
        ExpectHarmless();
    }
}

TEST_F(MailedStoreTest, ASchemaThatComputesOnOurTablesIsRefused) {
    std::string many;
    for (char name = 'a'; name < 't'; ++name) {
        many += std::string("CREATE INDEX ") + name + " ON Cards(Front,Back,Front,Back);";
    }
    const std::string cases[] = {
        many,
        Append(", CHECK (length(hex(zeroblob(100000000))))"),
        Append(", /* '' */ CHECK (1) /* '' */"),
        Append(", a --''\nCHECK (1)"),
        Append(",\uFEFFCHECK (1)"),
        Append(", a DEFAULT (zeroblob(100000000))"),
        Append(", a DEFAULT (''a'' LIKE ''b'')"),
        Append(", a DEFAULT ''" + std::string(20000, 'x') + "''"),
        Append(", a AS (zeroblob(100000000)) STORED"),
        Append(", a NOT NULL ON CONFLICT IGNORE DEFAULT 0"),
        Append(", UNIQUE (Front) ON CONFLICT REPLACE"),
        // A row id that is hidden behind a column is the same for many cards.
        "ALTER TABLE Cards ADD COLUMN RowId",
        "ALTER TABLE Cards ADD COLUMN oid",
        "ALTER TABLE Categories ADD COLUMN [_ROWID_]",
        // A table in the place of a function that the review asks.
        "CREATE TABLE pragma_table_xinfo (name, hidden, dflt_value)",
        "CREATE INDEX a ON Cards(hex(zeroblob(Front)))",
        "CREATE INDEX a ON Cards(CASE Front WHEN Back THEN Author END)",
        "CREATE INDEX a ON Cards(Front || Back)",
        "CREATE INDEX a ON Cards(Front) WHERE Notes > Back",
        // The engine goes by the text alone, whatever stands beside it.
        "CREATE INDEX a ON Loot(x);" + Forge("a", "'CREATE INDEX a ON cards(abs(ERC))'"),
        "CREATE INDEX a ON Loot(x);" +
            Forge("a", "'CREATE INDEX IF NOT EXISTS a ON Cards(abs(ERC))'"),
        "DROP TABLE Globals; CREATE VIRTUAL TABLE Globals USING fts4(Key, Value)",
        "DROP TABLE Globals; CREATE VIEW Globals AS SELECT 'a' Key, 'b' Value",
        "ALTER TABLE Categories RENAME TO o; CREATE VIEW Categories AS SELECT * FROM o;" +
            Triggers("INSTEAD OF", "Categories"),
        "PRAGMA writable_schema=ON; INSERT INTO sqlite_master SELECT 'table','t'||i,'t'||i,2,"
        "'CREATE TABLE t'||i||'(x)' FROM (" +
            kEndless + " LIMIT 100000)",
    };
    for (const std::string& sql : cases) {
        SCOPED_TRACE(sql.substr(0, 200));
        Send(sql);
        EXPECT_LT(mDatabase.Open(StorePath(), mWait), 0);
        EXPECT_TRUE(mReport.Texts.empty());
    }
}
