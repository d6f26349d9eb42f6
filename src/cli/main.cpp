#include <wx/init.h>
#include <wx/log.h>

#include "base/Process.h"
#include "cli/CardsCommands.h"
#include "cli/CardsOptions.h"

namespace {

// Prints what the library has to say like every other message.
class PrefixedLog : public wxLog {
  protected:
    void DoLogText(const wxString& text) override { PrintError(text); }
};

}  // namespace

int main(int argc, char** argv) {
    SetUpCharacters();
    const wxInitializer library;
    SetUpTranslations();
    wxLog::DisableTimestamp();
    delete wxLog::SetActiveTarget(new PrefixedLog);
    CardsOptions options;
    wxString text;
    switch (ReadCommandLine(argc, argv, options, text)) {
        case CommandLineAnswer::kRun:
            return RunCardsCommand(options);
        case CommandLineAnswer::kTell:
            PrintText(text);
            return FinishOutput(true);
        case CommandLineAnswer::kRefused:
            PrintError(text);
            return kCardsRefused;
        default:
            if (!text.empty()) {
                PrintError(text);
            }
            return kCardsUsage;
    }
}
