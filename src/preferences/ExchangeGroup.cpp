#include "preferences/ExchangeGroup.h"

#include <wx/button.h>
#include <wx/choice.h>
#include <wx/datetime.h>
#include <wx/dirdlg.h>
#include <wx/filename.h>
#include <wx/intl.h>
#include <wx/log.h>
#include <wx/scrolwin.h>
#include <wx/sizer.h>
#include <wx/stattext.h>
#include <wx/textctrl.h>
#include <wx/utils.h>

#include <filesystem>
#include <system_error>

#include "base/Files.h"
#include "base/Process.h"
#include "base/Unicode.h"
#include "shell/ExchangeSettings.h"
#include "shell/Forms.h"
#include "shell/MessageBox.h"
#include "shell/Toolkit.h"
#include "sync/Exchange.h"

namespace {

constexpr int kOthersWidth = 150;

// Short, as the control is narrow; its tool tip says what the time means.
wxString LineOf(const ExchangeMachine& machine) {
    const wxDateTime news(static_cast<time_t>(machine.LastNews / 1000));
    return FromUtf8(machine.Name) + ": " + news.Format("%Y-%m-%d %H:%M");
}

// Returns true when the file lies in the folder or below it, by whatever links.
bool LiesIn(const wxString& file, const wxString& folder) {
    namespace fs = std::filesystem;
    std::error_code error;
    fs::path place = fs::weakly_canonical(ToPath(file), error);
    while (place.has_relative_path()) {
        place = place.parent_path();
        if (fs::equivalent(place, ToPath(folder), error)) {
            return true;
        }
    }
    return false;
}

}  // namespace

// The rows are few, so that the options fit on a low screen.
ExchangeGroup::ExchangeGroup(wxScrolledWindow& form, wxSizer& column) : mForm(form) {
    wxBoxSizer& group = *AddFormGroup(column, form, _("Study on Several Computers"));
    const int gap = form.FromDIP(kFormGap);
    const auto addRow = [&](const wxString& label, wxWindow& control, wxWindow* button) {
        auto* const row = new wxBoxSizer(wxHORIZONTAL);
        if (!label.empty()) {
            row->Add(MakeFormLabel(label, control),
                     wxSizerFlags().CentreVertical().Border(wxRIGHT, gap));
        }
        row->Add(&control, wxSizerFlags(1).CentreVertical());
        if (button != nullptr) {
            row->Add(button, wxSizerFlags().CentreVertical().Border(wxLEFT, gap));
        }
        group.Add(row, FormRow(form));
    };
    mpFolder = new wxTextCtrl(&form, kFolderId);
    auto* const browse = new wxButton(&form, kBrowseId, _("Browse"));
    addRow(_("Exchange &folder:"), *mpFolder, browse);
    mpName = new wxTextCtrl(&form, kNameId);
    addRow(_("&Name of this computer:"), *mpName, nullptr);
    mpOthers = MakeChoice(form, kOthersId, wxArrayString());
    // The names of the others come later and may be long.
    mpOthers->SetMinSize(form.FromDIP(wxSize(kOthersWidth, -1)));
    SetAccessibleName(*mpOthers, _("The other computers"));
    mpOthers->SetToolTip(_("The other computers, and when the last news of each came"));
    mpLeave = new wxButton(&form, kLeaveId, _("Leave..."));
    addRow(wxString(), *mpOthers, mpLeave);

    browse->Bind(wxEVT_BUTTON, [this](wxCommandEvent&) { Browse(); });
    mpLeave->Bind(wxEVT_BUTTON, [this](wxCommandEvent&) { Leave(); });
}

void ExchangeGroup::Load(const wxString& storePath) {
    mStorePath = storePath;
    mHasLeft = false;
    const ExchangeSetUp setUp = ReadExchangeSetUp(storePath);
    mpFolder->ChangeValue(setUp.Folder);
    mpName->ChangeValue(setUp.Name);
    mpOthers->Clear();
    for (const ExchangeMachine& machine : ReadExchangeMachines(storePath)) {
        if (machine.LastNews > 0) {
            mpOthers->Append(LineOf(machine));
        }
    }
    if (mpOthers->IsEmpty()) {
        mpOthers->Append(_("No other computer yet"));
    }
    mpOthers->SetSelection(0);
    mpLeave->Enable(TakesPart(storePath) || !setUp.Folder.empty());
}

void ExchangeGroup::Browse() {
    wxDirDialog dialog(wxGetTopLevelParent(&mForm), _("Study on Several Computers"),
                       mpFolder->GetValue(), wxDD_DEFAULT_STYLE);
    if (dialog.ShowModal() == wxID_OK) {
        mpFolder->SetValue(dialog.GetPath());
    }
}

void ExchangeGroup::Leave() {
    const wxString question =
        _("This computer will exchange its cards no more. The cards stay, here and on the other "
          "computers. Changes that were not exchanged yet stay here alone. Do you want to leave?");
    if (ShowMessageBox(question, _("Study on Several Computers"), wxYES_NO | wxNO_DEFAULT,
                       wxGetTopLevelParent(&mForm)) == wxYES) {
        mHasLeft = true;
        mpFolder->Clear();
        mpFolder->SetFocus();
        mpLeave->Disable();
    }
}

wxString ExchangeGroup::GetFolder() const {
    wxString folder = mpFolder->GetValue();
    folder.Trim().Trim(false);
    // As people write it, and the user guide.
    return folder == "~" || folder.StartsWith("~/") ? wxGetHomeDir() + folder.Mid(1) : folder;
}

wxString ExchangeGroup::FindProblem(const wxString& storePath) const {
    const wxString folder = GetFolder();
    if (folder.empty()) {
        return wxString();
    }
    // A stick that is not there just now, or a network that does not answer, must not keep the user
    // from the other options.
    const bool isKept = folder == ReadExchangeSetUp(mStorePath).Folder;
    if (isKept && storePath == mStorePath) {
        return wxString();
    }
    if (!isKept && (!wxIsAbsolutePath(folder) || !wxFileName::DirExists(folder))) {
        return wxString::Format(_("There is no folder \"%s\"."), folder);
    }
    if (LiesIn(storePath, folder)) {
        return _(
            "The store file must not lie in the exchange folder. Choose a folder of its own, which "
            "only the exchange uses: a service that carries the store file would damage it.");
    }
    return wxString();
}

void ExchangeGroup::TurnToFolder() {
    mpFolder->SetFocus();
    mpFolder->SelectAll();
}

void ExchangeGroup::Store() const {
    const int error = mHasLeft ? LeaveExchange(mStorePath) : 0;
    if (error != 0) {
        wxLogError(_("What was kept for the exchange could not be removed: %s"),
                   SystemErrorText(error));
    }
    wxString name = mpName->GetValue();
    WriteExchangeSetUp(mStorePath, {GetFolder(), name.Trim().Trim(false)});
}
