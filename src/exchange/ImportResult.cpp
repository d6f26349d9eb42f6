#include "exchange/ImportResult.h"

#include <wx/intl.h>

bool ImportResult::Advance(ImportStatus from, ImportStatus to) {
    return Status.compare_exchange_strong(from, to);
}

bool ImportResult::Fail(const wxString& message) {
    Message = message;
    Advance(ImportStatus::kRunning, ImportStatus::kFailed);
    return false;
}

bool ImportResult::FailCancelled(int32_t line) {
    Message = _("Cancelled");
    LineNumber = line;
    return false;
}

bool ImportResult::Ask(ImportRequest request, int32_t line) {
    Request = request;
    if (RequestSemaphore.Post() != wxSEMA_NO_ERROR) {
        return Fail(_("Unexpected Error (semaphore post returned error)"));
    }
    if (ReplySemaphore.Wait() != wxSEMA_NO_ERROR) {
        return Fail(_("Unexpected Error (semaphore wait returned error)"));
    }
    return Status == ImportStatus::kCancelled ? FailCancelled(line) : true;
}
