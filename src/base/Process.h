#pragma once

#include <wx/string.h>

// How the process ends when it does not end well. A good end is 0.
enum ExitCode : int {
    // The command line was refused, or an option could not do its work.
    kExitRefused = 1,
    // The store failed while it was in use.
    kExitFatal = 3,
    // "Exit" in the dialog of a store that cannot be opened: -1, as the system sees it.
    kExitFromRecovery = 255
};

// Ends the process here and now, with no destructor run. Only what was printed is kept.
[[noreturn]] void EndProcess(ExitCode code);

// Text on standard output, as it stands.
void PrintText(const wxString& text);

// A line on standard error, behind the program's name.
void PrintError(const wxString& text);
