#pragma once

#include <wx/dialog.h>

#include <cstdint>
#include <memory>
#include <set>
#include <vector>

#include "exchange/CardRecord.h"
#include "exchange/ImportJob.h"

class Database;
class DeckPanel;
class FatalErrorReport;
class FormatRows;
class wxListCtrl;
class wxSizer;
class wxStaticText;
class wxTextCtrl;

// Stands between the choice of a file and its import: asks how to read the file, and shows at once
// what its first card would become or what is wrong with it. ShowModal returns wxOK once the import
// was run, whatever came of it, and wxCANCEL otherwise. Main thread only.
class ImportDialog : public wxDialog {
  public:
    // Finds out whether the file is a table and by what its columns are separated, as far as the
    // first card tells. The database and the report are not owned.
    ImportDialog(wxWindow* parent, Database& database, FatalErrorReport& report,
                 const wxString& fileName);
    ~ImportDialog() override;

    // Returns the ids of the categories that the import put cards into.
    const std::set<int32_t>& GetTouchedCategories() const { return mTouchedCategories; }

  private:
    void CreateControls();
    wxSizer* CreateOptions();
    void ShareColumns();

    ImportInput GetInput() const;
    bool DetectDeck();
    bool DetectTable();
    void ShowDeck();
    void RefreshPreview();
    void ShowRecord(const std::vector<CardAttribute>& attributes);
    void ShowError(const wxString& text);
    void ShowPreview(bool isError);
    void RunImport();

    Database& mDatabase;
    FatalErrorReport& mReport;
    wxString mFileName;
    std::set<int32_t> mTouchedCategories;

    std::unique_ptr<FormatRows> mpFormatRows;
    // Null when the file is no deck.
    DeckPanel* mpDeck = nullptr;
    wxStaticText* mpPreviewLabel = nullptr;
    wxTextCtrl* mpError = nullptr;
    wxListCtrl* mpPreview = nullptr;
};
