#include "cli/CardsOutput.h"

#include <gmock/gmock.h>

#include <cstdio>

#include "exchange/ImportJob.h"
#include "exchange/ImportPass.h"
#include "files/StoreRepair.h"
#include "formats/CardRecord.h"

namespace {

template <class Function>
std::string Printed(Function print) {
    ::testing::internal::CaptureStdout();
    EXPECT_TRUE(print());
    std::fflush(stdout);
    return ::testing::internal::GetCapturedStdout();
}

// A line of a table has as many cells as its neighbours, whatever is in them, and what has no line
// number says so instead of "0".
TEST(CardsOutput, LinesAreForOneRowAndJsonForOneValue) {
    CategoryCounts counts;
    counts.Name = "A\tb\r\nc \u00e4";
    counts.Cards = 7;
    counts.Forward = {6, 5, 4};
    counts.Reverse = {3, 2, 1};
    const std::vector<CategoryCounts> categories = {counts};
    const std::vector<ImportFault> faults = {{"bad\ntext", 4}, {"no line", -1}};
    ImportResult result;
    result.RecordsInserted = 2;
    result.Message = "broken";
    const auto printed = [&](bool json) {
        return Printed([&] { return PrintDue(categories, json); }) +
               Printed([&] { return PrintFaults(faults, json); }) +
               Printed([&] { return PrintImport(result, {"left out"}, json); }) +
               Printed([&] { return PrintPath("a b", json); });
    };
    EXPECT_EQ(printed(false),
              "4\t1\tA b  c \u00e4\n4: bad text\nno line\nleft out\n"
              "Inserted: 2, merged: 0, duplicates ignored: 0\na b\n");
    EXPECT_EQ(printed(true),
              "[{\"category\":\"A\\tb\\r\\nc \u00e4\",\"forward\":4,\"reverse\":1}]\n"
              "[{\"line\":4,\"message\":\"bad\\ntext\"},{\"line\":null,\"message\":\"no line\"}]\n"
              "{\"inserted\":2,\"merged\":0,\"duplicates\":0,\"message\":\"broken\",\"line\":null,"
              "\"notices\":[\"left out\"]}\n{\"backup\":\"a b\"}\n");
    const std::string table = Printed([&] { return PrintStats("s.vlm", categories, false); });
    EXPECT_THAT(table, ::testing::EndsWith("\n7\t5\t4\t2\t1\tA b  c \u00e4\n"));
    EXPECT_THAT(Printed([&] { return PrintStats("s.vlm", categories, true); }),
                ::testing::AllOf(::testing::HasSubstr("\"store\":\"s.vlm\""),
                                 ::testing::HasSubstr("{\"studied\":3,\"introduced\":2,"
                                                      "\"due\":1}")));
}

}  // namespace
