#pragma once

#include <wx/colourdata.h>
#include <wx/dialog.h>
#include <wx/fontdata.h>
#include <wx/panel.h>

#include <initializer_list>
#include <vector>

class Database;
class StoreFileActions;
class Subject;
class wxBoxSizer;
class wxButton;
class wxCheckBox;
class wxChoice;
class wxScrolledWindow;
class wxSizer;
class wxSpinCtrl;
class wxStaticText;
class wxTextCtrl;

// The shared half of the controls below: a sample of what is chosen, and beside it a button that
// opens the platform's dialog for choosing another. The label that stands above the control in its
// form becomes part of the button's name for screen readers.
class AppearanceControl : public wxPanel {
  public:
    // Makes the buttons of several controls equally wide, for a form that shows them in a column.
    static void AlignButtons(std::initializer_list<const AppearanceControl*> controls);

  protected:
    AppearanceControl(wxWindow* parent, wxWindowID id) : wxPanel(parent, id) {}

    // Lays out the two. Called once, by the constructor of the derived class.
    void CreateRow(wxWindow* sample, int buttonId, const wxString& buttonText,
                   const wxString& label);

    // Runs the platform's dialog and takes its answer.
    virtual void Change() = 0;

  private:
    wxButton* mpButton = nullptr;
};

// A colour, shown as a swatch.
class ColorControl : public AppearanceControl {
  public:
    ColorControl(wxWindow* parent, wxWindowID id, const wxString& label);

    void SetColourData(const wxColourData& data);
    const wxColourData& GetColourData() const { return mData; }

  private:
    void Change() override;

    wxColourData mData;
    wxPanel* mpSwatch = nullptr;
};

// A font, shown as its size and name. The name is written in the font itself, but always at the
// same size.
class FontControl : public AppearanceControl {
  public:
    enum ControlId : int { kFontNameId = 10047 };

    FontControl(wxWindow* parent, wxWindowID id, const wxString& label);

    void SetFontData(const wxFontData& data);
    const wxFontData& GetFontData() const { return mData; }

    // Returns the chosen font, or the initial one where none was chosen.
    wxFont GetFontOfData() const;

  private:
    void Change() override;

    wxFontData mData;
    wxTextCtrl* mpName = nullptr;
};

// The dialog behind Options: the fonts and colours of the cards, when new cards are introduced, the
// file that keeps the cards, and its backups. Nothing changes until the user presses OK. Main
// thread only.
class PreferencesDialog : public wxDialog {
  public:
    enum ControlId : int {
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
        ID_INTRODUCTION = 10149,
        ID_BACKUPS = 10150,
        ID_BACKUP_DIRECTORY = 10151,
        ID_BROWSE_BACKUPS = 10152,
        ID_LEAST_BACKUPS = 10153
    };

    // The notifier is told after OK. It and the actions are not owned and must outlive the dialog.
    PreferencesDialog(wxWindow* parent, Subject& settingsNotifier, StoreFileActions& actions);

    // Sets the open store, which is not owned. Call it before the dialog is shown.
    void SetDatabase(Database* database);

  private:
    void CreateControls();
    void CreateAppearance();
    void CreateAdvanced();
    void CreateStoreFile();
    void CreateBackups();

    // Each of these adds a row to the end of a group.
    wxStaticText* AddText(wxSizer& group, const wxString& text);
    template <class Control>
    Control* AddControl(wxSizer& group, const wxString& label, int id);
    wxChoice* AddChoice(wxSizer& group, int id, const std::vector<wxString>& entries,
                        const wxString& spokenName);

    void LoadSettings();
    void ShowDescription(bool early);
    void EnableBackups();
    void EnableNewStore(bool enable);

    void ApplyAppearance();
    void ApplyIntroduction();
    void ApplyBackups();

    void OnIntroductionChoice(wxCommandEvent& event);
    void OnBrowse(wxCommandEvent& event);
    void OnBrowseBackups(wxCommandEvent& event);
    void OnOk(wxCommandEvent& event);

    Subject& mSettingsNotifier;
    StoreFileActions& mActions;
    wxScrolledWindow* mpForm = nullptr;
    wxBoxSizer* mpFormSizer = nullptr;
    FontControl* mpListFont = nullptr;
    FontControl* mpStudyFont = nullptr;
    ColorControl* mpStudyFontColor = nullptr;
    ColorControl* mpStudyColor = nullptr;
    wxChoice* mpIntroductionChoice = nullptr;
    wxStaticText* mpIntroductionText = nullptr;
    wxTextCtrl* mpIntervalText = nullptr;
    wxTextCtrl* mpStorePathText = nullptr;
    wxChoice* mpStoreChoice = nullptr;
    wxTextCtrl* mpNewPathText = nullptr;
    wxButton* mpDefaultButton = nullptr;
    wxButton* mpBrowseButton = nullptr;
    wxCheckBox* mpBackups = nullptr;
    wxTextCtrl* mpBackupDirectory = nullptr;
    wxButton* mpBrowseBackups = nullptr;
    wxSpinCtrl* mpLeastBackups = nullptr;
    Database* mpDatabase = nullptr;
};
