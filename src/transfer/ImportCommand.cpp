#include "transfer/ImportCommand.h"

#include <wx/button.h>
#include <wx/dialog.h>
#include <wx/filedlg.h>
#include <wx/filefn.h>
#include <wx/filename.h>
#include <wx/hyperlink.h>
#include <wx/intl.h>
#include <wx/sizer.h>
#include <wx/stattext.h>
#include <wx/stdpaths.h>
#include <wx/utils.h>

#include <algorithm>
#include <filesystem>
#include <string>

#include "base/Files.h"
#include "exchange/ImportJob.h"
#include "formats/LegacyStoreReader.h"
#include "shell/AppServices.h"
#include "shell/Forms.h"
#include "shell/MessageBox.h"
#include "shell/ProgramInfo.h"
#include "store/Database.h"
#include "store/StoreCompanions.h"
#include "transfer/ImportDialog.h"
#include "transfer/ImportRun.h"

namespace {

constexpr int kEngineDialogId = 10115;
constexpr int kTextWidth = 230;

// Tells how to get the database engine that reads stores of version 1.0. ShowModal returns wxOK
// when the user wants to try again, and wxCANCEL otherwise.
class EngineDialog : public wxDialog {
  public:
    explicit EngineDialog(wxWindow* parent);
};

// Returns where to get the engine for this version of the operating system.
wxString EngineAddress() {
    int major = 0;
    int minor = 0;
    wxGetOsVersion(&major, &minor);
    return wxString::Format("%s/?q=sqlce&wm=%i.%i", kSupportSite, major, minor);
}

EngineDialog::EngineDialog(wxWindow* parent) : wxDialog(parent, kEngineDialogId, kApplicationName) {
    auto* const text = new wxStaticText(
        this, wxID_ANY,
        _("Microsoft SQLCE 2.0 must be installed to import version 1.0 flash cards.\n\n1. Connect "
          "your device to the internet (just connect it to an internet connected desktop "
          "computer)\n2. Click on the link below to download\n3. Open the downloaded file\n"));
    text->Wrap(FromDIP(kTextWidth));
    const wxString address = EngineAddress();
    // An escaped ampersand is shown instead of underlining a letter.
    auto* const link =
        new wxHyperlinkCtrl(this, wxID_ANY, wxControl::EscapeMnemonics(address), address);
    auto* const retry = new wxButton(this, wxID_OK, _("&Retry"));
    auto* const cancel = new wxButton(this, wxID_CANCEL, _("&Cancel"));

    auto* const buttons = new wxBoxSizer(wxHORIZONTAL);
    buttons->Add(retry, wxSizerFlags().Border(wxRIGHT, FromDIP(kFormGap)));
    buttons->Add(cancel);
    wxBoxSizer* const rows = MakeFormColumn(*this);
    rows->Add(text, wxSizerFlags().Expand());
    rows->Add(link, FormRow(*this));
    rows->AddStretchSpacer();
    rows->Add(buttons, wxSizerFlags().Right().Border(wxTOP, FromDIP(kFormEdge)));
    wxSize fitting = GetSizer()->ComputeFittingClientSize(this);
    fitting.IncTo(FromDIP(wxSize(400, 300)));
    SetClientSize(fitting);
    Centre();

    retry->SetDefault();
    retry->SetFocus();
    retry->Bind(wxEVT_BUTTON, [this](wxCommandEvent&) { EndModal(wxOK); });
    // Escape and the title bar press this button too.
    cancel->Bind(wxEVT_BUTTON, [this](wxCommandEvent&) { EndModal(wxCANCEL); });
}

wxString PlaceIn(const wxString& directory) {
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

// Returns false when the engine is missing and the user gives up getting it.
bool ReachEngine(wxWindow* parent, const LegacyRowSourceMaker& makeRowSource) {
    while (LegacyStoreReader(makeRowSource()).Initialize() < 0) {
        if (EngineDialog(parent).ShowModal() != wxOK) {
            return false;
        }
    }
    return true;
}

}  // namespace

std::vector<wxString> GetVersion1StorePlaces() {
    return {PlaceIn(wxStandardPaths::Get().GetDocumentsDir()),
            PlaceIn(wxString(wxFileName::GetPathSeparator()))};
}

bool OfferVersion1Import(wxWindow* parent, AppServices& services, Database& database,
                         FatalErrorReport& report, const std::vector<wxString>& places,
                         const LegacyRowSourceMaker& makeRowSource) {
    const auto place = std::find_if(places.begin(), places.end(), [](const wxString& path) {
        return wxFileName::FileExists(path);
    });
    if (place == places.end()) {
        return false;
    }
    // At the start of the program the cursor still says busy, but now the user has to answer.
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
    if (ImportWithProgress(nullptr, services, input, database, report)) {
        // The log tells when it cannot be removed.
        wxRemoveFile(*place);
    }
    database.Notify();
    return true;
}

namespace {

bool ChooseFile(wxWindow* parent, wxString& path) {
    wxFileDialog chooser(parent, _("Import Flashcards"), wxString(), wxString(),
                         _("Text files, tables and decks|*.txt;*.csv;*.tsv;*.tab;*.apkg;*.colpkg;"
                           "*.cards;default.db|All files (*.*)|*.*"),
                         wxFD_OPEN);
    if (chooser.ShowModal() != wxID_OK) {
        return false;
    }
    path = chooser.GetPath();
    return true;
}

}  // namespace

bool BelongsToStore(Database& database, const wxString& path) {
    namespace fs = std::filesystem;
    const fs::path store = ToPath(database.GetPath());
    std::error_code error;
    return database.IsStoreFile(path) ||
           std::any_of(kCompanions.begin(), kCompanions.end(), [&](const char* suffix) {
               return fs::equivalent(Beside(store, suffix), ToPath(path), error);
           });
}

void RunImportCommand(wxWindow* parent, AppServices& services, Database& database,
                      FatalErrorReport& report) {
    wxString path;
    if (!OfferVersion1Import(parent, services, database, report) && ChooseFile(parent, path)) {
        ImportFileByDialog(parent, services, database, report, path);
    }
}

void ImportFileByDialog(wxWindow* parent, AppServices& services, Database& database,
                        FatalErrorReport& report, const wxString& path) {
    ImportDialog dialog(parent, services, database, report, path);
    const bool wasRun = dialog.ShowModal() == wxOK;
    const std::set<int32_t>& touched = dialog.GetTouchedCategories();
    if (wasRun && !touched.empty() && !services.GetCurrentChoice(database).Has(*touched.begin())) {
        services.SetCurrentCategoryId(database, *touched.begin());
    }
    database.Notify();
}
