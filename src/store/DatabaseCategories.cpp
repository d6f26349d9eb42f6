// Categories and store-wide values.

#include <set>

#include "base/Text.h"
#include "store/CardRow.h"
#include "store/Database.h"

int Database::SelectAllCategories(std::list<Category>& categories) {
    return Read(StatementId::kSelectAllCategories, ReadCategoryRows, categories);
}

int Database::SelectCategoryById(int32_t id, std::list<Category>& categories) {
    return Read(StatementId::kSelectCategoryById, ReadCategoryRows, categories, id);
}

int Database::SelectCategoryByName(const wxString& name, std::list<Category>& categories) {
    return Read(StatementId::kSelectCategoryByName, ReadCategoryRows, categories, name);
}

int Database::CategoryInsert(const wxString& name) {
    const Lock lock(mMutex);
    std::list<Category> categories;
    if (SelectAllCategories(categories) < 0) {
        return -1;
    }
    std::set<int32_t> used;
    for (const Category& category : categories) {
        used.insert(category.Id);
    }
    int32_t id = 0;
    while (used.count(id) != 0) {
        ++id;
    }
    // Cards left over from an earlier category of this id belong to none.
    if (UpdateFlashCardCategory(id, -1) < 0) {
        return -1;
    }
    return Run(StatementId::kCategoryInsert, "CategoryInsert", id, name);
}

int Database::CategoryBringBack(const Category& category) {
    const Lock lock(mMutex);
    std::list<Category> found;
    if (SelectCategoryById(category.Id, found) < 0) {
        return -1;
    }
    if (!found.empty()) {
        return CategoryInsert(category.Name);
    }
    if (UpdateFlashCardCategory(category.Id, -1) < 0) {
        return -1;
    }
    return Run(StatementId::kCategoryInsert, "CategoryBringBack", category.Id, category.Name);
}

int Database::FindOrInsertCategory(const wxString& name, int32_t& id) {
    const Lock lock(mMutex);
    std::list<Category> found;
    if (SelectCategoryByName(name, found) < 0 ||
        (found.empty() && (CategoryInsert(name) < 0 || SelectCategoryByName(name, found) < 0)) ||
        found.empty()) {
        return -1;
    }
    id = found.front().Id;
    return 0;
}

int Database::UpdateCategory(const Category& category) {
    return Run(StatementId::kUpdateCategory, "UpdateCategory", category.Name, category.Id);
}

int Database::DeleteCategory(int32_t id) {
    const Lock lock(mMutex);
    int32_t count = 0;
    if (SelectCategoryIdCount(id, count) < 0 || count >= 1) {
        return -1;
    }
    const wxString label = wxString::Format("Delete Category: %i", id);
    return Run(StatementId::kDeleteCategory, label.utf8_str(), id);
}

int Database::GetGlobal(const wxString& key, std::list<wxString>& values) {
    const Lock lock(mMutex);
    values.clear();
    StatementRun run(*this, Prepared(StatementId::kGetGlobal), key);
    if (run.Step("SelectStringBindString") < 0) {
        return -1;
    }
    if (!run.IsDone()) {
        values.push_back(run.ColumnText(0));
    }
    return 0;
}

int Database::GetGlobalInt(const wxString& key, std::list<int32_t>& values) {
    values.clear();
    std::list<wxString> texts;
    const int result = GetGlobal(key, texts);
    for (const wxString& text : texts) {
        // A text without a leading number counts as 0.
        int32_t value = 0;
        size_t rest = 0;
        ParseLeadingInteger(text, value, rest);
        values.push_back(value);
    }
    return result;
}

int Database::SetGlobal(const wxString& key, const wxString& value) {
    const Lock lock(mMutex);
    std::list<wxString> values;
    if (GetGlobal(key, values) < 0) {
        return -1;
    }
    if (!values.empty() && values.front() == value) {
        return 0;
    }
    const wxString label =
        wxString::Format("%s Global: %s/%s", values.empty() ? "Insert" : "Update", key, value);
    return values.empty() ? Run(StatementId::kInsertGlobal, label.utf8_str(), key, value)
                          : Run(StatementId::kUpdateGlobal, label.utf8_str(), value, key);
}

int Database::SetGlobalInt(const wxString& key, int32_t value) {
    return SetGlobal(key, wxString::Format("%i", value));
}
