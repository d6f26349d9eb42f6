#include "cli/CardsOptions.h"

#include <getopt.h>
#include <wx/intl.h>

#include <algorithm>
#include <iterator>

#include "base/Process.h"

namespace {

// The letters by which the rows of kCommands name the options that a command takes.
enum OptionLetter : int {
    kStore = 's',
    kJson = 'j',
    kDryRun = 'n',
    kNoBackup = 'b',
    kFormat = 'f',
    kScheduling = 'k',
    kOutput = 'o',
    kCategory = 'c',
    kHelp = 'h',
    kVersion = 'V'
};

constexpr option kOptions[] = {{"store", required_argument, nullptr, kStore},
                               {"json", no_argument, nullptr, kJson},
                               {"dry-run", no_argument, nullptr, kDryRun},
                               {"no-backup", no_argument, nullptr, kNoBackup},
                               {"format", required_argument, nullptr, kFormat},
                               {"scheduling", no_argument, nullptr, kScheduling},
                               {"output", required_argument, nullptr, kOutput},
                               {"category", required_argument, nullptr, kCategory},
                               {"help", no_argument, nullptr, kHelp},
                               {"version", no_argument, nullptr, kVersion},
                               {nullptr, 0, nullptr, 0}};

struct CommandRow {
    const char* Name;
    CardsCommand Command;
    size_t FewestOperands;
    size_t MostOperands;
    const char* Options;
    const char* Usage;
};

constexpr CommandRow kCommands[] = {
    {"import", CardsCommand::kImport, 1, 1, "sjn", "import [--dry-run] FILE"},
    {"export", CardsCommand::kExport, 0, 0, "sfko",
     "export [--format vlm|delimited|vlm1|anki] [--scheduling] [--output FILE]"},
    {"list", CardsCommand::kList, 0, 1, "sjc", "list [--category NAME] [SEARCH]"},
    {"due", CardsCommand::kDue, 0, 0, "sj", "due"},
    {"check", CardsCommand::kCheck, 1, 1, "sj", "check FILE"},
    {"stats", CardsCommand::kStats, 0, 0, "sj", "stats"},
    {"backup", CardsCommand::kBackup, 0, 1, "sj", "backup [FILE]"},
    {"restore", CardsCommand::kRestore, 1, 1, "sjb", "restore [--no-backup] FILE"},
    {"repair", CardsCommand::kRepair, 2, 2, "j", "repair DAMAGED NEW"}};

struct FormatRow {
    const char* Name;
    ExportFormat Format;
};

constexpr FormatRow kFormats[] = {{"vlm", ExportFormat::kVlmText},
                                  {"delimited", ExportFormat::kDelimited},
                                  {"vlm1", ExportFormat::kVlmText1},
                                  {"anki", ExportFormat::kAnkiText}};

wxString UsageText() {
    wxString text = _("Usage: velomind-cards [--store FILE] [--json] COMMAND");
    text += "\n\n";
    for (const CommandRow& row : kCommands) {
        text += wxString("  ") + row.Usage + "\n";
    }
    return text;
}

// Takes one option. Returns what is wrong with it, or the empty text.
wxString TakeOption(int letter, const wxString& value, CardsOptions& options) {
    switch (letter) {
        case kStore:
            options.Store = value;
            return value.empty() ? _("The path of the store is empty.") : wxString();
        case kJson:
            options.Json = true;
            break;
        case kDryRun:
            options.DryRun = true;
            break;
        case kNoBackup:
            options.NoBackup = true;
            break;
        case kFormat: {
            const auto* const row =
                std::find_if(std::begin(kFormats), std::end(kFormats),
                             [&value](const FormatRow& format) { return value == format.Name; });
            if (row == std::end(kFormats)) {
                return wxString::Format(_("There is no format \"%s\"."), value);
            }
            options.Export.Format = row->Format;
            break;
        }
        case kScheduling:
            options.Export.IncludeScheduling = true;
            break;
        case kOutput:
            options.Output = value;
            break;
        default:
            options.Category = value;
            break;
    }
    return wxString();
}

// Checks the operands and the letters of the options against the command. Returns what is wrong, or
// the empty text.
wxString CheckCommand(const std::string& letters, CardsOptions& options) {
    if (options.Operands.empty()) {
        return _("There is no command.");
    }
    const wxString name = options.Operands.front();
    options.Operands.erase(options.Operands.begin());
    const auto* const row =
        std::find_if(std::begin(kCommands), std::end(kCommands),
                     [&name](const CommandRow& command) { return name == command.Name; });
    if (row == std::end(kCommands)) {
        return wxString::Format(_("There is no command \"%s\"."), name);
    }
    options.Command = row->Command;
    if (letters.find_first_not_of(row->Options) != std::string::npos ||
        options.Operands.size() < row->FewestOperands ||
        options.Operands.size() > row->MostOperands) {
        return wxString::Format(_("This command is used as: %s"), row->Usage);
    }
    return wxString();
}

}  // namespace

CommandLineAnswer ReadCommandLine(int argc, char** argv, CardsOptions& options, wxString& text) {
    const auto word = [](char* argument) { return wxString(ReadCommandWords(1, &argument)[0]); };
    options.Export.IncludeScheduling = false;
    std::string letters;
    for (int letter = 0; (letter = getopt_long(argc, argv, "h", kOptions, nullptr)) != -1;) {
        if (letter == kHelp) {
            text = UsageText();
            return CommandLineAnswer::kTell;
        }
        if (letter == kVersion) {
            text = wxString("velomind-cards ") + VELOMIND_VERSION + "\n";
            return CommandLineAnswer::kTell;
        }
        if (letter == '?') {
            // The option parser has printed what is wrong.
            return CommandLineAnswer::kWrong;
        }
        letters += static_cast<char>(letter);
        text = TakeOption(letter, optarg == nullptr ? wxString() : word(optarg), options);
        if (!text.empty()) {
            return CommandLineAnswer::kWrong;
        }
    }
    for (int i = optind; i < argc; ++i) {
        options.Operands.push_back(word(argv[i]));
    }
    text = CheckCommand(letters, options);
    return text.empty() ? CommandLineAnswer::kRun : CommandLineAnswer::kWrong;
}
