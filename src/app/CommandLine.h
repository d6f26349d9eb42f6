#pragma once

#include <wx/string.h>

class wxCmdLineParser;

// The work that options of the command line ask for. The application implements it.
class CommandLineActions {
  public:
    virtual ~CommandLineActions() = default;
    // Imports the file into the store. Returns false when the import could not even begin, or when
    // it has failed and nobody may be asked or told in a window.
    virtual bool ImportFile(const wxString& path, bool mayAsk) = 0;
    virtual void ShowMessage(const wxString& text) = 0;
    virtual void OpenAddress(const wxString& address) = 0;
    // Opens a store, or asks how to import a file of cards, once the windows are there.
    virtual void OpenFile(const wxString& path) = 0;
};

enum class CommandLineOutcome {
    // No option asked for work: the windows open.
    StartProgram,
    // The options did all the work of this run, and no window opens.
    AllDone,
    // An option could not do its work, and the options after it were not tried.
    Refused
};

// Answers --help and --version in the user's language, before anything asks for a display. Returns
// false, and has printed nothing, when the words hold neither.
bool AnswerWithoutDisplay(int argc, wchar_t** argv);

// Declares the options that ask for work to the parser.
void DescribeCommandLine(wxCmdLineParser& parser);

// Does the work of each option that was given. The order of the work is fixed and does not depend
// on the order of the words.
CommandLineOutcome RunCommandLine(const wxCmdLineParser& parser, CommandLineActions& actions);
