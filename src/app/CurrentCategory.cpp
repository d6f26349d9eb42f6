#include "app/CurrentCategory.h"

#include <wx/confbase.h>

#include <limits>
#include <list>
#include <memory>
#include <optional>

#include "shell/Settings.h"
#include "store/Database.h"

namespace {

constexpr char kKey[] = "CurrentCategoryId";

// Nothing when no choice was ever stored, or none that makes sense.
std::optional<int32_t> ReadChoice() {
    long value = -1;
    if (!OpenSettings()->Read(kKey, &value) || value < std::numeric_limits<int32_t>::min() ||
        value > std::numeric_limits<int32_t>::max()) {
        return std::nullopt;
    }
    return static_cast<int32_t>(value);
}

void WriteChoice(int32_t id) {
    OpenSettings()->Write(kKey, static_cast<long>(id));
}

bool HasCategory(Database& database, int32_t id) {
    std::list<Category> found;
    return database.SelectCategoryById(id, found) >= 0 && !found.empty();
}

// The id of the first category, after "Default" was made in a store that had none; else -1.
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
    const std::optional<int32_t> choice = ReadChoice();
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
