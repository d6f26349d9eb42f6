#pragma once

#include <wx/string.h>

#include <string>
#include <vector>

class wxCmdLineParser;

// Characters and messages by the user's locale, UTF-8 where that has none; numbers always with a
// point. Call it first in main.
void SetUpCharacters();

// The words of the command line. The library's own conversion would go by the locale that the
// process started in, not by the one that was set up.
std::vector<std::wstring> ReadCommandWords(int argc, char** argv);

// The program's own texts in the user's language, where a catalogue of it is installed.
void SetUpTranslations();

// What the options of the command line ask the program to do.
class CommandLineActions {
  public:
    virtual ~CommandLineActions() = default;
    // Imports the file into the store. False when that could not even begin.
    virtual bool ImportFile(const wxString& path) = 0;
    virtual void ShowMessage(const wxString& text) = 0;
    virtual void OpenAddress(const wxString& address) = 0;
};

enum class CommandLineOutcome {
    // Nothing was to be done before the windows open.
    StartProgram,
    // The options did all the work of this run.
    AllDone,
    // An option could not do its work; those behind it were not tried.
    Refused
};

// Tells the parser of the program's options.
void DescribeCommandLine(wxCmdLineParser& parser);

// Does the work of each option that was given, in a fixed order whatever their order on the line.
CommandLineOutcome RunCommandLine(const wxCmdLineParser& parser, CommandLineActions& actions);
