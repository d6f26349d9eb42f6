#include "app/Version1Import.h"

#include <wx/filefn.h>
#include <wx/filename.h>
#include <wx/intl.h>
#include <wx/stdpaths.h>
#include <wx/utils.h>

#include <algorithm>

#include "exchange/ImportInput.h"
#include "exchange/LegacyStoreReader.h"
#include "exchange/dialogs/ImportWithProgress.h"
#include "exchange/dialogs/SqlCeRequired.h"
#include "shell/MessageBox.h"
#include "store/Database.h"

namespace {

wxString PlaceBelow(const wxString& directory) {
    wxFileName name = wxFileName::DirName(directory);
    name.AppendDir("Velomind Classic");
    name.SetFullName("FlashCards.vls");
    return name.GetFullPath();
}

bool IsImportWanted(wxWindow* parent, const wxString& path) {
    const wxString question =
        wxString::Format(_("It looks like you have some flash cards from version 1.0 on this "
                           "device.  Would you like to import them now?\n%s"),
                         path);
    return ShowMessageBox(question, _("Import"), wxYES_NO, parent) == wxYES;
}

// False when the engine is missing and the person gives up getting it.
bool ReachEngine(wxWindow* parent, const LegacyRowSourceMaker& makeRowSource) {
    while (LegacyStoreReader(makeRowSource()).Initialize() < 0) {
        SqlCeRequired dialog(parent, "Velomind", wxSize(400, 300));
        if (dialog.ShowModal() != wxOK) {
            return false;
        }
    }
    return true;
}

}  // namespace

std::vector<wxString> GetVersion1StorePlaces() {
    return {PlaceBelow(wxStandardPaths::Get().GetDocumentsDir()),
            PlaceBelow(wxString(wxFileName::GetPathSeparator()))};
}

bool OfferVersion1Import(wxWindow* parent, Database& database, FatalErrorReport& report,
                         const std::vector<wxString>& places,
                         const LegacyRowSourceMaker& makeRowSource) {
    const auto place = std::find_if(places.begin(), places.end(), [](const wxString& path) {
        return wxFileName::FileExists(path);
    });
    if (place == places.end()) {
        return false;
    }
    // The start is over as far as the person is concerned, who is to answer.
    const wxBusyCursorSuspender ready;
    if (!IsImportWanted(parent, *place)) {
        return false;
    }
    if (!ReachEngine(parent, makeRowSource)) {
        return true;
    }
    ImportInput input;
    input.FileName = *place;
    input.Format = ImportFormat::kVersion1Store;
    input.MakeRowSource = makeRowSource;
    if (ImportWithProgress(nullptr, input, database, report, false, nullptr)) {
        wxRemoveFile(*place);
    }
    database.Notify();
    return true;
}
