#include "formats/Table.h"

#include <gtest/gtest.h>
#include <wx/strconv.h>

#include "exchange/ImportFixture.h"

namespace {

// The bytes of a text in an encoding, without a mark.
std::string In(const char* encoding, const std::string& text) {
    const wxString wide = wxString::FromUTF8(text);
    const wxCSConv converter{wxString(encoding)};
    // Without the zeros at the end, and with a zero that is half of a character.
    const size_t length = converter.FromWChar(nullptr, 0, wide.wc_str(), wide.length());
    std::string bytes(length, '\0');
    converter.FromWChar(bytes.data(), length, wide.wc_str(), wide.length());
    return bytes;
}

struct TableTest : ImportFixture {
    // Imports a file as it is guessed to be, and returns its cards, "/" behind each, or the fault.
    std::string Take(const std::string& bytes) {
        ImportInput input = TextFile(bytes);
        GuessFormat(input, mDatabase);
        if (Run(input) < 0) {
            return Outcome();
        }
        std::string text;
        for (const std::string& card : Cards()) {
            text += card + "/";
        }
        Query("DELETE FROM Cards");
        return text;
    }

    Strings Cards() {
        return Query(
            "SELECT Front || '=' || Back || iif(Notes = '', '', ' {' || Notes || '}') ||"
            " iif(Name = 'Default', '', ' <' || Name || '>')"
            " FROM Cards f JOIN Categories c ON f.CategoryId = c.Id"
            " ORDER BY CategoryId, IntroductionOrder");
    }
};

}  // namespace

// Each goes in as a person means it, without a question.
TEST_F(TableTest, TakesTablesAsPeopleHaveThem) {
    const std::string two = "Hund=dog/Katze=cat/";
    const std::tuple<const char*, std::string, std::string> cases[] = {
        {"own form", "Front\tBack\nHund\tdog\nKatze\tcat\n", two},
        {"own form with escapes", "Front,Back\na\\nb,c\n", "a\nb=c/"},
        {"own text form", "Q: Hund\nA: dog\n\nQ: Katze\nA: cat\n", two},
        {"tabs and no names", "Hund\tdog\nKatze\tcat\n", two},
        {"commas and no names", "Hund,dog\nKatze,cat\n", two},
        {"semicolons", "Hund;dog\nKatze;cat\n", two},
        {"pipes", "Hund | dog\nKatze | cat\n", two},
        {"hyphens in a mail", "Hund - dog\n\nKatze - cat\n", two},
        {"dashes", "Hund \u2013 dog\nKatze \u2013 cat\n", two},
        {"equals signs", "Hund = dog\nKatze = cat\n", two},
        {"colons", "Hund: dog\nKatze: cat\n", two},
        {"two words a line", "Hund dog\nKatze cat\n", two},
        {"commas beside a tab", "Hund, der\ta dog, any\nKatze\tcat\n",
         "Hund, der=a dog, any/Katze=cat/"},
        {"a comma beside a hyphen", "Hund, der - dog\nKatze, die - cat\n",
         "Hund, der=dog/Katze, die=cat/"},
        {"German headings", "Vokabel;\u00DCbersetzung;Tags\nHund;dog;Tier\n",
         "Hund=dog {Tags: Tier}/"},
        {"languages", "Deutsch,Englisch\nHund,dog\nKatze,cat\n", two},
        {"Japanese headings", "\u5358\u8A9E,\u8AAD\u307F,\u610F\u5473\n\u72AC,\u3044\u306C,dog\n",
         "\u72AC\n\u3010\u3044\u306C\u3011=dog/"},
        {"sides the other way round", "Translation,Word\ndog,Hund\n", "Hund=dog/"},
        {"a number before each row", "Nr.,Wort,Meaning\n1,Hund,dog\n2,Katze,cat\n", two},
        {"numbers without a name", "1;Hund;dog\n2;Katze;cat\n", two},
        {"a topic and an example", "Word,Meaning,Topic,Example\nHund,dog,Pets,Der Hund.\n",
         "Hund=dog {Der Hund.} <Pets>/"},
        {"a name that says nothing", "Word,Meaning,Wordel\nHund,dog,x\n", "Hund=dog {Wordel: x}/"},
        {"a list of such words", "Frage\tquestion\nAntwort\tanswer\n",
         "Frage=question/Antwort=answer/"},
        {"delimiters at the end", "Front;Back;;\nHund;dog;;\nKatze;cat;;\n;;;\n", two},
        {"more columns than names", "Front,Back\nHund,dog,more\nKatze,cat\n", two},
        {"Excel's own line", "sep=;\r\nWort;Meaning\r\nHund;dog\r\nKatze;cat\r\n", two},
        {"quoted fields", "\"Word\",\"Meaning\"\n\"Hund\",\"a \"\"dog\"\",\nany\"\n",
         "Hund=a \"dog\",\nany/"},
        {"two quoted sentences",
         "\"Thank you.\" \"You are welcome.\"\t\"Danke.\" \"Bitte.\"\nbye\ttschau\n",
         "\"Thank you.\" \"You are welcome.\"=\"Danke.\" \"Bitte.\"/bye=tschau/"},
        {"a quote and more behind it",
         "Brautschau\t\"auf Brautschau gehen\" - go looking\nHund\tdog\n",
         "Brautschau=\"auf Brautschau gehen\" - go looking/Hund=dog/"},
        {"an open quote among rows", "a dog\t\"der Hund\na cat\tdie Katze\na cow\tdie Kuh\n",
         "a dog=\"der Hund/a cat=die Katze/a cow=die Kuh/"},
        {"a quote that is open in a quoted column",
         "a dog,\"der, ein\"\na cat,\"die, eine\"\na cow,\"die Kuh\nan ox,\"der, ein\"\n",
         "a dog=der, ein/a cat=die, eine/a cow=\"die Kuh/an ox=der, ein/"},
        {"quotes around some words only",
         "say,\"sagen\" oder\nyes,\"ja\" und \"doch\"\nno,\"nein\"\n",
         "say=\"sagen\" oder/yes=\"ja\" und \"doch\"/no=\"nein\"/"},
        {"a letter is no heading", "a\tto, at\nabaisser\tto lower\n",
         "a=to, at/abaisser=to lower/"},
        {"nor is another", "q\tthe letter\nr\tanother\n", "q=the letter/r=another/"},
        {"a language's code is a word", "it\tes\u00A0(etwas)\nhe\ter\n",
         "it=es\u00A0(etwas)/he=er/"},
        {"a word that names a side", "back\tR\u00FCcken\nfront\tVorderseite\n",
         "back=R\u00FCcken/front=Vorderseite/"},
        {"one known name over numbers", "Zusatz,Wort,Gloss\n1,Hund,dog\n2,Katze,cat\n", two},
        {"one known name over another alphabet",
         "Word,Slovo po-russki\ndog,\u043F\u0451\u0441\n"
         "cat,\u043A\u043E\u0442\n",
         "dog=\u043F\u0451\u0441/cat=\u043A\u043E\u0442/"},
        {"a pair that is an attribute by chance",
         "book: Buch\nback: R\u00FCcken\ndog: Hund\n"
         "cat: Katze\n",
         "book=Buch/back=R\u00FCcken/dog=Hund/cat=Katze/"},
        {"formulas of the own form", "Front,Back\n$\\nu$,frequency\n$\\rho$,density\n",
         "$\\nu$=frequency/$\\rho$=density/"},
        {"formulas beside escapes", "Front,Back\n$\\\\nu$,a\\nb\n", "$\\nu$=a\nb/"},
        {"short Windows-1252 in the own form",
         In("windows-1252", "Front,Back\npi\u00F9,pi\u00F9\ngi\u00E0,gi\u00E0\n"),
         "pi\u00F9=pi\u00F9/gi\u00E0=gi\u00E0/"},
        {"short Windows-1252 in the own text form",
         In("windows-1252", "Front: pi\u00F9, gi\u00E0\nBack: gi\u00E0\n"),
         "pi\u00F9, gi\u00E0=gi\u00E0/"},
        {"ISO-2022-JP", In("iso-2022-jp", "\u72AC\tdog\n\u732B\tcat\n"), "\u72AC=dog/\u732B=cat/"},
        {"a backslash is a backslash", "C:\\new\tpath\nx\ty\n", "C:\\new=path/x=y/"},
        {"an id that is a number", "id,front,back\n1,Hund,dog\n2,Katze,cat\n", two},
        {"old Mac line breaks", "Hund;dog\rKatze;cat\r", two},
        {"Windows-1252", In("windows-1252", "M\u00FCll;garbage\nStra\u00DFe;street\n"),
         "M\u00FCll=garbage/Stra\u00DFe=street/"},
        {"UTF-16 with a mark", "\xFF\xFE" + In("UTF-16LE", "Hund\tdog\nKatze\tcat\n"), two},
        {"UTF-16LE without a mark", In("UTF-16LE", "Front\tBack\nHund\tdog\nKatze\tcat\n"), two},
        {"UTF-16BE without a mark", In("UTF-16BE", "Hund\tdog\nKatze\tcat\n"), two},
        {"Shift-JIS",
         In("shift_jis", "\u72AC;\u3044\u306C\n\u65E5\u672C\u8A9E;\u306B\u307B\u3093\u3054\n"),
         "\u72AC=\u3044\u306C/\u65E5\u672C\u8A9E=\u306B\u307B\u3093\u3054/"},
        {"GB18030", In("gb18030", "\u72D7;dog\n\u4E2D\u6587;Chinese\n"),
         "\u72D7=dog/\u4E2D\u6587=Chinese/"},
        {"Big5", In("big5", "\u72D7;dog\n\u4E2D\u6587;Chinese\n\u5B78\u6821;school\n"),
         "\u72D7=dog/\u4E2D\u6587=Chinese/\u5B78\u6821=school/"},
        {"EUC-KR", In("euc-kr", "\uAC1C;dog\n\uACE0\uC591\uC774;cat\n\uD55C\uAD6D\uC5B4;Korean\n"),
         "\uAC1C=dog/\uACE0\uC591\uC774=cat/\uD55C\uAD6D\uC5B4=Korean/"},
        {"KOI8-R",
         In("koi8-r",
            "\u0441\u043E\u0431\u0430\u043A\u0430;dog\n"
            "\u043A\u043E\u0448\u043A\u0430;cat\n\u0434\u043E\u043C;house\n"),
         "\u0441\u043E\u0431\u0430\u043A\u0430=dog/\u043A\u043E\u0448\u043A\u0430=cat/"
         "\u0434\u043E\u043C=house/"},
        {"Windows-1251",
         In("windows-1251",
            "\u0441\u043E\u0431\u0430\u043A\u0430;dog\n"
            "\u043A\u043E\u0448\u043A\u0430;cat\n"),
         "\u0441\u043E\u0431\u0430\u043A\u0430=dog/\u043A\u043E\u0448\u043A\u0430=cat/"},
        {"Anki's text in HTML",
         "#separator:tab\n#html:true\n#tags column:3\nHund<br>der\tdog &amp; co\tpets big\n"
         "<img src=\"a.png\">\ta picture\t\n<img src=\"a.txt\">\tleft out\t\n",
         "Hund\nder=dog & co {Tags: pets big}/[picture: a.png]=a picture/"},
        {"Anki's text with names",
         "#separator:Comma\n#html:false\n#columns:guid,deck,Text,Extra\n#guid column:1\n"
         "#deck column:2\nx!,A::B,<b>,dog\n# a comment\n",
         "<b>=dog <A::B>/"},
        {"Anki's text for one deck", "#separator:Pipe\n#deck:Pets\n#tags:new\nHund|dog\n",
         "Hund=dog {Tags: new} <Pets>/"},
        {"Anki's text without keys", "Hund<br>der\tdog\nKatze\t&nbsp;cat\n",
         "Hund\nder=dog/Katze=cat/"},
    };
    for (const auto& [what, bytes, cards] : cases) {
        EXPECT_EQ(Take(bytes), cards) << what;
    }
}

// What does not go in is told, and nothing is stored.
TEST_F(TableTest, TellsWhatIsNoTable) {
    const std::tuple<const char*, std::string, std::string> cases[] = {
        {"words alone", "Hund\nKatze\n", "Line is missing the colon (:) symbol @1"},
        {"prose", "A text, as people write one. It goes on.\nIt has no columns at all\nand ends.\n",
         "Line is missing the colon (:) symbol @1"},
        {"a row without a back", "Word;Meaning\nHund;dog\nKatze;\n",
         "Every card must have an back attribute. @3"},
        {"a spreadsheet's own file", "PK\3\4 Front,Back\na,b\n",
         "This file is a spreadsheet or another packed file, and no text.  Save it as CSV first. "
         "@-1"},
        {"a wrong date in the own form", "Front,Back,LastReview\na,b,soon\n",
         "\"LastReview\" must be followed by a valid date in this format YYYY-MM-DD hh:mm:ss @2"},
        {"an empty field in the own form", "Front,Back\n,b\nc,d\n",
         "Every card must have a front attribute. @2"},
        {"a first row without a back", "Hund;\nKatze;cat\nKuh;cow\n",
         "Every card must have an back attribute. @1"},
        {"a first row without a back below headings", "Word;Meaning\nHund;\nKatze;cat\n",
         "Every card must have an back attribute. @2"},
        {"a misspelt attribute in the first card",
         "Front: Hund\nBakc: dog\n\nFront: Katze\nBack: cat\n",
         "\"Bakc\" is not a valid attribute name. @2"},
        {"an open quote in the own form", "Front\tBack\na\tb\n\"c\td\ne\t\"f\"\n",
         "A double quote opens a field here, and no other one closes it in front of a delimiter or "
         "at "
         "the end of a line. @3"},
    };
    for (const auto& [what, bytes, fault] : cases) {
        EXPECT_EQ(Take(bytes), fault) << what;
        EXPECT_TRUE(Cards().empty()) << what;
    }
}
