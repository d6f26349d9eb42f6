#include "cli/CardsOptions.h"

#include <getopt.h>
#include <wx/arrstr.h>
#include <wx/intl.h>
#include <wx/strconv.h>

#include <algorithm>
#include <iterator>
#include <map>
#include <string_view>

#include "base/Process.h"
#include "formats/TextEncoding.h"

namespace {

// The letters by which the rows of kCommands name the options that a command takes.
enum OptionLetter : int {
    kStore = 's',
    kJson = 'j',
    kDryRun = 'n',
    kLarge = 'l',
    kNoBackup = 'b',
    kFormat = 'f',
    kScheduling = 'k',
    kOutput = 'o',
    kCategory = 'c',
    kExact = 'x',
    kReverse = 'r',
    kEncoding = 'e',
    kDelimiter = 'd',
    kColumns = 'C',
    kHeadings = 'H',
    kKnown = 'K',
    kTakeNewer = 'N',
    kTakeMine = 'M',
    kJoinEqual = 'J',
    kName = 'a',
    kHelp = 'h',
    kVersion = 'V'
};

struct OptionRow {
    OptionLetter Letter;
    const char* Name;
    // What the help calls the value; null for an option without one.
    const char* Value;
    const char* Description;
};

constexpr OptionRow kOptionRows[] = {
    {kStore, "store", "FILE",
     wxTRANSLATE("works on this store, not on the one that Velomind opens")},
    {kJson, "json", nullptr, wxTRANSLATE("prints JSON")},
    {kDryRun, "dry-run", nullptr, wxTRANSLATE("tells what would happen and changes nothing")},
    {kLarge, "large", nullptr,
     wxTRANSLATE("imports a deck whose cards are far more than its file promises")},
    {kEncoding, "encoding", "NAME",
     wxTRANSLATE("reads the bytes of the list as UTF-8, Windows-1252, Shift_JIS or others")},
    {kDelimiter, "delimiter", "TEXT",
     wxTRANSLATE(
         "splits the rows of a table at tab, comma, semicolon, space, pipe or a character")},
    {kColumns, "columns", "LIST",
     wxTRANSLATE("says what the columns are, such as front,back,ignore,notes")},
    {kHeadings, "headings", "yes|no", wxTRANSLATE("says whether the first row names the columns")},
    {kKnown, "known", "stop|skip|update",
     wxTRANSLATE("says what becomes of cards whose front and back are there already")},
    {kNoBackup, "no-backup", nullptr, wxTRANSLATE("replaces the store without a backup of it")},
    {kFormat, "format", "vlm|delimited|vlm1|anki", wxTRANSLATE("chooses the form of the text")},
    {kScheduling, "scheduling", nullptr, wxTRANSLATE("includes the schedules")},
    {kOutput, "output", "FILE", wxTRANSLATE("writes to this file; - is standard output")},
    {kCategory, "category", "NAME", wxTRANSLATE("lists the cards of one category")},
    {kExact, "exact", nullptr,
     wxTRANSLATE("looks for the search as it stands, with its accents and blanks")},
    {kReverse, "reverse", nullptr,
     wxTRANSLATE("looks for due cards and the like of the study from back to front")},
    {kName, "name", "NAME", wxTRANSLATE("what the other computers call this one")},
    {kTakeNewer, "take-newer", nullptr,
     wxTRANSLATE(
         "brings a store that has gone back up to date, and lets others delete many cards")},
    {kTakeMine, "take-mine", nullptr,
     wxTRANSLATE("takes what this store has for all computers, as after a restored backup")},
    {kJoinEqual, "join-equal", "yes|no",
     wxTRANSLATE("says whether equal cards of computers that meet become one")},
    {kHelp, "help", nullptr, wxTRANSLATE("shows this help, then exits")},
    {kVersion, "version", nullptr, wxTRANSLATE("shows the version, then exits")}};

struct CommandRow {
    const char* Name;
    CardsCommand Command;
    size_t FewestOperands;
    size_t MostOperands;
    const char* Options;
    const char* Usage;
};

constexpr CommandRow kCommands[] = {
    {"import", CardsCommand::kImport, 1, 1, "sjnledCHK",
     "import [--dry-run] [--large] [--encoding NAME] [--delimiter TEXT] [--columns LIST] "
     "[--headings yes|no] "
     "[--known stop|skip|update] FILE"},
    {"export", CardsCommand::kExport, 0, 0, "sfko",
     "export [--format vlm|delimited|vlm1|anki] [--scheduling] [--output FILE]"},
    {"list", CardsCommand::kList, 0, 1, "sjcxr",
     "list [--category NAME] [--exact] [--reverse] [SEARCH]"},
    {"due", CardsCommand::kDue, 0, 0, "sj", "due"},
    {"check", CardsCommand::kCheck, 1, 1, "sjedCH",
     "check [--encoding NAME] [--delimiter TEXT] [--columns LIST] [--headings yes|no] FILE"},
    {"stats", CardsCommand::kStats, 0, 0, "sj", "stats"},
    {"backup", CardsCommand::kBackup, 0, 1, "sj", "backup [FILE]"},
    {"restore", CardsCommand::kRestore, 1, 1, "sjb", "restore [--no-backup] FILE"},
    {"repair", CardsCommand::kRepair, 2, 2, "j", "repair DAMAGED NEW"},
    {"sync", CardsCommand::kSync, 1, 1, "sjNMJa",
     "sync [--name NAME] [--take-newer|--take-mine] [--join-equal yes|no] FOLDER"}};

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
    text += "\n" + _("velomind-cards COMMAND --help explains the options of a command.") + "\n";
    return text;
}

wxString UsageOf(const CommandRow& row) {
    return wxString::Format(_("This command is used as: %s"), row.Usage);
}

wxString HelpText(const CommandRow& command) {
    wxString text = UsageOf(command) + "\n\n";
    for (const OptionRow& row : kOptionRows) {
        if (std::string_view(command.Options).find(static_cast<char>(row.Letter)) !=
            std::string_view::npos) {
            const wxString value = row.Value == nullptr ? wxString() : wxString("=") + row.Value;
            text += wxString::Format("  --%-32s  %s\n", row.Name + value,
                                     wxGetTranslation(row.Description));
        }
    }
    return text;
}

// Returns the row of the command that the first operand names, or null.
const CommandRow* FindCommand(const CardsOptions& options) {
    const auto* const row = std::find_if(
        std::begin(kCommands), std::end(kCommands), [&options](const CommandRow& command) {
            return !options.Operands.empty() && options.Operands.front() == command.Name;
        });
    return row == std::end(kCommands) ? nullptr : row;
}

// Each takes the value of an option. Returns what is wrong with it, or the empty text.

wxString TakeEncoding(const wxString& value, CardsOptions& options) {
    options.Table.Encoding = FindEncoding(value);
    return options.Table.Encoding == wxFONTENCODING_SYSTEM
               ? wxString::Format(_("There is no encoding \"%s\"."), value)
               : wxString();
}

wxString TakeDelimiter(const wxString& value, CardsOptions& options) {
    static const std::map<wxString, std::wstring> names = {
        {"tab", L"\t"}, {"\\t", L"\t"},      {"comma", L","},     {"space", L" "},
        {"pipe", L"|"}, {"semicolon", L";"}, {"semi-colon", L";"}};
    const auto named = names.find(value);
    options.Table.Separator = named == names.end() ? value.ToStdWstring() : named->second;
    if (options.Table.Separator.empty() || value == "\n" || value == "\r") {
        return _("You must specify a delimiter.");
    }
    if (value == "\"") {
        return _("\" cannot be used as a delimiter.");
    }
    // Between words a few signs are known, which are all tried.
    const bool isBetweenWords = value.StartsWith(" ") && value.EndsWith(" ");
    return options.Table.Separator.size() > 1 && !isBetweenWords
               ? _("You can only have a one character delimiter")
               : wxString();
}

wxString TakeColumns(const wxString& value, CardsOptions& options) {
    for (const wxString& name : wxSplit(value, ',', '\0')) {
        int language = 0;
        const std::optional<ColumnUse> use = name == "ignore" || name.empty()
                                                 ? ColumnUse::kIgnore
                                                 : FindUseOfHeading(name, language);
        if (!use) {
            return wxString::Format(_("There is no column \"%s\"."), name);
        }
        options.Columns.push_back(*use);
    }
    return wxString();
}

wxString TakeYesOrNo(const wxString& value, std::optional<bool>& answer) {
    answer = value == "yes";
    return value == "yes" || value == "no"
               ? wxString()
               : wxString::Format(_("\"%s\" is neither \"yes\" nor \"no\"."), value);
}

wxString TakeKnown(const wxString& value, CardsOptions& options) {
    constexpr const char* kNames[] = {"stop", "skip", "update"};
    const auto* const name = std::find(std::begin(kNames), std::end(kNames), value);
    options.Known = static_cast<KnownPairs>(name - std::begin(kNames));
    return name == std::end(kNames)
               ? wxString::Format(_("\"%s\" is neither \"stop\" nor \"skip\" nor \"update\"."),
                                  value)
               : wxString();
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
        case kLarge:
            options.Large = true;
            break;
        case kNoBackup:
            options.NoBackup = true;
            break;
        case kExact:
            options.IsExact = true;
            break;
        case kReverse:
            options.IsReverse = true;
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
            options.Output = value == "-" ? wxString() : value;
            break;
        case kEncoding:
            return TakeEncoding(value, options);
        case kDelimiter:
            return TakeDelimiter(value, options);
        case kColumns:
            return TakeColumns(value, options);
        case kHeadings:
            return TakeYesOrNo(value, options.Table.HasHeader);
        case kKnown:
            return TakeKnown(value, options);
        case kTakeNewer:
            options.Answer = ExchangeAnswer::kTakeNewer;
            break;
        case kTakeMine:
            options.Answer = ExchangeAnswer::kTakeMine;
            break;
        case kJoinEqual:
            return TakeYesOrNo(value, options.JoinsEqualCards);
        case kName:
            options.Name = value;
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
    const CommandRow* const row = FindCommand(options);
    if (row == nullptr) {
        return wxString::Format(_("There is no command \"%s\"."), options.Operands.front());
    }
    options.Operands.erase(options.Operands.begin());
    options.Command = row->Command;
    const size_t wrong = letters.find_first_not_of(row->Options);
    if (wrong != std::string::npos) {
        const auto* const option =
            std::find_if(std::begin(kOptionRows), std::end(kOptionRows),
                         [&](const OptionRow& known) { return known.Letter == letters[wrong]; });
        return wxString::Format(_("The command \"%s\" does not take the option --%s."), row->Name,
                                option->Name) +
               "\n" + UsageOf(*row);
    }
    const auto has = [&](OptionLetter letter) {
        return letters.find(static_cast<char>(letter)) != std::string::npos;
    };
    if (options.Operands.size() < row->FewestOperands ||
        options.Operands.size() > row->MostOperands || (has(kTakeNewer) && has(kTakeMine))) {
        return UsageOf(*row);
    }
    return wxString();
}

// What getopt takes: the rows of kOptionRows, and an end.
std::vector<option> LibraryOptions() {
    std::vector<option> all;
    for (const OptionRow& row : kOptionRows) {
        all.push_back({row.Name, row.Value == nullptr ? no_argument : required_argument, nullptr,
                       row.Letter});
    }
    all.push_back({nullptr, 0, nullptr, 0});
    return all;
}

// Says why getopt has refused a word of the line: it is no option, or one without its value.
wxString DescribeRefusal(int letter, const wxString& word) {
    return letter == ':' ? wxString::Format(_("The option \"%s\" needs a value."), word)
                         : wxString::Format(_("There is no option \"%s\"."), word);
}

// Returns the word with each byte that is none of the locale's characters as its number, when there
// is such a byte, and the empty text otherwise.
wxString FindStrayBytes(const char* word) {
    if (*word == '\0' || !wxString(word, wxConvLibc).empty()) {
        return wxString();
    }
    wxString shown;
    for (const char* byte = word; *byte != '\0'; ++byte) {
        const auto code = static_cast<unsigned char>(*byte);
        shown +=
            code < 0x80 ? wxString(static_cast<wchar_t>(code)) : wxString::Format("\\x%02X", code);
    }
    return shown;
}

}  // namespace

CommandLineAnswer ReadCommandLine(int argc, char** argv, CardsOptions& options, wxString& text) {
    const auto word = [](char* argument) { return wxString(ReadCommandWords(1, &argument)[0]); };
    for (int i = 1; i < argc; ++i) {
        const wxString stray = FindStrayBytes(argv[i]);
        if (!stray.empty()) {
            // It would be another file's name in the characters of the program.
            text = wxString::Format(_("The name \"%s\" has bytes that are no characters here."),
                                    stray);
            return CommandLineAnswer::kRefused;
        }
    }
    options.Export.IncludeScheduling = false;
    const std::vector<option> known = LibraryOptions();
    std::string letters;
    bool isHelpWanted = false;
    opterr = 0;
    for (int letter = 0; (letter = getopt_long(argc, argv, ":h", known.data(), nullptr)) != -1;) {
        if (letter == kHelp) {
            isHelpWanted = true;
            continue;
        }
        if (letter == kVersion) {
            text = wxString("velomind-cards ") + VELOMIND_VERSION + "\n";
            return CommandLineAnswer::kTell;
        }
        if (letter == '?' || letter == ':') {
            text = DescribeRefusal(letter, word(argv[optind - 1]));
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
    if (isHelpWanted) {
        const CommandRow* const command = FindCommand(options);
        text = command == nullptr ? UsageText() : HelpText(*command);
        return CommandLineAnswer::kTell;
    }
    text = CheckCommand(letters, options);
    return text.empty() ? CommandLineAnswer::kRun : CommandLineAnswer::kWrong;
}
