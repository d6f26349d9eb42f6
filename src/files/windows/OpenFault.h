#pragma once

#include <wx/string.h>

class Database;

// Why a store file could not be opened. Apart from the recovery dialog, because a failed change of
// the store file tells its reason too.
enum class OpenFault {
    kNoFolder,
    kMissing,
    kNoFile,
    kForbidden,
    kFull,
    kBusy,
    kForeign,
    kDamaged,
    kUnknown
};

// Finds the reason. The Database has just failed to open the path, or a first question to it.
OpenFault FindOpenFault(const wxString& path, Database& database);

// Returns the reason as a whole sentence for the user.
wxString DescribeOpenFault(OpenFault fault);
