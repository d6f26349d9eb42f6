#include "exchange/DelimitedReader.h"

#include <gtest/gtest.h>

#include "exchange/ReaderTexts.h"

namespace {

using Row = std::vector<std::string>;

// Reads a table of eight columns of a comma separated text, as the rows' values.
std::vector<Row> Rows(const std::string& text, wchar_t delimiter = L',') {
    const std::string mark(1, static_cast<char>(delimiter == 0 ? ',' : delimiter));
    TextOfBytes file("1" + mark + "2" + mark + "3\n" + text);
    DelimitedReader reader(file.Source(), delimiter);
    std::vector<Row> rows;
    while (reader.ReadRecord()) {
        Row row;
        for (uint32_t i = 0; i < reader.GetAttributeCount(); ++i) {
            row.push_back(reader.GetAttribute(i).Value.utf8_string());
        }
        rows.push_back(row);
    }
    return rows;
}

struct RowCase {
    const char* What;
    std::string Text;
    std::vector<Row> Rows;
};

const RowCase kRows[] = {
    {"plain", "a,b,c\n", {{"a", "b", "c"}}},
    {"no last line break", "a,b,c", {{"a", "b", "c"}}},
    {"short and long rows", "a\nb,c,d,e,f\n", {{"a", "", ""}, {"b", "c", "d"}}},
    {"a short row behind a long one", "a,b,c\nd\n", {{"a", "b", "c"}, {"d", "", ""}}},
    {"every line break",
     "a\rb\r\nc\n\rd\ne",
     {{"a", "", ""}, {"b", "", ""}, {"c", "", ""}, {"d", "", ""}, {"e", "", ""}}},
    {"blank rows", "\n \n\na\n\n\n", {{"a", "", ""}}},
    {"only delimiters are no blank row", ",\n", {{"", "", ""}}},
    {"trimmed, inside quotes too",
     " a ,\" b \",\xE3\x80\x80"
     "c\xC2\xA0",
     {{"a", "b", "c"}}},
    {"quoted delimiter", "\"a,b\",c", {{"a,b", "c", ""}}},
    {"doubled quotes", "\"say \"\"hi\"\"\",x", {{"say \"hi\"", "x", ""}}},
    {"text behind a closing quote", "\"a\"b,c", {{"a", "b", "c"}}},
    {"text behind a closing quote at the end", "\"a\"b", {{"a", "b", ""}}},
    {"a blank behind a closing quote", "\"a\" ,b", {{"a", "", "b"}}},
    {"a quote inside", "a\"b,\"c", {{"a\"b", "c", ""}}},
    {"delimiter and quote undoubled", "\"x,\"y\"", {{"x,", "y\"", ""}}},
    {"lines inside quotes", "\"a\r\nb\",c\nd", {{"a\r\nb", "c", ""}, {"d", "", ""}}},
    {"an open quote", "a,\"b\nc,d\n", {{"a", "b\nc,d", ""}}},
    {"an open quote with nothing in it", "a,\"", {{"a", "", ""}}},
    {"an empty quoted field", "\"\",a", {{"", "a", ""}}},
    {"escapes", "a\\nb,a\\\\nb,\\r\\q\\", {{"a\nb", "a\\nb", "\r\\q\\"}}},
    {"a lone backslash", "\\,\" \\ \",\\\\", {{"\\", "\\", "\\"}}},
};

}  // namespace

TEST(DelimitedReader, ReadsFields) {
    for (const RowCase& row : kRows) {
        EXPECT_EQ(Rows(row.Text), row.Rows) << row.What;
    }
}

TEST(DelimitedReader, TakesAnyDelimiter) {
    EXPECT_EQ(Rows("a\tb,\tc\n", L'\t'), (std::vector<Row>{{"a", "b,", "c"}}));
    EXPECT_EQ(Rows("a  b\n", L' '), (std::vector<Row>{{"a", "", "b"}}));
    // A quote cannot both part and enclose fields; the text is read to its end all the same.
    EXPECT_EQ(Rows("a\"b\n", L'"'), (std::vector<Row>{{"a", "b", ""}}));
    // Without a delimiter a row is one field.
    EXPECT_EQ(Rows("a,b\nc", 0), (std::vector<Row>{{"a,b"}, {"c"}}));
}

TEST(DelimitedReader, CountsRowsAndKeepsTheSpellingOfNames) {
    TextOfBytes text("Front,\"B,x\" ,c\\nd\n\r\"a\nb\",c\r\n\r\nd,e");
    DelimitedReader reader(text.Source(), L',');
    ASSERT_EQ(reader.GetColumnCount(), 4U);
    EXPECT_EQ(reader.GetLineNumber(), 1);
    const std::vector<Record> expected{
        {"Front@2=a\nb", "B,x@2=c", "@2=", "c\nd@2="},
        {"Front@4=d", "B,x@4=e", "@4=", "c\nd@4="},
    };
    EXPECT_EQ(ReadAll(reader), expected);
    EXPECT_EQ(reader.GetError(), 0);
}

TEST(DelimitedReader, HasNoRecordsWithoutRows) {
    for (const char* bytes : {"", "\xEF\xBB\xBF", "Front,Back", "Front,Back\r\n", "Front\n\n\n"}) {
        TextOfBytes text(bytes);
        DelimitedReader reader(text.Source(), L',');
        EXPECT_TRUE(ReadAll(reader).empty()) << bytes;
        EXPECT_EQ(reader.GetAttributeCount(), 0U) << bytes;
    }
}
