#include "cli/CardsOptions.h"

#include <getopt.h>
#include <gmock/gmock.h>

#include <string>
#include <vector>

namespace {

using Words = std::vector<std::string>;

CommandLineAnswer Read(Words words, CardsOptions& options, wxString& text) {
    words.insert(words.begin(), "velomind-cards");
    std::vector<char*> argv;
    for (std::string& word : words) {
        argv.push_back(word.data());
    }
    argv.push_back(nullptr);
    // The option parser of the system keeps its place between two lines.
    optind = 0;
    return ReadCommandLine(static_cast<int>(words.size()), argv.data(), options, text);
}

// The roads of velomind-cards try all others.
TEST(CardsOptions, TakesWhatIsRarelyWritten) {
    const auto take = [](const Words& words) {
        CardsOptions options;
        wxString text;
        EXPECT_EQ(Read(words, options, text), CommandLineAnswer::kRun) << text;
        return options;
    };
    const CardsOptions list = take({"list", "--category", "\u6f22\u5b57", "--", "--json"});
    EXPECT_EQ(list.Category, L"\u6f22\u5b57");
    EXPECT_THAT(list.Operands, ::testing::ElementsAre("--json"));
    EXPECT_FALSE(list.Json);
    const CardsOptions import = take({"import", "--columns", "front,,back", "--known=update", "a"});
    EXPECT_EQ(import.Columns.size(), 3U);
    EXPECT_EQ(import.Known, KnownPairs::kUpdate);
    const std::pair<const char*, ExportFormat> formats[] = {{"vlm", ExportFormat::kVlmText},
                                                            {"vlm1", ExportFormat::kVlmText1},
                                                            {"anki", ExportFormat::kAnkiText}};
    for (const auto& [name, format] : formats) {
        EXPECT_EQ(take({"export", "--format", name}).Export.Format, format) << name;
    }
}

TEST(CardsOptions, TellsWhatIsWrongWithALine) {
    const std::vector<std::pair<Words, std::string>> lines = {
        {{}, "no command"},
        {{"fly"}, "no command \"fly\""},
        {{"--store", "", "due"}, "path of the store is empty"},
        {{"export", "--format", "html"}, "no format \"html\""},
        // The command does not take this option, or takes fewer or more words.
        {{"list", "--dry-run"}, "\"list\" does not take the option --dry-run"},
        {{"repair", "--store", "a", "b", "c"}, "does not take the option --store"},
        {{"import"}, "import [--dry-run] [--large] [--encoding"},
        {{"import", "a", "b"}, "import [--dry-run] [--large] [--encoding"},
        {{"import", "--encoding", "klingon", "a"}, "no encoding \"klingon\""},
        {{"import", "--delimiter", "ab", "a"}, "one character delimiter"},
        {{"import", "--columns", "front,wing", "a"}, "no column \"wing\""},
        {{"import", "--headings", "2", "a"}, "neither \"yes\" nor \"no\""},
        {{"import", "--known", "no", "a"}, "neither \"stop\""},
        {{"restore"}, "restore [--no-backup] FILE"},
        {{"repair", "a"}, "repair DAMAGED NEW"},
        {{"stats", "a"}, "stats"},
        {{"sync", "--take-newer", "--take-mine", "a"}, "[--take-newer|--take-mine]"},
        {{"sync", "--join-equal", "ja", "a"}, "neither \"yes\" nor \"no\""},
        {{"list", "--wings"}, "no option \"--wings\""}};
    for (const auto& [words, expected] : lines) {
        CardsOptions options;
        wxString text;
        EXPECT_EQ(Read(words, options, text), CommandLineAnswer::kWrong) << expected;
        EXPECT_THAT(text.utf8_string(), ::testing::HasSubstr(expected));
    }
}

TEST(CardsOptions, HelpAndVersionWinOverTheRestOfTheLine) {
    for (const Words& words : {Words{"-h"}, Words{"fly", "--help"}, Words{"--version", "fly"}}) {
        CardsOptions options;
        wxString text;
        EXPECT_EQ(Read(words, options, text), CommandLineAnswer::kTell);
        EXPECT_TRUE(text.Contains("velomind-cards")) << text;
    }
}

}  // namespace
