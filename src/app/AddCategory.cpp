#include "app/AddCategory.h"

#include <wx/intl.h>

#include <list>

#include "shell/CategoryName.h"
#include "shell/MessageBox.h"
#include "shell/ShownText.h"
#include "shell/TextQuestion.h"
#include "store/Database.h"

void AddCategory(wxWindow* parent, Database& database) {
    const wxString caption = _("Add Category");
    TextQuestion dialog(parent, _("Please enter the name of the category you want to add."),
                        caption);
    if (!AskCategoryName(dialog)) {
        return;
    }
    const wxString name = dialog.GetValue();
    // The store knows names that differ in their spelling only, such as numbers, as the same.
    std::list<Category> same;
    if (database.SelectCategoryByName(name, same) >= 0 && !same.empty()) {
        ShowMessageBox(wxString::Format(_("There is already a category named \"%s\"."),
                                        ShownName(same.front().Name)),
                       caption, wxOK | wxCENTRE, parent);
        return;
    }
    if (database.CategoryInsert(name) < 0) {
        ShowMessageBox(_("Unable to add the category."), caption, wxOK | wxICON_ERROR, parent);
        return;
    }
    database.Notify();
}
