#include "exchange/ImportCategories.h"

#include <wx/intl.h>

#include "exchange/ImportMessages.h"
#include "exchange/ImportResult.h"
#include "store/Database.h"

bool ImportCategories::Load() {
    std::list<Category> categories;
    if (mDatabase.SelectAllCategories(categories) < 0) {
        return false;
    }
    for (const Category& category : categories) {
        mIds.emplace(category.Name, category.Id);
    }
    return true;
}

bool ImportCategories::FindOrCreate(const wxString& name, int32_t& id) {
    const Search search = Find(name, id);
    if (search != Search::kMissing) {
        return search == Search::kFound;
    }
    if (mDatabase.CategoryInsert(name) < 0) {
        return mResult.Fail(StoreMessage(_("Category create error %i:%s"), mDatabase));
    }
    switch (FindInStore(name, id)) {
        case Search::kFound:
            return true;
        case Search::kMissing:
            return mResult.Fail(_("Category create failed. (3)"));
        default:
            return false;
    }
}

bool ImportCategories::FindOrAsk(const wxString& name, bool ask, int32_t line, int32_t& id) {
    const Search search = Find(name, id);
    if (search != Search::kMissing) {
        return search == Search::kFound;
    }
    id = -1;
    mIds.emplace(name, id);
    if (ask && !mResult.YesToAllCategories) {
        mResult.CategoryName = name;
        return mResult.Ask(ImportRequest::kNewCategory, line);
    }
    return true;
}

ImportCategories::Search ImportCategories::Find(const wxString& name, int32_t& id) {
    const auto known = mIds.find(name);
    if (known == mIds.end()) {
        return FindInStore(name, id);
    }
    id = known->second;
    return Search::kFound;
}

ImportCategories::Search ImportCategories::FindInStore(const wxString& name, int32_t& id) {
    std::list<Category> found;
    if (mDatabase.SelectCategoryByName(name, found) < 0) {
        mResult.Fail(StoreReadMessage(mDatabase));
        return Search::kFailed;
    }
    if (found.empty()) {
        return Search::kMissing;
    }
    id = found.front().Id;
    mIds.emplace(name, id);
    return Search::kFound;
}
