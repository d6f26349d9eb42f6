#include "app/StoreLifecycle.h"

#include <wx/confbase.h>
#include <wx/filename.h>
#include <wx/log.h>
#include <wx/stdpaths.h>
#include <wx/utils.h>

#include "app/AppUpgradeWait.h"
#include "app/DatabaseOpenFailed.h"
#include "app/ExitCodes.h"
#include "app/StoreFileDialogs.h"
#include "shell/Settings.h"
#include "store/Database.h"

namespace {

constexpr char kPathKey[] = "DatabasePath";

// A stored choice must still mean the same file when the program starts in another directory.
wxString MakePathFull(const wxString& path) {
    if (path.empty() || path.StartsWith("file:")) {
        return path;
    }
    wxFileName name(path);
    name.MakeAbsolute();
    return name.GetFullPath();
}

// Asks what to open in place of a path that failed. False when the person gives up.
bool ChooseAnother(wxWindow* parent, wxString& path, bool& mustExist) {
    // The person is to choose, not to wait.
    const wxBusyCursorSuspender ready;
    DatabaseOpenFailed dialog(parent, path, mustExist);
    if (dialog.ShowModal() != DatabaseOpenFailed::kTryAgain) {
        return false;
    }
    path = MakePathFull(dialog.GetPath());
    mustExist = dialog.MustExist();
    return true;
}

// What fails is told by the recovery dialog alone.
bool TryQuietly(Database& database, const std::function<void()>& ask) {
    const wxLogNull silence;
    return database.Try(ask);
}

}  // namespace

wxString GetDefaultStorePath() {
    const wxString directory = wxStandardPaths::Get().GetDocumentsDir();
    {
        // What fails here shows itself when the store is opened.
        const wxLogNull silence;
        wxFileName::Mkdir(directory, wxS_DIR_DEFAULT, wxPATH_MKDIR_FULL);
    }
    return wxFileName(directory, kDefaultStoreName).GetFullPath();
}

std::unique_ptr<Database> OpenAtStart(FatalErrorReport& report) {
    auto database = std::make_unique<Database>(report);
    wxString path = OpenSettings()->Read(kPathKey, wxString());
    const bool isStored = !path.empty();
    if (!isStored) {
        path = GetDefaultStorePath();
    } else if (wxFileName::DirExists(path)) {
        path = wxFileName(path, kDefaultStoreName).GetFullPath();
    }
    OpenStoreFile(nullptr, *database, path, isStored);
    return database;
}

bool TryOpenStoreFile(wxWindow* parent, Database& database, const wxString& path, bool mustExist) {
    wxString choice = MakePathFull(path);
    AppUpgradeWait wait(parent);
    while ((mustExist && !wxFileName::FileExists(choice)) || database.Open(choice, wait) != 0) {
        if (!ChooseAnother(parent, choice, mustExist)) {
            return false;
        }
    }
    OpenSettings()->Write(kPathKey, choice);
    return true;
}

void OpenStoreFile(wxWindow* parent, Database& database, const wxString& path, bool mustExist) {
    if (!TryOpenStoreFile(parent, database, path, mustExist)) {
        EndProcess(kExitFromRecovery);
    }
}

void AskBeforeWindows(Database& database, const std::function<void()>& ask) {
    for (;;) {
        wxString path = database.GetPath();
        if (TryQuietly(database, ask)) {
            return;
        }
        database.Close();
        bool mustExist = true;
        if (!ChooseAnother(nullptr, path, mustExist)) {
            EndProcess(kExitFromRecovery);
        }
        OpenStoreFile(nullptr, database, path, mustExist);
    }
}
