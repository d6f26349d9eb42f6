#include <wx/init.h>
#include <wx/log.h>

#include "base/Process.h"
#include "cli/CardsCommands.h"
#include "cli/CardsOptions.h"

int main(int argc, char** argv) {
    SetUpCharacters();
    const wxInitializer library;
    SetUpTranslations();
    wxLog::DisableTimestamp();
    CardsOptions options;
    wxString text;
    switch (ReadCommandLine(argc, argv, options, text)) {
        case CommandLineAnswer::kRun:
            return RunCardsCommand(options);
        case CommandLineAnswer::kTell:
            PrintText(text);
            return kCardsDone;
        default:
            if (!text.empty()) {
                PrintError(text);
            }
            return kCardsUsage;
    }
}
