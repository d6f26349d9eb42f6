#include "transfer/ImportDialog.h"

#include <wx/app.h>
#include <wx/button.h>
#include <wx/checkbox.h>
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

#include "base/Text.h"
#include "exchange/ImportPass.h"
#include "formats/TextEncoding.h"
#include "formats/decks/Deck.h"
#include "media/MediaLines.h"
#include "shell/Forms.h"
#include "shell/ProgramInfo.h"
#include "shell/Settings.h"
#include "shell/Toolkit.h"
#include "transfer/CardSample.h"
#include "transfer/DeckPanel.h"
#include "transfer/FaultList.h"
#include "transfer/FormatRows.h"
#include "transfer/ImportCommand.h"
#include "transfer/ImportRun.h"
#include "transfer/TablePanel.h"

namespace {

// A hostile file can have thousands of columns and megabytes in one field, which would freeze the
// list. Real records have a tenth of the rows, and nobody reads a longer value here.
constexpr size_t kMostRows = 200;
constexpr size_t kLongestText = 500;

// The place of the deck among the formats, which only a deck has.
constexpr int kDeckFormat = 2;

// Shortens a text for a cell of the list and marks its line breaks, as a cell is one line.
wxString RowText(const wxString& text) {
    wxString shown = CutWithEllipsis(WithNamedMediaMarks(text), kLongestText);
    shown.Replace("\n", wxString(L" \u21B5 "));
    return shown;
}

}  // namespace

ImportDialog::ImportDialog(wxWindow* parent, AppServices& services, Database& database,
                           FatalErrorReport& report, const wxString& fileName)
    : wxDialog(parent, ID_DIALOG, _("Import"), wxDefaultPosition, wxSize(400, 300),
               wxDEFAULT_DIALOG_STYLE | wxRESIZE_BORDER),
      mServices(services),
      mDatabase(database),
      mReport(report),
      mFileName(fileName) {
    CreateControls();
    if (!RestoreWindowPosition(kSettingImportDialogPosition, kApplicationName, *this)) {
        Centre();
    }
    Bind(
        wxEVT_BUTTON, [this](wxCommandEvent&) { RunImport(); }, wxID_OK);
    // Escape and the title bar press this button too.
    Bind(
        wxEVT_BUTTON, [this](wxCommandEvent&) { EndModal(mWasRun ? wxOK : wxCANCEL); },
        wxID_CANCEL);
    if (!DetectDeck()) {
        DetectTable();
    }
}

ImportDialog::~ImportDialog() {
    SaveWindowPosition(kSettingImportDialogPosition, kApplicationName, *this);
}

void ImportDialog::CreateControls() {
    // The tab key follows the order in which the controls are made.
    mpPreviewLabel = new wxStaticText(this, ID_PREVIEW_LABEL, _("Preview (first card)"));
    mpPreviewLabel->SetFont(mpPreviewLabel->GetFont().Bold());
    mpError = new wxTextCtrl(this, ID_ERROR, wxString(), wxDefaultPosition, wxDefaultSize,
                             wxTE_MULTILINE | wxTE_READONLY | wxHSCROLL);
    mpError->Hide();
    mpPreview = new wxListCtrl(this, ID_PREVIEW, wxDefaultPosition, FromDIP(wxSize(360, 100)),
                               wxLC_REPORT | wxLC_SINGLE_SEL);
    mpPreview->AppendColumn(_("Name"));
    mpPreview->AppendColumn(_("Value"));

    wxBoxSizer* const rows = MakeFormColumn(*this);
    const wxSizerFlags group = wxSizerFlags().Expand().Border(wxTOP, FromDIP(kFormEdge));
    rows->Add(CreateOptions(), wxSizerFlags().Expand());
    if (mpDeck != nullptr) {
        rows->Add(mpDeck, group);
    }
    rows->Add(mpTable, FormRow(*this).Proportion(3));
    rows->Add(new wxStaticLine(this), group);
    rows->Add(mpPreviewLabel, group);
    rows->Add(mpError, FormRow(*this).Proportion(2));
    auto* const preview = new wxBoxSizer(wxHORIZONTAL);
    preview->Add(mpPreview, wxSizerFlags(1).Expand());
    if (mpDeck != nullptr) {
        mpSample = new CardSample(this);
        preview->Add(mpSample, wxSizerFlags(1).Expand().Border(wxLEFT, FromDIP(kFormEdge)));
    }
    rows->Add(preview, FormRow(*this).Proportion(2));
    rows->Add(CreateHelp(), FormRow(*this));
    rows->Add(MakeOkCancel(*this), group);
    // Most files are recognized, and Enter is then all that is left to do.
    FindWindow(wxID_OK)->SetFocus();
    FitTextHeights(*this);
    // Measures before the delimiter's row is hidden, so that there is room when it comes back.
    // A deck and a table are never shown together.
    if (mpDeck != nullptr) {
        mpDeck->Hide();
        mpSample->Hide();
    }
    wxSize fitting = GetSizer()->ComputeFittingClientSize(this);
    if (mpDeck != nullptr) {
        mpSample->Show();
        mpFormatRows->ChooseFormat(kDeckFormat);
        ShowChoices();
        fitting.IncTo(GetSizer()->ComputeFittingClientSize(this));
    }
    SetMinClientSize(fitting);
    fitting.IncTo(FromDIP(wxSize(580, 300)));
    SetClientSize(fitting);
    Layout();
    ShareColumns();
    mpFormatRows->ShowDelimiter();
    ShowChoices();
}

wxSizer* ImportDialog::CreateOptions() {
    FormatRows::Setup setup;
    setup.FormatLabel = _("Format");
    setup.Formats.push_back(_("VLM Text File"));
    setup.Formats.push_back(_("Delimited"));
    // The store itself is not even looked into: that would drop the locks that the engine has.
    const bool isDeck = !BelongsToStore(mDatabase, mFileName) && DeckFile::IsDeck(mFileName);
    if (isDeck) {
        setup.Formats.push_back(_("Deck"));
    }
    setup.FormatHelp =
        _("This setting controls whether the import\nfile is read as columns (Delimited) or\nrows "
          "(VLM Format).");
    setup.DelimiterLabel = _("Delimiter");
    setup.FormatId = ID_FORMAT;
    setup.FormatHelpId = ID_FORMAT_HELP;
    setup.DelimiterLabelId = ID_DELIMITER_LABEL;
    setup.OtherId = ID_OTHER_DELIMITER;
    setup.DelimiterHelpId = ID_DELIMITER_HELP;
    setup.FurtherLabels.push_back(_("pipe"));
    setup.FurtherDelimiters.emplace_back(L"|");
    setup.FurtherLabels.push_back(_("dash or sign between words"));
    setup.FurtherDelimiters.emplace_back(L" - ");

    wxFlexGridSizer* const grid = MakeFormGrid(*this);
    mpFormatRows = std::make_unique<FormatRows>(*this, *grid, setup, [this] {
        SurveyRows();
        ShowChoices();
        RefreshPreview();
    });
    AddEncoding(*grid);
    AddKnownCards(*grid);
    mpTable = new TablePanel(this, [this] { RefreshPreview(); });
    if (isDeck) {
        mpDeck = new DeckPanel(this, mDatabase, mReport, [this] { RefreshPreview(); });
    }
    return grid;
}

void ImportDialog::AddEncoding(wxFlexGridSizer& grid) {
    wxArrayString labels;
    labels.push_back(_("Automatic"));
    for (const TextEncoding& encoding : GetTextEncodings()) {
        labels.push_back(DescribeEncoding(encoding));
    }
    mpEncoding = MakeChoice(*this, ID_ENCODING, labels);
    mpEncodingHelp = MakeHelpButton(*this, ID_ENCODING_HELP, _("Encoding Help"),
                                    _("This setting controls how the bytes of the file\nbecome "
                                      "letters.  Choose another one when "
                                      "letters\nwith accents or of other scripts look wrong."));
    mpEncodingLabel = AddFormRow(grid, _("Encoding"), *mpEncoding, *mpEncodingHelp);
    mpEncoding->Bind(wxEVT_CHOICE, [this](wxCommandEvent&) {
        SurveyRows();
        RefreshPreview();
    });
}

// The entries are in the order of KnownPairs.
void ImportDialog::AddKnownCards(wxFlexGridSizer& grid) {
    wxArrayString labels;
    labels.push_back(_("Stop the import"));
    labels.push_back(_("Skip them"));
    labels.push_back(_("Update their other fields"));
    mpKnownCards = MakeChoice(*this, ID_KNOWN_CARDS, labels);
    wxButton* const help = MakeHelpButton(
        *this, ID_KNOWN_CARDS_HELP, _("Known Cards Help"),
        _("This setting controls what happens when a card\nwith the same front and back is there "
          "already."));
    AddFormRow(grid, _("Cards that exist already"), *mpKnownCards, *help);
    mpAskBefore = new wxCheckBox(this, ID_ASK_BEFORE, _("Ask before changing cards"));
    grid.AddSpacer(0);
    grid.Add(mpAskBefore);
    grid.AddSpacer(0);
}

// The buttons that help when something is wrong.
wxSizer* ImportDialog::CreateHelp() {
    mpFaults = new wxButton(this, ID_FAULTS, _("All Faults..."));
    mpGuide = new wxButton(this, ID_GUIDE, _("User Guide"));
    auto* const buttons = new wxBoxSizer(wxHORIZONTAL);
    buttons->Add(mpFaults);
    buttons->Add(mpGuide, wxSizerFlags().Border(wxLEFT, FromDIP(kFormGap)));
    mpFaults->Bind(wxEVT_BUTTON, [this](wxCommandEvent&) {
        ShowAllFaults(this, GetInput(), mDatabase, mReport);
    });
    mpGuide->Bind(wxEVT_BUTTON, [this](wxCommandEvent&) { OpenGuide(); });
    return buttons;
}

// Gives each column half of the list, however large it is made, unless the settings have widths.
void ImportDialog::ShareColumns() {
    constexpr int kWidest = 10000;
    int first = 0;
    int second = 0;
    if (wxSscanf(ReadStringSetting(kSettingImportDialogColumnWidths), "%i,%i", &first, &second) ==
        2) {
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

ImportInput ImportDialog::GetInput() const {
    ImportInput input;
    input.FileName = mFileName;
    input.Format = mpFormatRows->IsDelimited() ? ImportFormat::kDelimited : ImportFormat::kVlmText;
    input.Delimiter = mpFormatRows->GetDelimiter();
    input.Encoding = GetEncoding() == wxFONTENCODING_SYSTEM ? mOwnEncoding : GetEncoding();
    input.Pairs = static_cast<KnownPairs>(mpKnownCards->GetSelection());
    input.AskBeforeChanges = mpAskBefore->GetValue();
    if (mpFormatRows->IsDelimited()) {
        TakeLayout(input);
    }
    if (mpFormatRows->GetFormat() == kDeckFormat) {
        input.Format = ImportFormat::kDeck;
        input.MakeDeckReader = mpDeck->GetReaderMaker();
        input.Media = mpDeck->GetMedia();
    }
    return input;
}

// Returns wxFONTENCODING_SYSTEM for the automatic choice.
wxFontEncoding ImportDialog::GetEncoding() const {
    const int selection = mpEncoding->GetSelection();
    return selection <= 0 ? wxFONTENCODING_SYSTEM
                          : GetTextEncodings()[static_cast<size_t>(selection) - 1].Code;
}

// A table of the program's own form is read as it stands. So is one whose sides were not found: the
// engine's message about it tells more.
void ImportDialog::TakeLayout(ImportInput& input) const {
    const TableSurvey& survey = mpTable->GetSurvey();
    input.HasEscapes = survey.Layout.HasEscapes || !survey.IsOwnForm;
    const bool isNeeded = !survey.IsOwnForm && survey.Layout.IsComplete();
    if (isNeeded || mpTable->IsChanged()) {
        input.Encoding = survey.IsOwnForm ? survey.OwnEncoding : survey.Encoding;
        input.Layout = std::make_shared<const TableLayout>(mpTable->GetLayout());
    }
}

// Chooses the deck's own form for a deck. Returns false for another file.
bool ImportDialog::DetectDeck() {
    if (mpDeck == nullptr) {
        return false;
    }
    mpDeck->Open(mFileName);
    mpFormatRows->ChooseFormat(kDeckFormat);
    ShowChoices();
    RefreshPreview();
    return true;
}

// Shows the choices of the chosen form only.
void ImportDialog::ShowChoices() {
    const bool isText = mpFormatRows->GetFormat() != kDeckFormat;
    mpEncodingLabel->Show(isText);
    mpEncoding->Show(isText);
    mpEncodingHelp->Show(isText);
    mpTable->Show(mpFormatRows->IsDelimited());
    if (mpDeck != nullptr) {
        mpDeck->Show(mpFormatRows->GetFormat() == kDeckFormat && mpDeck->GetFault().empty());
    }
    Layout();
}

// Chooses the form that the file has.
void ImportDialog::DetectTable() {
    const wxBusyCursor busy;
    ImportInput input;
    input.FileName = mFileName;
    const TableSurvey survey = SurveyTable(mFileName, TableChoice());
    mFits = GuessFormat(input, mDatabase, survey);
    mFirstLine = survey.FirstLine;
    mOwnEncoding = survey.OwnEncoding;
    if (input.Layout != nullptr) {
        // All other separators share one entry.
        const std::wstring& separator = input.Layout->Separator;
        mpFormatRows->ChooseSeparator(separator.size() > 1 ? L" - " : separator);
    } else if (input.Format == ImportFormat::kDelimited) {
        mpFormatRows->ChooseDelimited(input.Delimiter);
    }
    SurveyRows();
    ShowChoices();
    RefreshPreview();
}

// Looks at the rows of a table with the present choices.
void ImportDialog::SurveyRows() {
    if (mpFormatRows->IsDelimited() && mpFormatRows->CheckDelimiter().empty()) {
        mpTable->Survey(mFileName, GetEncoding(), mpFormatRows->GetSeparator());
    }
}

// Says after "Automatic" which encoding was guessed.
void ImportDialog::ShowEncoding(wxFontEncoding found) {
    const std::vector<TextEncoding>& all = GetTextEncodings();
    const auto encoding = std::find_if(
        all.begin(), all.end(), [found](const TextEncoding& known) { return known.Code == found; });
    const wxString label = encoding == all.end()
                               ? wxString(_("Automatic"))
                               : wxString::Format(_("Automatic: %s"), DescribeEncoding(*encoding));
    if (mpEncoding->GetString(0) != label) {
        mpEncoding->SetString(0, label);
    }
}

void ImportDialog::RefreshPreview() {
    const bool isDeck = mpFormatRows->GetFormat() == kDeckFormat;
    const wxString fault = isDeck ? mpDeck->GetFault() : mpFormatRows->CheckDelimiter();
    if (!fault.empty()) {
        ShowError(fault);
        return;
    }
    if (isDeck) {
        ShowSample(mpDeck->GetFirstRecord());
        ShowRecord(mpDeck->GetFirstRecord());
        return;
    }
    const wxBusyCursor busy;
    // The preview itself tells what is wrong with the file.
    const wxLogNull silence;
    ImportResult result;
    std::vector<CardAttribute> attributes;
    const ImportInput input = GetInput();
    ShowEncoding(GetEncoding() == wxFONTENCODING_SYSTEM ? input.Encoding : wxFONTENCODING_SYSTEM);
    if (ImportPreview(input, mDatabase, result, attributes)) {
        // A file that is no text has no lines.
        const bool hasLine = result.LineNumber >= 1 || result.Message.empty();
        ShowError(hasLine ? wxString::Format(_("%s\nLine Number: %i"), result.Message,
                                             result.LineNumber) +
                                GetAdvice()
                          : result.Message);
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

void ImportDialog::ShowSample(const std::vector<CardAttribute>& attributes) {
    wxString front;
    wxString back;
    for (const CardAttribute& attribute : attributes) {
        if (attribute.Name.IsSameAs("front", false)) {
            front = attribute.Value;
        } else if (attribute.Name.IsSameAs("back", false)) {
            back = attribute.Value;
        }
    }
    mpSample->SetTexts(front, back);
}

void ImportDialog::ShowError(const wxString& text) {
    mpError->ChangeValue(text);
    ShowPreview(true);
}

// Returns what the user may do about a text that cannot be read as it is meant, as paragraphs after
// the message; nothing when only a record is wrong.
wxString ImportDialog::GetAdvice() const {
    const TableLayout& layout = mpTable->GetLayout();
    wxString advice;
    if (mpFormatRows->IsDelimited() && layout.Columns.size() < 2) {
        advice =
            _("This delimiter does not part the rows into columns.\nChoose the one that stands "
              "between the front and the back.");
    } else if (mpFormatRows->IsDelimited() && !layout.IsComplete()) {
        advice = layout.HasUse(ColumnUse::kFront)
                     ? _("No column is the back of the cards.  Choose one in the list above it.")
                     : _("No column is the front of the cards.  Choose one in the list above it.");
    } else if (!mpFormatRows->IsDelimited() && !mFits) {
        advice =
            _("The file is neither a text with lines such as \"Front: dog\"\nnor a table with a "
              "column for the front and one for the back.\nFor a table, choose the format "
              "\"Delimited\" and then the delimiter.");
    }
    if (advice.empty() || mFirstLine.empty()) {
        return wxString();
    }
    wxString first = mFirstLine;
    first.Replace("\t", wxString(L" \u2192 "));
    return "\n\n" + wxString::Format(_("The first row is: %s"), ShownName(first)) + "\n" + advice;
}

// The application knows where the guide is.
void ImportDialog::OpenGuide() {
    wxCommandEvent event(wxEVT_MENU, wxID_HELP);
    event.SetString("tables");
    wxTheApp->ProcessEvent(event);
}

// Puts either the error or the record on the screen.
void ImportDialog::ShowPreview(bool isError) {
    wxString label = isError ? _("Error (first card)") : _("Preview (first card)");
    const TableLayout& layout = mpTable->GetLayout();
    if (!isError && mpFormatRows->IsDelimited() && layout.HasHeader &&
        !mpTable->GetSurvey().IsOwnForm) {
        label = wxString::Format(_("Preview (first card; row %i has the column names)"),
                                 layout.HeadLines + 1);
    }
    mpPreviewLabel->SetLabel(label);
    SetAccessibleName(*mpError, label);
    TellRow(*mpPreview, wxString(), label);
    mpFaults->Show(isError || mWasRun);
    mpGuide->Show(isError || mWasRun);
    const bool errorChanged = mpError->Show(isError);
    const bool previewChanged = mpPreview->Show(!isError);
    const bool sampleChanged =
        mpSample != nullptr && mpSample->Show(!isError && mpFormatRows->GetFormat() == kDeckFormat);
    if (errorChanged || previewChanged || sampleChanged) {
        Layout();
    }
}

void ImportDialog::RunImport() {
    mWasRun = true;
    if (ImportWithProgress(this, mServices, GetInput(), mDatabase, mReport, &mTouchedCategories)) {
        mpTable->RememberUses();
        EndModal(wxOK);
        return;
    }
    // The user has been told what is wrong, and may change the choices or look at all faults.
    mpFaults->Show();
    mpGuide->Show();
    Layout();
}
