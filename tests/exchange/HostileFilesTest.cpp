// Files that nobody would write by hand. Each ends with a message or a clean import.

#include "exchange/ImportFixture.h"

using namespace std::string_literals;

namespace {

class HostileFiles : public ImportFixture {};

std::string Repeat(const std::string& piece, int times) {
    std::string text;
    for (int i = 0; i < times; ++i) {
        text += piece;
    }
    return text;
}

}  // namespace

TEST_F(HostileFiles, EndWithAMessageOrACleanImport) {
    const std::string none = "0 inserted, 0 merged, 0 ignored";
    const std::string one = "1 inserted, 0 merged, 0 ignored";
    const std::string repeated =
        "This card attribute has already been specified.  Individual cards must be separated by a "
        "blank line. @";
    const std::string big(300000, 'x');
    const struct {
        const char* What;
        bool IsTable;
        std::string Bytes;
        std::string Outcome;
    } cases[] = {
        {"nothing, as a table", true, "", none},
        {"a header", true, "Front,Back", none},
        {"a wide header", true, Repeat("front,", 100000) + "front\n", none},
        {"a wide header and a row", true, Repeat("front,", 100000) + "front\nx\n", repeated + "2"},
        {"a wide header of no names", true, Repeat("x", 50) + Repeat(",", 100000),
         "\"" + Repeat("x", 50) + "\" is not a valid attribute name. @1"},
        {"a wide row", true, "Front,Back\na,b" + Repeat(",c", 100000), one},
        {"blank rows", true, "Front,Back" + Repeat("\r\n", 100000), none},
        {"blank lines", false, Repeat("\n", 100000), none},
        {"long fields", true, "Front,Back\n" + big + ",\"" + big, one},
        {"long lines", false, "f: " + big + "1\nb: " + big, one},
        {"many lines", false, "f: a2\nb: b\n" + Repeat("Notes: n\n", 100000), one},
        {"many names", false, Repeat("f: a\nb: b\n", 100000), repeated + "3"},
        {"an open quote", true, "Front,Back\nc,\"" + Repeat("x,y\n", 100000), one},
        {"an open quote in the header", true, "Front,\"" + Repeat("Back\n", 1000),
         "\"" + Repeat("Back\n", 40) + "\xE2\x80\xA6\" is not a valid attribute name. @1"},
        {"NULs", true, "Front,Back\nd\0d,\0"s, one},
        {"bad UTF-8", false,
         "\xEF\xBB\xBF"
         "f: e\xFF\nb: \xC3",
         one},
        {"lone surrogates", false, "\xFE\xFF\0f\0:\xD8\x3D\0\n\0b\0:\xDE\0\0"s, one},
        {"UTF-16 without a mark", false, "f\0:\0a\0"s,
         "\"f\xEF\xBF\xBD\" is not a valid attribute name. @1"},
    };
    for (const auto& row : cases) {
        row.IsTable ? ImportTable(row.Bytes) : Import(row.Bytes);
        EXPECT_EQ(Outcome(), row.Outcome) << row.What;
    }
    // Nothing behind a NUL is lost.
    EXPECT_EQ(Query("SELECT Front, Back FROM Cards WHERE Front LIKE 'd%'"),
              std::vector<std::string>{"d\xEF\xBF\xBD"
                                       "d|\xEF\xBF\xBD"});
    EXPECT_EQ(Query("SELECT length(Front), length(Back) FROM Cards WHERE length(Front) > 1000"),
              (std::vector<std::string>{"300000|300000", "300001|300000"}));
}
