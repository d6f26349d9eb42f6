#pragma once

#include <wx/dialog.h>

#include <cstdint>
#include <vector>

#include "exchange/Export.h"

class CategorySource;
class Database;
class FatalErrorReport;
class wxButton;
class wxCheckBox;
class wxChoice;
class wxRadioBox;
class wxSizer;
class wxStaticText;
class wxTextCtrl;

// Asks which cards are to be exported and how, shows how the first of them will look, and exports
// them. Ends with wxID_OK after an export and with wxID_CANCEL without one.
class ExportOptionsDialog : public wxDialog {
  public:
    // The services are not owned.
    ExportOptionsDialog(wxWindow* parent, CategorySource& currentCategory,
                        FatalErrorReport& report);

    // The store, and the row ids of the cards that the caller has selected; neither is owned. The
    // export starts with the narrowest range that has cards.
    void SetDatabase(Database& database, const std::vector<int64_t>& selectedRowIds);

  private:
    wxSizer* MakeOptions();
    wxSizer* MakePreview();
    wxButton* MakeHelp(int id, const wxString& caption, const wxString& text);

    // Shows the controls of the delimiter only where there is one.
    void ShowDelimiter();
    // Gathers the row ids of the range.
    void MakeRange();
    void RefreshPreview();
    ExportOptions GetOptions() const;
    // What is wrong with the delimiter, or nothing. Takes a line break out of its field.
    wxString CheckDelimiter();

    void OnFormat(wxCommandEvent& event);
    void OnDelimiter(wxCommandEvent& event);
    void OnRange(wxCommandEvent& event);
    void OnOk(wxCommandEvent& event);
    // True when the dialog's work is done.
    bool Export(const wxString& path);

    CategorySource& mCurrentCategory;
    FatalErrorReport& mReport;
    Database* mpDatabase = nullptr;
    const std::vector<int64_t>* mpSelectedRowIds = nullptr;
    std::vector<int64_t> mRangeRowIds;
    // The cards of the range: one of the two lists above.
    const std::vector<int64_t>* mpRowIds = nullptr;

    wxChoice* mpEncoding = nullptr;
    wxChoice* mpFormat = nullptr;
    wxStaticText* mpDelimiterLabel = nullptr;
    wxChoice* mpDelimiter = nullptr;
    wxTextCtrl* mpOther = nullptr;
    wxButton* mpDelimiterHelp = nullptr;
    wxCheckBox* mpScheduling = nullptr;
    wxRadioBox* mpRange = nullptr;
    wxTextCtrl* mpPreview = nullptr;
};

// Exports cards of the store as the person wants it.
void ShowExportOptions(wxWindow* parent, Database& database, CategorySource& currentCategory,
                       FatalErrorReport& report, const std::vector<int64_t>& selectedRowIds);
