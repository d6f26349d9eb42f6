#include "categories/CurrentCategory.h"

#include <wx/confbase.h>
#include <wx/intl.h>
#include <wx/translation.h>

#include <limits>
#include <list>
#include <optional>

#include "base/Text.h"
#include "shell/MessageBox.h"
#include "shell/Settings.h"
#include "store/Database.h"

namespace {

// Empty when no sensible choice was ever stored.
using Choice = std::optional<int32_t>;

Choice ReadStoredChoice() {
    long value = -1;
    if (!OpenSettings()->Read(kSettingCurrentCategoryId, &value) ||
        value < std::numeric_limits<int32_t>::min() ||
        value > std::numeric_limits<int32_t>::max()) {
        return std::nullopt;
    }
    return static_cast<int32_t>(value);
}

// The choice as read for a notice of a store. Each window asks again during the notice, and each
// answer would parse the settings file.
struct NoticedChoice {
    const Database* Store = nullptr;
    unsigned Notice = 0;
    Choice Stored;
};
NoticedChoice gNoticed;

Choice ReadChoice(const Database& database) {
    const unsigned notice = database.GetNotice();
    if (notice == 0) {
        return ReadStoredChoice();
    }
    if (gNoticed.Store != &database || gNoticed.Notice != notice) {
        gNoticed = {&database, notice, ReadStoredChoice()};
    }
    return gNoticed.Stored;
}

void WriteChoice(int32_t id) {
    gNoticed = NoticedChoice();
    OpenSettings()->Write(kSettingCurrentCategoryId, static_cast<long>(id));
}

bool HasCategory(Database& database, int32_t id) {
    std::list<Category> found;
    return database.SelectCategoryById(id, found) >= 0 && !found.empty();
}

// Returns the id of the first category, after making "Default" in a store without any; -1 on
// failure.
int32_t FirstCategory(Database& database) {
    std::list<Category> all;
    if (database.SelectAllCategories(all) < 0) {
        return -1;
    }
    if (all.empty() &&
        (database.CategoryInsert("Default") < 0 || database.SelectAllCategories(all) < 0)) {
        return -1;
    }
    return all.empty() ? -1 : all.front().Id;
}

}  // namespace

int32_t GetCurrentCategoryId(Database& database) {
    const Choice choice = ReadChoice(database);
    if (choice != -1) {
        const bool isThere = choice && HasCategory(database, *choice);
        return isThere ? *choice : FirstCategory(database);
    }
    std::list<Category> all;
    if (database.SelectAllCategories(all) < 0 || !all.empty()) {
        return -1;
    }
    // The next read must not find a store with a category and still no choice.
    const int32_t first = FirstCategory(database);
    WriteChoice(first);
    return first;
}

void SetCurrentCategoryId(Database& database, int32_t id) {
    if (id == -1 || HasCategory(database, id)) {
        WriteChoice(id);
    }
}

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

void AddCategory(wxWindow* parent, Database& database) {
    const wxString caption = _("Add Category");
    TextQuestion dialog(parent, _("Please enter the name of the category you want to add."),
                        caption);
    if (!AskCategoryName(dialog)) {
        return;
    }
    const wxString name = dialog.GetValue();
    // The store may take names that differ only in spelling, such as numbers, for the same.
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
