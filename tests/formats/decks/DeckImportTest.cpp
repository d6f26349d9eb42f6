// Whole decks, written here as their programs would write them, on their way into a store.

#include <wx/dir.h>
#include <wx/filename.h>

#include <cstdlib>

#include "base/Time.h"
#include "formats/decks/DeckFixture.h"
#include "formats/decks/DeckFormats.h"
#include "formats/decks/DeckSurvey.h"
#include "fuzz/Mutator.h"

namespace {

using DeckImportTest = DeckFixture;

const std::string kOne = NoteRow(1, "g", 7, "a|b") + NewCard(1, 0);

}  // namespace

TEST_F(DeckImportTest, TakesTheCollectionThatCountsOfEachGeneration) {
    const std::string decoy =
        MakeDatabase(Schema11(NoteRow(9, "d", 7, "Please update|x") + NewCard(9, 0)));
    const std::string old = MakeDatabase(Schema11(kOne));
    const std::string young = MakeDatabase(Schema18(kOne));
    const Members packages[] = {
        {{"collection.anki2", old}},
        {{"media", "{}"}, {"collection.anki2", decoy}, {"collection.anki21", old}},
        {{"meta", "\x08\x02"}, {"collection.anki2", decoy}, {"collection.anki21", old}},
        {{"meta", "\x08\x03"},
         {"collection.anki2", decoy},
         {"collection.anki21b", Compress(young)}},
    };
    for (const Members& members : packages) {
        const bool isFirst = &members == &packages[0];
        EXPECT_EQ(ImportDeck(MakePackage(members)),
                  isFirst ? "1 inserted, 0 merged, 0 ignored" : "0 inserted, 0 merged, 1 ignored");
    }
    EXPECT_EQ(ImportDeck(young), "0 inserted, 0 merged, 1 ignored");
    EXPECT_THAT(Cards(), testing::ElementsAre("a|b|Tags: t1 t2|0|1|A::B"));
}

TEST_F(DeckImportTest, MakesOneCardOfTwoMirroredTemplates) {
    EXPECT_EQ(ImportRows(NoteRow(1, "g", 7, "\u6F22[kan]|b<br>c|y|x") + NewCard(1, 0, "2") +
                         NewCard(1, 1, "2") + NoteRow(2, "h", 7, "d|e") + NewCard(2, 0, "1") +
                         NoteRow(3, "i", 8, "{{c1::u}} {{c2::v}}|w") + NewCard(3, 0, "3") +
                         NewCard(3, 1, "3") + NoteRow(4, "j", 7, "<img src=z>|e") + NewCard(4, 0)),
              "4 inserted, 0 merged, 0 ignored");
    EXPECT_THAT(Cards(),
                testing::ElementsAre("d|e|Tags: t1 t2|0|1|A::B",
                                     "\u6F22\n\u3010kan\u3011|b\nc|More: x\nTags: t1 t2|0|0|A::B",
                                     "[...] v|u|u v\nExtra: w\nTags: t1 t2|0|1|A::B",
                                     "u [...]|v|u v\nExtra: w\nTags: t1 t2|0|1|A::B"));
}

// A deck comes as a package or as Anki's own text, first or later, and each finds the cards that
// the other has made. Where a card stands, its schedule and what somebody has noted stay.
TEST_F(DeckImportTest, FindsTheCardsOfADeckInEachOrder) {
    const std::string head = "#separator:tab\n#html:true\n#guid column:1\n#deck column:2\n";
    const std::string uuid = "01234567-89ab-4def-8123-456789abcdef";
    const auto package = [](const std::string& first, const std::string& second) {
        return Schema11(NoteRow(1, first, 7, "a|b") + NewCard(1, 0) + NoteRow(2, second, 7, "c|d") +
                        NewCard(2, 0) + "UPDATE notes SET tags = '';");
    };
    const std::string deck = package("g", "h");
    const std::string newer =
        Schema11(NoteRow(1, "g", 7, "a|changed") +
                 "INSERT INTO cards VALUES(5,1,2,0,0,0,2,2,10,0,5,2500,'');" +
                 NoteRow(2, "h", 7, "c|d||more") + NewCard(2, 0) + NoteRow(3, "i", 7, "e|f") +
                 NewCard(3, 0) + "UPDATE notes SET tags = '';");
    const std::string text = head + "g\tA::B\ta\tb\nh\tA::B\tc\td\n";
    const std::string newerText = head + "g\tA::B\ta\tchanged\nh\tA::B\tc\td\tmore\n";
    const std::string own = "a|b|mine|3|Mine";
    const std::string lost = "c|d||0|";
    const struct {
        const char* Name;
        std::string First;
        std::string Then;
        const char* Outcome;
        Strings Cards;
    } cases[] = {
        {"the same package", deck, deck, "0 inserted, 0 merged, 2 ignored", {own, lost}},
        {"a newer package",
         deck,
         newer,
         "1 inserted, 2 merged, 0 ignored",
         {"a|changed|mine|3|Mine", "c|d|More: more|0|", "e|f||0|A::B"}},
        {"the package and a text", deck, text, "0 inserted, 0 merged, 2 ignored", {own, lost}},
        {"a text and the package", text, deck, "0 inserted, 0 merged, 2 ignored", {own, lost}},
        {"a newer text",
         text,
         newerText,
         "0 inserted, 2 merged, 0 ignored",
         {"a|changed|mine|3|Mine", "c|d|more|0|"}},
        {"one name for two notes",
         package("g", "g"),
         package("g", "g"),
         "0 inserted, 0 merged, 2 ignored",
         {own, lost}},
        {"notes without names",
         package("", ""),
         package("", ""),
         "0 inserted, 0 merged, 2 ignored",
         {own, lost}},
        {"cards that came from here",
         head + uuid + "\tA::B\ta\tb\n",
         package(uuid, "h"),
         "1 inserted, 0 merged, 1 ignored",
         {own, "c|d||0|A::B"}},
    };
    const auto import = [this](const std::string& source) {
        if (source.front() != '#') {
            return ImportDeck(MakePackage({{"collection.anki2", MakeDatabase(source)}}));
        }
        ImportInput input = TextFile(source);
        GuessFormat(input, mDatabase);
        Run(input);
        return Outcome();
    };
    mDatabase.CategoryInsert("Mine");
    for (const auto& test : cases) {
        SCOPED_TRACE(test.Name);
        Query("DELETE FROM Cards");
        import(test.First);
        Query(
            "UPDATE Cards SET CategoryId = (SELECT Id FROM Categories WHERE Name = 'Mine'), "
            "LastScore = 3, Introduced = 1, Notes = 'mine' WHERE Front = 'a'");
        Query("UPDATE Cards SET CategoryId = -1 WHERE Front = 'c'");
        EXPECT_EQ(import(test.Then), test.Outcome);
        EXPECT_EQ(
            Query("SELECT Front, Back, Notes, LastScore, IFNULL(Name, '') FROM Cards LEFT JOIN "
                  "Categories ON CategoryId = Categories.Id ORDER BY Front"),
            test.Cards);
    }
    // An earlier version had named the cards of packages otherwise.
    Query("DELETE FROM Cards");
    import(deck);
    const std::string earlier = FormatUuid(NamedUuid("g 1\n")).utf8_string();
    Query("UPDATE Cards SET CardId = '" + earlier + "' WHERE Front = 'a'");
    EXPECT_EQ(import(deck), "0 inserted, 0 merged, 2 ignored");
}

TEST_F(DeckImportTest, ReadsMnemosyne) {
    EXPECT_EQ(ImportDeck(MakePackage({{"METADATA", ""}, {"cards.xml", kXml}})),
              "1 inserted, 0 merged, 0 ignored");
    const std::string script =
        kMnemosyneTables + std::string(
                               "INSERT INTO data_for_fact VALUES(1,'text','[u:hint] v [w]');"
                               "INSERT INTO cards VALUES(1,'c','5',1,'5.1',-1,-1,-1,2.5,1),"
                               "(2,'d','5',1,'5.1',-1,-1,-1,2.5,0);");
    EXPECT_EQ(ImportDeck(MakeDatabase(script)), "2 inserted, 0 merged, 0 ignored");
    EXPECT_THAT(Cards(), testing::UnorderedElementsAre(
                             "chat\n\u3010sha\u3011|cat\nkitty|n\nTags: French|0|0|French",
                             "[hint] v w|u|u v w|0|1|My deck", "u v [...]|w|u v w|1|1|My deck"));
    EXPECT_THAT(Query("SELECT Introduced, LastScore, ReviewInterval, Difficulty, RIntroduced FROM "
                      "Cards WHERE Back LIKE 'cat%'"),
                testing::ElementsAre("1|4|864000.0|20|0"));
}

TEST_F(DeckImportTest, RefusesADeckAsAWholeAndSaysWhy) {
    const std::string good = MakePackage({{"collection.anki2", MakeDatabase(Schema11(kOne))}});
    std::string flipped = good;
    flipped[flipped.size() / 2] = static_cast<char>(~flipped[flipped.size() / 2]);
    const std::string view =
        MakeDatabase(Schema11(kOne) +
                     "ALTER TABLE notes RENAME TO n; CREATE VIEW notes AS SELECT "
                     "* FROM n;");
    const std::string computed =
        MakeDatabase(Schema11(kOne) +
                     "ALTER TABLE notes RENAME TO n; CREATE TABLE notes(id, guid, mid, tags, "
                     "flds AS (abs(id)));");
    const std::string virtualTable = MakeDatabase(
        Schema11(kOne) + "DROP TABLE cards; CREATE VIRTUAL TABLE cards USING fts5(nid);");
    const std::string unknown = MakeDatabase(Schema11(kOne) + "UPDATE col SET ver = 12;");
    const std::string cutJson = MakeDatabase(Schema11(kOne) + "UPDATE col SET models = '{\"7\":';");
    const std::string young = Compress(MakeDatabase(Schema18(kOne)));
    const std::string doctype = "<!DOCTYPE a [<!ENTITY b \"c\">]>" + std::string(kXml);
    const std::pair<std::string, const char*> cases[] = {
        {good.substr(0, good.size() / 2), "The package is damaged."},
        {flipped, "The package is damaged."},
        {MakePackage({{"meta", "\x08\x02"}, {"collection.anki2", "x"}}), "The package is damaged."},
        {MakePackage({{"meta", "\x08\x09"}, {"collection.anki2", "x"}}), "The deck comes from a"},
        {MakePackage({{"collection.anki2", "x"}}), "The deck is damaged."},
        {MakePackage({{"collection.anki2", view}}), "The deck is damaged.  A table"},
        {MakePackage({{"collection.anki2", computed}}), "The deck is damaged.  A table"},
        {MakePackage({{"collection.anki2", virtualTable}}), "The deck is damaged.  A table"},
        {MakePackage({{"collection.anki2", unknown}}), "The deck comes from a version"},
        {MakePackage({{"collection.anki2", cutJson}}), "The deck is damaged.  Its desc"},
        {MakePackage(
             {{"meta", "\x08\x03"}, {"collection.anki21b", young.substr(0, young.size() / 2)}}),
         "The package is damaged."},
        {MakePackage({{"cards.xml", doctype}}), "The deck is damaged."},
        {MakePackage({{"cards.xml", std::string(kXml, 400)}}), "The deck is damaged."},
    };
    for (const auto& [bytes, message] : cases) {
        EXPECT_THAT(ImportDeck(bytes), testing::StartsWith(message));
    }
    EXPECT_THAT(Cards(), testing::IsEmpty());
}

// Names lead nowhere, triggers never fire, and a type of another column says nothing of its values.
TEST_F(DeckImportTest, TakesADeckThatOnlyLooksHostile) {
    const std::string rows =
        kOne + NoteRow(2, "\"; DROP TABLE Cards; --", 7, "c|d") + NewCard(2, 0, "'x'") +
        "INSERT INTO cards VALUES('9', 1, 2, 0, 1, 0, 0, 0, -9e99, 0, 'many', 1e99, x'00');"
        "CREATE TRIGGER t AFTER INSERT ON notes BEGIN DELETE FROM cards; END;";
    const std::string database = MakeDatabase(Schema11(rows));
    EXPECT_EQ(
        ImportDeck(MakePackage(
            {{"../../escaped", "x"}, {"/tmp/../escaped", "x"}, {"collection.anki2", database}})),
        "2 inserted, 0 merged, 0 ignored");
    EXPECT_FALSE(wxFileName::Exists(mDirectory.Path("../escaped")));
}

TEST_F(DeckImportTest, RefusesWhatUnpacksToMoreThanTheLimit) {
    DeckFileOptions small;
    small.MostBytes = 1 << 20;
    const std::string zeros(8 << 20, '\0');
    const char* const refusal = "The deck is larger than 1 MB and is not imported.";
    const Members bombs[] = {{{"collection.anki2", zeros}},
                             {{"cards.xml", zeros}},
                             {{"meta", "\x08\x03"}, {"collection.anki21b", Compress(zeros)}}};
    for (const Members& members : bombs) {
        EXPECT_EQ(ImportDeck(MakePackage(members), {}, small), refusal);
    }
    std::string database = MakeDatabase(Schema11(kOne));
    EXPECT_EQ(ImportDeck(database, {}, small), "1 inserted, 0 merged, 0 ignored");
    EXPECT_EQ(ImportDeck(database + zeros, {}, small), refusal);
}

// Chance changes a package, or what is packed in it. The import then ends, writes all or nothing,
// and leaves no temporary file. VELOMIND_FUZZ_FILES asks for more of them.
TEST_F(DeckImportTest, SurvivesChangesByChance) {
    wxSetEnv("TMPDIR", mDirectory.Path(wxString()));
    // A process with the greatest number of all is not there any more.
    wxMkdir(mDirectory.Path("velomind-deck-2147483647-a"));
    WriteBytes(mDirectory.Path("velomind-deck-2147483647-a/deck"), "left");
    const std::string young = MakeDatabase(Schema18(kOne));
    const std::string old =
        MakeDatabase(Schema11(kOne + NoteRow(3, "i", 8, "{{c1::u}} {{c2::v}}|w") + NewCard(3, 0) +
                              "INSERT INTO cards VALUES(5,1,2,0,1,0,2,2,10,0,5,2500,'{\"lrt\":1}');"
                              "INSERT INTO revlog VALUES(1600000000000,5,3,1,2500);"));
    Mutator mutator({old, young, kXml, Compress(young), MakePackage({{"collection.anki2", old}})},
                    1);
    const char* const count = std::getenv("VELOMIND_FUZZ_FILES");
    const int files = count == nullptr ? 300 : std::atoi(count);
    int good = 0;
    for (int i = 0; i < files; ++i) {
        const size_t which = mutator.Pick(5);
        const std::string bytes = mutator.Change(which);
        const Members members[] = {{{"collection.anki2", bytes}},
                                   {{"collection.anki2", bytes}},
                                   {{"cards.xml", bytes}},
                                   {{"meta", "\x08\x03"}, {"collection.anki21b", bytes}}};
        const Strings before = Cards();
        const std::string outcome =
            ImportDeck(which < std::size(members) ? MakePackage(members[which]) : bytes);
        const bool isGood = outcome.find(" inserted, ") != std::string::npos;
        EXPECT_FALSE(outcome.empty());
        if (!isGood) {
            ASSERT_EQ(Cards(), before) << "file " << i << ": " << outcome;
        }
        good += isGood ? 1 : 0;
    }
    std::printf("%d files, %d of them imported\n", files, good);
    EXPECT_GT(good, 0);
    EXPECT_LT(good, files);
    EXPECT_EQ(Query("PRAGMA integrity_check"), Strings{"ok"});
    wxArrayString left;
    EXPECT_EQ(wxDir::GetAllFiles(mDirectory.Path(wxString()), &left, "deck"), 0U) << left[0];
    wxUnsetEnv("TMPDIR");
}

TEST(AnkiSchedule, KeepsIntervalScoreAndEase) {
    constexpr int64_t kCreated = 1000000000;
    constexpr int64_t kDay = 86400;
    constexpr int64_t kFar = 9000000000000000;
    constexpr int64_t kNow = kCreated + 1000 * kDay;
    struct Case {
        const char* Name;
        int64_t Type, Due, Interval, Ease, LastReview, LastAnswer;
        // The last review as days since the collection was made.
        const char* Schedule;
    };
    const Case cases[] = {
        {"new", 0, 5, 0, 0, -1, 0, "new"},
        {"reviewed, log known", 2, 110, 10, 2500, kCreated + 100 * kDay, 3, "100.00 864000 4 16"},
        {"reviewed, log lost", 2, 110, 10, 2000, -1, 0, "100.00 864000 4 20"},
        {"postponed", 2, 150, 10, 1300, kCreated + 100 * kDay, 2, "100.00 4320000 3 32"},
        {"easy", 2, 110, 10, 3000, kCreated + 100 * kDay, 4, "100.00 864000 5 13"},
        {"learning", 1, kCreated + 3 * kDay, 0, 0, kCreated + 3 * kDay - 600, 1, "2.99 600 0 16"},
        {"learning again", 3, kCreated + 3 * kDay, 4, 8000, kCreated + 3 * kDay - 600, 1,
         "2.99 600 0 0"},
        {"due before it was seen", 2, 1, 1, 2500, kCreated + 100 * kDay, 3, "100.00 1 4 16"},
        {"seen in the future", 2, 1010, 10, 2500, kNow + 5 * kDay, 3, "1000.00 864000 4 16"},
        {"hostile", 2, -kFar, kFar, -7, kFar, 9, "1000.00 1 4 16"},
    };
    for (const Case& test : cases) {
        AnkiCard card;
        card.Type = test.Type;
        card.Due = test.Due;
        card.Interval = test.Interval;
        card.Ease = test.Ease;
        card.LastReview = test.LastReview;
        card.LastAnswer = test.LastAnswer;
        bool clamped = false;
        const CardSchedule schedule = MakeAnkiSchedule(card, kCreated, kNow, clamped);
        EXPECT_FALSE(clamped);
        const double days =
            static_cast<double>(schedule.LastReview.GetTicks() - kCreated) / double{kDay};
        const wxString text =
            wxString::Format("%.2f %.0f %u %u", days, static_cast<double>(schedule.ReviewInterval),
                             unsigned{schedule.LastScore}, unsigned{schedule.Difficulty});
        EXPECT_EQ(schedule.Introduced ? text : wxString("new"), test.Schedule) << test.Name;
    }
    bool clamped = false;
    EXPECT_LE(static_cast<double>(StoredInterval(kLastTimeStamp - 100, 1e12, clamped)), 100.0);
    EXPECT_TRUE(clamped);
}
