#include "exchange/dialogs/PasteCards.h"

#include <wx/intl.h>
#include <wx/log.h>

#include "base/FatalErrorReport.h"
#include "exchange/PasteThread.h"
#include "exchange/dialogs/ProgressDialog.h"
#include "store/Database.h"

void PasteCards(Database& database, FatalErrorReport& report, const std::vector<int64_t>& rowIds,
                bool copy, int32_t categoryId) {
    PasteThread thread(database, rowIds, copy, categoryId);
    if (!thread.Start()) {
        wxLogError(_("Unable to start a thread for the flash cards to be pasted."));
        return;
    }
    {
        ProgressDialog dialog(nullptr, _("Progress"), wxSize(400, 300));
        dialog.SetSource(thread);
        dialog.ShowModal();
    }
    thread.Join();
    // Ends the program when the store failed under the worker.
    report.DeliverPending();
    database.Notify();
}
