#pragma once

#include <wx/dialog.h>

#include <cstdint>
#include <memory>
#include <vector>

#include "exchange/Export.h"
#include "shell/AppServices.h"

class Database;
class FatalErrorReport;
class FormatRows;
class wxCheckBox;
class wxChoice;
class wxRadioBox;
class wxSizer;
class wxTextCtrl;

// Asks which cards to export and how, shows what the first of them will look like, and exports
// them. ShowModal returns wxID_OK after an export and wxID_CANCEL without one. Main thread only.
class ExportOptionsDialog : public wxDialog {
  public:
    enum ControlId : int {
        kDialogId = 10033,
        kEncodingId = 10080,
        kEncodingHelpId = 10088,
        kFormatId = 10081,
        kFormatHelpId = 10086,
        kDelimiterLabelId = 10000,
        kOtherId = 10083,
        kDelimiterHelpId = 10085,
        kSchedulingId = 10082,
        kSchedulingHelpId = 10084,
        kRangeId = 10148,
        kPreviewId = 10035
    };

    // Starts with the narrowest range that has cards: the selected ones, which may be none, else
    // the current category, else all. The current category comes before the selected cards where
    // that is asked for. The row ids and the services are not owned.
    ExportOptionsDialog(wxWindow* parent, Database& database, CategorySource& currentCategory,
                        FatalErrorReport& report, const std::vector<int64_t>& selectedRowIds,
                        AppServices::OfferFirst first);
    ~ExportOptionsDialog() override;

  private:
    wxSizer* MakeOptions();
    wxSizer* MakeScheduling();
    wxSizer* MakePreview();
    void OfferRange(int range, int32_t cards);
    void ChooseNarrowestRange(AppServices::OfferFirst first);

    void FitToOptions();
    void LoadRange();
    void RefreshPreview();
    ExportOptions GetOptions() const;

    void OnOk(wxCommandEvent& event);
    bool Export(const wxString& path);

    Database& mDatabase;
    CategorySource& mCurrentCategory;
    FatalErrorReport& mReport;
    const std::vector<int64_t>& mSelectedRowIds;
    // Row ids that were read from the store for the range.
    std::vector<int64_t> mStoredRowIds;
    // The cards of the range: one of the two lists above.
    const std::vector<int64_t>* mpRowIds = &mStoredRowIds;

    wxChoice* mpEncoding = nullptr;
    std::unique_ptr<FormatRows> mpFormatRows;
    wxCheckBox* mpScheduling = nullptr;
    wxRadioBox* mpRange = nullptr;
    wxTextCtrl* mpPreview = nullptr;
};
