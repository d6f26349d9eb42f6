#pragma once

#include <wx/dialog.h>

#include <cstdint>
#include <memory>
#include <set>
#include <vector>

#include "exchange/ImportJob.h"
#include "formats/CardRecord.h"

class AppServices;
class CardSample;
class Database;
class DeckPanel;
class FatalErrorReport;
class FormatRows;
class TablePanel;
class wxButton;
class wxCheckBox;
class wxChoice;
class wxFlexGridSizer;
class wxListCtrl;
class wxSizer;
class wxStaticText;
class wxTextCtrl;

// Stands between the choice of a file and its import: asks how to read the file, and shows at once
// what its first card would become or what is wrong with it. It ends once a whole file was
// imported, and stays open after a failure, so that the choices can be changed. ShowModal returns
// wxOK when an import was run, whatever came of it, and wxCANCEL otherwise. Main thread only.
class ImportDialog : public wxDialog {
  public:
    enum ControlId : int {
        ID_DIALOG = 10089,
        ID_FORMAT = 10004,
        ID_FORMAT_HELP = 10005,
        ID_DELIMITER_LABEL = 10006,
        ID_OTHER_DELIMITER = 10007,
        ID_DELIMITER_HELP = 10008,
        ID_PREVIEW_LABEL = 10090,
        ID_ERROR = 10011,
        ID_PREVIEW = 10036,
        ID_ENCODING = 10091,
        ID_ENCODING_HELP = 10092,
        ID_KNOWN_CARDS = 10093,
        ID_KNOWN_CARDS_HELP = 10094,
        ID_ASK_BEFORE = 10095,
        ID_FAULTS = 10096,
        ID_GUIDE = 10097
    };

    // Finds out how the file is to be read, as far as its first rows and its first card tell. The
    // services, the database and the report are not owned.
    ImportDialog(wxWindow* parent, AppServices& services, Database& database,
                 FatalErrorReport& report, const wxString& fileName);
    ~ImportDialog() override;

    // Returns the ids of the categories that the import put cards into.
    const std::set<int32_t>& GetTouchedCategories() const { return mTouchedCategories; }

  private:
    void CreateControls();
    wxSizer* CreateOptions();
    void AddEncoding(wxFlexGridSizer& grid);
    void AddKnownCards(wxFlexGridSizer& grid);
    wxSizer* CreateHelp();
    void ShareColumns();

    ImportInput GetInput() const;
    wxFontEncoding GetEncoding() const;
    void TakeLayout(ImportInput& input) const;
    bool DetectDeck();
    void DetectTable();
    void ShowChoices();
    void SurveyRows();
    void ShowEncoding(wxFontEncoding found);
    void RefreshPreview();
    void ShowRecord(const std::vector<CardAttribute>& attributes);
    void ShowSample(const std::vector<CardAttribute>& attributes);
    void ShowError(const wxString& text);
    wxString GetAdvice() const;
    void OpenGuide();
    void ShowPreview(bool isError);
    void RunImport();

    AppServices& mServices;
    Database& mDatabase;
    FatalErrorReport& mReport;
    wxString mFileName;
    std::set<int32_t> mTouchedCategories;

    std::unique_ptr<FormatRows> mpFormatRows;
    // True while some form fits the file, and once an import of it has been tried.
    bool mFits = true;
    bool mWasRun = false;
    // The first line of the file that is not empty.
    wxString mFirstLine;
    // The encoding that the file seems to have, for the program's own form.
    wxFontEncoding mOwnEncoding = wxFONTENCODING_SYSTEM;
    // Null when the file is no deck.
    DeckPanel* mpDeck = nullptr;
    wxStaticText* mpEncodingLabel = nullptr;
    wxChoice* mpEncoding = nullptr;
    wxButton* mpEncodingHelp = nullptr;
    TablePanel* mpTable = nullptr;
    wxChoice* mpKnownCards = nullptr;
    wxCheckBox* mpAskBefore = nullptr;
    wxButton* mpFaults = nullptr;
    wxButton* mpGuide = nullptr;
    wxStaticText* mpPreviewLabel = nullptr;
    wxTextCtrl* mpError = nullptr;
    wxListCtrl* mpPreview = nullptr;
    // Stands beside the preview of a deck; null when the file is no deck.
    CardSample* mpSample = nullptr;
};
