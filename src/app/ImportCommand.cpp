#include "app/ImportCommand.h"

#include <wx/filedlg.h>
#include <wx/intl.h>

#include <filesystem>
#include <string>

#include "app/Version1Import.h"
#include "base/Utf8.h"
#include "exchange/dialogs/ImportDialog.h"
#include "shell/AppServices.h"
#include "store/Database.h"

namespace {

bool ChooseFile(wxWindow* parent, wxString& path) {
    wxFileDialog chooser(parent, _("Import Flashcards"), wxString(), wxString(),
                         _("Text files (*.txt)|*.txt|All files (*.*)|*.*"), wxFD_OPEN);
    if (chooser.ShowModal() != wxID_OK) {
        return false;
    }
    path = chooser.GetPath();
    return true;
}

}  // namespace

bool BelongsToStore(Database& database, const wxString& path) {
    namespace fs = std::filesystem;
    const std::string store = ToUtf8(database.GetPath());
    const fs::path file = fs::u8path(ToUtf8(path));
    std::error_code error;
    return database.IsStoreFile(path) ||
           fs::equivalent(fs::u8path(store + "-journal"), file, error) ||
           fs::equivalent(fs::u8path(store + "-wal"), file, error) ||
           fs::equivalent(fs::u8path(store + "-shm"), file, error);
}

void RunImportCommand(wxWindow* parent, AppServices& services, Database& database,
                      FatalErrorReport& report, const std::vector<wxString>& version1Places) {
    wxString path;
    if (OfferVersion1Import(parent, database, report, version1Places) ||
        !ChooseFile(parent, path)) {
        return;
    }
    ImportDialog dialog(parent, report);
    dialog.SetFileName(path);
    dialog.SetDatabase(&database);
    dialog.DetectFormat();
    const bool wasRun = dialog.ShowModal() == wxOK;
    const std::set<int32_t>& touched = dialog.GetTouchedCategories();
    if (wasRun && !touched.empty()) {
        services.SetCurrentCategoryId(database, *touched.begin());
    }
    database.Notify();
}
