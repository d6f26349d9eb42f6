#include "exchange/VlmTextReader.h"

#include <gtest/gtest.h>

#include "exchange/ReaderTexts.h"

namespace {

const std::string kWideBlank = "\xE3\x80\x80";
const std::string kWideColon = "\xEF\xBC\x9A";

}  // namespace

TEST(VlmTextReader, ReadsRecordsAndNamesTheLineOfAnError) {
    const struct {
        const char* What;
        std::string Text, Records;
        int32_t Error, Line;
    } cases[] = {
        {"only comments", "# a\n  # b: c\n", "", 0, 3},
        {"two records", "F: a\nB: b\n\nQ: c\nA: d", "F@1=a|B@2=b/Q@4=c|A@5=d/", 0, 6},
        {"blank lines are records", "\n\nf: a\n \n\n", "//f@3=a//", 0, 6},
        {"a value of lines", "f: a\nf: b\nf:\nf: c\nb: d", "f@1=a\nb\n\nc|b@5=d/", 0, 6},
        {"blank lines around a value", "f:\nf: a\nf:\nb:\nb:\n", "f@1=a|b@4=/", 0, 6},
        {"a comment inside a value", "f: a\n#f: x\nf: b\n", "f@1=a\nb/", 0, 4},
        {"only the first separator counts", " f : a:b ", "f@1=a:b/", 0, 2},
        {"wide ones", kWideBlank + "f" + kWideColon + kWideBlank + "a\xC2\xA0", "f@1=a/", 0, 2},
        {"names differ by case", "f: a\nF: b\n", "f@1=a|F@2=b/", 0, 3},
        {"every line break", "f: a\rb: c\r\n\r\nf: d\n", "f@1=a|b@2=c/f@4=d/", 0, 5},
        {"no separator", "f: a\nfront\nb: c\n", "", 1, 2},
        {"a repeated name", "f: a\nb: b\nf: c\n", "", 2, 3},
        {"an error in the second record", "f: a\n\n#\nx\n", "f@1=a/", 1, 4},
    };
    for (const auto& row : cases) {
        TextOfBytes text(row.Text);
        VlmTextReader reader(text.Source(), false);
        EXPECT_EQ(ReadAll(reader), row.Records) << row.What;
        EXPECT_EQ(reader.GetError(), row.Error) << row.What;
        EXPECT_EQ(reader.GetLineNumber(), row.Line) << row.What;
    }
}

TEST(VlmTextReader, TakesNamesThatDifferByCaseForOneWhenAsked) {
    TextOfBytes text("F: a\nf: b\nB: c\nf: d\n");
    VlmTextReader reader(text.Source(), true);
    EXPECT_EQ(ReadAll(reader), "");
    EXPECT_EQ(reader.GetLineNumber(), 4);
}

TEST(VlmTextReader, FindsARepeatAmongManyNames) {
    std::string many;
    for (int i = 0; i < 2000; ++i) {
        many += "n" + std::to_string(i) + ": v\n";
    }
    for (const char* repeated : {"n3: v\n", "n31: v\n", "n32: v\n", "n1998: v\n"}) {
        TextOfBytes text(many + repeated);
        VlmTextReader reader(text.Source(), false);
        EXPECT_FALSE(reader.ReadRecord()) << repeated;
        EXPECT_EQ(reader.GetLineNumber(), 2001) << repeated;
    }
}
