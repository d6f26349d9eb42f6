#include "app/CommandLine.h"

#include <wx/cmdline.h>
#include <wx/string.h>
#include <wx/translation.h>

#include "shell/ProgramInfo.h"

namespace {

struct Option {
    const char* Name;
    const char* Description;
};

// Each option takes a value. The four that an installer passes are accepted and change nothing.
constexpr Option kOptions[] = {
    {"browse", wxTRANSLATE("uses the default browser to open the specified URL")},
    {"import", wxTRANSLATE("imports the specified file, then exits")},
    {"messagebox", wxTRANSLATE("displays the specified message, then exits")},
    {"program_menu_folder", wxTRANSLATE("tells vlm the path of the ProgramMenuFolder")},
    {"desktop_folder", wxTRANSLATE("tells vlm the path of the DesktopFolder")},
    {"add_desktop_shortcut", wxTRANSLATE("add a desktop shortcut")},
    {"add_quicklaunch_shortcut", wxTRANSLATE("add a quick launch shortcut")},
    {"community_join", wxTRANSLATE("open community website")}};

}  // namespace

void DescribeCommandLine(wxCmdLineParser& parser) {
    for (const Option& option : kOptions) {
        parser.AddLongOption(option.Name, wxGetTranslation(option.Description));
    }
    parser.AddLongSwitch("uninstall", _("handles some of the uninstall cleanup"));
    parser.AddParam(_("a deck or a list of cards to import, or a store to open"),
                    wxCMD_LINE_VAL_STRING, wxCMD_LINE_PARAM_OPTIONAL);
}

CommandLineOutcome RunCommandLine(const wxCmdLineParser& parser, CommandLineActions& actions) {
    bool allDone = false;
    wxString value;
    if (parser.Found("import", &value)) {
        if (!actions.ImportFile(value)) {
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
    if (parser.Found("uninstall")) {
        allDone = true;
    }
    if (!allDone && parser.GetParamCount() > 0) {
        actions.OpenFile(parser.GetParam(0));
    }
    return allDone ? CommandLineOutcome::AllDone : CommandLineOutcome::StartProgram;
}
