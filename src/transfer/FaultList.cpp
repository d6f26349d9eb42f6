#include "transfer/FaultList.h"

#include <wx/button.h>
#include <wx/dialog.h>
#include <wx/intl.h>
#include <wx/log.h>
#include <wx/sizer.h>
#include <wx/stattext.h>
#include <wx/textctrl.h>

#include <vector>

#include "base/Worker.h"
#include "exchange/ImportPass.h"
#include "shell/Forms.h"
#include "shell/Toolkit.h"
#include "transfer/ProgressDialog.h"

namespace {

constexpr int kDialogId = 10420;

constexpr size_t kMostFaults = 1000;

// Looks through a file on a thread of its own.
class FaultSearch : public Worker {
  public:
    FaultSearch(const ImportInput& input, Database& database)
        : mInput(input), mDatabase(database) {}
    ~FaultSearch() override { FaultSearch::Cancel(); }

    // Valid once the worker has ended.
    const std::vector<ImportFault>& GetFaults() const { return mFaults; }
    // What was read in a way that may not be meant, and is no fault.
    const std::vector<SourceNotice>& GetNotices() const { return mResult.Notices; }
    // A cancel that came when the search was done came too late.
    bool WasStopped() const { return mResult.Status == ImportStatus::kCancelled; }

    int32_t GetMaximum() const override { return 1000; }
    int32_t GetPosition() const override {
        return static_cast<int32_t>(mResult.Progress * 1000.0f);
    }
    void Cancel() override {
        if (!IsFinished()) {
            mResult.Cancel();
        }
        Join();
    }

  protected:
    void Work() override {
        // The list itself tells what is wrong.
        const wxLogNull silence;
        mFaults = FindFaults(mInput, mDatabase, mResult, kMostFaults);
    }
    void OnFailure(const wxString& message) override { mFaults.push_back({message, -1}); }

  private:
    ImportInput mInput;
    Database& mDatabase;
    // Its atomic fields are shared; the faults are the worker's until it has ended.
    ImportResult mResult;
    std::vector<ImportFault> mFaults;
};

void AddLine(wxString& text, int32_t line, const wxString& message) {
    text += (line >= 1 ? wxString::Format(_("Line %i: %s"), line, message) : message) + "\n";
}

wxString CountText(size_t count) {
    if (count == 0) {
        return _("Nothing is wrong with the records of the file.");
    }
    const wxString found = wxString::Format(
        wxPLURAL("%i fault", "%i faults", static_cast<unsigned>(count)), static_cast<int>(count));
    return count < kMostFaults ? found : found + " " + _("(there may be more)");
}

void ShowFaults(wxWindow* parent, const FaultSearch& search) {
    const std::vector<ImportFault>& faults = search.GetFaults();
    wxString lines;
    for (const ImportFault& fault : faults) {
        AddLine(lines, fault.Line, fault.Message);
    }
    for (const SourceNotice& notice : search.GetNotices()) {
        AddLine(lines, notice.Line, notice.Text);
    }
    wxDialog dialog(parent, kDialogId, _("All Faults"), wxDefaultPosition, wxDefaultSize,
                    wxDEFAULT_DIALOG_STYLE | wxRESIZE_BORDER);
    auto* const count = new wxStaticText(&dialog, wxID_ANY, CountText(faults.size()));
    auto* const text = new wxTextCtrl(&dialog, kFaultTextId, lines, wxDefaultPosition,
                                      dialog.FromDIP(wxSize(480, 240)),
                                      wxTE_MULTILINE | wxTE_READONLY | wxHSCROLL);
    SetAccessibleName(*text, _("All Faults"));
    auto* const copy = new wxButton(&dialog, wxID_COPY);
    auto* const close = new wxButton(&dialog, wxID_CLOSE);
    auto* const buttons = new wxBoxSizer(wxHORIZONTAL);
    buttons->Add(copy);
    buttons->Add(close, wxSizerFlags().Border(wxLEFT, dialog.FromDIP(kFormGap)));
    wxBoxSizer* const rows = MakeFormColumn(dialog);
    rows->Add(count);
    rows->Add(text, FormRow(dialog).Proportion(1));
    rows->Add(buttons, wxSizerFlags().Right().Border(wxTOP, dialog.FromDIP(kFormEdge)));
    dialog.GetSizer()->SetSizeHints(&dialog);
    dialog.CentreOnParent();
    dialog.SetEscapeId(wxID_CLOSE);
    close->SetDefault();
    text->SetInsertionPoint(0);
    text->SetFocus();
    copy->Bind(wxEVT_BUTTON, [text](wxCommandEvent&) {
        text->SelectAll();
        text->Copy();
    });
    dialog.ShowModal();
}

}  // namespace

void ShowAllFaults(wxWindow* parent, const ImportInput& input, Database& database,
                   FatalErrorReport& report) {
    FaultSearch search(input, database);
    const wxString failure = _("Unable to start a thread for the search.");
    if (RunWithProgress(parent, search, report, failure) && !search.WasStopped()) {
        ShowFaults(parent, search);
    }
}
