#pragma once

#include <wx/string.h>

#include <vector>

#include "exchange/Export.h"

enum class CardsCommand {
    kImport,
    kExport,
    kList,
    kDue,
    kCheck,
    kStats,
    kBackup,
    kRestore,
    kRepair
};

// What the command line asks for.
struct CardsOptions {
    CardsCommand Command = CardsCommand::kList;
    // What stands behind the command, such as the file to import.
    std::vector<wxString> Operands;
    // The path of the store; empty for the store of the settings.
    wxString Store;
    bool Json = false;
    bool DryRun = false;
    // The file of an export; empty for standard output.
    wxString Output;
    // The only category to list; empty for all.
    wxString Category;
    ExportOptions Export;
};

enum class CommandLineAnswer {
    // The options say what to do.
    kRun,
    // Help or the version was asked for; Text has it.
    kTell,
    // Text says what is wrong with the line.
    kWrong
};

// Reads the command line. Options may stand before and behind the command; text receives what is to
// be said when there is nothing to run.
CommandLineAnswer ReadCommandLine(int argc, char** argv, CardsOptions& options, wxString& text);
