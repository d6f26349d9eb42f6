#include "files/windows/OpenFault.h"

#include <sqlite3.h>
#include <unistd.h>
#include <wx/filefn.h>
#include <wx/filename.h>
#include <wx/intl.h>

#include "base/Files.h"
#include "files/StoreFiles.h"
#include "store/Database.h"

namespace {

OpenFault FaultOfCode(int code) {
    switch (code & 0xFF) {
        case SQLITE_BUSY:
        case SQLITE_LOCKED:
            return OpenFault::kBusy;
        case SQLITE_FULL:
            return OpenFault::kFull;
        case SQLITE_READONLY:
        case SQLITE_PERM:
        case SQLITE_AUTH:
        case SQLITE_CANTOPEN:
            return OpenFault::kForbidden;
        // The engine reads the file well, and we know no such tables or values.
        case SQLITE_OK:
        case SQLITE_ERROR:
            return OpenFault::kUnknown;
        default:
            return OpenFault::kDamaged;
    }
}

}  // namespace

// What the file system says comes first: the engine has one number for many of its answers.
OpenFault FindOpenFault(const wxString& path, Database& database) {
    const wxString full = MakeStorePathFull(path);
    if (!wxFileName::Exists(full)) {
        if (!wxFileName::DirExists(wxPathOnly(full))) {
            return OpenFault::kNoFolder;
        }
        const bool mayWrite = ::access(ToPath(wxPathOnly(full)).c_str(), W_OK) == 0;
        return mayWrite ? OpenFault::kMissing : OpenFault::kForbidden;
    }
    if (!wxFileName::FileExists(full)) {
        return OpenFault::kNoFile;
    }
    if (::access(ToPath(full).c_str(), R_OK | W_OK) != 0) {
        return OpenFault::kForbidden;
    }
    if (!IsDatabaseFile(full)) {
        return OpenFault::kForeign;
    }
    return FaultOfCode(database.GetLastErrorCode());
}

wxString DescribeOpenFault(OpenFault fault) {
    switch (fault) {
        case OpenFault::kNoFolder:
            return _("There is no such folder. It may be on a disk that is not connected.");
        case OpenFault::kMissing:
            return _("There is no such file.");
        case OpenFault::kNoFile:
            return _("This is a folder or a device and no file.");
        case OpenFault::kForbidden:
            return _("You are not allowed to read and write this file.");
        case OpenFault::kFull:
            return _("The disk is full.");
        case OpenFault::kBusy:
            return _("Another program is using this file.");
        case OpenFault::kForeign:
            return _("This is no store file of Velomind, or its beginning is damaged.");
        case OpenFault::kDamaged:
            return _("The file is damaged.");
        case OpenFault::kUnknown:
            return _("A newer version of Velomind or another program has made this file.");
    }
    return wxString();
}
