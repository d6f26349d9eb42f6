#include "exchange/ImportJob.h"

#include <wx/intl.h>

#include "store/Database.h"

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

namespace {

// No attribute is longer; what is cut is no name, but perhaps a whole file without line breaks.
constexpr size_t kLongestName = 200;

}  // namespace

wxString NamedMessage(const wxString& format, const wxString& name) {
    if (name.length() <= kLongestName) {
        return wxString::Format(format, name);
    }
    return wxString::Format(format, name.substr(0, kLongestName) + wxString(L'\u2026'));
}

wxString UnknownAttributeMessage(const wxString& name) {
    return NamedMessage(_("\"%s\" is not a valid attribute name."), name);
}

wxString RepeatedAttributeMessage() {
    return _(
        "This card attribute has already been specified.  Individual cards must be separated by a "
        "blank line.");
}

wxString UnreadableFileMessage(const wxString& fileName) {
    return wxString::Format(_("Unable to read flash cards: %s"), fileName);
}

wxString DatabaseFileMessage(const wxString& fileName) {
    return wxString::Format(_("The file \"%s\" is a store of flash cards or belongs to one, and is "
                              "not imported.  A store is opened in the options."),
                            fileName);
}

wxString StoreMessage(const wxString& format, Database& database) {
    return wxString::Format(format, database.GetLastErrorCode(), database.GetLastError());
}

wxString StoreReadMessage(Database& database) {
    return StoreMessage(_("Database read error %i:%s"), database);
}
