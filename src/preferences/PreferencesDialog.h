#pragma once

#include <wx/dialog.h>

class ColorControl;
class Database;
class FontControl;
class StoreFileActions;
class Subject;
class wxBoxSizer;
class wxButton;
class wxChoice;
class wxScrolledWindow;
class wxSizerFlags;
class wxStaticText;
class wxTextCtrl;

// The options of the program: the fonts and colours of the cards, when new cards are introduced,
// and the file in which the cards are kept. Nothing changes before OK. Main thread only.
class PreferencesDialog : public wxDialog {
  public:
    // Notifier and actions are not owned and must outlive the dialog.
    PreferencesDialog(wxWindow* parent, Subject& settingsNotifier, StoreFileActions& actions);

    // Not owned; given before the dialog is shown.
    void SetDatabase(Database* database);

  private:
    void CreateControls();
    void CreateAppearance();
    void CreateAdvanced();
    void CreateStoreFile();

    // Each adds to the end of the form.
    void AddHeading(const wxString& title);
    wxStaticText* AddText(const wxString& text, int sides);
    template <class Control>
    Control* AddControl(const wxString& label, int labelSides, int id);
    wxChoice* AddChoice(int id, const wxArrayString& entries);

    void LoadSettings();
    void ShowDescription(bool early);

    void ApplyAppearance();
    void ApplyIntroduction();

    void OnIntroductionChoice(wxCommandEvent& event);
    void OnStoreChoice(wxCommandEvent& event);
    void OnDefault(wxCommandEvent& event);
    void OnBrowse(wxCommandEvent& event);
    void OnOk(wxCommandEvent& event);

    Subject& mSettingsNotifier;
    StoreFileActions& mActions;
    wxScrolledWindow* mpForm = nullptr;
    wxBoxSizer* mpFormSizer = nullptr;
    FontControl* mpListFont = nullptr;
    FontControl* mpStudyFont = nullptr;
    ColorControl* mpStudyFontColor = nullptr;
    ColorControl* mpStudyColor = nullptr;
    wxStaticText* mpHeadingText = nullptr;
    wxStaticText* mpQuestionText = nullptr;
    wxChoice* mpIntroductionChoice = nullptr;
    wxStaticText* mpIntroductionText = nullptr;
    wxTextCtrl* mpIntervalText = nullptr;
    wxTextCtrl* mpStorePathText = nullptr;
    wxChoice* mpStoreChoice = nullptr;
    wxTextCtrl* mpNewPathText = nullptr;
    wxButton* mpDefaultButton = nullptr;
    wxButton* mpBrowseButton = nullptr;
    Database* mpDatabase = nullptr;
};
