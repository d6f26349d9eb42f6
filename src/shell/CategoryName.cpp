#include "shell/CategoryName.h"

#include <wx/translation.h>

#include <list>

#include "store/Database.h"

wxString GetCategoryName(Database& database, int32_t id) {
    if (id == -1) {
        return _("Deleted Items");
    }
    std::list<Category> found;
    if (database.SelectCategoryById(id, found) < 0 || found.empty()) {
        return _("Error");
    }
    return found.front().Name;
}
