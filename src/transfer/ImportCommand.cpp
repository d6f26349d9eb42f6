#include "transfer/ImportCommand.h"

#include <wx/button.h>
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

#include "base/Unicode.h"
#include "exchange/ImportJob.h"
#include "exchange/LegacyStoreReader.h"
#include "shell/AppServices.h"
#include "shell/MessageBox.h"
#include "shell/ProgramInfo.h"
#include "store/Database.h"
#include "transfer/ImportDialog.h"
#include "transfer/ImportRun.h"

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

namespace {

constexpr int kDialogId = 10115;
constexpr int kTextWidth = 230;
constexpr int kBorder = 5;

// Where the engine for this operating system is to be had.
wxString EngineAddress() {
    int major = 0;
    int minor = 0;
    wxGetOsVersion(&major, &minor);
    return wxString::Format("%s/?q=sqlce&wm=%i.%i", kSupportSite, major, minor);
}

}  // namespace

SqlCeRequired::SqlCeRequired(wxWindow* parent, const wxString& caption, const wxSize& size)
    : wxDialog(parent, kDialogId, caption, wxDefaultPosition, size) {
    auto* const text = new wxStaticText(
        this, wxID_ANY,
        _("Microsoft SQLCE 2.0 must be installed to import version 1.0 flash cards.\n\n1. Connect "
          "your device to the internet (just connect it to an internet connected desktop "
          "computer)\n2. Click on the link below to download\n3. Open the downloaded file\n"));
    text->Wrap(FromDIP(kTextWidth));
    const wxString address = EngineAddress();
    // The address is shown as it is, with an ampersand that is no mnemonic.
    auto* const link =
        new wxHyperlinkCtrl(this, wxID_ANY, wxControl::EscapeMnemonics(address), address);
    auto* const retry = new wxButton(this, wxID_OK, _("&Retry"));
    auto* const cancel = new wxButton(this, wxID_CANCEL, _("&Cancel"));

    auto* const buttons = new wxBoxSizer(wxHORIZONTAL);
    buttons->Add(retry, wxSizerFlags().Border(wxRIGHT, kBorder));
    buttons->Add(cancel);
    auto* const rows = new wxBoxSizer(wxVERTICAL);
    rows->Add(text, wxSizerFlags().Expand().Border(wxALL, 2 * kBorder));
    rows->Add(link, wxSizerFlags().Border(wxLEFT | wxRIGHT, 2 * kBorder));
    rows->AddStretchSpacer();
    rows->Add(buttons, wxSizerFlags().Centre().Border(wxALL, 2 * kBorder));
    SetSizer(rows);
    // At the size that was asked for, or larger where the content needs it.
    wxSize fitting = rows->ComputeFittingClientSize(this);
    fitting.IncTo(FromDIP(size));
    SetClientSize(fitting);
    Centre();

    retry->SetDefault();
    retry->SetFocus();
    retry->Bind(wxEVT_BUTTON, [this](wxCommandEvent&) { EndModal(wxOK); });
    // Escape and the title bar press this button too.
    cancel->Bind(wxEVT_BUTTON, [this](wxCommandEvent&) { EndModal(wxCANCEL); });
}
