// What an import does to a store.

#include <unistd.h>

#include <numeric>

#include "exchange/ImportFixture.h"
#include "exchange/PasteThread.h"

namespace {

struct ImportIntoStore : ImportFixture {
    static std::string Id(const FlashCard& card) {
        return "id: " + FormatUuid(card.CardId).utf8_string() + "\n";
    }
    Strings Cards() {
        return Query(
            "SELECT Front, Back, Name, IntroductionOrder FROM Cards LEFT JOIN Categories ON "
            "CategoryId=Id ORDER BY Cards.rowid");
    }
};

}  // namespace

TEST_F(ImportIntoStore, InsertsUpdatesOrIgnoresByTheStoredCard) {
    FlashCard card = MakeCard("f", "b");
    card.Forward.Introduced = true;
    card.Reverse.ReviewInterval = 1e6f;
    Insert(card);
    const std::string ignored = "0 inserted, 0 merged, 1 ignored";
    const std::string merged = "0 inserted, 1 merged, 0 ignored";
    const struct {
        std::string Text, Outcome, Card;
    } cases[] = {
        {"f: f\nb: b\n", ignored, "f|b|Default|0"},
        {"", ignored, "f|b|Default|0"},
        // Not compared, so not written.
        {"Notes: n\nChapter: c\n", ignored, "f|b|Default|0"},
        {"IntroductionOrder: 5\n", merged, "f|b|Default|5"},
        {"RLastScore: 5\n", merged, "f|b|Default|5"},
        {"LastScore: 4\n", merged, "f|b|Default|5"},
        {"c: Words\n", merged, "f|b|Words|5"},
        {"", merged, "f|b|Default|5"},
        {"f: g\n", merged, "g|b|Default|5"},
        {"Back2: r\n", merged, "g|b\n\xE3\x80\x90r\xE3\x80\x91|Default|5"},
    };
    for (const auto& row : cases) {
        EXPECT_EQ(Import(Id(card) + row.Text), 0) << row.Text;
        EXPECT_EQ(Outcome(), row.Outcome) << row.Text;
        EXPECT_EQ(Cards(), Strings{row.Card}) << row.Text;
    }
    // What no record gave is as it was.
    EXPECT_TRUE(Stored(card.CardId).Forward.Introduced);
    EXPECT_EQ(Stored(card.CardId).Reverse.ReviewInterval, 1e6f);
    EXPECT_EQ(Stored(card.CardId).Notes, "");
}

// A word list that grows brings its old pairs again, and one of the new ones twice.
TEST_F(ImportIntoStore, SkipsOrUpdatesKnownPairs) {
    FlashCard card = MakeCard(L"f\n\u3010r\u3011", "b");
    card.Notes = "old";
    card.Forward.Introduced = true;
    Insert(card);
    ImportInput input = TextFile(
        "f: f\nFront2: r\nb: b\nNotes: new\nc: Words\n\nf: g\nb: h\n\nf: g\nb: h\nNotes: n\n");
    EXPECT_EQ(Run(input), -1) << "stopped unless told otherwise";

    input.Pairs = KnownPairs::kSkip;
    EXPECT_EQ(Run(input), 0);
    EXPECT_EQ(Outcome(), "1 inserted, 0 merged, 2 ignored");
    EXPECT_EQ(Stored(card.CardId).Notes, "old");
    EXPECT_EQ(Query("SELECT Name FROM Categories"), Strings{"Default"}) << "nothing to put there";

    input.Pairs = KnownPairs::kUpdate;
    EXPECT_EQ(Run(input), 0);
    EXPECT_EQ(Outcome(), "0 inserted, 2 merged, 1 ignored");
    EXPECT_EQ(Cards(), (Strings{"f\n\xE3\x80\x90r\xE3\x80\x91|b|Words|0", "g|h|Default|1"}));
    EXPECT_EQ(Stored(card.CardId).Notes, "new");
    EXPECT_TRUE(Stored(card.CardId).Forward.Introduced);

    // The first card still waits in its group when the second asks for its pair.
    const std::string id = Id(MakeCard("", ""));
    input = TextFile(id + "f: new\nb: pair\n\nf: new\nb: pair\n");
    input.Pairs = KnownPairs::kSkip;
    EXPECT_EQ(Run(input), 0);
    EXPECT_EQ(Outcome(), "1 inserted, 0 merged, 1 ignored");
}

TEST_F(ImportIntoStore, RefusesANewCardWhosePairOfTextsIsThere) {
    Insert(MakeCard(L"f\n\u3010r\u3011", "b"));
    EXPECT_EQ(Import("f: new\nb: b\n\nf: f\nFront2: r\nb: b\n"), -1);
    EXPECT_EQ(Outcome(),
              "Duplicate Card: There is already a card in the database with this front/back "
              "pair. @4");
    EXPECT_EQ(Cards().size(), 1U);
    EXPECT_EQ(Import("f: f\nb: b\n"), 0) << "the stored side has a second text";
    // With an id of its own the pair may repeat, and so it may within one file.
    EXPECT_EQ(Import(Id(MakeCard("", "")) + "f: f\nb: b\n\nf: g\nb: g\n\nf: g\nb: g\n"), 0);
    EXPECT_EQ(Cards().size(), 5U);
}

TEST_F(ImportIntoStore, NumbersNewCardsBehindThoseOfTheirCategory) {
    FlashCard card = MakeCard("0", "0");
    card.IntroductionOrder = 7;
    Insert(card);
    const std::string text =
        "f: a\nb: b\n\n"
        "f: c\nb: d\nc: Words\n\n"
        // Before the next number of its category: no effect. At it and past it: moves on.
        "f: e\nb: f\nIntroductionOrder: 3\n\n"
        "f: g\nb: h\nIntroductionOrder: 9\n\n"
        "f: i\nb: j\n\n"
        "f: k\nb: l\nIntroductionOrder: 2147483647\n\n"
        "f: m\nb: n\n\n"
        "f: o\nb: p\nc: Words\n\n"
        // The store learns of the first only when it is asked for the greatest number.
        "f: q\nb: r\nc: New\nIntroductionOrder: 5\n\n"
        "f: s\nb: t\nc: New\n";
    ASSERT_EQ(Import(text), 0);
    EXPECT_EQ(Cards(),
              (Strings{"0|0|Default|7", "a|b|Default|8", "c|d|Words|0", "e|f|Default|3",
                       "g|h|Default|9", "i|j|Default|10", "k|l|Default|2147483647",
                       "m|n|Default|2147483647", "o|p|Words|1", "q|r|New|5", "s|t|New|6"}));
}

TEST_F(ImportIntoStore, TakesTheCategoryThatTheStoreFindsByAName) {
    ASSERT_EQ(mDatabase.CategoryInsert("7"), 0);
    ASSERT_EQ(Import("f: a\nb: b\nc: 007\n\nf: c\nb: d\nc: 7.0\n\nf: e\nb: f\nc: words\n\n"
                     "f: g\nb: h\nc: Words\n\nf: i\nb: j\nc:\n\nf: k\nb: l\nc: 1e1\n\n"
                     "f: m\nb: n\nc: 10\n"),
              0);
    EXPECT_EQ(Query("SELECT Name FROM Categories ORDER BY Id"),
              (Strings{"Default", "7", "words", "Words", "10"}));
    EXPECT_EQ(Query("SELECT CategoryId FROM Cards ORDER BY rowid"),
              (Strings{"1", "1", "2", "3", "0", "4", "4"}));
    EXPECT_EQ(mTouched, (std::set<int32_t>{0, 1, 2, 3, 4}));
}

// Only a preview may decide by the beginning of the file.
TEST_F(ImportIntoStore, ReadsAFileToItsEndBeforeItTakesItForUtf8) {
    Import("f: \xC3\xA9\nb: b\nNotes: " + std::string(size_t{1} << 21, 'x') + "\xE9\n");
    EXPECT_EQ(Query("SELECT Front FROM Cards"), Strings{"\u00C3\u00A9"});
}

TEST_F(ImportIntoStore, SaysWhatCannotBeRead) {
    for (const ImportFormat format : {ImportFormat::kVlmText, ImportFormat::kDelimited}) {
        Run(TextFile(std::string((size_t{1} << 26) + 100000, 'x'), format));
        EXPECT_EQ(Outcome().find("This card is too long.  A double quote"), 0U) << Outcome();
        Run({mDirectory.Path(""), format});
        EXPECT_EQ(Outcome().find("Unable to read flash cards: "), 0U) << Outcome();
        Run({mDirectory.Path("none"), format});
        EXPECT_EQ(Outcome(), " @-1");
    }
    WriteBytes(mDirectory.Path("copy.vlm"), ReadBytes(StorePath()));
    WriteBytes(mDirectory.Path("copy.vlm-shm"), "f: f\nb: b\n");
    WriteBytes(mDirectory.Path("journal.txt"), "\xD9\xD5\x05\xF9\x20\xA1\x63\xD7");
    ASSERT_EQ(symlink(StorePath().utf8_str(), mDirectory.Path("link.txt").utf8_str()), 0);
    for (const char* const name : {"copy.vlm", "copy.vlm-shm", "journal.txt", "link.txt"}) {
        Run({mDirectory.Path(name)});
        EXPECT_NE(Outcome().find("is a store of flash cards or belongs to"), Outcome().npos)
            << name;
    }
    Insert(MakeCard("f", "b"));
    Query("UPDATE Cards SET CardId='no identity'");
    Import("\n\nf: f\nb: b\n");
    EXPECT_EQ(Outcome().find("Database read error "), 0U) << Outcome();
    mDatabase.Close();
    EXPECT_EQ(Import("f: f\nb: b\n"), -1);
}

TEST_F(ImportIntoStore, SaysThatTheStoreRefusesACategory) {
    // Triggers of the file itself do not run.
    mDatabase.Execute(
        "CREATE TEMP TRIGGER t BEFORE INSERT ON main.Categories "
        "BEGIN SELECT RAISE(ABORT, 'no'); END");
    EXPECT_EQ(Import("f: x\nb: y\nc: z\n"), -1);
    EXPECT_EQ(Outcome(), "Category create error 1811:no @1");
}

// New cards are written in groups, which no record may notice.
TEST_F(ImportIntoStore, ARecordSeesTheCardsBeforeIt) {
    const std::string id = Id(MakeCard("", ""));
    std::string text = id + "f: a\nb: b\n\n" + id + "f: a\nb: b\nc: Default\n\nf: c\nb: d\n\n" +
                       id + "f: a\nb: e\n\n";
    EXPECT_EQ(Import(text), 0);
    EXPECT_EQ(Outcome(), "2 inserted, 1 merged, 1 ignored");
    // The number of the first was taken over by its two further records.
    EXPECT_EQ(Cards(), (Strings{"a|e|Default|0", "c|d|Default|1"}));
}

TEST_F(ImportIntoStore, ARefusedCardKeepsThoseBeforeItAndTellsItsLine) {
    mDatabase.Execute(
        "CREATE TEMP TRIGGER t BEFORE INSERT ON main.Cards WHEN NEW.Back='bad' "
        "BEGIN SELECT RAISE(ABORT, 'no'); END");
    std::string text = "f,b\n";
    for (int i = 2; i < 1200; ++i) {
        text += "f," + std::string(i == 1040 ? "bad" : "b") + "\n";
    }
    EXPECT_EQ(ImportTable(text), -1);
    EXPECT_EQ(Outcome(), "Unable to add flash card to database.  (1811:no) @1040");
    EXPECT_EQ(mResult->RecordsInserted, 1038);
    // A record that stands after it is not counted.
    const std::string known = Id(Insert(MakeCard("a", "b")));
    EXPECT_EQ(Import(known + "\nf: f\nb: bad\n\n" + known), -1);
    EXPECT_EQ(mResult->DuplicatesIgnored, 1);
    Query("DELETE FROM Cards WHERE Front = 'a'");
    EXPECT_EQ(Cards().size(), 1038U);
    // What fails behind them leaves them, too.
    const FlashCard card = Insert(MakeCard("f", "b"));
    mDatabase.Execute(
        "CREATE TEMP TRIGGER u BEFORE UPDATE ON main.Cards "
        "BEGIN SELECT RAISE(ABORT, 'no'); END");
    EXPECT_EQ(Import("f: x\nb: y\n\n" + Id(card) + "f: z\n"), -1);
    EXPECT_EQ(Outcome(), "Unable to update flash card.  (1811:no) @4");
    EXPECT_EQ(Cards().back(), "x|y|Default|1038");
}

TEST_F(ImportIntoStore, PastedCopiesAreNewCardsAndARefusedOneIsSkipped) {
    std::string text = "f,b\n";
    for (int i = 0; i < 300; ++i) {
        text += std::to_string(i) + ",b\n";
    }
    ASSERT_EQ(ImportTable(text), 0);
    std::vector<int64_t> rowIds(300);
    std::iota(rowIds.rbegin(), rowIds.rend(), 1);
    mDatabase.Execute(
        "CREATE TEMP TRIGGER t BEFORE INSERT ON main.Cards WHEN NEW.Front='290' "
        "BEGIN SELECT RAISE(ABORT, 'no'); END");
    PasteThread thread(mDatabase, rowIds, true, 9);
    thread.Start();
    thread.Join();
    EXPECT_EQ(Query("SELECT count(DISTINCT CardId), min(rowid), group_concat(Front, '') LIKE "
                    "'299298%292291289%' FROM (SELECT rowid, * FROM Cards WHERE CategoryId=9 "
                    "ORDER BY rowid)"),
              Strings{"299|301|1"});
}

TEST_F(ImportIntoStore, APreviewDoesNotReadAHugeFileForItsFirstRecord) {
    const std::pair<std::string, ImportFormat> files[] = {
        {std::string(1 << 20, '\n') + "f: a\nb: b\n", ImportFormat::kVlmText},
        {"f,b\n" + std::string(1 << 20, '\n') + "c,d\n", ImportFormat::kDelimited}};
    for (const auto& [text, format] : files) {
        const ImportInput input = TextFile(text, format);
        ImportResult result;
        std::vector<CardAttribute> attributes;
        EXPECT_FALSE(ImportPreview(input, mDatabase, result, attributes));
        EXPECT_TRUE(attributes.empty());
        Run(input);
        EXPECT_EQ(Outcome(), "1 inserted, 0 merged, 0 ignored");
    }
}
