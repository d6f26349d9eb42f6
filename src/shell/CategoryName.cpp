#include "shell/CategoryName.h"

#include <wx/translation.h>

#include <list>

#include "base/WideText.h"
#include "shell/MessageBox.h"
#include "shell/TextQuestion.h"
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

bool AskCategoryName(TextQuestion& question) {
    while (question.ShowModal() == wxID_OK) {
        if (!TrimWide(question.GetValue()).empty()) {
            return true;
        }
        ShowMessageBox(_("Categories cannot have a blank name"), question.GetTitle(),
                       wxOK | wxCENTRE, question.GetParent());
    }
    return false;
}
