#include "transfer/ImportRun.h"

#include <wx/button.h>
#include <wx/defs.h>
#include <wx/intl.h>
#include <wx/sizer.h>
#include <wx/stattext.h>

#include "base/FatalErrorReport.h"
#include "base/Time.h"
#include "exchange/ImportThread.h"
#include "scheduler/ReviewArithmetic.h"
#include "shell/MessageBox.h"
#include "transfer/MergeDialog.h"
#include "transfer/ProgressDialog.h"

namespace {

constexpr int kDialogId = 10038;
constexpr int kTextWidth = 380;
// What is longer is no name that a person gave, and would not fit on the screen.
constexpr size_t kLongestName = 200;

wxString Question(const wxString& name) {
    const wxString shown =
        name.length() <= kLongestName ? name : name.substr(0, kLongestName) + wxString(L'\u2026');
    return wxString::Format(_("Category \"%s\" does not exist.  Would you like to create it?"),
                            shown);
}

}  // namespace

ImportNewCategoryMessageBox::ImportNewCategoryMessageBox(wxWindow* parent,
                                                         const wxString& categoryName)
    : wxDialog(parent, kDialogId, _("New Category"), wxDefaultPosition, wxSize(400, 300)) {
    auto* const text = new wxStaticText(this, wxID_ANY, wxString());
    // An ampersand of the name is no mnemonic.
    text->SetLabelText(Question(categoryName));
    text->Wrap(FromDIP(kTextWidth));
    auto* const yes = new wxButton(this, wxID_YES, _("&Yes"));
    auto* const yesToAll = new wxButton(this, wxID_YESTOALL, _("Yes to All"));
    auto* const cancel = new wxButton(this, wxID_CANCEL, _("&Cancel"));

    auto* const buttons = new wxBoxSizer(wxHORIZONTAL);
    buttons->Add(yes, wxSizerFlags().Border(wxRIGHT, 5));
    buttons->Add(yesToAll, wxSizerFlags().Border(wxRIGHT, 5));
    buttons->Add(cancel);
    auto* const rows = new wxBoxSizer(wxVERTICAL);
    rows->Add(text, wxSizerFlags().Expand().Border(wxALL, 10));
    rows->Add(buttons, wxSizerFlags().Centre().Border(wxLEFT | wxRIGHT | wxBOTTOM, 10));
    SetSizerAndFit(rows);
    CentreOnParent();

    yes->SetDefault();
    yes->SetFocus();
    yes->Bind(wxEVT_BUTTON, [this](wxCommandEvent&) { EndModal(wxID_YES); });
    yesToAll->Bind(wxEVT_BUTTON, [this](wxCommandEvent&) {
        mYesToAll = true;
        EndModal(wxID_YES);
    });
    // The cancel button, Escape and the title bar end with wxID_CANCEL by themselves.
}

ImportQuestions::CategoryAnswer ImportQuestionDialogs::AskNewCategory(wxWindow* parent,
                                                                      const wxString& name) {
    ImportNewCategoryMessageBox box(parent, name);
    if (box.ShowModal() != wxID_YES) {
        return CategoryAnswer::kCancel;
    }
    return box.IsYesToAll() ? CategoryAnswer::kYesToAll : CategoryAnswer::kYes;
}

ImportQuestions::MergeAnswer ImportQuestionDialogs::AskMerge(wxWindow* parent,
                                                             const FlashCard& stored,
                                                             const FlashCard& imported, uint32_t) {
    MergeDialog dialog(parent);
    dialog.SetCards(stored, imported);
    MergeAnswer answer;
    answer.IsOk = dialog.ShowModal() == wxOK;
    answer.Merged = dialog.GetMergedCard();
    if (dialog.GetChoice() == MergeDialog::kAlwaysImported) {
        answer.Further = ImportMergePolicy::kKeepImported;
    } else if (dialog.GetChoice() == MergeDialog::kAlwaysDatabase) {
        answer.Further = ImportMergePolicy::kKeepDatabase;
    }
    return answer;
}

namespace {

void TellComplete(wxWindow& parent, const ImportResult& result, const wxTimeSpan& elapsed) {
    const IntervalInUnits time = SplitInterval(static_cast<float>(elapsed.GetSeconds().ToLong()));
    ShowMessageBox(wxString::Format(
                       _("%i Records Inserted\n%i Records Merged\n%i Duplicates Ignored\n%.2f %s"),
                       result.RecordsInserted, result.RecordsMerged, result.DuplicatesIgnored,
                       static_cast<double>(time.Value), IntervalUnitName(time.Unit)),
                   _("Import Complete"), wxOK | wxCENTRE, &parent);
}

void TellFailure(wxWindow* parent, const ImportResult& result) {
    // Without a text the reason is told elsewhere, as by the library for a file that is not there.
    if (result.Message.empty()) {
        return;
    }
    const wxString text =
        result.LineNumber >= 1
            ? wxString::Format(_("%s\nLine Number: %i"), result.Message, result.LineNumber)
            : result.Message;
    ShowMessageBox(text, _("Import Failed"), wxOK | wxCENTRE, parent);
}

}  // namespace

bool ImportWithProgress(wxWindow* parent, const ImportInput& input, Database& database,
                        FatalErrorReport& report, bool askCategories,
                        std::set<int32_t>* touchedCategories) {
    const wxDateTime start = CurrentTime();
    ImportQuestionDialogs questions;
    ImportThread thread(input, database, askCategories, touchedCategories, questions);
    if (!RunWithProgress(parent, thread, report, _("Unable to start a thread for the import."))) {
        return false;
    }
    const wxTimeSpan elapsed = CurrentTime() - start;
    const ImportResult& result = thread.GetResult();
    switch (result.Status) {
        case ImportStatus::kFinished:
            if (parent != nullptr) {
                TellComplete(*parent, result, elapsed);
            }
            return true;
        case ImportStatus::kCancelled:
            return false;
        default:
            TellFailure(parent, result);
            return false;
    }
}
