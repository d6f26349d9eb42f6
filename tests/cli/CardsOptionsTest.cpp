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

// What a line was understood as: the number of the command, its operands, and each option that
// differs from a line without options.
std::string Understood(const CardsOptions& options) {
    std::string text = std::to_string(static_cast<int>(options.Command));
    for (const wxString& operand : options.Operands) {
        text += " " + operand.utf8_string();
    }
    const struct {
        bool IsSet;
        std::string Name;
    } rows[] = {{!options.Store.empty(), "store=" + options.Store.utf8_string()},
                {options.Json, "json"},
                {options.DryRun, "dry"},
                {options.NoBackup, "no-backup"},
                {!options.Output.empty(), "output=" + options.Output.utf8_string()},
                {!options.Category.empty(), "category=" + options.Category.utf8_string()},
                {options.Export.Format != ExportFormat::kVlmText,
                 "format=" + std::to_string(static_cast<int>(options.Export.Format))},
                {options.Export.IncludeScheduling, "scheduling"},
                {options.Table.Encoding == wxFONTENCODING_SHIFT_JIS, "sjis"},
                {!options.Table.Separator.empty(),
                 "delimiter=" + wxString(options.Table.Separator).utf8_string()},
                {!options.Columns.empty(), std::to_string(options.Columns.size()) + "columns"},
                {options.Table.HasHeader.value_or(false), "headings"},
                {options.Known == KnownPairs::kUpdate, "update"}};
    for (const auto& row : rows) {
        text += row.IsSet ? " " + row.Name : "";
    }
    return text;
}

std::string Command(CardsCommand command) {
    return std::to_string(static_cast<int>(command));
}

TEST(CardsOptions, TakesOptionsBeforeAndAfterTheCommand) {
    const std::string import = Command(CardsCommand::kImport);
    const std::string write = Command(CardsCommand::kExport);
    const std::string list = Command(CardsCommand::kList);
    const auto format = [](ExportFormat value) {
        return " format=" + std::to_string(static_cast<int>(value));
    };
    const std::vector<std::pair<Words, std::string>> lines = {
        {{"--json", "import", "a.txt"}, import + " a.txt json"},
        {{"import", "--dry-run", "a.txt", "--store", "b.vlm"}, import + " a.txt store=b.vlm dry"},
        {{"import", "--encoding", "shift_jis", "--delimiter", "pipe", "--columns", "front,,back",
          "--headings=yes", "--known", "update", "a"},
         import + " a sjis delimiter=| 3columns headings update"},
        {{"export", "--output", "-"}, write},
        {{"list"}, list},
        {{"list", "--category", "\u6f22\u5b57", "na me"}, list + " na me category=\u6f22\u5b57"},
        {{"list", "--", "--json"}, list + " --json"},
        {{"export"}, write},
        {{"export", "--format", "vlm"}, write},
        {{"export", "--format=delimited", "--scheduling"},
         write + format(ExportFormat::kDelimited) + " scheduling"},
        {{"export", "--format", "vlm1", "--output", "x"},
         write + " output=x" + format(ExportFormat::kVlmText1)},
        {{"export", "--format", "anki"}, write + format(ExportFormat::kAnkiText)},
        {{"backup"}, Command(CardsCommand::kBackup)},
        {{"backup", "to"}, Command(CardsCommand::kBackup) + " to"},
        {{"restore", "--no-backup", "a"}, Command(CardsCommand::kRestore) + " a no-backup"},
        {{"repair", "from", "to", "--json"}, Command(CardsCommand::kRepair) + " from to json"}};
    for (const auto& [words, expected] : lines) {
        CardsOptions options;
        wxString text;
        EXPECT_EQ(Read(words, options, text), CommandLineAnswer::kRun) << expected << ": " << text;
        EXPECT_EQ(Understood(options), expected);
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
        {{"export", "--json"}, "\"export\" does not take the option --json"},
        {{"repair", "--store", "a", "b", "c"}, "does not take the option --store"},
        {{"import"}, "import [--dry-run] [--large] [--encoding"},
        {{"import", "a", "b"}, "import [--dry-run] [--large] [--encoding"},
        {{"import", "--encoding", "klingon", "a"}, "no encoding \"klingon\""},
        {{"import", "--delimiter", "ab", "a"}, "one character delimiter"},
        {{"import", "--columns", "front,wing", "a"}, "no column \"wing\""},
        {{"import", "--headings", "2", "a"}, "neither \"yes\" nor \"no\""},
        {{"import", "--known", "no", "a"}, "neither \"stop\""},
        {{"list", "--category"}, "\"--category\" needs a value"},
        {{"restore"}, "restore [--no-backup] FILE"},
        {{"repair", "a"}, "repair DAMAGED NEW"},
        {{"stats", "a"}, "stats"},
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
