#pragma once

#include <wx/colourdata.h>
#include <wx/dialog.h>
#include <wx/fontdata.h>
#include <wx/panel.h>

#include <array>
#include <initializer_list>
#include <memory>
#include <vector>

class Database;
class DayGroup;
class ExchangeGroup;
class StoreFileActions;
class StudyGroup;
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

// The shared half of the controls below, which each stand for one setting: a label and a check box
// for following the desktop; below them a sample of what is chosen, and a button that opens the
// platform's dialog for choosing another. The label becomes part of their names for screen readers.
class AppearanceControl : public wxPanel {
  public:
    enum ControlId : int { kFollowId = 10056 };

    // Shows the setting. A value that is not stored follows the desktop.
    void Load();
    // Stores the value, or that it follows the desktop, if either was touched since Load.
    void Store();

    // Makes the buttons of several controls equally wide, for a form that shows them in a column.
    static void AlignButtons(std::initializer_list<const AppearanceControl*> controls);

  protected:
    AppearanceControl(wxWindow* parent, wxWindowID id, const wxString& key)
        : wxPanel(parent, id), mKey(key) {}

    // Lays out the parts. Called once, by the constructor of the derived class.
    void CreateRows(wxWindow* sample, int buttonId, const wxString& buttonText,
                    const wxString& label);
    // Notes that the value was chosen, so that it no longer follows the desktop.
    void Touch();

    // Runs the platform's dialog and takes its answer.
    virtual void Change() = 0;
    // Shows the value of the settings, or that of the desktop.
    virtual void ShowStored(const wxString& key) = 0;
    virtual void ShowDefault(const wxString& key) = 0;
    virtual void Write(const wxString& key) = 0;

  private:
    void OnFollow();

    const wxString mKey;
    bool mIsTouched = false;
    wxCheckBox* mpFollow = nullptr;
    wxButton* mpButton = nullptr;
};

// A colour, shown as a swatch.
class ColorControl : public AppearanceControl {
  public:
    ColorControl(wxWindow* parent, wxWindowID id, const wxString& label, const wxString& key);

    void SetColourData(const wxColourData& data);
    const wxColourData& GetColourData() const { return mData; }

  private:
    void Change() override;
    void ShowStored(const wxString& key) override;
    void ShowDefault(const wxString& key) override;
    void Write(const wxString& key) override;
    void ShowColour(const wxColour& colour);

    wxColourData mData;
    wxPanel* mpSwatch = nullptr;
};

// A font, shown as its size and name. The name is written in the font itself, but always at the
// same size.
class FontControl : public AppearanceControl {
  public:
    enum ControlId : int { kFontNameId = 10047 };

    FontControl(wxWindow* parent, wxWindowID id, const wxString& label, const wxString& key);

    void SetFontData(const wxFontData& data);
    const wxFontData& GetFontData() const { return mData; }

    // Returns the chosen font, or the initial one where none was chosen.
    wxFont GetFontOfData() const;

  private:
    void Change() override;
    void ShowStored(const wxString& key) override;
    void ShowDefault(const wxString& key) override;
    void Write(const wxString& key) override;
    void ShowFont(const wxFont& font);

    wxFontData mData;
    wxTextCtrl* mpName = nullptr;
};

// The dialog of Options: the fonts and colours of the cards, when new cards are introduced and
// what a forgotten card keeps, the file that keeps the cards, its backups, and how it is exchanged
// with other computers. Nothing changes until the user presses OK, and of the appearance only what
// the user has touched. Main thread only.
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
    ~PreferencesDialog() override;

    // Sets the open store, which is not owned. Call it before the dialog is shown.
    void SetDatabase(Database* database);
    // Lets the user begin with the folder of the exchange.
    void TurnToExchange();

  private:
    // A text that breaks into lines at the width of its group.
    struct WrappedText {
        wxStaticText* pLabel = nullptr;
        wxSizer* pGroup = nullptr;
        wxString Words;
        // The width at which it is broken now.
        int Width = -1;
    };

    void CreateControls();
    void AddColumn();
    void ArrangeColumns();
    void WrapTexts();
    void CreateAppearance();
    void CreateAdvanced();
    void CreateStoreFile();
    void CreateBackups();

    // Each of these adds a row to the end of a group.
    wxStaticText* AddText(wxSizer& group, const wxString& text);
    wxStaticText* AddWrappedText(wxSizer& group, const wxString& text);
    template <class Control>
    Control* AddControl(wxSizer& group, const wxString& label, int id, const wxString& key);
    wxChoice* AddChoice(wxSizer& group, int id, const std::vector<wxString>& entries,
                        const wxString& spokenName);

    void LoadSettings();
    void ShowDescription(bool early);
    void EnableBackups();
    void EnableNewStore(bool enable);

    std::array<AppearanceControl*, 4> GetAppearance() const;
    void ApplyIntroduction();
    void ApplyBackups();

    void OnIntroductionChoice(wxCommandEvent& event);
    void OnBrowse(wxCommandEvent& event);
    void OnBrowseBackups(wxCommandEvent& event);
    void OnOk(wxCommandEvent& event);

    Subject& mSettingsNotifier;
    StoreFileActions& mActions;
    wxScrolledWindow* mpForm = nullptr;
    wxBoxSizer* mpColumns = nullptr;
    // The column that is being filled.
    wxBoxSizer* mpFormSizer = nullptr;
    std::vector<WrappedText> mWrappedTexts;
    FontControl* mpListFont = nullptr;
    FontControl* mpStudyFont = nullptr;
    ColorControl* mpStudyFontColor = nullptr;
    ColorControl* mpStudyColor = nullptr;
    wxChoice* mpIntroductionChoice = nullptr;
    wxStaticText* mpIntroductionText = nullptr;
    wxTextCtrl* mpIntervalText = nullptr;
    std::unique_ptr<StudyGroup> mpStudyGroup;
    std::unique_ptr<DayGroup> mpDayGroup;
    std::unique_ptr<ExchangeGroup> mpExchangeGroup;
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
