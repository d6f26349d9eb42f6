#include "app/CommandLine.h"

#include <wx/app.h>
#include <wx/cmdline.h>
#include <wx/translation.h>

#include <algorithm>
#include <string>

#include "base/Process.h"
#include "shell/ProgramInfo.h"

namespace {

struct Option {
    const char* Name;
    const char* Description;
    // What the help calls the option's value. Null for an option that the help leaves out.
    const char* Value;
};

// Each option takes a value. The four that an installer passes are accepted and change nothing.
constexpr Option kOptions[] = {
    {"browse", wxTRANSLATE("uses the default browser to open the specified URL"), "URL"},
    {"import", wxTRANSLATE("imports the specified file, then exits"), "FILE"},
    {"messagebox", wxTRANSLATE("displays the specified message, then exits"), "TEXT"},
    {"program_menu_folder", wxTRANSLATE("tells vlm the path of the ProgramMenuFolder"), nullptr},
    {"desktop_folder", wxTRANSLATE("tells vlm the path of the DesktopFolder"), nullptr},
    {"add_desktop_shortcut", wxTRANSLATE("add a desktop shortcut"), nullptr},
    {"add_quicklaunch_shortcut", wxTRANSLATE("add a quick launch shortcut"), nullptr},
    {"community_join", wxTRANSLATE("open community website"), "1"}};

constexpr char kUninstall[] = "uninstall";
constexpr char kVersion[] = "version";
constexpr char kNoQuestions[] = "no-questions";
constexpr char kNoQuestionsHelp[] = wxTRANSLATE(
    "shows no window with --import: what fails is told on standard error, and the file stays");

wxString HelpLine(const wxString& option, const wxString& description) {
    return wxString::Format("  %-20s  %s\n", option, description);
}

wxString HelpText() {
    wxString text = _("Usage: velomind [OPTION] [FILE]");
    text += "\n\n" + _("Learn with flash cards that come again in time.") + "\n\n";
    text += HelpLine("FILE", _("a deck or a list of cards to import, or a store to open"));
    for (const Option& option : kOptions) {
        if (option.Value != nullptr) {
            text += HelpLine(wxString("--") + option.Name + "=" + option.Value,
                             wxGetTranslation(option.Description));
        }
    }
    text += HelpLine("--no-questions", wxGetTranslation(kNoQuestionsHelp));
    text += HelpLine("-h, --help", _("shows this help, then exits"));
    text += HelpLine("--version", _("shows the version, then exits"));
    text += HelpLine("--verbose", _("also writes messages of the program's libraries"));
    text += "\n" + _("--import asks no question and deletes the file afterwards: give it a copy.");
    text += "\n" + _("velomind-cards works with the cards without a display.") + "\n";
    return text;
}

}  // namespace

void DescribeCommandLine(wxCmdLineParser& parser) {
    for (const Option& option : kOptions) {
        parser.AddLongOption(option.Name, wxGetTranslation(option.Description));
    }
    parser.AddLongSwitch(kUninstall, _("handles some of the uninstall cleanup"));
    parser.AddLongSwitch(kNoQuestions, wxGetTranslation(kNoQuestionsHelp));
    parser.AddParam(_("a deck or a list of cards to import, or a store to open"),
                    wxCMD_LINE_VAL_STRING, wxCMD_LINE_PARAM_OPTIONAL);
}

bool AnswerWithoutDisplay(int argc, wchar_t** argv) {
    const auto mayAsk = [](const std::wstring& word) {
        return word == L"-h" || word == L"--help" || word == L"--version";
    };
    if (std::none_of(argv + 1, argv + argc, mayAsk)) {
        return false;
    }
    // The library looks for catalogues and converts words through an application: one without
    // windows, until the real one starts.
    wxAppConsole application;
    wxAppConsole::SetInstance(&application);
    SetUpTranslations();
    wxCmdLineParser parser(argc, argv);
    application.OnInitCmdLine(parser);
    DescribeCommandLine(parser);
    parser.AddLongSwitch(kVersion);
    // A word may be another option's value, so the parser decides. It tells nothing of what is
    // wrong with the words; the start does that.
    constexpr int kHelpWanted = -1;
    wxString answer;
    if (parser.Parse(false) == kHelpWanted) {
        answer = HelpText();
    } else if (parser.Found(kVersion)) {
        answer = GetVersionText() + "\n";
    }
    wxAppConsole::SetInstance(nullptr);
    PrintText(answer);
    return !answer.empty();
}

CommandLineOutcome RunCommandLine(const wxCmdLineParser& parser, CommandLineActions& actions) {
    bool allDone = false;
    wxString value;
    if (parser.Found("import", &value)) {
        if (!actions.ImportFile(value, !parser.Found(kNoQuestions))) {
            return CommandLineOutcome::Refused;
        }
        allDone = true;
    }
    if (parser.Found("messagebox", &value)) {
        actions.ShowMessage(value);
        allDone = true;
    }
    if (parser.Found("browse", &value)) {
        actions.OpenAddress(value);
        allDone = true;
    }
    if (parser.Found("community_join", &value)) {
        if (value == "1") {
            actions.OpenAddress(wxString(kCommunitySite) + "/?q=join");
        }
        allDone = true;
    }
    if (parser.Found(kUninstall)) {
        allDone = true;
    }
    if (!allDone && parser.GetParamCount() > 0) {
        actions.OpenFile(parser.GetParam(0));
    }
    return allDone ? CommandLineOutcome::AllDone : CommandLineOutcome::StartProgram;
}
