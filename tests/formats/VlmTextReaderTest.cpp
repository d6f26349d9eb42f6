#include "formats/VlmText.h"

#include <gtest/gtest.h>

#include "formats/ReaderTexts.h"

namespace {

const std::string kWideBlank = "\xE3\x80\x80";
const std::string kWideColon = "\xEF\xBC\x9A";

std::string ManyNames() {
    std::string names;
    for (int i = 0; i < 2000; ++i) {
        names += "n" + std::to_string(i) + ": v\n";
    }
    return names;
}

}  // namespace

TEST(VlmTextReader, ReadsRecordsAndNamesTheLineOfAnError) {
    const struct {
        const char* What;
        std::string Text, Records;
        int32_t Error, Line;
        bool IgnoreCase = false;
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
        {"names that differ by case alone", "F: a\nf: b\nB: c\nf: d\n", "", 2, 4, true},
        {"the last one searched in order", ManyNames() + "n31: v\n", "", 2, 2001},
        {"the first one looked up", ManyNames() + "n32: v\n", "", 2, 2001},
    };
    for (const auto& row : cases) {
        TextOfBytes text(row.Text);
        VlmTextReader reader(text.Source(), row.IgnoreCase);
        EXPECT_EQ(ReadAll(reader), row.Records) << row.What;
        EXPECT_EQ(reader.GetError(), row.Error) << row.What;
        EXPECT_EQ(reader.GetLineNumber(), row.Line) << row.What;
    }
}
