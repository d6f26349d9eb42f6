#pragma once

#include <wx/string.h>

#include <string>
#include <vector>

class wxCmdLineParser;

// Sets characters and messages to the user's locale, or to UTF-8 where that has only single bytes,
// and numbers to a decimal point in any locale. Call it first in main.
void SetUpCharacters();

// Returns the words of the command line in the characters of SetUpCharacters. The library would
// convert them by the locale in which the process started.
std::vector<std::wstring> ReadCommandWords(int argc, char** argv);

// Translates the program's texts into the user's language, if a catalogue for it is installed.
void SetUpTranslations();

// The work that options of the command line ask for. The application implements it.
class CommandLineActions {
  public:
    virtual ~CommandLineActions() = default;
    // Imports the file into the store. Returns false when the import could not even begin.
    virtual bool ImportFile(const wxString& path) = 0;
    virtual void ShowMessage(const wxString& text) = 0;
    virtual void OpenAddress(const wxString& address) = 0;
};

enum class CommandLineOutcome {
    // No option asked for work: the windows open.
    StartProgram,
    // The options did all the work of this run, and no window opens.
    AllDone,
    // An option could not do its work, and the options after it were not tried.
    Refused
};

// Declares the program's options to the parser.
void DescribeCommandLine(wxCmdLineParser& parser);

// Does the work of each option that was given. The order of the work is fixed and does not depend
// on the order of the words.
CommandLineOutcome RunCommandLine(const wxCmdLineParser& parser, CommandLineActions& actions);
