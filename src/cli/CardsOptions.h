#pragma once

#include <wx/string.h>

#include <optional>
#include <string>
#include <vector>

#include "exchange/Export.h"
#include "exchange/ImportJob.h"
#include "formats/Table.h"
#include "sync/Exchange.h"

enum class CardsCommand {
    kImport,
    kExport,
    kList,
    kDue,
    kCheck,
    kStats,
    kBackup,
    kRestore,
    kRepair,
    kSync
};

struct CardsOptions {
    CardsCommand Command = CardsCommand::kList;
    // The words after the command, such as the file to import.
    std::vector<wxString> Operands;
    // The path of the store; empty for the store of the settings.
    wxString Store;
    bool Json = false;
    bool DryRun = false;
    // Whether a deck may go beyond the bounds that a person is asked about.
    bool Large = false;
    // A restoration keeps nothing of the store that it replaces.
    bool NoBackup = false;
    // How an exchange goes on where it would ask, and what it calls this computer; an empty name is
    // that of the system.
    ExchangeAnswer Answer = ExchangeAnswer::kAsk;
    std::optional<bool> JoinsEqualCards;
    wxString Name;
    // The file of an export; empty for standard output.
    wxString Output;
    // The only category to list; empty for all.
    wxString Category;
    // Whether the search is one text, as it stands.
    bool IsExact = false;
    // Whether the states in a search are those of back to front.
    bool IsReverse = false;
    ExportOptions Export;
    // How to read a list; what is not set is found out.
    TableChoice Table;
    std::vector<ColumnUse> Columns;
    KnownPairs Known = KnownPairs::kStop;
};

enum class CommandLineAnswer {
    // Run the command.
    kRun,
    // Print the help or the version.
    kTell,
    // Print what is wrong with the line.
    kWrong,
    // Text names a word whose bytes are no characters here.
    kRefused
};

// Reads the command line. Options may stand before and after the command; text receives what to
// print when there is nothing to run.
CommandLineAnswer ReadCommandLine(int argc, char** argv, CardsOptions& options, wxString& text);
