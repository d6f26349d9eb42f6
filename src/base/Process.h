#pragma once

#include <wx/string.h>

#include <string>
#include <vector>

// The process's language, its output outside the windows, and how it ends on a failure.

// Sets characters, messages and dates to the user's locale, or characters to UTF-8 where that has
// only single bytes, and numbers to a decimal point in any locale. Call it first in main.
void SetUpCharacters();

// Returns the words of the command line in the characters of SetUpCharacters. The library would
// convert them by the locale in which the process started.
std::vector<std::wstring> ReadCommandWords(int argc, char** argv);

// Translates the program's texts into the user's language, if a catalogue for it is installed.
void SetUpTranslations();

// Success is 0.
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

// Prints a text on standard output, as it stands.
void PrintText(const wxString& text);

// Prints a line on standard error, after the program's name.
void PrintError(const wxString& text);

// Takes the failures that the program cannot survive. The store calls Report when the engine
// refuses a step.
//
// On the main thread the program's own implementation shows the text and ends the process, so that
// Report does not return. On a worker thread it keeps the first text and returns; the main thread
// calls DeliverPending once it has waited for the worker, and that ends the process if a text was
// kept. A test's implementation returns in both cases, and the failing operation then gives a
// negative result.
class FatalErrorReport {
  public:
    virtual ~FatalErrorReport() = default;
    virtual void Report(const wxString& text) = 0;
    virtual void DeliverPending() = 0;
};

// Trace lines are a developer's aid. They go to this hook, which is empty unless somebody sets it
// before the first thread starts, and their texts are built only when it is there.
using TraceHook = void (*)(const wxString& line);
inline TraceHook gTraceHook = nullptr;

#define VELOMIND_TRACE(...)                            \
    do {                                               \
        if (gTraceHook != nullptr) {                   \
            gTraceHook(wxString::Format(__VA_ARGS__)); \
        }                                              \
    } while (false)
