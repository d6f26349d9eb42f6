#include "app/ImportCommand.h"

#include <wx/filedlg.h>
#include <wx/intl.h>

#include "app/Version1Import.h"
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
