#include "preferences/PreferencesDialog.h"

#include <wx/button.h>
#include <wx/checkbox.h>
#include <wx/choice.h>
#include <wx/colordlg.h>
#include <wx/dcclient.h>
#include <wx/dirdlg.h>
#include <wx/filename.h>
#include <wx/fontdlg.h>
#include <wx/intl.h>
#include <wx/scrolwin.h>
#include <wx/settings.h>
#include <wx/sizer.h>
#include <wx/spinctrl.h>
#include <wx/stattext.h>
#include <wx/textctrl.h>

#include <algorithm>
#include <limits>

#include "files/windows/Backups.h"
#include "files/windows/StoreFileChange.h"
#include "preferences/DayGroup.h"
#include "preferences/ExchangeGroup.h"
#include "preferences/StudyGroup.h"
#include "shell/Forms.h"
#include "shell/MessageBox.h"
#include "shell/Settings.h"
#include "shell/TextUndo.h"
#include "shell/Toolkit.h"
#include "store/Database.h"
#include "store/Subject.h"

namespace {

constexpr int kSwatchId = 10062;
constexpr int kColorButtonId = 10064;
constexpr int kFontButtonId = 10051;

// Room for most names of fonts, in pixels at the usual resolution and in characters.
constexpr int kNameWidth = 180;
constexpr int kNameLength = 22;

}  // namespace

void AppearanceControl::CreateRows(wxWindow* sample, int buttonId, const wxString& buttonText,
                                   const wxString& label) {
    auto* const head = new wxBoxSizer(wxHORIZONTAL);
    head->Add(new wxStaticText(this, wxID_STATIC, label), wxSizerFlags(1).CentreVertical());
    auto* const row = new wxBoxSizer(wxHORIZONTAL);
    row->Add(sample, wxSizerFlags(1).Expand());
    mpButton = new wxButton(this, buttonId, buttonText);
    row->Add(mpButton, wxSizerFlags().CentreVertical().Border(wxLEFT, FromDIP(kFormGap)));
    mpFollow = new wxCheckBox(this, kFollowId, _("Follow the desktop"));
    head->Add(mpFollow, wxSizerFlags().CentreVertical().Border(wxLEFT, FromDIP(kFormEdge)));

    auto* const rows = new wxBoxSizer(wxVERTICAL);
    rows->Add(head, wxSizerFlags().Expand());
    rows->Add(row, wxSizerFlags().Expand().Border(wxTOP, FromDIP(kFormGap) / 2));
    SetSizer(rows);
    SetAccessibleName(*mpButton, label + " " + mpButton->GetLabelText());
    SetAccessibleName(*mpFollow, label + " " + mpFollow->GetLabelText());
    mpButton->Bind(wxEVT_BUTTON, [this](wxCommandEvent&) { Change(); });
    mpFollow->Bind(wxEVT_CHECKBOX, [this](wxCommandEvent&) { OnFollow(); });
}

void AppearanceControl::Load() {
    ShowStored(mKey);
    mpFollow->SetValue(!HasSetting(mKey));
    mIsTouched = false;
}

void AppearanceControl::Store() {
    if (!mIsTouched) {
        return;
    }
    if (mpFollow->GetValue()) {
        RemoveSetting(mKey);
    } else {
        Write(mKey);
    }
}

void AppearanceControl::Touch() {
    mpFollow->SetValue(false);
    mIsTouched = true;
}

// A value that no longer follows the desktop stays as the desktop has it now.
void AppearanceControl::OnFollow() {
    mIsTouched = true;
    if (mpFollow->GetValue()) {
        ShowDefault(mKey);
    }
}

void AppearanceControl::AlignButtons(std::initializer_list<const AppearanceControl*> controls) {
    int width = 0;
    for (const AppearanceControl* const control : controls) {
        width = std::max(width, control->mpButton->GetBestSize().x);
    }
    for (const AppearanceControl* const control : controls) {
        control->mpButton->SetMinSize(wxSize(width, -1));
    }
}

ColorControl::ColorControl(wxWindow* parent, wxWindowID id, const wxString& label,
                           const wxString& key)
    : AppearanceControl(parent, id, key) {
    mpSwatch =
        new wxPanel(this, kSwatchId, wxDefaultPosition, FromDIP(wxSize(10, 10)), wxBORDER_SIMPLE);
    mpSwatch->SetCanFocus(false);
    CreateRows(mpSwatch, kColorButtonId, _("Change Color..."), label);
}

void ColorControl::SetColourData(const wxColourData& data) {
    mData = data;
    ShowColour(mData.GetColour());
    Touch();
}

void ColorControl::ShowColour(const wxColour& colour) {
    mData.SetColour(colour);
    mpSwatch->SetBackgroundColour(colour);
    mpSwatch->Refresh();
}

void ColorControl::ShowStored(const wxString& key) {
    ShowColour(ReadColourSetting(key));
}

void ColorControl::ShowDefault(const wxString& key) {
    ShowColour(DefaultColourSetting(key));
}

void ColorControl::Write(const wxString& key) {
    WriteColourSetting(key, mData.GetColour());
}

void ColorControl::Change() {
    wxColourDialog dialog(this, &mData);
    if (dialog.ShowModal() == wxID_OK) {
        SetColourData(dialog.GetColourData());
    }
}

FontControl::FontControl(wxWindow* parent, wxWindowID id, const wxString& label,
                         const wxString& key)
    : AppearanceControl(parent, id, key) {
    const int width = std::max(FromDIP(kNameWidth), kNameLength * GetCharWidth());
    mpName = new wxTextCtrl(this, kFontNameId, wxString(), wxDefaultPosition, wxSize(width, -1),
                            wxTE_READONLY | wxTE_CENTRE);
    mpName->SetBackgroundColour(wxSystemSettings::GetColour(wxSYS_COLOUR_BTNFACE));
    SetAccessibleName(*mpName, label);
    CreateRows(mpName, kFontButtonId, _("Change Font..."), label);
}

void FontControl::SetFontData(const wxFontData& data) {
    mData = data;
    ShowFont(GetFontOfData());
    Touch();
}

void FontControl::ShowFont(const wxFont& shown) {
    const int size = mpName->GetFont().GetPointSize();
    wxFont font = shown;
    mpName->SetValue(wxString::Format(_("%ipt, %s"), font.GetPointSize(), font.GetFaceName()));
    font.SetPointSize(size);
    mpName->SetFont(font);
}

wxFont FontControl::GetFontOfData() const {
    const wxFont chosen = mData.GetChosenFont();
    return chosen.IsOk() ? chosen : mData.GetInitialFont();
}

void FontControl::ShowStored(const wxString& key) {
    mData.SetInitialFont(ReadFontSetting(key));
    mData.SetAllowSymbols(false);
    ShowFont(mData.GetInitialFont());
}

void FontControl::ShowDefault(const wxString& /*key*/) {
    mData.SetInitialFont(DefaultFontSetting());
    mData.SetChosenFont(wxNullFont);
    ShowFont(mData.GetInitialFont());
}

void FontControl::Write(const wxString& key) {
    WriteFontSetting(key, GetFontOfData());
}

void FontControl::Change() {
    wxFontDialog dialog(this, mData);
    if (dialog.ShowModal() == wxID_OK) {
        SetFontData(dialog.GetFontData());
    }
}

namespace {

// The least width at which the texts of the form break into lines. They take that of their group.
constexpr int kTextWidth = 215;

constexpr int kMostLeastBackups = 1000;

}  // namespace

PreferencesDialog::PreferencesDialog(wxWindow* parent, Subject& settingsNotifier,
                                     StoreFileActions& actions)
    : wxDialog(parent, ID_DIALOG, _("Options"), wxDefaultPosition, wxDefaultSize,
               wxCAPTION | wxCLOSE_BOX | wxSYSTEM_MENU | wxRESIZE_BORDER),
      mSettingsNotifier(settingsNotifier),
      mActions(actions) {
    CreateControls();
    LoadSettings();
    TextUndo::AttachTo(*mpForm);
    FitTextHeights(*mpForm);
    // Measures with the longer description, so that the window has room for both.
    ShowDescription(true);
    ArrangeColumns();
    WrapTexts();
    FitDialogToForm(*this, *mpForm, FromDIP(wxSize(400, 300)));
    ShowDescription(false);
    mpForm->Bind(wxEVT_SIZE, [this](wxSizeEvent& event) {
        event.Skip();
        // The form has its new layout when the event is done.
        CallAfter(&PreferencesDialog::WrapTexts);
    });
    CentreOnParent();
    Bind(wxEVT_CHOICE, &PreferencesDialog::OnIntroductionChoice, this, ID_INTRODUCTION);
    Bind(
        wxEVT_CHOICE, [this](wxCommandEvent& event) { EnableNewStore(event.GetSelection() != 0); },
        ID_STORE_CHOICE);
    Bind(
        wxEVT_BUTTON,
        [this](wxCommandEvent&) { mpNewPathText->ChangeValue(mActions.GetDefaultStorePath()); },
        ID_DEFAULT);
    Bind(wxEVT_BUTTON, &PreferencesDialog::OnBrowse, this, ID_BROWSE);
    Bind(wxEVT_BUTTON, &PreferencesDialog::OnBrowseBackups, this, ID_BROWSE_BACKUPS);
    Bind(
        wxEVT_CHECKBOX, [this](wxCommandEvent&) { EnableBackups(); }, ID_BACKUPS);
    Bind(wxEVT_BUTTON, &PreferencesDialog::OnOk, this, wxID_OK);
}

PreferencesDialog::~PreferencesDialog() = default;

void PreferencesDialog::CreateControls() {
    mpForm = new wxScrolledWindow(this, wxID_ANY, wxDefaultPosition, wxDefaultSize,
                                  wxHSCROLL | wxVSCROLL | wxTAB_TRAVERSAL);
    mpForm->SetScrollRate(1, 1);
    mpColumns = new wxBoxSizer(wxHORIZONTAL);
    MakeFormColumn(*mpForm)->Add(mpColumns, wxSizerFlags(1).Expand());
    AddColumn();
    CreateAppearance();
    CreateAdvanced();
    AddColumn();
    CreateStoreFile();
    CreateBackups();
    AddColumn();
    mpStudyGroup = std::make_unique<StudyGroup>(*mpForm, *mpFormSizer);
    mpDayGroup = std::make_unique<DayGroup>(*mpForm, *mpFormSizer);
    mpExchangeGroup = std::make_unique<ExchangeGroup>(*mpForm, *mpFormSizer);
    LetFormScroll(*mpForm);
    auto* const rows = new wxBoxSizer(wxVERTICAL);
    SetSizer(rows);
    rows->Add(mpForm, wxSizerFlags(1).Expand());
    rows->Add(MakeOkCancel(*this), wxSizerFlags().Expand().Border(wxALL, FromDIP(kFormEdge)));
}

// The columns of groups stand side by side, so that they fit on a low screen.
void PreferencesDialog::AddColumn() {
    const bool isFirst = mpFormSizer == nullptr;
    if (!isFirst) {
        mpColumns->AddSpacer(2 * FromDIP(kFormEdge));
    }
    mpFormSizer = new wxBoxSizer(wxVERTICAL);
    // Equal shares would ask for twice the width of the wider one.
    mpColumns->Add(mpFormSizer, wxSizerFlags(isFirst ? 0 : 1).Expand());
}

// On a screen that is too narrow for them, such as with a large font, they stand one below another.
void PreferencesDialog::ArrangeColumns() {
    const int room = wxGetClientDisplayRect().width - FromDIP(kFormEdge);
    if (mpForm->GetSizer()->CalcMin().x > room) {
        mpColumns->SetOrientation(wxVERTICAL);
    }
}

// Breaks the longer texts at the width of their group, which is that of its other controls at
// least.
void PreferencesDialog::WrapTexts() {
    bool isChanged = false;
    for (WrappedText& text : mWrappedTexts) {
        const int width =
            std::max({text.pGroup->GetSize().x, text.pGroup->CalcMin().x, FromDIP(kTextWidth)});
        if (width != text.Width) {
            text.Width = width;
            text.pLabel->SetLabelText(text.Words);
            text.pLabel->Wrap(width);
            // The lines must not keep the group from becoming narrower again. The toolkit's own
            // best height never gets less than the one that the label has had.
            const wxClientDC dc(text.pLabel);
            const int height = dc.GetMultiLineTextExtent(text.pLabel->GetLabel()).y;
            text.pLabel->SetMinSize(wxSize(FromDIP(kTextWidth), height));
            isChanged = true;
        }
    }
    if (isChanged) {
        mpForm->FitInside();
    }
}

wxStaticText* PreferencesDialog::AddWrappedText(wxSizer& group, const wxString& text) {
    wxStaticText* const label = AddText(group, wxString());
    label->SetMinSize(wxSize(FromDIP(kTextWidth), -1));
    mWrappedTexts.push_back({label, &group, text});
    return label;
}

void PreferencesDialog::CreateAppearance() {
    wxBoxSizer& group = *AddFormGroup(*mpFormSizer, *mpForm, _("Appearance"));
    mpListFont =
        AddControl<FontControl>(group, _("List View Font:"), ID_LIST_FONT, kSettingBrowseFont);
    mpStudyFont =
        AddControl<FontControl>(group, _("Study Flash Card Font:"), ID_STUDY_FONT, kSettingFont);
    // The font dialogs of some desktops, GTK's among them, offer no colour, so it has a row of its
    // own.
    mpStudyFontColor = AddControl<ColorControl>(group, _("Study Flash Card Font Color:"),
                                                ID_STUDY_FONT_COLOR, kSettingFontColor);
    mpStudyColor = AddControl<ColorControl>(group, _("Study Flash Card Color:"), ID_STUDY_COLOR,
                                            kSettingStudyBgColor);
    AppearanceControl::AlignButtons({mpListFont, mpStudyFont, mpStudyFontColor, mpStudyColor});
}

void PreferencesDialog::CreateAdvanced() {
    wxBoxSizer& group = *AddFormGroup(*mpFormSizer, *mpForm, _("Advanced"));
    const wxString question = _("When would you like new cards introduced?");
    AddWrappedText(group, _("Introduction Options"));
    AddWrappedText(group, question);
    mpIntroductionChoice =
        AddChoice(group, ID_INTRODUCTION,
                  {_("After Scheduled Review"), _("During Scheduled Review")}, question);
    mpIntroductionText = AddWrappedText(group, wxString());

    auto* const row = new wxBoxSizer(wxHORIZONTAL);
    group.Add(row, FormRow(*mpForm));
    mpIntervalText = new wxTextCtrl(mpForm, ID_INTERVAL);
    SetAccessibleName(*mpIntervalText, _("Review interval in seconds"));
    row->Add(mpIntervalText, wxSizerFlags().CentreVertical());
    row->Add(new wxStaticText(mpForm, wxID_STATIC, _("seconds")),
             wxSizerFlags().CentreVertical().Border(wxLEFT, FromDIP(kFormGap)));
}

void PreferencesDialog::CreateStoreFile() {
    wxBoxSizer& group = *AddFormGroup(*mpFormSizer, *mpForm, _("Store File"));
    const wxStaticText* const label =
        AddText(group, _("Your flash cards are stored in this file:"));
    const wxSizerFlags row = FormRow(*mpForm);
    mpStorePathText = new wxTextCtrl(mpForm, ID_STORE_PATH, wxString(), wxDefaultPosition,
                                     wxDefaultSize, wxTE_READONLY);
    SetAccessibleName(*mpStorePathText, label->GetLabelText());
    group.Add(mpStorePathText, row);

    mpStoreChoice =
        AddChoice(group, ID_STORE_CHOICE,
                  {_("Do not change the store file"), _("Move flash card store file to:"),
                   _("Create a new flash card store file:"), _("Open flash card store file:")},
                  _("Store File"));

    mpNewPathText = new wxTextCtrl(mpForm, ID_NEW_PATH);
    SetAccessibleName(*mpNewPathText, _("New store file"));
    group.Add(mpNewPathText, row);

    auto* const buttons = new wxBoxSizer(wxHORIZONTAL);
    group.Add(buttons, wxSizerFlags().Right().Border(wxTOP, FromDIP(kFormGap)));
    mpDefaultButton = new wxButton(mpForm, ID_DEFAULT, _("Default"));
    mpBrowseButton = new wxButton(mpForm, ID_BROWSE, _("Browse"));
    for (wxButton* const button : {mpDefaultButton, mpBrowseButton}) {
        button->SetHelpText(_("Move this file to another location."));
        buttons->Add(button, wxSizerFlags().Border(wxLEFT, FromDIP(kFormGap)));
    }
    EnableNewStore(false);
}

void PreferencesDialog::CreateBackups() {
    wxBoxSizer& group = *AddFormGroup(*mpFormSizer, *mpForm, _("Backups"));
    mpBackups =
        new wxCheckBox(mpForm, ID_BACKUPS, _("Back up the store file before large changes"));
    group.Add(mpBackups, FormRow(*mpForm));
    const wxStaticText* const label = AddText(group, _("Backups are kept in this folder:"));
    auto* const place = new wxBoxSizer(wxHORIZONTAL);
    group.Add(place, FormRow(*mpForm));
    mpBackupDirectory = new wxTextCtrl(mpForm, ID_BACKUP_DIRECTORY);
    SetAccessibleName(*mpBackupDirectory, label->GetLabelText());
    mpBrowseBackups = new wxButton(mpForm, ID_BROWSE_BACKUPS, _("Browse"));
    place->Add(mpBackupDirectory, wxSizerFlags(1).CentreVertical());
    place->Add(mpBrowseBackups, wxSizerFlags().CentreVertical().Border(wxLEFT, FromDIP(kFormGap)));

    auto* const least = new wxBoxSizer(wxHORIZONTAL);
    group.Add(least, FormRow(*mpForm));
    mpLeastBackups = new wxSpinCtrl(mpForm, ID_LEAST_BACKUPS, wxString(), wxDefaultPosition,
                                    wxDefaultSize, wxSP_ARROW_KEYS, 1, kMostLeastBackups);
    least->Add(MakeFormLabel(_("Always keep at least:"), *mpLeastBackups),
               wxSizerFlags().CentreVertical());
    least->Add(mpLeastBackups, wxSizerFlags().CentreVertical().Border(wxLEFT, FromDIP(kFormGap)));
    const wxString limit =
        wxFileName::GetHumanReadableSize(wxULongLong(BackupSettings().MostBytes));
    AddWrappedText(
        group,
        wxString::Format(_("Those closest together go first when all take more than %s."), limit));
}

wxStaticText* PreferencesDialog::AddText(wxSizer& group, const wxString& text) {
    auto* const label = new wxStaticText(mpForm, wxID_STATIC, text);
    group.Add(label, FormRow(*mpForm));
    return label;
}

template <class Control>
Control* PreferencesDialog::AddControl(wxSizer& group, const wxString& label, int id,
                                       const wxString& key) {
    auto* const control = new Control(mpForm, id, label, key);
    group.Add(control, FormRow(*mpForm));
    return control;
}

wxChoice* PreferencesDialog::AddChoice(wxSizer& group, int id, const std::vector<wxString>& entries,
                                       const wxString& spokenName) {
    wxChoice* const choice = MakeChoice(*mpForm, id, wxArrayString(entries.size(), entries.data()));
    SetAccessibleName(*choice, spokenName);
    group.Add(choice, wxSizerFlags().Border(wxTOP, FromDIP(kFormGap)));
    return choice;
}

// The description stays that of the first choice until the user makes a choice.
void PreferencesDialog::LoadSettings() {
    for (AppearanceControl* const control : GetAppearance()) {
        control->Load();
    }
    mpIntervalText->ChangeValue(
        wxString::Format("%i", ReadIntegerSetting(kSettingEarlyIntroductionInterval)));
    const bool early = ReadBooleanSetting(kSettingEarlyIntroduction);
    mpIntroductionChoice->SetSelection(early ? 1 : 0);
    mpIntervalText->Enable(early);
    mpStudyGroup->Load();
    mpDayGroup->Load();
    const BackupSettings backups = ReadBackupSettings();
    mpBackups->SetValue(backups.IsOn);
    mpBackupDirectory->ChangeValue(backups.Directory.empty() ? GetBackupDirectory()
                                                             : backups.Directory);
    mpLeastBackups->SetValue(static_cast<int>(backups.Least));
    EnableBackups();
}

// The setting names the open file in the user's own words, a link for example, and is shown while
// it does. Settings that could not be written, or that were changed from outside, name another
// file; then the path of the open one is shown.
void PreferencesDialog::SetDatabase(Database* database) {
    mpDatabase = database;
    const wxString stored = ReadStringSetting(kSettingDatabasePath);
    const wxString path = database->IsStoreFile(stored) ? stored : database->GetPath();
    mpStorePathText->ChangeValue(path);
    mpNewPathText->ChangeValue(path);
    TextUndo::Restart(*mpNewPathText);
    mpExchangeGroup->Load(database->GetPath());
}

void PreferencesDialog::TurnToExchange() {
    mpExchangeGroup->TurnToFolder();
}

void PreferencesDialog::ShowDescription(bool early) {
    const auto isIt = [this](const WrappedText& text) { return text.pLabel == mpIntroductionText; };
    WrappedText& text = *std::find_if(mWrappedTexts.begin(), mWrappedTexts.end(), isIt);
    text.Words =
        early ? _("New cards are introduced during the review of scheduled cards if the review "
                  "interval of all ready cards is greater than the value specified below.")
              : _("New cards are only introduced after all scheduled cards have been reviewed.");
    text.Width = -1;
    WrapTexts();
}

void PreferencesDialog::OnIntroductionChoice(wxCommandEvent& event) {
    const bool early = event.GetSelection() != 0;
    mpIntervalText->Enable(early);
    ShowDescription(early);
}

void PreferencesDialog::EnableNewStore(bool enable) {
    mpNewPathText->Enable(enable);
    mpDefaultButton->Enable(enable);
    mpBrowseButton->Enable(enable);
}

void PreferencesDialog::EnableBackups() {
    for (wxWindow* const control :
         std::initializer_list<wxWindow*>{mpBackupDirectory, mpBrowseBackups, mpLeastBackups}) {
        control->Enable(mpBackups->GetValue());
    }
}

void PreferencesDialog::OnBrowseBackups(wxCommandEvent&) {
    wxDirDialog dialog(this, _("Folder of the Backups"), mpBackupDirectory->GetValue());
    if (dialog.ShowModal() == wxID_OK) {
        mpBackupDirectory->ChangeValue(dialog.GetPath());
    }
}

void PreferencesDialog::OnBrowse(wxCommandEvent&) {
    wxString path = mpStorePathText->GetValue();
    bool chosen = false;
    switch (static_cast<StoreFileChoice>(mpStoreChoice->GetSelection())) {
        case StoreFileChoice::kMove:
            chosen = mActions.ChooseToSave(this, _("Move Store File"), path);
            break;
        case StoreFileChoice::kCreate:
            chosen = mActions.ChooseToSave(this, _("New Store File"), path);
            break;
        case StoreFileChoice::kOpen:
            chosen = mActions.ChooseToOpen(this, path);
            break;
        default:
            break;
    }
    if (chosen) {
        mpNewPathText->ChangeValue(path);
    }
}

// A store action that stops leaves the settings written, and the dialog closes all the same.
void PreferencesDialog::OnOk(wxCommandEvent&) {
    const auto choice = static_cast<StoreFileChoice>(mpStoreChoice->GetSelection());
    const wxString newPath = mpNewPathText->GetValue();
    const wxString problem = mpExchangeGroup->FindProblem(
        choice == StoreFileChoice::kKeep ? mpDatabase->GetPath() : newPath);
    if (!problem.empty()) {
        ShowMessageBox(problem, _("Study on Several Computers"), wxOK | wxCENTRE, this);
        mpExchangeGroup->TurnToFolder();
        return;
    }
    for (AppearanceControl* const control : GetAppearance()) {
        control->Store();
    }
    ApplyIntroduction();
    mpStudyGroup->Store();
    mpDayGroup->Store();
    mpExchangeGroup->Store();
    ApplyBackups();
    ChangeStoreFile(mActions, this, *mpDatabase, choice, mpStorePathText->GetValue(), newPath);
    mSettingsNotifier.Notify();
    EndModal(wxID_OK);
}

std::array<AppearanceControl*, 4> PreferencesDialog::GetAppearance() const {
    return {mpListFont, mpStudyFont, mpStudyFontColor, mpStudyColor};
}

void PreferencesDialog::ApplyIntroduction() {
    long seconds = 0;
    if (mpIntervalText->GetValue().ToLong(&seconds, 10) &&
        seconds >= std::numeric_limits<int32_t>::min() &&
        seconds <= std::numeric_limits<int32_t>::max()) {
        WriteIntegerSetting(kSettingEarlyIntroductionInterval, static_cast<int32_t>(seconds));
    }
    WriteBooleanSetting(kSettingEarlyIntroduction, mpIntroductionChoice->GetSelection() == 1);
}

// The usual folder is not stored, so that it follows the user's data directory. A relative one
// would mean another folder at the next start.
void PreferencesDialog::ApplyBackups() {
    const wxString directory = mpBackupDirectory->GetValue();
    const bool isUsual = directory == GetBackupDirectory() || !wxIsAbsolutePath(directory);
    WriteBooleanSetting(kSettingBackups, mpBackups->GetValue());
    WriteStringSetting(kSettingBackupDirectory, isUsual ? wxString() : directory);
    WriteIntegerSetting(kSettingLeastBackups, mpLeastBackups->GetValue());
}
