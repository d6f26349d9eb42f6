#pragma once

#include <wx/dialog.h>

#include <cstdint>
#include <set>
#include <vector>

#include "exchange/CardAttributes.h"
#include "exchange/ImportJob.h"

class Database;
class FatalErrorReport;
class wxBoxSizer;
class wxButton;
class wxChoice;
class wxListCtrl;
class wxStaticText;
class wxTextCtrl;

// Stands between the choice of a file and its import: how the file is to be read, and at once what
// its first card would become or what is wrong with it. Ends with wxOK once the import was run,
// whatever came of it, and with wxCANCEL otherwise.
class ImportDialog : public wxDialog {
  public:
    ImportDialog(wxWindow* parent, FatalErrorReport& report);
    ~ImportDialog() override;

    // The preview follows as soon as both are there. The database is not owned.
    void SetFileName(const wxString& name);
    void SetDatabase(Database* database);
    // Finds out whether the file is a table, and by what its columns are separated. Otherwise the
    // choices stay. Once, when the file and the database are there.
    void DetectFormat();

    wchar_t GetDelimiter() const;
    bool IsDelimited() const;
    // The ids of the categories that the import put cards into.
    const std::set<int32_t>& GetTouchedCategories() const { return mTouchedCategories; }

  private:
    void CreateControls();
    wxSizer* CreateOptions();
    void BindEvents();

    bool IsOtherDelimiter() const;
    ImportInput GetInput() const;
    void ShowOptions();
    void RefreshPreview();
    bool CheckDelimiter();
    void ShowRecord(const std::vector<CardAttribute>& attributes);
    void ShowError(const wxString& text);
    void ShowPreview(bool isError);
    void SetColumnWidths();
    void RunImport();

    FatalErrorReport& mReport;
    Database* mpDatabase = nullptr;
    wxString mFileName;
    std::set<int32_t> mTouchedCategories;

    wxChoice* mpFormat = nullptr;
    wxStaticText* mpDelimiterLabel = nullptr;
    wxBoxSizer* mpDelimiterSizer = nullptr;
    wxChoice* mpDelimiter = nullptr;
    wxTextCtrl* mpOtherDelimiter = nullptr;
    wxButton* mpDelimiterHelp = nullptr;
    wxStaticText* mpPreviewLabel = nullptr;
    wxTextCtrl* mpError = nullptr;
    wxListCtrl* mpPreview = nullptr;
};
