// Categories and store-wide values.

#include <set>

#include "base/Text.h"
#include "store/CardRow.h"
#include "store/Database.h"

int Database::SelectAllCategories(std::list<Category>& categories) {
    const Lock lock(mMutex);
    StatementRun run(*this, mpSelectAllCategoriesStmt);
    return ReadCategoryRows(run, categories, true);
}

int Database::SelectCategoryById(int32_t id, std::list<Category>& categories) {
    const Lock lock(mMutex);
    categories.clear();
    StatementRun run(*this, mpSelectCategoryByIdStmt);
    if (run.BindInt(1, id) < 0) {
        return -1;
    }
    return ReadCategoryRows(run, categories, true);
}

int Database::SelectCategoryByName(const wxString& name, std::list<Category>& categories) {
    const Lock lock(mMutex);
    categories.clear();
    StatementRun run(*this, mpSelectCategoryByNameStmt);
    if (run.BindText(1, name) < 0) {
        return -1;
    }
    return ReadCategoryRows(run, categories, true);
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
    // Cards that an earlier category of this id left behind are nobody's.
    if (UpdateFlashCardCategory(id, -1) < 0) {
        return -1;
    }
    StatementRun run(*this, mpCategoryInsertStmt);
    if (run.BindInt(1, id) < 0 || run.BindText(2, name) < 0) {
        return -1;
    }
    return run.Step("CategoryInsert");
}

int Database::UpdateCategory(const Category& category) {
    const Lock lock(mMutex);
    StatementRun run(*this, mpUpdateCategoryStmt);
    if (run.BindText(1, category.Name) < 0 || run.BindInt(2, category.Id) < 0) {
        return -1;
    }
    return run.Step("UpdateCategory");
}

int Database::DeleteCategory(int32_t id) {
    const Lock lock(mMutex);
    int32_t count = 0;
    if (SelectCategoryIdCount(id, count) < 0 || count >= 1) {
        return -1;
    }
    StatementRun run(*this, mpDeleteCategoryStmt);
    if (run.BindInt(1, id) < 0) {
        return -1;
    }
    return run.Step(wxString::Format("Delete Category: %i", id));
}

int Database::GetGlobal(const wxString& key, std::list<wxString>& values) {
    const Lock lock(mMutex);
    return SelectStringBindString(mpGetGlobalStmt, key, values);
}

int Database::GetGlobalInt(const wxString& key, std::list<int32_t>& values) {
    values.clear();
    std::list<wxString> texts;
    const int result = GetGlobal(key, texts);
    for (const wxString& text : texts) {
        // A text without a number in front counts as 0.
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
    if (!values.empty()) {
        StatementRun run(*this, mpUpdateGlobalStmt);
        if (run.BindText(1, value) < 0 || run.BindText(2, key) < 0) {
            return -1;
        }
        return run.Step(wxString::Format("Update Global: %s/%s", key, value));
    }
    StatementRun run(*this, mpInsertGlobalStmt);
    if (run.BindText(1, key) < 0 || run.BindText(2, value) < 0) {
        return -1;
    }
    return run.Step(wxString::Format("Insert Global: %s/%s", key, value));
}

int Database::SetGlobalInt(const wxString& key, int32_t value) {
    return SetGlobal(key, wxString::Format("%i", value));
}
