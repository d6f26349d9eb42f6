#include "exchange/dialogs/ImportWithProgress.h"

#include <wx/intl.h>

#include "base/Clock.h"
#include "base/FatalErrorReport.h"
#include "exchange/ImportThread.h"
#include "exchange/dialogs/ImportQuestionDialogs.h"
#include "exchange/dialogs/ProgressDialog.h"
#include "scheduler/IntervalUnits.h"
#include "shell/MessageBox.h"

namespace {

void TellComplete(wxWindow& parent, const ImportResult& result, const wxTimeSpan& elapsed) {
    const IntervalInUnits time = SplitInterval(static_cast<float>(elapsed.GetSeconds().ToLong()));
    ShowMessageBox(wxString::Format(
                       _("%i Records Inserted\n%i Records Merged\n%i Duplicates Ignored\n%.2f %s"),
                       result.RecordsInserted, result.RecordsMerged, result.DuplicatesIgnored,
                       static_cast<double>(time.Value), IntervalUnitName(time.Unit)),
                   _("Import Complete"), wxOK | wxCENTRE, &parent);
}

void TellFailure(wxWindow* parent, const ImportResult& result) {
    // Without a text the reason is told elsewhere, as by the library for a file that is not there.
    if (result.Message.empty()) {
        return;
    }
    const wxString text =
        result.LineNumber >= 1
            ? wxString::Format(_("%s\nLine Number: %i"), result.Message, result.LineNumber)
            : result.Message;
    ShowMessageBox(text, _("Import Failed"), wxOK | wxCENTRE, parent);
}

}  // namespace

bool ImportWithProgress(wxWindow* parent, const ImportInput& input, Database& database,
                        FatalErrorReport& report, bool askCategories,
                        std::set<int32_t>* touchedCategories) {
    const wxDateTime start = CurrentTime();
    ImportQuestionDialogs questions;
    ImportThread thread(input, database, askCategories, touchedCategories, questions);
    thread.Start();
    {
        ProgressDialog dialog(parent, _("Progress"), wxSize(400, 300));
        dialog.SetSource(thread);
        dialog.ShowModal();
    }
    thread.Join();
    const wxTimeSpan elapsed = CurrentTime() - start;
    // Ends the program when the store failed under the worker.
    report.DeliverPending();

    const ImportResult& result = thread.GetResult();
    switch (result.Status) {
        case ImportStatus::kFinished:
            if (parent != nullptr) {
                TellComplete(*parent, result, elapsed);
            }
            return true;
        case ImportStatus::kCancelled:
            return false;
        default:
            TellFailure(parent, result);
            return false;
    }
}
