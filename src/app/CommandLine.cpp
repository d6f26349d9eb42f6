#include "app/CommandLine.h"

#include <wx/cmdline.h>
#include <wx/filename.h>
#include <wx/stdpaths.h>
#include <wx/strconv.h>
#include <wx/string.h>
#include <wx/translation.h>

#include <clocale>
#include <cstdlib>

#include "shell/ProgramInfo.h"

void SetUpCharacters() {
    if (std::setlocale(LC_CTYPE, "") == nullptr || MB_CUR_MAX == 1) {
        std::setlocale(LC_CTYPE, "C.UTF-8");
    }
    std::setlocale(LC_NUMERIC, "C");
    // GTK takes the language of its own buttons from this category. Where the user's locale is not
    // installed, C.UTF-8 at least lets the variable LANGUAGE count.
    if (std::setlocale(LC_MESSAGES, "") == nullptr) {
        std::setlocale(LC_MESSAGES, "C.UTF-8");
    }
}

std::vector<std::wstring> ReadCommandWords(int argc, char** argv) {
    std::vector<std::wstring> words;
    for (int i = 0; i < argc; ++i) {
        wxString word(argv[i], wxConvLibc);
        if (word.empty()) {
            // Bytes that are no text in the locale become one character each, so that nothing is
            // lost.
            word = wxString(argv[i], wxConvISO8859_1);
        }
        words.push_back(word.ToStdWstring());
    }
    return words;
}

void SetUpTranslations() {
    // The catalogues lie beside the program in a build folder, and in share/ of an installed tree.
    // The path of the program is free of links here.
    const wxFileName program(wxStandardPaths::Get().GetExecutablePath());
    for (const char* const place : {"locale", "../../share/locale"}) {
        wxFileName folder = wxFileName::DirName(place);
        folder.MakeAbsolute(program.GetPath());
        wxFileTranslationsLoader::AddCatalogLookupPathPrefix(folder.GetPath());
    }

    auto* const translations = new wxTranslations;
    wxTranslations::Set(translations);
    // A mixture of languages would be worse than English: without a catalogue of ours in the user's
    // language the library's texts stay English too.
    const wxString language = translations->GetBestTranslation("velomind", "en");
    translations->SetLanguage(language.empty() ? wxString("en") : language);
    translations->AddStdCatalog();
    translations->AddCatalog("velomind");
}

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
    return allDone ? CommandLineOutcome::AllDone : CommandLineOutcome::StartProgram;
}
