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
#include <iterator>

#include "base/Process.h"
#include "base/Text.h"
#include "scheduler/Scheduler.h"
#include "shell/Forms.h"
#include "shell/MessageBox.h"
#include "shell/Toolkit.h"
#include "store/Database.h"
#include "transfer/FormatRows.h"
#include "transfer/ProgressDialog.h"

namespace {

// Indexes of the radio buttons.
enum Range : int { kAll = 0, kCurrentCategory = 1, kSelectedCards = 2 };

constexpr size_t kPreviewCards = 16;
// The preview shows no more characters than this, as a long text makes its control slow.
constexpr size_t kPreviewLength = size_t{1} << 16;
constexpr int kPreviewWidth = 360;
constexpr int kPreviewHeight = 160;

FormatRows::Setup FormatSetup() {
    FormatRows::Setup setup;
    setup.FormatLabel = _("Format:");
    const wxString formats[] = {_("VLM Text File"), _("Delimited"), _("VLM 1.0 Text File"),
                                _("Anki Plain Text")};
    setup.Formats = wxArrayString(std::size(formats), formats);
    setup.FormatHelp =
        _("This setting controls whether the card\nattributes are output to columns \n(Delimited) "
          "or rows (VLM Format).");
    setup.DelimiterLabel = _("Delimiter:");
    setup.FormatId = ExportOptionsDialog::kFormatId;
    setup.FormatHelpId = ExportOptionsDialog::kFormatHelpId;
    setup.DelimiterLabelId = ExportOptionsDialog::kDelimiterLabelId;
    setup.OtherId = ExportOptionsDialog::kOtherId;
    setup.DelimiterHelpId = ExportOptionsDialog::kDelimiterHelpId;
    return setup;
}

}  // namespace

ExportOptionsDialog::ExportOptionsDialog(wxWindow* parent, Database& database,
                                         CategorySource& currentCategory, FatalErrorReport& report,
                                         const std::vector<int64_t>& selectedRowIds,
                                         AppServices::OfferFirst first)
    : wxDialog(parent, kDialogId, _("Export Options"), wxDefaultPosition, wxSize(400, 300),
               wxDEFAULT_DIALOG_STYLE | wxRESIZE_BORDER),
      mDatabase(database),
      mCurrentCategory(currentCategory),
      mReport(report),
      mSelectedRowIds(selectedRowIds) {
    wxBoxSizer* const rows = MakeFormColumn(*this);
    const wxSizerFlags group = wxSizerFlags().Expand().Border(wxTOP, FromDIP(kFormEdge));
    rows->Add(MakeOptions(), wxSizerFlags().Expand());
    const wxString ranges[] = {_("&All"), _("&Current Category"), _("&Selected Cards")};
    mpRange = new wxRadioBox(this, kRangeId, _("Range"), wxDefaultPosition, wxDefaultSize,
                             wxArrayString(std::size(ranges), ranges), 1, wxRA_SPECIFY_COLS);
    LetArrowsChoose(*mpRange);
    rows->Add(mpRange, group);
    rows->Add(new wxStaticLine(this), group);
    rows->Add(MakePreview(), wxSizerFlags(group).Proportion(1));
    rows->Add(MakeOkCancel(*this), group);
    mpEncoding->SetFocus();
    FitTextHeights(*this);
    mpFormatRows->ShowDelimiter();
    ChooseNarrowestRange(first);
    FitToOptions();
    CentreOnParent();
    LetReturnPressDefault(*this);

    mpScheduling->Bind(wxEVT_CHECKBOX, [this](wxCommandEvent&) { RefreshPreview(); });
    mpRange->Bind(wxEVT_RADIOBOX, [this](wxCommandEvent&) {
        LoadRange();
        RefreshPreview();
    });
    Bind(wxEVT_BUTTON, &ExportOptionsDialog::OnOk, this, wxID_OK);
    LoadRange();
    RefreshPreview();
}

ExportOptionsDialog::~ExportOptionsDialog() = default;

wxSizer* ExportOptionsDialog::MakeOptions() {
    wxFlexGridSizer* const grid = MakeFormGrid(*this);
    const wxString encodings[] = {_("Unicode (recommended)"), _("Unicode big endian"), _("UTF-8")};
    mpEncoding = MakeChoice(*this, kEncodingId, wxArrayString(std::size(encodings), encodings));
    AddFormRow(*grid, _("Encoding:"), *mpEncoding,
               *MakeHelpButton(
                   *this, kEncodingHelpId, _("Encoding Help"),
                   _("This setting controls how the export\ntext is encoded in the output "
                     "file.\n\nUnicode can encode all languages and\ncan be loaded by most text "
                     "viewers\neditors, so it is the recommended format.")));
    mpFormatRows = std::make_unique<FormatRows>(*this, *grid, FormatSetup(), [this] {
        // Anki reads only UTF-8 and takes no schedules from a text.
        const bool isAnki = mpFormatRows->GetFormat() == static_cast<int>(ExportFormat::kAnkiText);
        mpEncoding->Enable(!isAnki);
        mpScheduling->Enable(!isAnki);
        FitToOptions();
        RefreshPreview();
    });
    auto* const options = new wxBoxSizer(wxVERTICAL);
    options->Add(grid, wxSizerFlags().Expand());
    options->Add(MakeScheduling(), FormRow(*this));
    return options;
}

wxSizer* ExportOptionsDialog::MakeScheduling() {
    mpScheduling = new wxCheckBox(this, kSchedulingId, _("Include Scheduling Data"));
    mpScheduling->SetValue(true);
    auto* const row = new wxBoxSizer(wxHORIZONTAL);
    row->Add(mpScheduling, wxSizerFlags(1).CentreVertical());
    row->Add(
        MakeHelpButton(
            *this, kSchedulingHelpId, _("Include Scheduling Data Help"),
            _("Check this option when you are exporting\ndata for backup.\n\nUncheck this option "
              "when you are\nexporting data to be edited on your\ndesktop computer or shared with "
              "others.")),
        wxSizerFlags().CentreVertical());
    return row;
}

wxSizer* ExportOptionsDialog::MakePreview() {
    mpPreview = new wxTextCtrl(this, kPreviewId, wxString(), wxDefaultPosition,
                               FromDIP(wxSize(kPreviewWidth, kPreviewHeight)),
                               wxTE_READONLY | wxTE_MULTILINE | wxHSCROLL);
    auto* const rows = new wxBoxSizer(wxVERTICAL);
    wxStaticText* const label = MakeFormLabel(_("Preview"), *mpPreview);
    label->SetFont(label->GetFont().Bold());
    rows->Add(label);
    rows->Add(mpPreview, FormRow(*this).Proportion(1));
    return rows;
}

// Says how many cards a range has. One without cards cannot be chosen.
void ExportOptionsDialog::OfferRange(int range, int32_t cards) {
    const auto item = static_cast<unsigned>(range);
    mpRange->SetString(item, wxString::Format("%s (%i)", mpRange->GetString(item), cards));
    mpRange->Enable(item, cards > 0 || range == kAll);
}

void ExportOptionsDialog::ChooseNarrowestRange(AppServices::OfferFirst first) {
    int32_t all = 0;
    int32_t category = 0;
    // The store itself reports what it cannot count.
    mDatabase.CountAllCards(all);
    mDatabase.SelectCategoryIdCount(mCurrentCategory.GetCurrentChoice(mDatabase), category);
    OfferRange(kAll, all);
    OfferRange(kCurrentCategory, category);
    OfferRange(kSelectedCards, static_cast<int32_t>(mSelectedRowIds.size()));
    const bool startsAtSelection = first == AppServices::OfferFirst::kSelection || category == 0;
    if (!mSelectedRowIds.empty() && startsAtSelection) {
        mpRange->SetSelection(kSelectedCards);
    } else {
        mpRange->SetSelection(category > 0 ? kCurrentCategory : kAll);
    }
}

// Lays the window out. It grows when the options need more room, and never shrinks, because the
// user may have made it large for the preview.
void ExportOptionsDialog::FitToOptions() {
    const wxSize least = GetSizer()->ComputeFittingWindowSize(this);
    SetMinSize(least);
    wxSize size = GetSize();
    size.IncTo(least);
    SetSize(size);
    Layout();
    // The check box moves when the delimiter's row comes or goes.
    mpScheduling->Refresh();
}

void ExportOptionsDialog::LoadRange() {
    // A large store takes a moment to sort all of its cards.
    const wxBusyCursor busy;
    mStoredRowIds.clear();
    mpRowIds = &mStoredRowIds;
    // The store itself reports a list that it cannot read, which then stays empty.
    switch (mpRange->GetSelection()) {
        case kSelectedCards:
            mpRowIds = &mSelectedRowIds;
            break;
        case kCurrentCategory: {
            const CategoryChoice choice = mCurrentCategory.GetCurrentChoice(mDatabase);
            choice.ForEach([&](int32_t id) {
                return mDatabase.CardSelectRowIdsOrder(id, CardColumn::kIntroductionOrder,
                                                       mStoredRowIds) >= 0;
            });
            break;
        }
        default:
            mDatabase.CardSelectRowIdsOrder(CardColumn::kCategory, mStoredRowIds);
            break;
    }
}

void ExportOptionsDialog::RefreshPreview() {
    wxString text = mpFormatRows->CheckDelimiter();
    if (text.empty()) {
        const size_t count = std::min(kPreviewCards, mpRowIds->size());
        const std::vector<int64_t> first(mpRowIds->data(), mpRowIds->data() + count);
        ExportProgress progress;
        ExportToString(text, mDatabase, first, GetOptions(), progress);
    }
    mpPreview->ChangeValue(CutWithEllipsis(text, kPreviewLength));
}

ExportOptions ExportOptionsDialog::GetOptions() const {
    ExportOptions options;
    options.IncludeScheduling = mpScheduling->GetValue();
    options.Format = static_cast<ExportFormat>(mpFormatRows->GetFormat());
    options.Delimiter = mpFormatRows->GetDelimiter();
    return options;
}

void ExportOptionsDialog::OnOk(wxCommandEvent&) {
    const wxString fault = mpFormatRows->CheckDelimiter();
    if (!fault.empty()) {
        mpPreview->ChangeValue(fault);
        ShowMessageBox(fault, _("Invalid Delimiter"), wxOK | wxCENTRE, this);
        mpFormatRows->FocusTypedDelimiter();
        return;
    }
    const wxString path = wxFileSelector(
        _("Export Flashcards"), wxString(), "export.txt", wxString(),
        _("Text files (*.txt)|*.txt|All files (*.*)|*.*"), wxFD_SAVE | wxFD_OVERWRITE_PROMPT, this);
    if (path.empty()) {
        EndModal(wxID_CANCEL);
    } else if (Export(path)) {
        EndModal(wxID_OK);
    }
}

// Writes the file and tells the outcome. Returns false when the user cancelled, and the dialog then
// stays for another try.
bool ExportOptionsDialog::Export(const wxString& path) {
    ExportThread thread(path, ExportEncoding(mpEncoding->GetSelection()), mDatabase, *mpRowIds,
                        GetOptions());
    if (!RunWithProgress(nullptr, thread, mReport, _("Unable to start a thread for the export."))) {
        return true;
    }
    const ExportProgress& progress = thread.GetProgress();
    if (thread.IsCancelled()) {
        return false;
    }
    if (!progress.Failed) {
        wxString text = wxString::Format(_("%i Records Exported"), progress.Position.load());
        const wxString hint = MediaExportHint(mDatabase, GetOptions());
        if (!hint.empty()) {
            text += "\n\n" + hint;
        }
        ShowMessageBox(text, _("Export Complete"));
    } else {
        ShowMessageBox(progress.Message, _("Export Failed"), wxOK | wxCENTRE, this);
    }
    return true;
}
