#include "formats/Delimited.h"

#include <gtest/gtest.h>

#include "formats/ReaderTexts.h"

namespace {

// The values of a table of three columns, "|" between them and "/" behind each row.
std::string Rows(const std::string& text, char delimiter = ',') {
    TextOfBytes file(std::string("1") + delimiter + "2" + delimiter + "3\n" + text);
    DelimitedReader reader(file.Source(), static_cast<wchar_t>(delimiter));
    std::string rows;
    for (; reader.ReadRecord(); rows += "/") {
        for (uint32_t i = 0; i < reader.GetAttributeCount(); ++i) {
            rows += (i == 0 ? "" : "|") + reader.GetAttribute(i).Value.utf8_string();
        }
    }
    return rows;
}

}  // namespace

TEST(DelimitedReader, ReadsFields) {
    const std::tuple<const char*, std::string, std::string> cases[] = {
        {"long and short rows", "a,b,c,d,e\nf\n", "a|b|c/f||/"},
        {"every line break", "a\rb\r\nc\n\rd\ne", "a||/b||/c||/d||/e||/"},
        {"blank rows", "\n \n\na\n\n\n", "a||/"},
        {"only delimiters are no blank row", ",\n", "||/"},
        {"trimmed, inside quotes too", " a ,\" b \",\xE3\x80\x80z\xC2\xA0", "a|b|z/"},
        {"a quoted delimiter", "\"a,b\",c", "a,b|c|/"},
        {"doubled quotes", "\"say \"\"hi\"\"\",x", "say \"hi\"|x|/"},
        {"text behind a closing quote", "\"a\"b,c", "a|b|c/"},
        {"a quote inside", "a\"b,\"c", "a\"b|c|/"},
        {"delimiter and quote undoubled", "\"x,\"y\"", "x,|y\"|/"},
        {"lines inside quotes", "\"a\r\nb\",c\nd", "a\r\nb|c|/d||/"},
        {"an open quote", "a,\"b", "a|b|/"},
        {"an open quote with nothing in it", "a,\"", "a||/"},
        {"an empty quoted field", "\"\",a", "|a|/"},
        {"escapes", "a\\nb,a\\\\nb,\\r\\q\\", "a\nb|a\\nb|\r\\q\\/"},
        {"a lone backslash", "\\,\" \\ \",\\\\", "\\|\\|\\/"},
    };
    for (const auto& [what, text, rows] : cases) {
        EXPECT_EQ(Rows(text), rows) << what;
    }
    EXPECT_EQ(Rows("a\tb,\tc\n", '\t'), "a|b,|c/");
    EXPECT_EQ(Rows("a  b\n", ' '), "a||b/");
    // A quote cannot both part and enclose fields; the text is read to its end all the same.
    EXPECT_EQ(Rows("a\"b\n", '"'), "a|b|/");
}

// Exported rows never cross lines, so this is a quote that a person has forgotten. The rows after
// the faulty line are read all the same, to find their faults.
TEST(DelimitedReader, RefusesAnOpenQuoteThatSwallowsRows) {
    const std::tuple<const char*, std::string, int32_t, std::string> cases[] = {
        {"closed inside another field", "1,2\na,b\nc,\"d\ne,\"f\"\ng,h\n", 3, "g|h/"},
        {"never closed", "1,2\na,b\nc,\"d\ne,f\n", 3, ""},
        {"after a field of two lines", "1,2\r\n\"a\r\nb\",c\r\nd,\"e\r\nf\" g\r\nh,i\r\n", 4,
         "h|i/"},
        {"closed on its own line", "1,2\n\"a\"b\n", 0, ""},
    };
    for (const auto& [what, text, line, rest] : cases) {
        TextOfBytes file(text);
        DelimitedReader reader(file.Source(), L',');
        while (reader.ReadRecord()) {
        }
        EXPECT_EQ(reader.GetError(), line > 0 ? reader.kOpenQuote : reader.kNoError) << what;
        EXPECT_EQ(line > 0 ? reader.GetLineNumber() : 0, line) << what;
        std::string rows;
        for (; reader.ReadRecord(); rows += "/") {
            rows += reader.GetAttribute(0).Value.utf8_string() + "|" +
                    reader.GetAttribute(1).Value.utf8_string();
        }
        EXPECT_EQ(rows, rest) << what;
    }
}
