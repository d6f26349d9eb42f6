#include "preferences/PreferencesDialog.h"

#include <wx/button.h>
#include <wx/choice.h>
#include <wx/intl.h>
#include <wx/scrolwin.h>
#include <wx/settings.h>
#include <wx/sizer.h>
#include <wx/stattext.h>
#include <wx/textctrl.h>

#include <algorithm>
#include <limits>

#include "preferences/AppearanceControls.h"
#include "shell/Forms.h"
#include "shell/Settings.h"
#include "shell/Toolkit.h"
#include "store/Database.h"
#include "store/Subject.h"
#include "storefile/StoreFileChange.h"

namespace {

enum : int {
    ID_LIST_FONT = 10004,
    ID_STUDY_FONT = 10053,
    ID_STUDY_FONT_COLOR = 10054,
    ID_STUDY_COLOR = 10005,
    ID_INTERVAL = 10003,
    ID_DEFAULT = 10006,
    ID_DIALOG = 10043,
    ID_STORE_PATH = 10069,
    ID_BROWSE = 10117,
    ID_STORE_CHOICE = 10123,
    ID_NEW_PATH = 10124,
    ID_INTRODUCTION = 10149
};

// The room between controls that stand side by side, and around each row of the form.
constexpr int kBorder = 5;
constexpr int kRowBorder = 1;
constexpr int kHeadingBorder = 2;
constexpr int kTextWidth = 215;
// The lines of text that the window shows of the form at least.
constexpr int kLines = 17;

constexpr int kLater = wxLEFT | wxRIGHT | wxBOTTOM;

// A font with a colour key lets the platform's font dialog offer the colour too, where it can.
void LoadFont(FontControl& control, const wxString& key, const wxString& colourKey) {
    wxFontData data;
    data.SetInitialFont(ReadFontSetting(key));
    data.SetAllowSymbols(false);
    data.EnableEffects(!colourKey.empty());
    if (!colourKey.empty()) {
        data.SetColour(ReadColourSetting(colourKey));
    }
    control.SetFontData(data);
}

void LoadColour(ColorControl& control, const wxString& key) {
    wxColourData data;
    data.SetColour(ReadColourSetting(key));
    control.SetColourData(data);
}

}  // namespace

PreferencesDialog::PreferencesDialog(wxWindow* parent, Subject& settingsNotifier,
                                     StoreFileActions& actions)
    : wxDialog(parent, ID_DIALOG, _("Options"), wxDefaultPosition, wxDefaultSize,
               wxCAPTION | wxCLOSE_BOX | wxSYSTEM_MENU | wxRESIZE_BORDER),
      mSettingsNotifier(settingsNotifier),
      mActions(actions) {
    CreateControls();
    LoadSettings();
    FitTextHeights(*mpForm);
    mpForm->FitInside();
    // A large font needs a larger window.
    const int scrollBar = std::max(wxSystemSettings::GetMetric(wxSYS_VSCROLL_X, this), 0);
    SetSize(std::max(FromDIP(400), mpForm->GetSizer()->CalcMin().x + scrollBar),
            std::max(FromDIP(300), kLines * GetCharHeight()));
    Layout();
    CentreOnParent();
    Bind(wxEVT_CHOICE, &PreferencesDialog::OnIntroductionChoice, this, ID_INTRODUCTION);
    Bind(wxEVT_CHOICE, &PreferencesDialog::OnStoreChoice, this, ID_STORE_CHOICE);
    Bind(wxEVT_BUTTON, &PreferencesDialog::OnDefault, this, ID_DEFAULT);
    Bind(wxEVT_BUTTON, &PreferencesDialog::OnBrowse, this, ID_BROWSE);
    Bind(wxEVT_BUTTON, &PreferencesDialog::OnOk, this, wxID_OK);
}

void PreferencesDialog::CreateControls() {
    mpForm = new wxScrolledWindow(this, wxID_ANY, wxDefaultPosition, wxDefaultSize,
                                  wxHSCROLL | wxVSCROLL | wxTAB_TRAVERSAL);
    mpForm->SetScrollRate(1, 1);
    mpFormSizer = new wxBoxSizer(wxVERTICAL);
    auto* const margin = new wxBoxSizer(wxVERTICAL);
    margin->Add(mpFormSizer, wxSizerFlags(1).Expand().Border(wxALL, FromDIP(kBorder)));
    mpForm->SetSizer(margin);
    CreateAppearance();
    CreateAdvanced();
    CreateStoreFile();
    LetFormScroll(*mpForm);
    auto* const rows = new wxBoxSizer(wxVERTICAL);
    SetSizer(rows);
    rows->Add(mpForm, wxSizerFlags(1).Expand());
    rows->Add(MakeOkCancel(*this), wxSizerFlags().Expand().Border(wxALL, FromDIP(kBorder)));
}

void PreferencesDialog::CreateAppearance() {
    AddHeading(_("Appearance"));
    mpListFont = AddControl<FontControl>(_("List View Font:"), wxALL, ID_LIST_FONT);
    mpStudyFont = AddControl<FontControl>(_("Study Flash Card Font:"), kLater, ID_STUDY_FONT);
    // The font dialogs of some desktops, GTK's among them, offer no colour, so it has a row of its
    // own.
    mpStudyFontColor =
        AddControl<ColorControl>(_("Study Flash Card Font Color:"), kLater, ID_STUDY_FONT_COLOR);
    mpStudyColor = AddControl<ColorControl>(_("Study Flash Card Color:"), kLater, ID_STUDY_COLOR);
}

void PreferencesDialog::CreateAdvanced() {
    AddHeading(_("Advanced"));
    const wxString question = _("When would you like new cards introduced?");
    for (const wxString& text : {wxString(_("Introduction Options")), question}) {
        AddText(text, wxALL)->Wrap(FromDIP(kTextWidth));
    }
    wxArrayString entries;
    entries.Add(_("After Scheduled Review"));
    entries.Add(_("During Scheduled Review"));
    mpIntroductionChoice = AddChoice(ID_INTRODUCTION, entries, question);
    mpIntroductionText = AddText(wxString(), wxALL);
    ShowDescription(false);

    auto* const row = new wxBoxSizer(wxHORIZONTAL);
    mpFormSizer->Add(row, wxSizerFlags().Border(wxALL, FromDIP(kRowBorder)));
    mpIntervalText = new wxTextCtrl(mpForm, ID_INTERVAL);
    SetAccessibleName(*mpIntervalText, _("Review interval in seconds"));
    row->Add(mpIntervalText, wxSizerFlags().CentreVertical());
    row->Add(new wxStaticText(mpForm, wxID_STATIC, _("seconds")),
             wxSizerFlags().CentreVertical().Border(wxLEFT, FromDIP(kBorder)));
}

void PreferencesDialog::CreateStoreFile() {
    AddHeading(_("Store File"));
    const wxStaticText* const label =
        AddText(_("Your flash cards are stored in this file:"), wxALL);
    const wxSizerFlags whole = wxSizerFlags().Expand();
    const int border = FromDIP(kRowBorder);
    mpStorePathText = new wxTextCtrl(mpForm, ID_STORE_PATH, wxString(), wxDefaultPosition,
                                     wxDefaultSize, wxTE_READONLY);
    SetAccessibleName(*mpStorePathText, label->GetLabelText());
    mpFormSizer->Add(mpStorePathText, wxSizerFlags(whole).Border(wxLEFT | wxRIGHT, border));

    wxArrayString entries;
    entries.Add(_("Do not change the store file"));
    entries.Add(_("Move flash card store file to:"));
    entries.Add(_("Create a new flash card store file:"));
    entries.Add(_("Open flash card store file:"));
    mpStoreChoice = AddChoice(ID_STORE_CHOICE, entries, _("Store File"));

    mpNewPathText = new wxTextCtrl(mpForm, ID_NEW_PATH);
    SetAccessibleName(*mpNewPathText, _("New store file"));
    mpFormSizer->Add(mpNewPathText, wxSizerFlags(whole).Border(kLater, border));

    auto* const row = new wxBoxSizer(wxHORIZONTAL);
    mpFormSizer->Add(row, wxSizerFlags().Right().Border(kLater, border));
    mpDefaultButton = new wxButton(mpForm, ID_DEFAULT, _("Default"));
    mpBrowseButton = new wxButton(mpForm, ID_BROWSE, _("Browse"));
    for (wxButton* const button : {mpDefaultButton, mpBrowseButton}) {
        button->SetHelpText(_("Move this file to another location."));
        row->Add(button, wxSizerFlags().CentreVertical());
    }
    for (wxWindow* const window :
         {static_cast<wxWindow*>(mpNewPathText), static_cast<wxWindow*>(mpDefaultButton),
          static_cast<wxWindow*>(mpBrowseButton)}) {
        window->Disable();
    }
}

void PreferencesDialog::AddHeading(const wxString& title) {
    auto* const heading = new wxStaticText(mpForm, wxID_STATIC, title);
    heading->SetFont(heading->GetFont().Bold());
    mpFormSizer->Add(heading, wxSizerFlags().Border(wxALL, FromDIP(kHeadingBorder)));
}

wxStaticText* PreferencesDialog::AddText(const wxString& text, int sides) {
    auto* const label = new wxStaticText(mpForm, wxID_STATIC, text);
    mpFormSizer->Add(label, wxSizerFlags().Border(sides, FromDIP(kRowBorder)));
    return label;
}

template <class Control>
Control* PreferencesDialog::AddControl(const wxString& label, int labelSides, int id) {
    AddText(label, labelSides);
    auto* const control = new Control(mpForm, id, label);
    mpFormSizer->Add(control, wxSizerFlags().Expand().Border(wxTOP, FromDIP(kRowBorder)));
    return control;
}

wxChoice* PreferencesDialog::AddChoice(int id, const wxArrayString& entries,
                                       const wxString& spokenName) {
    wxChoice* const choice = MakeChoice(*mpForm, id, entries);
    SetAccessibleName(*choice, spokenName);
    mpFormSizer->Add(choice, wxSizerFlags().Border(wxALL, FromDIP(kRowBorder)));
    return choice;
}

// The description stays that of the first choice until the user makes a choice.
void PreferencesDialog::LoadSettings() {
    LoadFont(*mpListFont, kSettingBrowseFont, wxString());
    LoadFont(*mpStudyFont, kSettingFont, kSettingFontColor);
    LoadColour(*mpStudyFontColor, kSettingFontColor);
    LoadColour(*mpStudyColor, kSettingStudyBgColor);
    mpIntervalText->ChangeValue(
        wxString::Format("%i", ReadIntegerSetting(kSettingEarlyIntroductionInterval)));
    const bool early = ReadBooleanSetting(kSettingEarlyIntroduction);
    mpIntroductionChoice->SetSelection(early ? 1 : 0);
    mpIntervalText->Enable(early);
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
}

void PreferencesDialog::ShowDescription(bool early) {
    mpIntroductionText->SetLabelText(
        early ? _("New cards are introduced during the review of scheduled cards if the review "
                  "interval of all ready cards is greater than the value specified below.")
              : _("New cards are only introduced after all scheduled cards have been reviewed."));
    mpIntroductionText->Wrap(FromDIP(kTextWidth));
    mpForm->FitInside();
}

void PreferencesDialog::OnIntroductionChoice(wxCommandEvent& event) {
    const bool early = event.GetSelection() != 0;
    mpIntervalText->Enable(early);
    ShowDescription(early);
}

void PreferencesDialog::OnStoreChoice(wxCommandEvent& event) {
    const bool changes = event.GetSelection() != 0;
    mpNewPathText->Enable(changes);
    mpDefaultButton->Enable(changes);
    mpBrowseButton->Enable(changes);
}

void PreferencesDialog::OnDefault(wxCommandEvent&) {
    mpNewPathText->ChangeValue(mActions.GetDefaultStorePath());
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
    ApplyAppearance();
    ApplyIntroduction();
    ChangeStoreFile(mActions, this, *mpDatabase,
                    static_cast<StoreFileChoice>(mpStoreChoice->GetSelection()),
                    mpStorePathText->GetValue(), mpNewPathText->GetValue());
    mSettingsNotifier.Notify();
    EndModal(wxID_OK);
}

void PreferencesDialog::ApplyAppearance() {
    WriteFontSetting(kSettingBrowseFont, mpListFont->GetFontOfData());
    WriteFontSetting(kSettingFont, mpStudyFont->GetFontOfData());
    WriteColourSetting(kSettingFontColor, mpStudyFontColor->GetColourData().GetColour());
    WriteColourSetting(kSettingStudyBgColor, mpStudyColor->GetColourData().GetColour());
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
