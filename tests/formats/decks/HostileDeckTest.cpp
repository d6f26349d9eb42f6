// Decks of a few kilobytes that describe gigabytes or days of work. Each is refused with a sentence
// or comes in as the little that it is, within an amount of memory and of the processor's time that
// work which grows with the square of the file would pass by far.

#include <sys/resource.h>
#include <wx/zstream.h>

#include <fstream>

#include "formats/HtmlText.h"
#include "formats/decks/DeckFixture.h"
#include "support/HalfDone.h"

namespace {

using HostileDeckTest = DeckFixture;

// Lowers what this process may take, until this object goes. The process ends where more time is
// needed, and memory is refused. The sanitizers take what they like.
class Limits {
  public:
    Limits() {
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
        constexpr rlim_t kMemory = rlim_t{600} << 20;
        constexpr rlim_t kSeconds = 30;
        rlim_t pages = 0;
        std::ifstream("/proc/self/statm") >> pages;
        rusage used{};
        getrusage(RUSAGE_SELF, &used);
        Lower(RLIMIT_AS, mMemory, pages * 4096 + kMemory);
        Lower(RLIMIT_CPU, mSeconds, static_cast<rlim_t>(used.ru_utime.tv_sec) + kSeconds);
#endif
    }
    ~Limits() {
        setrlimit(RLIMIT_AS, &mMemory);
        setrlimit(RLIMIT_CPU, &mSeconds);
    }
    Limits(const Limits&) = delete;
    Limits& operator=(const Limits&) = delete;

  private:
    static void Lower(__rlimit_resource what, rlimit& before, rlim_t most) {
        getrlimit(what, &before);
        rlimit lowered = before;
        lowered.rlim_cur = most;
        setrlimit(what, &lowered);
    }

    rlimit mMemory{RLIM_INFINITY, RLIM_INFINITY};
    rlimit mSeconds{RLIM_INFINITY, RLIM_INFINITY};
};

std::string Repeat(const std::string& text, int count) {
    std::string repeated;
    for (int i = 0; i < count; ++i) {
        repeated += text;
    }
    return repeated;
}

// The text for each number, with the number in the place of "#".
std::string Count(const std::string& text, int count) {
    std::string counted;
    for (int i = 1; i <= count; ++i) {
        std::string one = text;
        for (size_t at = one.find('#'); at != std::string::npos; at = one.find('#')) {
            one.replace(at, 1, std::to_string(i));
        }
        counted += one;
    }
    return counted;
}

std::string GzipBytes(const wxString& path, const std::string& bytes) {
    {
        wxFileOutputStream file(path);
        wxZlibOutputStream gzip(file, 9, wxZLIB_GZIP);
        gzip.Write(bytes.data(), bytes.size());
    }
    return ReadBytes(path);
}

std::string List(const std::string& entries) {
    return "<openSM2sync><log type=\"10\" o_id=\"t\"><name>French</name></log>" + entries +
           "</openSM2sync>";
}

// One type with these fields and templates.
std::string Types(const std::string& fields, const std::string& templates) {
    return "UPDATE col SET models = '{\"7\":{\"name\":\"Two\",\"type\":0,\"flds\":[" + fields +
           "],\"tmpls\":[" + templates + "]}}';";
}
const std::string kFields = R"({"name":"Word","ord":0},{"name":"Sense","ord":1})";

}  // namespace

TEST_F(HostileDeckTest, IsRefusedOrStaysSmall) {
    const std::string one = NoteRow(1, "g", 7, "a|b") + NewCard(1, 0);
    const std::string word = R"({"ord":0,"qfmt":"{{Word}}","afmt":"{{Sense}}"},)";
    const auto database = [this](const std::string& rows) { return MakeDatabase(Schema11(rows)); };
    const auto anki = [&](const std::string& rows) {
        return MakePackage({{"collection.anki2", database(rows)}});
    };
    const auto cards = [&](const std::string& entries) {
        return MakePackage({{"cards.xml", List(entries)}});
    };
    const std::string gaps =
        R"(<log type="16" o_id="f"><text>)" + Repeat("[x] yyyyyyy ", 3000) + "</text></log>" +
        Repeat(R"(<log type="6" o_id="c" card_t="5" fact="f" fact_v="5.1"/>)", 3000);
    const char* const growth = "The cards of the deck take more than 64 times the size of its";
    const struct {
        const char* Name;
        std::string Bytes;
        const char* Outcome;
    } decks[] = {
        {"sections within sections",
         anki(one + Types(kFields, R"({"ord":0,"qfmt":")" + Repeat("{{#Word}}", 20000) +
                                       Repeat("{{Word}}", 20000) + R"(","afmt":"{{Sense}}"})")),
         "1 inserted"},
        {"brackets within brackets",
         anki(one + "UPDATE col SET models='" + Repeat("[", 3000000) + "';"),
         "The description of the deck has more than 64 levels"},
        {"lists in a list", anki(one + "UPDATE col SET decks='[" + Repeat("[],", 3000000) + "0]';"),
         "The description of the deck has more than 500000 parts"},
        {"templates", anki(one + Types(kFields, Repeat(word, 300) + R"({"ord":1})")),
         "A kind of note in the deck has more than 256 templates"},
        {"fields of a type",
         anki(one + Types(Repeat(R"({"name":"Word"},)", 2000) + kFields, word + "0")),
         "A note in the deck has more than 1000 fields"},
        {"fields of a note", database(NoteRow(1, "g", 7, Repeat("|", 2000)) + NewCard(1, 0)),
         "A note in the deck has more than 1000 fields"},
        {"a long field", anki(NoteRow(1, "g", 7, Repeat("y", 30000000)) + NewCard(1, 0)), growth},
        {"cards of one gap",
         anki(NoteRow(1, "g", 8, "{{c1::x}}" + Repeat("y", 20000)) +
              "WITH RECURSIVE n(i) AS (SELECT 0 UNION ALL SELECT i + 1 FROM n WHERE i < 20000) "
              "INSERT INTO cards(nid, did, odid, ord, type, queue) SELECT 1, 2, 0, i % 7, 0, 0 "
              "FROM n;"),
         "1 inserted"},
        {"gaps of one text",
         anki(NoteRow(1, "g", 8, Count("{{c#::x}}", 3000)) +
              "WITH RECURSIVE n(i) AS (SELECT 0 UNION ALL SELECT i + 1 FROM n WHERE i < 3000) "
              "INSERT INTO cards(nid, did, odid, ord, type, queue) SELECT 1, 2, 0, i, 0, 0 FROM "
              "n;"),
         growth},
        {"more than a million cards",
         anki("WITH RECURSIVE n(i) AS (SELECT 0 UNION ALL SELECT i + 1 FROM n WHERE i < 1000000) "
              "INSERT INTO cards(nid) SELECT 1 FROM n;"),
         "The deck makes more than 1000000 cards."},
        {"tables without end",
         anki(
             "PRAGMA writable_schema = ON; WITH RECURSIVE n(i) AS (SELECT 0 UNION ALL SELECT i + 1 "
             "FROM n WHERE i < 200000) INSERT INTO sqlite_master SELECT 'table', 't' || i, "
             "'t' || i, 0, 'CREATE TABLE t' || i || '(a)' FROM n;"),
         "The deck is damaged."},
        {"quotes in tags",
         database(NoteRow(1, "g", 7, Repeat("<a =''>''=\"", 200000) + "x|b") + NewCard(1, 0)),
         "1 inserted"},
        {"readings without an end",
         database(NoteRow(1, "g", 7, "x" + Repeat(" [", 600000) + "]|b") + NewCard(1, 0)),
         "1 inserted"},
        {"a list packed once more",
         MakePackage(
             {{"cards.xml", GzipBytes(mDirectory.Path("list.gz"), List(Repeat(" ", 10000000)))}}),
         "The deck is damaged."},
        {"gaps of a fact", cards(gaps), growth},
        {"attributes", cards("<log " + Count("a#='' ", 60000) + "/>"),
         "An entry of the deck has more than 100 attributes"},
        {"a tag again and again",
         cards(R"(<log type="10" o_id="u"><name>)" + Repeat("u", 90000) +
               R"(</name></log><log type="16" o_id="f"><f>a</f><b>b</b></log>)"
               R"(<log type="6" o_id="c" card_t="1" fact="f" fact_v="1.1" tags="t,)" +
               Repeat("u,", 5000) + "\"/>"),
         growth},
    };
    for (const auto& deck : decks) {
        Query("DELETE FROM Cards");
        const Limits limits;
        EXPECT_THAT(ImportDeck(deck.Bytes), testing::StartsWith(deck.Outcome)) << deck.Name;
        EXPECT_EQ(Query("SELECT TOTAL(LENGTH(Front) + LENGTH(Notes)) < 3000000 FROM Cards"),
                  Strings{"1"})
            << deck.Name;
    }
    for (const char* const part : {"<style>", "[latex]", "<a b='", "<!--", "&amp", "<li>"}) {
        const Limits limits;
        HtmlLosses losses;
        const wxString html = Repeat(part, 200000);
        EXPECT_LE(ReadHtml(html, false, losses).Text.length(), html.length());
    }
}

// Somebody who was asked may want it all the same.
TEST_F(HostileDeckTest, GoesBeyondTheBoundsOnlyAfterAQuestion) {
    const std::string package = MakePackage(
        {{"collection.anki2",
          MakeDatabase(Schema11(NoteRow(1, "g", 8, Count("{{c#::x}}", 60) + Repeat("y", 3000)) +
                                "WITH RECURSIVE n(i) AS (SELECT 0 UNION ALL SELECT i + 1 FROM n "
                                "WHERE i < 59) INSERT INTO cards(nid, did, odid, ord, type, queue)"
                                " SELECT 1, 2, 0, i, 0, 0 FROM n;"))}});
    EXPECT_THAT(ImportDeck(package), testing::StartsWith("The cards of the deck take more than"));
    DeckOptions agreed;
    agreed.MayBeLarge = true;
    EXPECT_EQ(ImportDeck(package, agreed), "60 inserted, 0 merged, 0 ignored");
}

// Files that are called decks and are none, and packed files that are called something else.
TEST_F(HostileDeckTest, IsNoDeckByItsNameAlone) {
    const std::string book = MakePackage(
        {{"[Content_Types].xml", Count("<a#/>", 200)}, {"xl/workbook.xml", Count("<b#/>", 200)}});
    const std::string empty("PK\x05\x06\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0", 22);
    const char* const noDeck = "This file has the name of a deck, but there is no deck in it.";
    const char* const packed = "This file is a spreadsheet or another packed file";
    const std::tuple<const char*, std::string, const char*> files[] = {
        {"pointer.apkg", "version https://example.com/pointer/v1\noid sha256:4d7a\nsize 12\n",
         noDeck},
        {"list.CARDS", "Front: a\nBack: b\n", noDeck},
        {"table.colpkg", "a\tb\nc\td\n", noDeck},
        {"nothing.apkg", "", noDeck},
        {"empty.apkg", empty, noDeck},
        {"book.apkg", book, noDeck},
        {"book.xlsx", book, packed},
        {"cut.xlsx", book.substr(0, book.size() / 2), packed},
        {"empty.zip", empty, packed},
    };
    for (const auto& [name, bytes, outcome] : files) {
        ImportInput input;
        input.FileName = mDirectory.Path(name);
        WriteBytes(input.FileName, bytes);
        EXPECT_FALSE(DeckFile::IsDeck(input.FileName)) << name;
        GuessFormat(input, mDatabase);
        Run(input);
        EXPECT_THAT(Outcome(), testing::StartsWith(outcome)) << name;
    }
}

// What a program has not yet written to its database itself comes along, and what cannot be known
// is refused. The files of the person stay as they are.
TEST_F(HostileDeckTest, TakesTheLogBesideADatabase) {
    const wxString made = mDirectory.Path("made.anki2");
    ASSERT_EQ(WriteDatabase(made, Schema11("") + "PRAGMA journal_mode = WAL;"), "");
    const wxString half = mDirectory.Path("half.anki2");
    LeaveHalfDone(made, half,
                  "PRAGMA wal_autocheckpoint = 0;" + NoteRow(1, "g", 7, "a|b") + NewCard(1, 0));
    const std::string main = ReadBytes(half);
    const std::string log = ReadBytes(half + "-wal");

    const wxString path = mDirectory.Path("My deck.bin");
    WriteBytes(path + "-wal", log);
    EXPECT_EQ(ImportDeck(main), "1 inserted, 0 merged, 0 ignored");
    EXPECT_EQ(ReadBytes(path), main);
    EXPECT_EQ(ReadBytes(path + "-wal"), log);
    WriteBytes(path + "-wal", "");
    WriteBytes(path + "-journal", "\xD9\xD5\x05\xF9 and so on");
    EXPECT_THAT(ImportDeck(main), testing::StartsWith("Another program is writing to the deck"));
}
