#include "transfer/ExportOptionsDialog.h"

#include <wx/button.h>
#include <wx/checkbox.h>
#include <wx/choice.h>
#include <wx/filedlg.h>
#include <wx/intl.h>
#include <wx/radiobox.h>
#include <wx/sizer.h>
#include <wx/statline.h>
#include <wx/stattext.h>
#include <wx/textctrl.h>
#include <wx/utils.h>

#include <algorithm>

#include "base/FatalErrorReport.h"
#include "exchange/Delimited.h"
#include "exchange/Export.h"
#include "scheduler/SchedulerSources.h"
#include "shell/Forms.h"
#include "shell/MessageBox.h"
#include "shell/Toolkit.h"
#include "store/Database.h"
#include "transfer/ProgressDialog.h"

namespace {

constexpr int kDialogId = 10033;
constexpr int kEncodingId = 10080;
constexpr int kEncodingHelpId = 10088;
constexpr int kFormatId = 10081;
constexpr int kFormatHelpId = 10086;
constexpr int kDelimiterLabelId = 10000;
constexpr int kDelimiterId = 10001;
constexpr int kOtherId = 10083;
constexpr int kDelimiterHelpId = 10085;
constexpr int kSchedulingId = 10082;
constexpr int kSchedulingHelpId = 10084;
constexpr int kRangeId = 10148;
constexpr int kPreviewId = 10035;

enum Range : int { kAll = 0, kCurrentCategory = 1, kSelectedCards = 2 };

constexpr size_t kPreviewCards = 16;
// A longer text is no view of the export, and would only make the window slow.
constexpr size_t kPreviewLength = size_t{1} << 16;
constexpr int kOtherWidth = 40;
constexpr int kPreviewWidth = 360;
constexpr int kPreviewHeight = 160;
constexpr int kGap = 5;

wxChoice* MakeChoice(wxWindow& parent, int id, const wxArrayString& labels, const wxString& name) {
    auto* const choice = new wxChoice(&parent, id, wxDefaultPosition, wxDefaultSize, labels);
    choice->SetSelection(0);
    SetAccessibleName(*choice, name);
    return choice;
}

wxArrayString EncodingLabels() {
    wxArrayString labels;
    labels.push_back(_("Unicode (recommended)"));
    labels.push_back(_("Unicode big endian"));
    labels.push_back(_("UTF-8"));
    return labels;
}

wxArrayString FormatLabels() {
    wxArrayString labels;
    labels.push_back(_("VLM Text File"));
    labels.push_back(_("Delimited"));
    labels.push_back(_("VLM 1.0 Text File"));
    return labels;
}

wxArrayString RangeLabels() {
    wxArrayString labels;
    labels.push_back(_("&All"));
    labels.push_back(_("&Current Category"));
    labels.push_back(_("&Selected Cards"));
    return labels;
}

bool AskForFile(wxWindow* parent, wxString& path) {
    wxFileDialog dialog(parent, _("Export Flashcards"), wxString(), "export.txt",
                        _("Text files (*.txt)|*.txt|All files (*.*)|*.*"),
                        wxFD_SAVE | wxFD_OVERWRITE_PROMPT);
    if (dialog.ShowModal() != wxID_OK) {
        return false;
    }
    path = dialog.GetPath();
    return true;
}

}  // namespace

ExportOptionsDialog::ExportOptionsDialog(wxWindow* parent, CategorySource& currentCategory,
                                         FatalErrorReport& report)
    : wxDialog(parent, kDialogId, _("Export Options"), wxDefaultPosition, wxSize(400, 300),
               wxDEFAULT_DIALOG_STYLE | wxRESIZE_BORDER),
      mCurrentCategory(currentCategory),
      mReport(report) {
    auto* const rows = new wxBoxSizer(wxVERTICAL);
    const wxSizerFlags row = wxSizerFlags().Expand().DoubleBorder(wxLEFT | wxRIGHT | wxTOP);
    rows->Add(MakeOptions(), row);
    mpRange = new wxRadioBox(this, kRangeId, _("Range"), wxDefaultPosition, wxDefaultSize,
                             RangeLabels(), 1, wxRA_SPECIFY_COLS);
    rows->Add(mpRange, row);
    rows->Add(new wxStaticLine(this), row);
    rows->Add(MakePreview(), wxSizerFlags(row).Proportion(1));
    rows->Add(MakeOkCancel(*this), wxSizerFlags().Expand().DoubleBorder());
    mpEncoding->SetFocus();
    FitTextHeights(*this);
    SetSizer(rows);
    ShowDelimiter();
    CentreOnParent();

    Bind(wxEVT_CHOICE, &ExportOptionsDialog::OnFormat, this, kFormatId);
    Bind(wxEVT_CHOICE, &ExportOptionsDialog::OnDelimiter, this, kDelimiterId);
    const auto refresh = [this](wxCommandEvent&) { RefreshPreview(); };
    Bind(wxEVT_TEXT, refresh, kOtherId);
    Bind(wxEVT_CHECKBOX, refresh, kSchedulingId);
    Bind(wxEVT_RADIOBOX, &ExportOptionsDialog::OnRange, this, kRangeId);
    Bind(wxEVT_BUTTON, &ExportOptionsDialog::OnOk, this, wxID_OK);
}

wxSizer* ExportOptionsDialog::MakeOptions() {
    auto* const grid = new wxFlexGridSizer(3, kGap, kGap);
    grid->AddGrowableCol(1);
    const auto addRow = [grid](wxStaticText* label, auto* field, wxButton* help) {
        grid->Add(label, wxSizerFlags().CentreVertical());
        grid->Add(field, wxSizerFlags().Expand());
        grid->Add(help, wxSizerFlags().CentreVertical());
    };

    mpEncoding = MakeChoice(*this, kEncodingId, EncodingLabels(), _("Encoding:"));
    addRow(new wxStaticText(this, wxID_ANY, _("Encoding:")), mpEncoding,
           MakeHelp(kEncodingHelpId, _("Encoding Help"),
                    _("This setting controls how the export\ntext is encoded in the output "
                      "file.\n\nUnicode can encode all languages and\ncan be loaded by most "
                      "text viewers\neditors, so it is the recommended format.")));

    mpFormat = MakeChoice(*this, kFormatId, FormatLabels(), _("Format:"));
    addRow(new wxStaticText(this, wxID_ANY, _("Format:")), mpFormat,
           MakeHelp(kFormatHelpId, _("Format Help"),
                    _("This setting controls whether the card\nattributes are output to "
                      "columns \n(Delimited) or rows (VLM Format).")));

    mpDelimiterLabel = new wxStaticText(this, kDelimiterLabelId, _("Delimiter:"));
    mpDelimiter = MakeChoice(*this, kDelimiterId, DelimiterLabels(), _("Delimiter:"));
    mpOther = new wxTextCtrl(this, kOtherId, wxString(), wxDefaultPosition,
                             FromDIP(wxSize(kOtherWidth, -1)));
    SetAccessibleName(*mpOther, _("Delimiter:"));
    mpDelimiterHelp = MakeHelp(kDelimiterHelpId, _("Delimiter Help"), DelimiterHelp());
    auto* const delimiter = new wxBoxSizer(wxHORIZONTAL);
    delimiter->Add(mpDelimiter, wxSizerFlags(1));
    delimiter->Add(mpOther, wxSizerFlags().Border(wxLEFT, kGap));
    addRow(mpDelimiterLabel, delimiter, mpDelimiterHelp);

    auto* const options = new wxBoxSizer(wxVERTICAL);
    options->Add(grid, wxSizerFlags().Expand());
    mpScheduling = new wxCheckBox(this, kSchedulingId, _("Include Scheduling Data"));
    mpScheduling->SetValue(true);
    auto* const scheduling = new wxBoxSizer(wxHORIZONTAL);
    scheduling->Add(mpScheduling, wxSizerFlags(1).CentreVertical());
    scheduling->Add(
        MakeHelp(kSchedulingHelpId, _("Include Scheduling Data Help"),
                 _("Check this option when you are exporting\ndata for backup.\n\nUncheck this "
                   "option when you are\nexporting data to be edited on your\ndesktop computer "
                   "or shared with others.")),
        wxSizerFlags().CentreVertical());
    options->Add(scheduling, wxSizerFlags().Expand().Border(wxTOP, kGap));
    return options;
}

wxButton* ExportOptionsDialog::MakeHelp(int id, const wxString& caption, const wxString& text) {
    auto* const button =
        new wxButton(this, id, "?", wxDefaultPosition, wxDefaultSize, wxBU_EXACTFIT);
    SetAccessibleName(*button, caption);
    button->Bind(wxEVT_BUTTON, [this, caption, text](wxCommandEvent&) {
        ShowMessageBox(text, caption, wxOK | wxCENTRE, this);
    });
    return button;
}

wxSizer* ExportOptionsDialog::MakePreview() {
    mpPreview = new wxTextCtrl(this, kPreviewId, wxString(), wxDefaultPosition,
                               FromDIP(wxSize(kPreviewWidth, kPreviewHeight)),
                               wxTE_READONLY | wxTE_MULTILINE | wxHSCROLL);
    SetAccessibleName(*mpPreview, _("Preview"));
    auto* const rows = new wxBoxSizer(wxVERTICAL);
    rows->Add(new wxStaticText(this, wxID_ANY, _("Preview")));
    rows->Add(mpPreview, wxSizerFlags(1).Expand().Border(wxTOP, kGap));
    return rows;
}

void ExportOptionsDialog::SetDatabase(Database& database,
                                      const std::vector<int64_t>& selectedRowIds) {
    mpDatabase = &database;
    mpSelectedRowIds = &selectedRowIds;
    int32_t count = 0;
    const int32_t category = mCurrentCategory.GetCurrentCategoryId(database);
    if (database.SelectCategoryIdCount(category, count) >= 0 && count > 0) {
        mpRange->SetSelection(kCurrentCategory);
    } else {
        mpRange->Enable(kCurrentCategory, false);
    }
    if (!selectedRowIds.empty()) {
        mpRange->SetSelection(kSelectedCards);
    } else {
        mpRange->Enable(kSelectedCards, false);
    }
    MakeRange();
    RefreshPreview();
}

void ExportOptionsDialog::ShowDelimiter() {
    const bool isDelimited = GetOptions().Format == ExportFormat::kDelimited;
    mpDelimiterLabel->Show(isDelimited);
    mpDelimiter->Show(isDelimited);
    mpDelimiterHelp->Show(isDelimited);
    mpOther->Show(isDelimited && mpDelimiter->GetSelection() == kDelimiterOther);
    // Grows when the window would not hold all, and does not shrink what the person has made wide.
    const wxSize least = GetSizer()->ComputeFittingWindowSize(this);
    SetMinSize(least);
    wxSize size = GetSize();
    size.IncTo(least);
    SetSize(size);
    Layout();
}

void ExportOptionsDialog::MakeRange() {
    if (mpDatabase == nullptr) {
        return;
    }
    // All cards of a large store take a moment to put in order.
    const wxBusyCursor busy;
    mRangeRowIds.clear();
    mpRowIds = &mRangeRowIds;
    // A list that cannot be read, which the store reports, is empty.
    switch (mpRange->GetSelection()) {
        case kSelectedCards:
            mpRowIds = mpSelectedRowIds;
            break;
        case kCurrentCategory:
            mpDatabase->CardSelectRowIdsOrder(mCurrentCategory.GetCurrentCategoryId(*mpDatabase),
                                              "IntroductionOrder", mRangeRowIds);
            break;
        default:
            mpDatabase->CardSelectRowIdsOrder("CategoryId,IntroductionOrder", mRangeRowIds);
            break;
    }
}

void ExportOptionsDialog::RefreshPreview() {
    if (mpDatabase == nullptr) {
        return;
    }
    wxString text = CheckDelimiter();
    if (text.empty()) {
        const size_t count = std::min(kPreviewCards, mpRowIds->size());
        const std::vector<int64_t> first(mpRowIds->data(), mpRowIds->data() + count);
        ExportProgress progress;
        ExportToString(text, *mpDatabase, first, GetOptions(), progress);
        if (text.length() > kPreviewLength) {
            text.Truncate(kPreviewLength).append(L'\u2026');
        }
    }
    mpPreview->ChangeValue(text);
}

ExportOptions ExportOptionsDialog::GetOptions() const {
    ExportOptions options;
    options.IncludeScheduling = mpScheduling->GetValue();
    options.Format = static_cast<ExportFormat>(mpFormat->GetSelection());
    options.Delimiter = DelimiterOf(mpDelimiter->GetSelection(), mpOther->GetValue());
    return options;
}

wxString ExportOptionsDialog::CheckDelimiter() {
    if (GetOptions().Format != ExportFormat::kDelimited ||
        mpDelimiter->GetSelection() != kDelimiterOther) {
        return wxString();
    }
    const wxString typed = mpOther->GetValue();
    if (IsLineBreak(typed)) {
        mpOther->ChangeValue(wxString());
    }
    return CheckDelimiterText(typed);
}

void ExportOptionsDialog::OnFormat(wxCommandEvent&) {
    ShowDelimiter();
    RefreshPreview();
    mpScheduling->Refresh();
}

void ExportOptionsDialog::OnDelimiter(wxCommandEvent&) {
    ShowDelimiter();
    RefreshPreview();
}

void ExportOptionsDialog::OnRange(wxCommandEvent&) {
    MakeRange();
    RefreshPreview();
}

void ExportOptionsDialog::OnOk(wxCommandEvent&) {
    const wxString message = CheckDelimiter();
    if (!message.empty()) {
        mpPreview->ChangeValue(message);
        ShowMessageBox(message, _("Invalid Delimiter"), wxOK | wxCENTRE, this);
        mpOther->SelectAll();
        mpOther->SetFocus();
        return;
    }
    wxString path;
    if (!AskForFile(this, path)) {
        EndModal(wxID_CANCEL);
    } else if (Export(path)) {
        EndModal(wxID_OK);
    }
}

bool ExportOptionsDialog::Export(const wxString& path) {
    ExportThread thread(path, ExportEncoding(mpEncoding->GetSelection()), *mpDatabase, *mpRowIds,
                        GetOptions());
    if (!RunWithProgress(nullptr, thread, mReport, _("Unable to start a thread for the export."))) {
        return true;
    }
    const ExportProgress& progress = thread.GetProgress();
    if (progress.Cancelled) {
        return false;
    }
    if (!progress.Failed) {
        ShowMessageBox(wxString::Format(_("%i Records Exported"), progress.Position.load()),
                       _("Export Complete"));
    } else if (!progress.Message.empty()) {
        ShowMessageBox(progress.Message, _("Export Failed"), wxOK | wxCENTRE, this);
    }
    return true;
}

void ShowExportOptions(wxWindow* parent, Database& database, CategorySource& currentCategory,
                       FatalErrorReport& report, const std::vector<int64_t>& selectedRowIds) {
    ExportOptionsDialog dialog(parent, currentCategory, report);
    dialog.SetDatabase(database, selectedRowIds);
    dialog.ShowModal();
}
