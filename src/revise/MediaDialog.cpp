#include "revise/MediaDialog.h"

#include <wx/button.h>
#include <wx/filename.h>
#include <wx/intl.h>
#include <wx/listctrl.h>
#include <wx/sizer.h>
#include <wx/stattext.h>
#include <wx/utils.h>

#include <cerrno>
#include <set>

#include "base/Files.h"
#include "base/Time.h"
#include "shell/Forms.h"
#include "shell/MessageBox.h"
#include "shell/Toolkit.h"
#include "store/Database.h"

namespace {

// Logical pixels.
constexpr int kNameWidth = 320;
constexpr int kStateWidth = 110;
constexpr int kSizeWidth = 90;
constexpr int kListHeight = 260;

wxString SizeText(int64_t bytes) {
    return wxFileName::GetHumanReadableSize(static_cast<unsigned long long>(bytes), wxString(), 0);
}

int64_t SumOf(const std::vector<MediaFile>& files) {
    int64_t bytes = 0;
    for (const MediaFile& file : files) {
        bytes += file.Size;
    }
    return bytes;
}

wxString Counted(const wxString& format, size_t count, const wxString& size) {
    return wxString::Format(format, static_cast<int>(count), size);
}

int64_t Now() {
    return static_cast<int64_t>(CurrentTime().GetTicks());
}

}  // namespace

MediaDialog::MediaDialog(wxWindow* parent, Database& database)
    : wxDialog(parent, wxID_ANY, _("Media"), wxDefaultPosition, wxDefaultSize,
               wxDEFAULT_DIALOG_STYLE | wxRESIZE_BORDER),
      mDatabase(database),
      mFolder(database.GetPath()) {
    wxBoxSizer* const rows = MakeFormColumn(*this);
    mpSummary = new wxStaticText(this, kSummaryId, wxString());
    rows->Add(mpSummary);
    const int width = FromDIP(kNameWidth + kStateWidth + kSizeWidth + 2 * kFormEdge);
    mpList = new wxListCtrl(this, kListId, wxDefaultPosition, wxSize(width, FromDIP(kListHeight)),
                            wxLC_REPORT | wxLC_SINGLE_SEL);
    mpList->AppendColumn(_("File"), wxLIST_FORMAT_LEFT, FromDIP(kNameWidth));
    mpList->AppendColumn(_("State"), wxLIST_FORMAT_LEFT, FromDIP(kStateWidth));
    mpList->AppendColumn(_("Size"), wxLIST_FORMAT_RIGHT, FromDIP(kSizeWidth));
    SetAccessibleName(*mpList, _("Unused and missing files"));
    rows->Add(mpList, FormRow(*this).Proportion(1));
    auto* const buttons = new wxBoxSizer(wxHORIZONTAL);
    buttons->Add(new wxButton(this, kDeleteId, _("&Delete Unused...")));
    buttons->AddStretchSpacer();
    auto* const close = new wxButton(this, wxID_CLOSE);
    buttons->Add(close);
    rows->Add(buttons, wxSizerFlags().Expand().Border(wxTOP, FromDIP(kFormEdge)));
    SetEscapeId(wxID_CLOSE);
    SetAffirmativeId(wxID_CLOSE);
    close->SetDefault();
    Bind(
        wxEVT_BUTTON, [this](wxCommandEvent&) { DeleteUnused(); }, kDeleteId);
    Look();
    Fit();
    SetMinSize(GetSize());
    CentreOnParent();
}

void MediaDialog::Look() {
    const wxBusyCursor busy;
    mListing = MediaListing();
    std::set<wxString> used;
    // Without all names no file counts as unused.
    int error = FindUsedMedia(mDatabase, used) < 0 ? EIO : 0;
    if (error == 0) {
        mFolder.BringBack(used, Now());
        error = mFolder.List(used, mListing);
    }
    mpList->DeleteAllItems();
    const auto add = [this](const wxString& name, const wxString& state, const wxString& size) {
        const long row = mpList->InsertItem(mpList->GetItemCount(), name);
        mpList->SetItem(row, 1, state);
        mpList->SetItem(row, 2, size);
    };
    for (const wxString& name : mListing.Missing) {
        add(name, _("missing"), wxString());
    }
    for (const MediaFile& file : mListing.Unused) {
        add(file.Name, _("unused"), SizeText(file.Size));
    }
    if (error != 0) {
        mpSummary->SetLabel(wxString::Format(_("The folder \"%s\" could not be read (%s)."),
                                             FromPath(mFolder.GetPath()), SystemErrorText(error)));
    } else {
        const size_t count = mListing.Used.size();
        mpSummary->SetLabel(
            Counted(wxPLURAL("The cards use %i file (%s).", "The cards use %i files (%s).",
                             static_cast<unsigned>(count)),
                    count, SizeText(SumOf(mListing.Used))) +
            "\n" + FromPath(mFolder.GetPath()));
    }
    FindWindow(kDeleteId)->Enable(!mListing.Unused.empty());
}

void MediaDialog::DeleteUnused() {
    const size_t count = mListing.Unused.size();
    const wxString question = Counted(
        wxPLURAL(
            "Do you want to delete %i file (%s) that no card names?\n\nOlder backups may need "
            "it.  It stays in the folder \"unused\" for 30 days, and comes back when a card "
            "names it again.",
            "Do you want to delete %i files (%s) that no card names?\n\nOlder backups may need "
            "them.  They stay in the folder \"unused\" for 30 days, and come back when a card "
            "names them again.",
            static_cast<unsigned>(count)),
        count, SizeText(SumOf(mListing.Unused)));
    if (ShowMessageBox(question, _("Delete Unused Files"), wxOK | wxCANCEL | wxICON_EXCLAMATION,
                       this) != wxOK) {
        return;
    }
    const int error = mFolder.SetAside(mListing.Unused, Now());
    if (error != 0) {
        ShowMessageBox(
            wxString::Format(_("Not all files could be moved (%s)."), SystemErrorText(error)),
            _("Delete Unused Files"), wxOK | wxCENTRE, this);
    }
    Look();
    // A button that is grey would keep the keys.
    FindWindow(wxID_CLOSE)->SetFocus();
}
