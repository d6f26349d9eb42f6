#include "transfer/ImportRun.h"

#include <wx/button.h>
#include <wx/dialog.h>
#include <wx/filename.h>
#include <wx/intl.h>
#include <wx/sizer.h>
#include <wx/stattext.h>

#include <algorithm>
#include <list>

#include "base/Text.h"
#include "base/Time.h"
#include "exchange/ImportJob.h"
#include "scheduler/ReviewArithmetic.h"
#include "shell/AppServices.h"
#include "shell/Forms.h"
#include "shell/MessageBox.h"
#include "store/Database.h"
#include "transfer/MergeDialog.h"
#include "transfer/ProgressDialog.h"

namespace {

constexpr int kCategoryDialogId = 10038;
constexpr int kLongFieldDialogId = 10039;
constexpr int kTextWidth = 380;

// Asks whether an import may go on. ShowModal returns wxID_YES, wxID_YESTOALL for this question and
// all others of its kind about the file, or wxID_CANCEL.
class GoOnDialog : public wxDialog {
  public:
    GoOnDialog(wxWindow* parent, int id, const wxString& caption, const wxString& question,
               bool isAboutAll);
};

GoOnDialog::GoOnDialog(wxWindow* parent, int id, const wxString& caption, const wxString& question,
                       bool isAboutAll)
    : wxDialog(parent, id, caption) {
    auto* const text = new wxStaticText(this, wxID_ANY, wxString());
    // As label text, an ampersand in a name is shown and underlines nothing.
    text->SetLabelText(question);
    text->Wrap(FromDIP(kTextWidth));
    auto* const yes = new wxButton(this, wxID_YES, _("&Yes"));
    auto* const yesToAll = new wxButton(this, wxID_YESTOALL, _("Yes to All"));

    auto* const buttons = new wxBoxSizer(wxHORIZONTAL);
    const int gap = FromDIP(kFormGap);
    buttons->Add(yes);
    buttons->Add(yesToAll, wxSizerFlags().Border(wxLEFT, gap));
    buttons->AddSpacer(gap);
    yesToAll->Show(!isAboutAll);
    buttons->Add(new wxButton(this, wxID_CANCEL, _("&Cancel")));
    wxBoxSizer* const rows = MakeFormColumn(*this);
    rows->Add(text, wxSizerFlags().Expand());
    rows->Add(buttons, wxSizerFlags().Right().Border(wxTOP, FromDIP(kFormEdge)));
    GetSizer()->SetSizeHints(this);
    CentreOnParent();

    yes->SetDefault();
    yes->SetFocus();
    // The toolkit ends a dialog by itself for wxID_CANCEL, but not for these two.
    for (wxButton* const button : {yes, yesToAll}) {
        button->Bind(wxEVT_BUTTON, [this](wxCommandEvent& event) { EndModal(event.GetId()); });
    }
}

}  // namespace

namespace {

// One name alone has the text that the editor has for it too.
wxString DescribeNewCategories(const std::vector<wxString>& names) {
    if (names.size() == 1) {
        return wxString::Format(_("Category \"%s\" does not exist.  Would you like to create it?"),
                                ShownName(names.front()));
    }
    constexpr size_t kMostNamed = 10;
    const size_t named = names.size() <= kMostNamed + 1 ? names.size() : kMostNamed;
    wxString list;
    for (size_t i = 0; i < named; ++i) {
        list += "\n" + ShownName(names[i]);
    }
    if (named < names.size()) {
        list += "\n" + wxString::Format(_("and %i more"), static_cast<int>(names.size() - named));
    }
    return wxString::Format(
        _("These %i categories do not exist.  Would you like to create them?\n%s"),
        static_cast<int>(names.size()), list);
}

ImportQuestions::CategoryAnswer AskToGoOn(wxWindow* parent, int id, const wxString& caption,
                                          const wxString& question, bool isAboutAll = false) {
    switch (GoOnDialog(parent, id, caption, question, isAboutAll).ShowModal()) {
        case wxID_YES:
            return ImportQuestions::CategoryAnswer::kYes;
        case wxID_YESTOALL:
            return ImportQuestions::CategoryAnswer::kYesToAll;
        default:
            return ImportQuestions::CategoryAnswer::kCancel;
    }
}

}  // namespace

ImportQuestions::CategoryAnswer ImportQuestionDialogs::AskNewCategories(
    wxWindow* parent, const std::vector<wxString>& names) {
    return AskToGoOn(parent, kCategoryDialogId, _("New Category"), DescribeNewCategories(names),
                     names.size() > 1);
}

ImportQuestions::CategoryAnswer ImportQuestionDialogs::AskLongField(wxWindow* parent, int32_t line,
                                                                    int32_t lines) {
    return AskToGoOn(
        parent, kLongFieldDialogId, _("Long Field"),
        wxString::Format(_("The record at line %i has a quoted field of %i lines.  A double quote "
                           "that is never closed may be the reason.  Import it as it is?"),
                         line, lines));
}

wxString ImportQuestionDialogs::NameOfCategory(int32_t id) const {
    std::list<Category> categories;
    if (mpDatabase == nullptr || mpDatabase->SelectCategoryById(id, categories) < 0 ||
        categories.empty()) {
        return wxString();
    }
    return categories.front().Name;
}

ImportQuestions::MergeAnswer ImportQuestionDialogs::AskMerge(wxWindow* parent,
                                                             const FlashCard& stored,
                                                             const FlashCard& imported, uint32_t) {
    MergeDialog dialog(parent, stored, imported, NameOfCategory(stored.CategoryId),
                       NameOfCategory(imported.CategoryId));
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
    wxString text = wxString::Format(
        _("%i Records Inserted\n%i Records Merged\n%i Duplicates Ignored\n%.2f %s"),
        result.RecordsInserted, result.RecordsMerged, result.DuplicatesIgnored,
        static_cast<double>(time.Value), IntervalUnitName(time.Unit));
    if (result.RecordsLeftOut > 0) {
        text += "\n" + wxString::Format(wxPLURAL("%i row without text on a side is left out",
                                                 "%i rows without text on a side are left out",
                                                 static_cast<unsigned>(result.RecordsLeftOut)),
                                        result.RecordsLeftOut);
    }
    const wxString missing = MissingFilesMessage(result);
    text += missing.empty() ? wxString() : "\n" + missing;
    constexpr size_t kMostTold = 10;
    for (size_t i = 0; i < std::min(result.Notices.size(), kMostTold); ++i) {
        const SourceNotice& notice = result.Notices[i];
        text += "\n" + wxString::Format(_("Line %i: %s"), notice.Line, notice.Text);
    }
    if (result.Notices.size() > kMostTold) {
        text += "\n" + _("(there may be more)");
    }
    ShowMessageBox(text, _("Import Complete"), wxOK | wxCENTRE, &parent);
}

wxString DescribeFailure(const ImportResult& result) {
    return result.LineNumber >= 1
               ? wxString::Format(_("%s\nLine Number: %i"), result.Message, result.LineNumber)
               : result.Message;
}

// While it lives, the first change of the store is preceded by the backup of an import. An error is
// told, and the import goes on.
class ImportBackup {
  public:
    ImportBackup(AppServices& services, const wxString& file) : mServices(services) {
        const wxULongLong size = wxFileName::GetSize(file);
        mServices.ExpectChange(BackupCause::kImport,
                               size == wxInvalidSize ? 0 : ImportedBytes(size.GetValue()));
    }
    ~ImportBackup() { mServices.ExpectChange(BackupCause::kDay, 0); }
    ImportBackup(const ImportBackup&) = delete;
    ImportBackup& operator=(const ImportBackup&) = delete;

  private:
    AppServices& mServices;
};

}  // namespace

bool ImportWithProgress(wxWindow* parent, AppServices& services, const ImportInput& input,
                        Database& database, FatalErrorReport& report,
                        std::set<int32_t>* touchedCategories, wxString* pFailure) {
    const ImportBackup backup(services, input.FileName);
    const wxDateTime start = CurrentTime();
    ImportQuestionDialogs questions(&database);
    const bool askCategories = parent != nullptr;
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
            if (pFailure != nullptr) {
                *pFailure = DescribeFailure(result);
            } else if (!result.Message.empty()) {
                // Without a message, the toolkit's own for a file that is not there says why.
                ShowMessageBox(DescribeFailure(result), _("Import Failed"), wxOK | wxCENTRE,
                               parent);
            }
            return false;
    }
}
