#include "exchange/ImportMessages.h"

#include <wx/intl.h>

#include "store/Database.h"

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
