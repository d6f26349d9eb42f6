#include "transfer/ImportDialog.h"

#include <wx/button.h>
#include <wx/choice.h>
#include <wx/crt.h>
#include <wx/intl.h>
#include <wx/listctrl.h>
#include <wx/log.h>
#include <wx/sizer.h>
#include <wx/statline.h>
#include <wx/stattext.h>
#include <wx/textctrl.h>
#include <wx/utils.h>

#include <algorithm>

#include "exchange/Delimited.h"
#include "exchange/ImportPass.h"
#include "shell/Forms.h"
#include "shell/MessageBox.h"
#include "shell/ProgramInfo.h"
#include "shell/Settings.h"
#include "shell/Toolkit.h"
#include "transfer/ImportRun.h"

namespace {

enum : int {
    ID_DIALOG = 10089,
    ID_FORMAT = 10004,
    ID_FORMAT_HELP = 10005,
    ID_DELIMITER_LABEL = 10006,
    ID_DELIMITER = 10001,
    ID_OTHER_DELIMITER = 10007,
    ID_DELIMITER_HELP = 10008,
    ID_PREVIEW_LABEL = 10090,
    ID_ERROR = 10011,
    ID_PREVIEW = 10036
};

// Indexes of the formats' list.
enum : int { kVlmTextFormat = 0, kDelimitedFormat = 1 };

constexpr int kGap = 5;
constexpr int kOtherWidth = 40;
constexpr char kPositionKey[] = "ImportDialogPosition";
constexpr char kWidthsKey[] = "ImportDialogColumnWidths";

// What a list can show of a record. Real ones have a tenth of the rows, and nobody reads a longer
// value here.
constexpr size_t kMostRows = 200;
constexpr size_t kLongestText = 500;

// A text as a row of a list shows it: short, and in one line.
wxString RowText(const wxString& text) {
    wxString shown =
        text.length() > kLongestText ? text.substr(0, kLongestText) + wxString(L'\u2026') : text;
    shown.Replace("\n", wxString(L" \u21B5 "));
    return shown;
}

}  // namespace

ImportDialog::ImportDialog(wxWindow* parent, FatalErrorReport& report)
    : wxDialog(parent, ID_DIALOG, _("Import"), wxDefaultPosition, wxSize(400, 300),
               wxDEFAULT_DIALOG_STYLE | wxRESIZE_BORDER),
      mReport(report) {
    CreateControls();
    BindEvents();
    ShowOptions();
    if (!RestoreWindowPosition(kPositionKey, kApplicationName, *this)) {
        Centre();
    }
}

ImportDialog::~ImportDialog() {
    SaveWindowPosition(kPositionKey, kApplicationName, *this);
}

void ImportDialog::CreateControls() {
    mpPreviewLabel = new wxStaticText(this, ID_PREVIEW_LABEL, _("Preview (first card)"));
    mpError = new wxTextCtrl(this, ID_ERROR, wxString(), wxDefaultPosition, wxDefaultSize,
                             wxTE_MULTILINE | wxTE_READONLY | wxHSCROLL);
    mpError->Hide();
    mpPreview = new wxListCtrl(this, ID_PREVIEW, wxDefaultPosition, FromDIP(wxSize(360, 160)),
                               wxLC_REPORT | wxLC_SINGLE_SEL);
    mpPreview->AppendColumn(_("Name"));
    mpPreview->AppendColumn(_("Value"));

    auto* const rows = new wxBoxSizer(wxVERTICAL);
    const wxSizerFlags row = wxSizerFlags().Expand().Border(wxLEFT | wxRIGHT | wxTOP, 2 * kGap);
    // Asked for before anything is hidden, so that the window keeps the room for it.
    rows->Add(CreateOptions(), row);
    rows->Add(new wxStaticLine(this), row);
    rows->Add(mpPreviewLabel, row);
    rows->Add(mpError, wxSizerFlags(row).Proportion(1));
    rows->Add(mpPreview, wxSizerFlags(row).Proportion(1));
    rows->Add(MakeOkCancel(*this), wxSizerFlags().Expand().Border(wxALL, 2 * kGap));
    // Most files are known for what they are, and Enter is then all that is left to do.
    FindWindow(wxID_OK)->SetFocus();
    FitTextHeights(*this);
    SetSizer(rows);
    wxSize fitting = rows->ComputeFittingClientSize(this);
    SetMinClientSize(fitting);
    fitting.IncTo(FromDIP(wxSize(400, 300)));
    SetClientSize(fitting);
    Layout();
    SetColumnWidths();
}

wxSizer* ImportDialog::CreateOptions() {
    wxArrayString formats;
    formats.push_back(_("VLM Text File"));
    formats.push_back(_("Delimited"));
    mpFormat = new wxChoice(this, ID_FORMAT, wxDefaultPosition, wxDefaultSize, formats);
    mpFormat->SetSelection(kVlmTextFormat);
    SetAccessibleName(*mpFormat, _("Format"));
    auto* const formatHelp =
        new wxButton(this, ID_FORMAT_HELP, "?", wxDefaultPosition, wxDefaultSize, wxBU_EXACTFIT);
    SetAccessibleName(*formatHelp, _("Format Help"));

    mpDelimiterLabel = new wxStaticText(this, ID_DELIMITER_LABEL, _("Delimiter"));
    mpDelimiter =
        new wxChoice(this, ID_DELIMITER, wxDefaultPosition, wxDefaultSize, DelimiterLabels());
    mpDelimiter->SetSelection(kDelimiterTab);
    SetAccessibleName(*mpDelimiter, _("Delimiter"));
    mpOtherDelimiter = new wxTextCtrl(this, ID_OTHER_DELIMITER, wxString(), wxDefaultPosition,
                                      FromDIP(wxSize(kOtherWidth, -1)));
    SetAccessibleName(*mpOtherDelimiter, _("Delimiter"));
    mpDelimiterHelp =
        new wxButton(this, ID_DELIMITER_HELP, "?", wxDefaultPosition, wxDefaultSize, wxBU_EXACTFIT);
    SetAccessibleName(*mpDelimiterHelp, _("Delimiter Help"));

    auto* const grid = new wxFlexGridSizer(3, FromDIP(wxSize(kGap, kGap)));
    grid->AddGrowableCol(1, 1);
    const wxSizerFlags middle = wxSizerFlags().CentreVertical();
    grid->Add(new wxStaticText(this, wxID_ANY, _("Format")), middle);
    grid->Add(mpFormat, wxSizerFlags().Expand());
    grid->Add(formatHelp, middle);
    grid->Add(mpDelimiterLabel, middle);
    mpDelimiterSizer = new wxBoxSizer(wxHORIZONTAL);
    mpDelimiterSizer->Add(mpDelimiter, wxSizerFlags(1).CentreVertical());
    mpDelimiterSizer->Add(mpOtherDelimiter, wxSizerFlags().CentreVertical().Border(wxLEFT, kGap));
    grid->Add(mpDelimiterSizer, wxSizerFlags().Expand());
    grid->Add(mpDelimiterHelp, middle);
    return grid;
}

void ImportDialog::BindEvents() {
    mpFormat->Bind(wxEVT_CHOICE, [this](wxCommandEvent&) {
        RefreshPreview();
        ShowOptions();
    });
    mpDelimiter->Bind(wxEVT_CHOICE, [this](wxCommandEvent&) {
        RefreshPreview();
        ShowOptions();
    });
    mpOtherDelimiter->Bind(wxEVT_TEXT, [this](wxCommandEvent&) { RefreshPreview(); });
    Bind(
        wxEVT_BUTTON,
        [this](wxCommandEvent&) {
            ShowMessageBox(_("This setting controls whether the import\nfile is read as columns "
                             "(Delimited) or\nrows (VLM Format)."),
                           _("Format Help"), wxOK | wxCENTRE, this);
        },
        ID_FORMAT_HELP);
    Bind(
        wxEVT_BUTTON,
        [this](wxCommandEvent&) {
            ShowMessageBox(DelimiterHelp(), _("Delimiter Help"), wxOK | wxCENTRE, this);
        },
        ID_DELIMITER_HELP);
    Bind(
        wxEVT_BUTTON, [this](wxCommandEvent&) { RunImport(); }, wxID_OK);
    // Escape and the title bar press this button too.
    Bind(
        wxEVT_BUTTON, [this](wxCommandEvent&) { EndModal(wxCANCEL); }, wxID_CANCEL);
}

void ImportDialog::SetFileName(const wxString& name) {
    mFileName = name;
    RefreshPreview();
}

void ImportDialog::SetDatabase(Database* database) {
    mpDatabase = database;
    RefreshPreview();
}

wchar_t ImportDialog::GetDelimiter() const {
    return DelimiterOf(mpDelimiter->GetSelection(), mpOtherDelimiter->GetValue());
}

bool ImportDialog::IsDelimited() const {
    return mpFormat->GetSelection() == kDelimitedFormat;
}

bool ImportDialog::IsOtherDelimiter() const {
    return IsDelimited() && mpDelimiter->GetSelection() == kDelimiterOther;
}

ImportInput ImportDialog::GetInput() const {
    ImportInput input;
    input.FileName = mFileName;
    input.Format = IsDelimited() ? ImportFormat::kDelimited : ImportFormat::kVlmText;
    input.Delimiter = GetDelimiter();
    return input;
}

// The delimiter has a meaning for tables only.
void ImportDialog::ShowOptions() {
    mpDelimiterLabel->Show(IsDelimited());
    mpDelimiterSizer->ShowItems(IsDelimited());
    mpDelimiterHelp->Show(IsDelimited());
    mpOtherDelimiter->Show(IsOtherDelimiter());
    Layout();
}

// An attempt that succeeds has read what the preview shows.
void ImportDialog::DetectFormat() {
    if (mFileName.empty() || mpDatabase == nullptr) {
        return;
    }
    const wxBusyCursor busy;
    const wxLogNull silence;
    for (int choice = kDelimiterTab; choice <= kDelimiterSemicolon; ++choice) {
        mpDelimiter->SetSelection(choice);
        ImportInput input = GetInput();
        input.Format = ImportFormat::kDelimited;
        ImportResult result;
        std::vector<CardAttribute> attributes;
        if (!ImportPreview(input, *mpDatabase, result, attributes)) {
            mpFormat->SetSelection(kDelimitedFormat);
            ShowRecord(attributes);
            ShowOptions();
            return;
        }
    }
    mpDelimiter->SetSelection(kDelimiterTab);
    ShowOptions();
}

void ImportDialog::RefreshPreview() {
    if (mFileName.empty() || mpDatabase == nullptr) {
        return;
    }
    if (!CheckDelimiter()) {
        return;
    }
    const wxBusyCursor busy;
    // The preview itself tells what is wrong with the file.
    const wxLogNull silence;
    ImportResult result;
    std::vector<CardAttribute> attributes;
    if (ImportPreview(GetInput(), *mpDatabase, result, attributes)) {
        ShowError(wxString::Format(_("%s\nLine Number: %i"), result.Message, result.LineNumber));
        return;
    }
    ShowRecord(attributes);
}

void ImportDialog::ShowRecord(const std::vector<CardAttribute>& attributes) {
    mpPreview->DeleteAllItems();
    const size_t count = std::min(attributes.size(), kMostRows);
    for (size_t i = 0; i < count; ++i) {
        const auto row = static_cast<long>(i);
        mpPreview->InsertItem(row, RowText(attributes[i].Name));
        mpPreview->SetItem(row, 1, RowText(attributes[i].Value));
    }
    ShowPreview(false);
}

// False when the delimiter that was typed is none, which the dialog then shows.
bool ImportDialog::CheckDelimiter() {
    if (!IsOtherDelimiter()) {
        return true;
    }
    const wxString text = mpOtherDelimiter->GetValue();
    const wxString fault = CheckDelimiterText(text);
    if (fault.empty()) {
        return true;
    }
    if (IsLineBreak(text)) {
        mpOtherDelimiter->ChangeValue(wxString());
    }
    ShowError(fault);
    return false;
}

void ImportDialog::ShowError(const wxString& text) {
    mpError->ChangeValue(text);
    ShowPreview(true);
}

// Of the error and the record exactly one is on the screen.
void ImportDialog::ShowPreview(bool isError) {
    const wxString label = isError ? _("Error (first card)") : _("Preview (first card)");
    mpPreviewLabel->SetLabel(label);
    SetAccessibleName(*mpError, label);
    TellRow(*mpPreview, wxString(), label);
    const bool errorChanged = mpError->Show(isError);
    const bool previewChanged = mpPreview->Show(!isError);
    if (errorChanged || previewChanged) {
        Layout();
    }
}

// Both take half of the list, however large it is made, unless the settings say otherwise.
void ImportDialog::SetColumnWidths() {
    constexpr int kWidest = 10000;
    int first = 0;
    int second = 0;
    if (wxSscanf(ReadStringSetting(kWidthsKey), "%i,%i", &first, &second) == 2) {
        mpPreview->SetColumnWidth(0, std::clamp(first, 0, kWidest));
        mpPreview->SetColumnWidth(1, std::clamp(second, 0, kWidest));
        return;
    }
    const auto share = [this] {
        const int width = mpPreview->GetClientSize().GetWidth();
        mpPreview->SetColumnWidth(0, width / 2);
        mpPreview->SetColumnWidth(1, width - width / 2);
    };
    share();
    mpPreview->Bind(wxEVT_SIZE, [share](wxSizeEvent& event) {
        share();
        event.Skip();
    });
}

void ImportDialog::RunImport() {
    if (!mFileName.empty() && mpDatabase != nullptr) {
        ImportWithProgress(this, GetInput(), *mpDatabase, mReport, true, &mTouchedCategories);
    }
    // The outcome is told by then, whatever it is.
    EndModal(wxOK);
}
