#pragma once

#include <wx/string.h>

class wxCmdLineParser;

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
